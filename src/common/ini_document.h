#pragma once
// The program's own reader and writer of ini-style text: "[section]" lines,
// "key=value" lines (key and value trimmed of blanks), "; " comments. Section
// and key look-ups ignore ASCII case; the first of duplicate keys wins. Lines
// the reader does not understand are kept, so editing one value of a file
// leaves every other byte as it was.
#include "common/file_io.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kestrelon {

class UserPort;

class IniDocument {
public:
    IniDocument() = default;

    // Reads the file. A missing file fails with no error text; one that exists
    // but cannot be read fails with "Unable to open ini file." as last error.
    bool load(const std::filesystem::path& path);
    // Reads from text in memory; never fails.
    void parse(std::string_view text);
    const std::string& lastError() const { return m_lastError; }

    bool hasSection(std::string_view section) const;
    std::optional<std::string> value(std::string_view section, std::string_view key) const;
    std::string getString(std::string_view section, std::string_view key, std::string_view fallback = {}) const;
    // The integer accessor: a value made of decimal digits, with an optional
    // leading "+" or "-", is converted; a missing key gives `fallback`; any other
    // value shows "Invalid data!" through `port` and gives nullopt.
    std::optional<int> getInt(std::string_view section, std::string_view key, int fallback, UserPort& port) const;

    // Names of the sections in file order.
    std::vector<std::string> sectionNames() const;

    // Numbered names as the program's files use them: prefix + n (+ suffix), n
    // written "%d" from 0. These give, ascending, the n below `limit` for which
    // such a section (or such a key of `section`) exists, so a reader walks the
    // numbers the file holds instead of a count it cannot trust. A key's value
    // is that of its first line, as value() would give it.
    std::vector<int> numberedSections(std::string_view prefix, int limit) const;
    std::vector<std::pair<int, std::string>> numberedValues(std::string_view section, std::string_view prefix,
                                                            std::string_view suffix, int limit) const;

    // Sets a value: the key's line is rewritten in place; a new key goes after
    // the last line of its section; a new section goes at the end. A line break
    // cannot be stored in a line: CR and LF in any of the three become blanks.
    void setString(std::string_view section, std::string_view key, std::string_view value);
    void setInt(std::string_view section, std::string_view key, long long value);

    std::string serialize() const;
    bool save(const std::filesystem::path& path) const;

private:
    struct Line {
        std::string text;    // as read, without its line end
        std::string section; // section line: its name
        std::string key;     // key line: trimmed key
        std::string value;   // key line: trimmed value
        enum Kind { Other, Section, Key } kind = Other;
    };

    // Index of the first section line named `section`, or npos.
    size_t findSection(std::string_view section) const;
    // Index of the key's line within the section starting at `sectionLine`, or npos.
    size_t findKey(size_t sectionLine, std::string_view key) const;
    static Line classify(std::string text);
    void buildSectionIndex() const;
    // Inserts a line at `at`, keeping the section index right.
    void insertLine(size_t at, Line line);

    std::vector<Line> m_lines;
    // First line of each section, by lower-case name, so readers that walk
    // thousands of numbered sections stay linear. Built on first use; dropped
    // whenever a line is inserted before the last section line.
    mutable std::unordered_map<std::string, size_t> m_sectionIndex;
    mutable size_t m_lastSectionLine = 0;
    mutable bool m_indexed = false;
    std::string m_eol{kNativeEol};
    bool m_finalEol = true;
    std::string m_lastError;
};

} // namespace kestrelon
