#include "common/ini_document.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <map>

namespace kestrelon {

namespace {

constexpr size_t npos = std::string::npos;

std::string_view trimBlanks(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
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
        if (c < '0' || c > '9')
            return std::nullopt;
    long long value = 0;
    const auto [end, ec] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (ec != std::errc() || end != digits.data() + digits.size())
        return std::nullopt;
    if (negative)
        value = -value;
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(value);
}

// A line break inside a section name, key or value would split its line in two.
std::string oneLine(std::string_view text)
{
    std::string out(text);
    std::replace(out.begin(), out.end(), '\r', ' ');
    std::replace(out.begin(), out.end(), '\n', ' ');
    return out;
}

// The n of `name` = prefix + n + suffix, n written "%d" and at least 0; -1 if
// the name has another form ("ITEM01", "ITEM+1" and "ITEM" are not numbered).
int numberIn(std::string_view name, std::string_view prefix, std::string_view suffix)
{
    if (name.size() <= prefix.size() + suffix.size() || !startsWithNoCase(name, prefix) ||
        !endsWithNoCase(name, suffix))
        return -1;
    const std::string_view digits = name.substr(prefix.size(), name.size() - prefix.size() - suffix.size());
    if (digits.size() > 10 || (digits.size() > 1 && digits.front() == '0'))
        return -1;
    long long n = 0;
    for (char c : digits) {
        if (c < '0' || c > '9')
            return -1;
        n = n * 10 + (c - '0');
    }
    return n > std::numeric_limits<int>::max() ? -1 : static_cast<int>(n);
}

} // namespace

IniDocument::Line IniDocument::classify(std::string text)
{
    Line line;
    line.text = std::move(text);
    const std::string_view all = line.text;
    const std::string_view trimmed = trimBlanks(all);
    std::string_view name;
    if (trimmed.size() >= 2 && trimmed.front() == '[' && trimmed.back() == ']') {
        line.kind = Line::Section;
        name = trimmed.substr(1, trimmed.size() - 2);
    } else if (!trimmed.empty() && trimmed.front() != ';') {
        const size_t eq = trimmed.find('=');
        if (eq == npos)
            return line;
        line.kind = Line::Key;
        name = trimBlanks(trimmed.substr(0, eq));
    } else {
        return line;
    }
    line.nameAt = size_t(name.data() - all.data());
    line.nameLength = name.size();
    return line;
}

std::string_view IniDocument::Line::value() const
{
    if (kind != Key)
        return {};
    // Nothing but blanks lies between a key and its "=", and the key holds no "=".
    const std::string_view all = text;
    return trimBlanks(all.substr(all.find('=', nameAt + nameLength) + 1));
}

void IniDocument::clear()
{
    m_lines.clear();
    m_textBytes = 0;
    m_sections.clear();
    m_indexed = false;
    m_lastError.clear();
}

bool IniDocument::load(const std::filesystem::path& path)
{
    clear();
    const ReadResult read = readFile(path);
    if (read.status == ReadStatus::Missing)
        return false;
    if (read.status != ReadStatus::Ok) {
        m_lastError = std::string(msg::kUnableToOpenIni);
        return false;
    }
    return parse(read.bytes);
}

bool IniDocument::parse(std::string_view all)
{
    clear();
    if (all.size() > kMaxTextBytes) {
        all = {};
        m_lastError = std::string(msg::kUnableToOpenIni);
    }
    const size_t firstLf = all.find('\n');
    if (firstLf != npos)
        m_eol = (firstLf > 0 && all[firstLf - 1] == '\r') ? "\r\n" : "\n";
    else // no line end to copy; a last CR must not become half of a CR LF once a line follows
        m_eol = (!all.empty() && all.back() == '\r') ? "\r\n" : std::string(kNativeEol);
    m_finalEol = all.empty() || all.back() == '\n';

    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        const bool ended = end != npos;
        const size_t next = ended ? end + 1 : all.size();
        if (!ended)
            end = all.size();
        std::string_view raw = all.substr(start, end - start);
        // Only a CR that is part of a CR LF line end belongs to the line end; a
        // CR closing a last line without LF is the line's own byte.
        if (ended && !raw.empty() && raw.back() == '\r' && m_eol == "\r\n")
            raw.remove_suffix(1);
        m_lines.push_back(classify(std::string(raw)));
        m_textBytes += raw.size() + m_eol.size();
        start = next;
    }
    return m_lastError.empty();
}

