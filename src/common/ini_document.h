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
    // The most text a document takes, as read and as added by edits: 512 MiB,
    // eight times the largest file the program's readers accept.
    static constexpr size_t kMaxTextBytes = (size_t{1} << 29) - 1;

    IniDocument() = default;

    // Reads the file. A missing file fails with no error text; one that exists
    // but cannot be read fails with "Unable to open ini file." as last error.
    bool load(const std::filesystem::path& path);
    // Reads from text in memory. Only a text beyond kMaxTextBytes fails, with
    // "Unable to open ini file." as last error and an empty document, as a
    // file too large to read does.
    bool parse(std::string_view text);
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
    // Only an edit that would take the text beyond kMaxTextBytes fails, and
    // leaves the document as it was.
    bool setString(std::string_view section, std::string_view key, std::string_view value);
    bool setInt(std::string_view section, std::string_view key, long long value);

    std::string serialize() const;
    bool save(const std::filesystem::path& path, std::string* why = nullptr) const;

private:
    // A line as read or written, without its line end. A section line's name
    // and a key line's key are a stretch of it; a key line's value is what
    // follows the first "=" after its key, trimmed.
    struct Line {
        enum Kind { Other, Section, Key };
        std::string text;
        Kind kind = Other;
        size_t nameAt = 0;
        size_t nameLength = 0;

        std::string_view name() const { return std::string_view(text).substr(nameAt, nameLength); }
        std::string_view value() const;
    };

    static Line classify(std::string text);
    // Index of the first section line named `section`, or npos.
    size_t findSection(std::string_view section) const;
    // Index of the key's line within the section starting at `sectionLine`, or npos.
    size_t findKey(size_t sectionLine, std::string_view key) const;
    void insertLine(size_t at, Line line);
    void clear();

    std::vector<Line> m_lines;
    size_t m_textBytes = 0; // of every line with its line end
    // The first line of each section by its case-folded name, so readers that
    // walk thousands of numbered sections stay linear. Made on first use and
    // dropped when a line is inserted among the sections.
    mutable std::unordered_map<std::string, size_t> m_sections;
    mutable bool m_indexed = false;
    mutable size_t m_lastSection = 0; // the last section line, while indexed (npos: none)
    std::string m_eol{kNativeEol};
    bool m_finalEol = true;
    std::string m_lastError;
};

} // namespace kestrelon
