// An unpacked encoded file on its way to export: its header is checked and
// its speech data taken, or it is refused. Extraction looks at the header's
// first value only, so it may take what a full inspection refuses, never the
// other way round, and it takes everything after the header.
#include "codec/raw_extraction.h"
#include "fuzz_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "a.enc");
    const auto info = inspectEncodedFile(path, fuzz::quietPort());
    const auto raw = fuzz::scratchFolder() / "raw.bin";
    std::filesystem::remove(raw);
    const bool extracted = extractRawEncodedData(path, raw, fuzz::quietPort());
    if (info && !extracted)
        std::abort();
    if (extracted && std::filesystem::file_size(raw) + 48 != size)
        std::abort();
    return 0;
}
