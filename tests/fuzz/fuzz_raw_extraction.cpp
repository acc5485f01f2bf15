// An unpacked encoded file on its way to export: its header is checked and
// its speech data taken, or it is refused.
#include "codec/raw_extraction.h"
#include "fuzz_file.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "a.enc");
    const auto info = inspectEncodedFile(path, fuzz::quietPort());
    const bool extracted = extractRawEncodedData(path, fuzz::scratchFolder() / "raw.bin", fuzz::quietPort());
    if (info.has_value() != extracted)
        std::abort();
    return 0;
}
