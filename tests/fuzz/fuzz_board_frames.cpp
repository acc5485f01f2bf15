// The board protocol's frame parser on any bytes: every frame it takes was on
// the line byte for byte, and the bytes arriving in two pieces change nothing.
#include "protocol.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace {

std::vector<std::string> framesOf(std::string_view line, std::size_t split)
{
    using namespace kestrelon::board;
    FrameParser parser;
    std::vector<std::string> frames;
    parser.feed(line.substr(0, split));
    while (std::optional<Frame> frame = parser.next())
        frames.push_back(encodeFrame(*frame));
    parser.feed(line.substr(split));
    while (std::optional<Frame> frame = parser.next())
        frames.push_back(encodeFrame(*frame));
    return frames;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> whole = framesOf(line, size);
    for (const std::string& frame : whole)
        if (line.find(frame) == std::string_view::npos)
            std::abort();
    if (framesOf(line, size > 0 ? data[0] % (size + 1) : 0) != whole)
        std::abort();
    return 0;
}
