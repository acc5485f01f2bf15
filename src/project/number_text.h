#pragma once
// Numbers written as text in project data. Both conversions read what they can
// from the front of the text and never fail, as the program's files expect:
// sizes and counters that hold junk read as whatever number they begin with.
#include <cstdint>
#include <optional>
#include <string_view>

namespace kestrelon {

// Leading blanks, an optional sign, then decimal digits up to the first other
// character; 0 when there are no digits. Clamped to the range of int64.
std::int64_t leadingDecimal(std::string_view text);

// Leading blanks, an optional sign, an optional "0x"/"0X", then hexadecimal
// digits up to the first other character. A value beyond 32 bits saturates at
// 0xffffffff; a minus sign negates modulo 2^32. nullopt when there are no digits.
std::optional<std::uint32_t> leadingHex(std::string_view text);

} // namespace kestrelon