size_t IniDocument::findSection(std::string_view section) const
{
    if (!m_indexed) {
        m_sections.clear();
        m_lastSection = npos;
        for (size_t i = 0; i < m_lines.size(); ++i)
            if (m_lines[i].kind == Line::Section) {
                m_sections.emplace(toLowerAscii(m_lines[i].name()), i); // the first of duplicates wins
                m_lastSection = i;
            }
        m_indexed = true;
    }
    const auto found = m_sections.find(toLowerAscii(section));
    return found == m_sections.end() ? npos : found->second;
}

void IniDocument::insertLine(size_t at, Line line)
{
    m_textBytes += line.text.size() + m_eol.size();
    // Section lines after it move, or a section is new: the index is made again.
    if (line.kind == Line::Section || (m_lastSection != npos && at <= m_lastSection))
        m_indexed = false;
    m_lines.insert(m_lines.begin() + std::ptrdiff_t(at), std::move(line));
}

size_t IniDocument::findKey(size_t sectionLine, std::string_view key) const
{
    for (size_t i = sectionLine + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key && equalsNoCase(m_lines[i].name(), key))
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
    return std::string(m_lines[k].value());
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
        if (line.kind == Line::Section)
            names.emplace_back(line.name());
    return names;
}

std::vector<int> IniDocument::numberedSections(std::string_view prefix, int limit) const
{
    std::vector<int> numbers;
    for (const Line& line : m_lines) {
        if (line.kind != Line::Section)
            continue;
        const int n = numberIn(line.name(), prefix, {});
        if (n >= 0 && n < limit)
            numbers.push_back(n);
    }
    std::sort(numbers.begin(), numbers.end());
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}

std::vector<std::pair<int, std::string>> IniDocument::numberedValues(std::string_view section, std::string_view prefix,
                                                                     std::string_view suffix, int limit) const
{
    const size_t s = findSection(section);
    if (s == npos)
        return {};
    std::map<int, std::string> found;
    for (size_t i = s + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i) {
        if (m_lines[i].kind != Line::Key)
            continue;
        const int n = numberIn(m_lines[i].name(), prefix, suffix);
        if (n >= 0 && n < limit && !found.contains(n)) // the first of duplicates wins
            found.emplace(n, std::string(m_lines[i].value()));
    }
    return {found.begin(), found.end()};
}

bool IniDocument::setString(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string sectionName = oneLine(section);
    const std::string keyName = oneLine(key);
    Line keyLine = classify(keyName + "=" + oneLine(value));
    const size_t s = findSection(sectionName);
    if (s == npos) {
        Line sectionLine = classify("[" + sectionName + "]");
        if (sectionLine.text.size() + keyLine.text.size() + 2 * m_eol.size() > kMaxTextBytes - m_textBytes)
            return false;
        insertLine(m_lines.size(), std::move(sectionLine));
        insertLine(m_lines.size(), std::move(keyLine));
        return true;
    }
    const size_t k = findKey(s, keyName);
    if (k != npos) {
        Line& line = m_lines[k];
        if (line.value() == keyLine.value())
            return true; // the line stays as written
        if (keyLine.text.size() > line.text.size() &&
            keyLine.text.size() - line.text.size() > kMaxTextBytes - m_textBytes)
            return false;
        m_textBytes = m_textBytes - line.text.size() + keyLine.text.size();
        if (keyLine.kind == Line::Section)
            m_indexed = false;
        line = std::move(keyLine);
        return true;
    }
    if (keyLine.text.size() + m_eol.size() > kMaxTextBytes - m_textBytes)
        return false;
    // After the section's last key line, so blank lines between sections stay put.
    size_t insertAt = s + 1;
    for (size_t i = s + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key)
            insertAt = i + 1;
    insertLine(insertAt, std::move(keyLine));
    return true;
}

bool IniDocument::setInt(std::string_view section, std::string_view key, long long value)
{
    return setString(section, key, std::to_string(value));
}

std::string IniDocument::serialize() const
{
    std::string out;
    out.reserve(m_textBytes);
    for (size_t i = 0; i < m_lines.size(); ++i) {
        out += m_lines[i].text;
        if (i + 1 < m_lines.size() || m_finalEol)
            out += m_eol;
    }
    return out;
}

bool IniDocument::save(const std::filesystem::path& path, std::string* why) const
{
    return writeFileAtomically(path, serialize(), why);
}

} // namespace kestrelon
