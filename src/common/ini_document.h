#pragma once
// The program's own reader and writer of ini-style text: "[section]" lines,
// "key=value" lines (key and value trimmed of blanks), "; " comments. Section
// and key look-ups ignore ASCII case; the first of duplicate keys wins. Lines
// the reader does not understand are kept, so editing one value of a file
// leaves every other byte as it was.
#include "common/file_io.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kestrelon {

class UserPort;

class IniDocument {
public:
    // The most text a document holds, as read and as added by edits: 512 MiB,
    // eight times the largest file the program's readers accept, so that every
    // offset and length of a line fits its field.
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
    // A line keeps no text of its own: it is a view into one of two buffers,
    // m_text (the text as parsed, never changed) or m_added (lines written by
    // edits). A section line's name and a key line's key are views into the
    // line; a key line's value is what follows the first "=" after its key,
    // trimmed, so it is found again when asked for. 16 bytes a line.
    struct Line {
        enum Kind : std::uint32_t { Other, Section, Key };
        std::uint32_t start = 0;          // offset in its buffer
        std::uint32_t length = 0;         // bytes, without the line end
        std::uint32_t nameAt = 0;         // section name or key: offset in the line
        std::uint32_t nameLength : 29 = 0;
        std::uint32_t kind : 2 = Other;
        std::uint32_t added : 1 = 0;      // in m_added rather than m_text
    };

    std::string_view textOf(const Line& line) const;
    std::string_view nameOf(const Line& line) const { return textOf(line).substr(line.nameAt, line.nameLength); }
    std::string_view valueOf(const Line& line) const { return valueIn(textOf(line), line); }
    // A key line's value within its text; empty for other lines.
    static std::string_view valueIn(std::string_view text, const Line& line);

    // Index of the first section line named `section`, or npos.
    size_t findSection(std::string_view section) const;
    // Index of the key's line within the section starting at `sectionLine`, or npos.
    size_t findKey(size_t sectionLine, std::string_view key) const;
    // The kind, name and length of a line of this text (start and buffer unset).
    static Line classify(std::string_view text);
    // Whether m_added can take `bytes` more (compacting it first when it
    // holds much garbage or is full).
    bool makeRoom(size_t bytes);
    // Puts `text` in m_added as the text of `line`, reusing the line's bytes
    // there when they are enough; makeRoom has said there is room.
    void storeAdded(Line& line, std::string_view text);
    void compactAdded();
    void buildSectionIndex() const;
    void indexSection(size_t line) const;
    // Inserts a line at `at`, keeping the section index right.
    void insertLine(size_t at, Line line);
    // Takes `text` as the document's text and splits it into lines.
    bool adopt(std::string text);

    std::vector<Line> m_lines;
    std::string m_text;
    std::string m_added;
    size_t m_addedGarbage = 0; // bytes of m_added no line uses any more
    // First line of each section, found by the name's case-folded hash: an
    // open-addressed table of line index + 1 (0 is a free slot), so readers
    // that walk thousands of numbered sections stay linear. Built on first
    // use; dropped whenever a line is inserted before the last section line.
    mutable std::vector<std::uint32_t> m_sectionSlots;
    mutable size_t m_sectionCount = 0;
    mutable size_t m_lastSectionLine = 0;
    mutable bool m_indexed = false;
    std::string m_eol{kNativeEol};
    bool m_finalEol = true;
    std::string m_lastError;
};

} // namespace kestrelon
