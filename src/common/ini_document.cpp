#include "common/ini_document.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <charconv>
#include <limits>

namespace kestrelon {

namespace {

constexpr size_t npos = std::string::npos;

std::string_view trimBlanks(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

std::optional<int> parseDecimal(std::string_view text)
{
    if (text.empty())
        return 0; // "KEY=" with nothing after it reads as 0, like a missing number
    std::string_view digits = text;
    bool negative = false;
    if (digits.front() == '+' || digits.front() == '-') {
        negative = digits.front() == '-';
        digits.remove_prefix(1);
    }
    if (digits.empty())
        return std::nullopt;
    for (char c : digits)
        if (c < '0' || c > '9') return std::nullopt;
    long long value = 0;
    const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (ec != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    if (negative) value = -value;
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(value);
}

} // namespace

IniDocument::Line IniDocument::classify(std::string text)
{
    Line line;
    const std::string_view trimmed = trimBlanks(text);
    if (trimmed.size() >= 2 && trimmed.front() == '[' && trimmed.back() == ']') {
        line.kind = Line::Section;
        line.section = std::string(trimmed.substr(1, trimmed.size() - 2));
    } else if (!trimmed.empty() && trimmed.front() != ';') {
        const size_t eq = trimmed.find('=');
        if (eq != npos) {
            line.kind = Line::Key;
            line.key = std::string(trimBlanks(trimmed.substr(0, eq)));
            line.value = std::string(trimBlanks(trimmed.substr(eq + 1)));
        }
    }
    line.text = std::move(text);
    return line;
}

bool IniDocument::load(const std::filesystem::path& path)
{
    m_lines.clear();
    m_lastError.clear();
    ReadResult read = readFile(path);
    if (read.status == ReadStatus::Missing)
        return false;
    if (read.status != ReadStatus::Ok) {
        m_lastError = std::string(msg::kUnableToOpenIni);
        return false;
    }
    parse(read.bytes);
    return true;
}

void IniDocument::parse(std::string_view text)
{
    m_lines.clear();
    const size_t firstLf = text.find('\n');
    m_eol = (firstLf != npos && firstLf > 0 && text[firstLf - 1] == '\r') ? "\r\n" : "\n";
    m_finalEol = text.empty() || text.back() == '\n';

    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find('\n', start);
        const size_t next = end == npos ? text.size() : end + 1;
        if (end == npos) end = text.size();
        std::string_view raw = text.substr(start, end - start);
        if (!raw.empty() && raw.back() == '\r' && m_eol == "\r\n")
            raw.remove_suffix(1);
        m_lines.push_back(classify(std::string(raw)));
        start = next;
    }
}

size_t IniDocument::findSection(std::string_view section) const
{
    for (size_t i = 0; i < m_lines.size(); ++i)
        if (m_lines[i].kind == Line::Section && equalsNoCase(m_lines[i].section, section))
            return i;
    return npos;
}

size_t IniDocument::findKey(size_t sectionLine, std::string_view key) const
{
    for (size_t i = sectionLine + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key && equalsNoCase(m_lines[i].key, key))
            return i;
    return npos;
}

bool IniDocument::hasSection(std::string_view section) const
{
    return findSection(section) != npos;
}

std::optional<std::string> IniDocument::value(std::string_view section, std::string_view key) const
{
    const size_t s = findSection(section);
    if (s == npos)
        return std::nullopt;
    const size_t k = findKey(s, key);
    if (k == npos)
        return std::nullopt;
    return m_lines[k].value;
}

std::string IniDocument::getString(std::string_view section, std::string_view key, std::string_view fallback) const
{
    auto v = value(section, key);
    return v ? *v : std::string(fallback);
}

std::optional<int> IniDocument::getInt(std::string_view section, std::string_view key, int fallback,
                                       UserPort& port) const
{
    const auto text = value(section, key);
    if (!text)
        return fallback;
    auto number = parseDecimal(*text);
    if (!number)
        port.showMessage(msg::kInvalidData);
    return number;
}

std::vector<std::string> IniDocument::sectionNames() const
{
    std::vector<std::string> names;
    for (const Line& line : m_lines)
        if (line.kind == Line::Section) names.push_back(line.section);
    return names;
}

void IniDocument::setString(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string text = std::string(key) + "=" + std::string(value);
    size_t s = findSection(section);
    if (s == npos) {
        m_lines.push_back(classify("[" + std::string(section) + "]"));
        m_lines.push_back(classify(text));
        return;
    }
    const size_t k = findKey(s, key);
    if (k != npos) {
        if (m_lines[k].value != value)
            m_lines[k] = classify(text);
        return;
    }
    // After the section's last key line, so blank lines between sections stay put.
    size_t insertAt = s + 1;
    for (size_t i = s + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key) insertAt = i + 1;
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(insertAt), classify(text));
}

void IniDocument::setInt(std::string_view section, std::string_view key, long long value)
{
    setString(section, key, std::to_string(value));
}

std::string IniDocument::serialize() const
{
    std::string out;
    for (size_t i = 0; i < m_lines.size(); ++i) {
        out += m_lines[i].text;
        if (i + 1 < m_lines.size() || m_finalEol)
            out += m_eol;
    }
    return out;
}

bool IniDocument::save(const std::filesystem::path& path) const
{
    return writeFileAtomically(path, serialize());
}

} // namespace kestrelon
