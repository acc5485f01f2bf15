#include "project/number_text.h"

#include <limits>

namespace kestrelon {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Drops leading blanks and one sign; returns true for a minus sign.
bool takeSign(std::string_view& text)
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        const bool negative = text.front() == '-';
        text.remove_prefix(1);
        return negative;
    }
    return false;
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

} // namespace

std::int64_t leadingDecimal(std::string_view text)
{
    const bool negative = takeSign(text);
    // Accumulate as a negative number so that the most negative value fits.
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    bool saturated = false;
    for (char c : text) {
        if (c < '0' || c > '9')
            break;
        const int digit = c - '0';
        if (value < (lowest + digit) / 10) {
            saturated = true;
            break;
        }
        value = value * 10 - digit;
    }
    if (saturated)
        return negative ? lowest : std::numeric_limits<std::int64_t>::max();
    if (negative)
        return value;
    return value == lowest ? std::numeric_limits<std::int64_t>::max() : -value;
}

std::optional<std::uint32_t> leadingHex(std::string_view text)
{
    const bool negative = takeSign(text);
    if (text.size() >= 3 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') && hexDigit(text[2]) >= 0)
        text.remove_prefix(2);
    std::uint64_t value = 0;
    bool any = false;
    for (char c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            break;
        any = true;
        value = value * 16 + std::uint64_t(digit);
        if (value > 0xffffffffu)
            value = 0x100000000u; // saturated; stays above the limit
    }
    if (!any)
        return std::nullopt;
    if (value > 0xffffffffu)
        return 0xffffffffu;
    const auto result = static_cast<std::uint32_t>(value);
    return negative ? static_cast<std::uint32_t>(0u - result) : result;
}

} // namespace kestrelon
