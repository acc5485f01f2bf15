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
        if (c < '0' || c > '9') return -1;
        n = n * 10 + (c - '0');
    }
    return n > std::numeric_limits<int>::max() ? -1 : static_cast<int>(n);
}

// Case-folded FNV-1a with a final mix, so that names differing only in their
// last digits spread over the low bits the table uses.
std::uint64_t hashNoCase(std::string_view text)
{
    std::uint64_t h = 14695981039346656037ull;
    for (char c : text) {
        if (c >= 'A' && c <= 'Z') c = char(c - 'A' + 'a');
        h = (h ^ static_cast<unsigned char>(c)) * 1099511628211ull;
    }
    h ^= h >> 33;
    h *= 0xff51afd7ed558ccdull;
    h ^= h >> 33;
    return h;
}

// The edit buffer is compacted once this much of it, and at least half of it,
// is no longer used: each compaction walks every line, so it must be rare.
constexpr size_t kAddedGarbageSlack = 64 * 1024;

} // namespace

IniDocument::Line IniDocument::classify(std::string_view text)
{
    static_assert(sizeof(Line) == 16, "a line is meant to cost 16 bytes besides its text");
    Line line;
    line.length = static_cast<std::uint32_t>(text.size());
    const std::string_view trimmed = trimBlanks(text);
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
    line.nameAt = static_cast<std::uint32_t>(name.data() - text.data());
    line.nameLength = static_cast<std::uint32_t>(name.size());
    return line;
}

std::string_view IniDocument::textOf(const Line& line) const
{
    const std::string& buffer = line.added ? m_added : m_text;
    return std::string_view(buffer).substr(line.start, line.length);
}

std::string_view IniDocument::valueIn(std::string_view text, const Line& line)
{
    if (line.kind != Line::Key)
        return {};
    // Nothing but blanks lies between a key and its "=", and the key holds no "=".
    const size_t eq = text.find('=', line.nameAt + line.nameLength);
    return trimBlanks(text.substr(eq + 1));
}

bool IniDocument::load(const std::filesystem::path& path)
{
    m_lines.clear();
    m_text.clear();
    m_added.clear();
    m_addedGarbage = 0;
    m_indexed = false;
    m_lastError.clear();
    ReadResult read = readFile(path);
    if (read.status == ReadStatus::Missing)
        return false;
    if (read.status != ReadStatus::Ok) {
        m_lastError = std::string(msg::kUnableToOpenIni);
        return false;
    }
    return adopt(std::move(read.bytes));
}

bool IniDocument::parse(std::string_view text)
{
    if (text.size() > kMaxTextBytes) {
        adopt({});
        m_lastError = std::string(msg::kUnableToOpenIni);
        return false;
    }
    return adopt(std::string(text));
}

bool IniDocument::adopt(std::string text)
{
    m_lines.clear();
    m_added.clear();
    m_addedGarbage = 0;
    m_indexed = false;
    m_lastError.clear();
    m_text = std::move(text);
    if (m_text.size() > kMaxTextBytes) {
        m_text.clear();
        m_lastError = std::string(msg::kUnableToOpenIni);
    }
    const std::string_view all = m_text;
    const size_t firstLf = all.find('\n');
    if (firstLf != npos)
        m_eol = (firstLf > 0 && all[firstLf - 1] == '\r') ? "\r\n" : "\n";
    else // no line end to copy; a last CR must not become half of a CR LF once a line follows
        m_eol = (!all.empty() && all.back() == '\r') ? "\r\n" : std::string(kNativeEol);
    m_finalEol = all.empty() || all.back() == '\n';

    const size_t lineEnds = static_cast<size_t>(std::count(all.begin(), all.end(), '\n'));
    m_lines.reserve(lineEnds + (m_finalEol ? 0 : 1)); // exactly: a vector grown by doubling holds up to twice that
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\n', start);
        const bool ended = end != npos;
        const size_t next = ended ? end + 1 : all.size();
        if (!ended) end = all.size();
        std::string_view raw = all.substr(start, end - start);
        // Only a CR that is part of a CR LF line end belongs to the line end; a
        // CR closing a last line without LF is the line's own byte.
        if (ended && !raw.empty() && raw.back() == '\r' && m_eol == "\r\n")
            raw.remove_suffix(1);
        Line line = classify(raw);
        line.start = static_cast<std::uint32_t>(start);
        m_lines.push_back(line);
        start = next;
    }
    return m_lastError.empty();
}

bool IniDocument::makeRoom(size_t bytes)
{
    if (bytes > kMaxTextBytes - m_added.size() ||
        (m_addedGarbage > kAddedGarbageSlack && m_addedGarbage > m_added.size() / 2))
        compactAdded();
    return bytes <= kMaxTextBytes - m_added.size();
}

void IniDocument::storeAdded(Line& line, std::string_view text)
{
    if (line.added && text.size() <= line.length) {
        // Rewritten where it stands: repeated edits of one value leave no garbage.
        m_added.replace(line.start, text.size(), text);
        m_addedGarbage += line.length - text.size();
    } else {
        if (line.added) m_addedGarbage += line.length;
        line.start = static_cast<std::uint32_t>(m_added.size());
        line.added = 1;
        m_added.append(text);
    }
    line.length = static_cast<std::uint32_t>(text.size());
}

void IniDocument::compactAdded()
{
    std::string packed;
    packed.reserve(m_added.size() - m_addedGarbage);
    for (Line& line : m_lines) {
        if (!line.added) continue;
        const std::string_view text = textOf(line);
        line.start = static_cast<std::uint32_t>(packed.size());
        packed.append(text);
    }
    m_added = std::move(packed);
    m_addedGarbage = 0;
}

