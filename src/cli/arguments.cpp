#include "cli/cli_command.h"

#include <algorithm>

namespace kestrelon::cli {

bool Arguments::takeFlag(std::string_view name)
{
    const auto it = std::find(m_words.begin(), m_words.end(), name);
    if (it == m_words.end())
        return false;
    m_words.erase(it);
    return true;
}

std::optional<std::string> Arguments::takeOption(std::string_view name)
{
    const auto it = std::find(m_words.begin(), m_words.end(), name);
    if (it == m_words.end())
        return std::nullopt;
    if (it + 1 == m_words.end())
        throw UsageError(std::string(name) + " needs a value");
    std::string value = *(it + 1);
    m_words.erase(it, it + 2);
    return value;
}

std::optional<long long> Arguments::takeNumber(std::string_view name, long long low, long long high)
{
    const std::optional<std::string> text = takeOption(name);
    if (!text)
        return std::nullopt;
    const std::size_t digitsFrom = !text->empty() && (*text)[0] == '-' ? 1 : 0;
    const bool number = text->size() > digitsFrom && text->size() <= 18 &&
                        text->find_first_not_of("0123456789", digitsFrom) == std::string::npos;
    const long long value = number ? std::stoll(*text) : 0;
    if (!number || value < low || value > high)
        throw UsageError(std::string(name) + " takes a whole number from " + std::to_string(low) + " to " +
                         std::to_string(high) + ": " + *text);
    return value;
}

std::vector<std::string> Arguments::positionals() const
{
    for (const std::string& word : m_words)
        if (word.size() > 2 && word.rfind("--", 0) == 0)
            throw UsageError("unknown option " + word);
    return m_words;
}

std::vector<std::string> Arguments::expect(size_t count) const
{
    auto words = positionals();
    if (words.size() != count)
        throw UsageError("expected " + std::to_string(count) + " argument(s), got " + std::to_string(words.size()));
    return words;
}

} // namespace kestrelon::cli
