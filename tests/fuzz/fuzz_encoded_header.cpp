// Arbitrary bytes into the header parser; whatever it accepts must come back
// the same after being written out and read again.
#include "codec/encoded_header.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto parsed = kestrelon::parseEncodedHeader(std::span<const std::uint8_t>(data, size));
    if (!parsed)
        return 0;
    const kestrelon::EncodedHeaderBytes remade = kestrelon::makeEncodedHeader(*parsed);
    const auto reparsed = kestrelon::parseEncodedHeader(remade);
    if (!reparsed || !(*reparsed == *parsed)) {
        std::fprintf(stderr, "encoded header does not survive make -> parse\n");
        std::abort();
    }
    return 0;
}