void IniDocument::indexSection(size_t line) const
{
    const size_t mask = m_sectionSlots.size() - 1;
    const std::string_view name = nameOf(m_lines[line]);
    for (size_t slot = hashNoCase(name) & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t held = m_sectionSlots[slot];
        if (held == 0) {
            m_sectionSlots[slot] = static_cast<std::uint32_t>(line + 1);
            ++m_sectionCount;
            return;
        }
        if (equalsNoCase(nameOf(m_lines[held - 1]), name))
            return; // the first of duplicates wins
    }
}

void IniDocument::buildSectionIndex() const
{
    size_t sections = 0;
    for (const Line& line : m_lines)
        if (line.kind == Line::Section) ++sections;
    // At most two thirds full after a build; an insert that would fill it past
    // three quarters drops it, to be built again larger at the next look-up.
    size_t slots = 16;
    while (slots < sections + sections / 2) slots *= 2;
    m_sectionSlots.assign(slots, 0);
    m_sectionCount = 0;
    m_lastSectionLine = npos;
    for (size_t i = 0; i < m_lines.size(); ++i) {
        if (m_lines[i].kind != Line::Section) continue;
        indexSection(i);
        m_lastSectionLine = i;
    }
    m_indexed = true;
}

size_t IniDocument::findSection(std::string_view section) const
{
    if (!m_indexed)
        buildSectionIndex();
    const size_t mask = m_sectionSlots.size() - 1;
    for (size_t slot = hashNoCase(section) & mask;; slot = (slot + 1) & mask) {
        const std::uint32_t held = m_sectionSlots[slot];
        if (held == 0)
            return npos;
        if (equalsNoCase(nameOf(m_lines[held - 1]), section))
            return held - 1;
    }
}

void IniDocument::insertLine(size_t at, Line line)
{
    m_lines.insert(m_lines.begin() + static_cast<std::ptrdiff_t>(at), line);
    if (!m_indexed)
        return;
    if (m_lastSectionLine != npos && at <= m_lastSectionLine) {
        m_indexed = false; // section lines move
    } else if (line.kind == Line::Section) {
        if ((m_sectionCount + 1) * 4 > m_sectionSlots.size() * 3) {
            m_indexed = false; // rebuilt larger at the next look-up
            return;
        }
        indexSection(at);
        m_lastSectionLine = at;
    }
}

size_t IniDocument::findKey(size_t sectionLine, std::string_view key) const
{
    for (size_t i = sectionLine + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key && equalsNoCase(nameOf(m_lines[i]), key))
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
    return std::string(valueOf(m_lines[k]));
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
        if (line.kind == Line::Section) names.emplace_back(nameOf(line));
    return names;
}

std::vector<int> IniDocument::numberedSections(std::string_view prefix, int limit) const
{
    std::vector<int> numbers;
    for (const Line& line : m_lines) {
        if (line.kind != Line::Section) continue;
        const int n = numberIn(nameOf(line), prefix, {});
        if (n >= 0 && n < limit) numbers.push_back(n);
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
        if (m_lines[i].kind != Line::Key) continue;
        const int n = numberIn(nameOf(m_lines[i]), prefix, suffix);
        if (n >= 0 && n < limit && !found.contains(n)) // the first of duplicates wins
            found.emplace(n, std::string(valueOf(m_lines[i])));
    }
    return {found.begin(), found.end()};
}

bool IniDocument::setString(std::string_view section, std::string_view key, std::string_view value)
{
    const std::string sectionName = oneLine(section);
    const std::string keyName = oneLine(key);
    const std::string text = keyName + "=" + oneLine(value);
    Line keyLine = classify(text);
    const size_t s = findSection(sectionName);
    if (s == npos) {
        const std::string header = "[" + sectionName + "]";
        if (header.size() > kMaxTextBytes || !makeRoom(header.size() + text.size()))
            return false;
        Line sectionLine = classify(header);
        storeAdded(sectionLine, header);
        storeAdded(keyLine, text);
        insertLine(m_lines.size(), sectionLine);
        insertLine(m_lines.size(), keyLine);
        return true;
    }
    const size_t k = findKey(s, keyName);
    if (k != npos) {
        Line& line = m_lines[k];
        if (valueOf(line) == valueIn(text, keyLine))
            return true; // the line stays as written
        if (!(line.added && text.size() <= line.length) && !makeRoom(text.size()))
            return false;
        keyLine.start = line.start;
        keyLine.added = line.added;
        keyLine.length = line.length; // what storeAdded finds there to reuse
        storeAdded(keyLine, text);
        if (keyLine.kind == Line::Section) m_indexed = false;
        line = keyLine;
        return true;
    }
    if (!makeRoom(text.size()))
        return false;
    storeAdded(keyLine, text);
    // After the section's last key line, so blank lines between sections stay put.
    size_t insertAt = s + 1;
    for (size_t i = s + 1; i < m_lines.size() && m_lines[i].kind != Line::Section; ++i)
        if (m_lines[i].kind == Line::Key) insertAt = i + 1;
    insertLine(insertAt, keyLine);
    return true;
}

bool IniDocument::setInt(std::string_view section, std::string_view key, long long value)
{
    return setString(section, key, std::to_string(value));
}

std::string IniDocument::serialize() const
{
    size_t size = 0;
    for (const Line& line : m_lines)
        size += line.length + m_eol.size();
    std::string out;
    out.reserve(size);
    for (size_t i = 0; i < m_lines.size(); ++i) {
        out += textOf(m_lines[i]);
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
