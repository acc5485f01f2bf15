// What the reference codecs read: their ".bdy" companion, the speech-event
// block of an encoding and the waveform payload decoders.
#include "fuzz_file.h"
#include "support/body_file.h"
#include "support/event_block.h"
#include "support/ima_adpcm.h"
#include "support/mu_law.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    using namespace kestrelon::support;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    CodecBody body;
    std::string error;
    readCodecBody(fuzz::inputFile(data, size, "a.bdy"), body, error);

    std::vector<EncodedEvent> events;
    if (const auto used = readEventBlock(bytes, events); used && *used > size)
        std::abort();
    // A sample count from the first bytes, bounded so one input stays small.
    const std::size_t count = size >= 2 ? (std::size_t(data[0]) | std::size_t(data[1]) << 8) % 65536 : 0;
    if (imaAdpcmDecode(bytes, count).size() > count)
        std::abort();
    if (muLawDecode(bytes).size() != size)
        std::abort();
    return 0;
}
