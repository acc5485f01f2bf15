#include "project/project_file_reader.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/number_text.h"
#include "project/project_document.h"
#include "project/project_file_keywords.h"

#include <limits>
#include <system_error>

namespace kestrelon {

namespace {

// Lines as a 256-byte line buffer delivers them: at most 255 characters each.
class LineSource {
public:
    static constexpr std::size_t kBufferChars = 255;

    enum class Status { Line, End, EndInLongLine };

    explicit LineSource(std::string_view text)
        : m_text(text)
    {}

    // The next line without its line feed. A line that fills the buffer is
    // over-long: with `skipRest` its remainder is read and dropped; without, the
    // remainder is what the following call returns.
    Status next(std::string_view& line, bool skipRest)
    {
        std::string_view piece;
        if (!nextPiece(piece))
            return Status::End;
        if (piece.back() == '\n') {
            line = piece.substr(0, piece.size() - 1);
            return Status::Line;
        }
        line = piece;
        if (piece.size() == kBufferChars && skipRest) {
            std::string_view rest;
            do {
                if (!nextPiece(rest))
                    return Status::EndInLongLine;
            } while (rest.back() != '\n');
        }
        return Status::Line;
    }

private:
    // Up to 255 bytes, ending early after a line feed; false at the end.
    bool nextPiece(std::string_view& piece)
    {
        if (m_pos >= m_text.size())
            return false;
        const std::string_view window = m_text.substr(m_pos, kBufferChars);
        const std::size_t feed = window.find('\n');
        piece = feed == std::string_view::npos ? window : window.substr(0, feed + 1);
        m_pos += piece.size();
        return true;
    }

    std::string_view m_text;
    std::size_t m_pos = 0;
};

bool startsWith(std::string_view line, std::string_view keyword)
{
    return startsWithNoCase(line, keyword);
}

std::string valueAfter(std::string_view line, std::string_view key)
{
    return std::string(line.substr(key.size()));
}

// The name starts at the 16th character of the group line and loses the line's
// last character, which is the closing quote in a well-formed file.
std::string groupName(std::string_view line)
{
    if (line.size() <= ptp::kGroupNameOffset)
        return {};
    std::string_view name = line.substr(ptp::kGroupNameOffset);
    name.remove_suffix(1);
    return std::string(name);
}

std::int32_t decimalInt32(std::string_view text)
{
    const std::int64_t value = leadingDecimal(text);
    constexpr std::int64_t low = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t high = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(value < low ? low : value > high ? high : value);
}

// A hexadecimal value with no digits leaves the flags as they were.
void readFlags(ProjectItem& item, std::string_view value)
{
    if (const auto flags = leadingHex(value))
        item.setFlags(*flags);
}

class ProjectFileReader {
public:
    ProjectFileReader(ProjectDocument& project, std::string_view text, const std::filesystem::path& projectFile,
                      UserPort& port)
        : m_project(project)
        , m_lines(text)
        , m_port(port)
        , m_folder(projectFile.parent_path())
    {
        if (m_folder.empty())
            m_folder = ".";
    }

    bool read()
    {
        if (!findLine(ptp::kBeginProject, ptp::kEndProject))
            return false;
        if (!findLine(ptp::kBeginFiles, ptp::kEndFiles))
            return false;
        return readFiles();
    }

private:
    enum class Block { Continue, EndOfText, TooDeep };

    // Skips lines up to one that begins with `wanted`; false when `stop` or
    // the end of the text comes first.
    bool findLine(std::string_view wanted, std::string_view stop)
    {
        std::string_view line;
        while (m_lines.next(line, true) == LineSource::Status::Line) {
            if (startsWith(line, wanted))
                return true;
            if (startsWith(line, stop))
                return false;
        }
        return false;
    }

    // Inside the Files section every end of the text, even one inside an
    // over-long line, ends the read with what was read so far.
    bool nextLine(std::string_view& line) { return m_lines.next(line, true) == LineSource::Status::Line; }

    bool readFiles()
    {
        std::string_view line;
        while (nextLine(line)) {
            if (startsWith(line, ptp::kEndFiles))
                break;
            Block block = Block::Continue;
            if (startsWith(line, ptp::kEndGroup))
                popGroup();
            else if (startsWith(line, ptp::kBeginGroup))
                block = readGroupHead(line);
            else if (startsWith(line, ptp::kBeginSourceFile))
                block = readSourceBlock();
            if (block == Block::TooDeep)
                return false;
            if (block == Block::EndOfText)
                break;
        }
        return true;
    }

    ProjectItem* currentParent() const { return m_groups.empty() ? nullptr : m_groups.back(); }

    void popGroup()
    {
        if (!m_groups.empty())
            m_groups.pop_back();
    }

    void addToTree(ProjectItem* item)
    {
        if (ProjectItem* parent = currentParent())
            parent->appendChild(item);
        m_project.files().push_back(item);
    }

    // The group line and exactly the two lines after it, whatever they hold.
    Block readGroupHead(std::string_view line)
    {
        if (m_groups.size() >= kMaxGroupDepth)
            return Block::TooDeep;
        const std::uint32_t flags =
            currentParent() ? ProjectItem::kGroup : ProjectItem::kGroup | ProjectItem::kTopLevel;
        ProjectItem* group = m_project.createItem(groupName(line), flags);
        addToTree(group);
        m_groups.push_back(group);

        if (!nextLine(line))
            return Block::EndOfText;
        if (startsWith(line, ptp::kId))
            group->setId(valueAfter(line, ptp::kId));
        if (!nextLine(line))
            return Block::EndOfText;
        if (startsWith(line, ptp::kParam))
            readFlags(*group, line.substr(ptp::kParam.size()));
        return Block::Continue;
    }

    Block readSourceBlock()
    {
        ProjectItem* item = nullptr; // the item made last in this block
        std::unique_ptr<ProjectItem> dropped; // a missing source the user chose to drop
        std::string_view line;
        while (nextLine(line)) {
            if (startsWith(line, ptp::kEndFiles) || startsWith(line, ptp::kEndSourceFile))
                return Block::Continue;
            if (startsWith(line, ptp::kEndGroup)) {
                popGroup();
                return Block::Continue;
            }
            if (startsWith(line, ptp::kSource)) {
                item = makeSource(line.substr(ptp::kSource.size()), dropped);
            } else if (!item) {
                continue; // PARAM=, ID= and EditInfo before any item mean nothing
            } else if (startsWith(line, ptp::kParam)) {
                readFlags(*item, line.substr(ptp::kParam.size()));
            } else if (startsWith(line, ptp::kId)) {
                item->setId(valueAfter(line, ptp::kId));
            } else if (startsWith(line, ptp::kBeginEditInfo)) {
                if (!readEditInfo(*item))
                    return Block::EndOfText;
            }
        }
        return Block::EndOfText;
    }

    ProjectItem* makeSource(std::string_view written, std::unique_ptr<ProjectItem>& dropped)
    {
        std::string_view name = written;
        if (name.starts_with(".\\"))
            name.remove_prefix(2);
        // Without the PARAM= line that normally follows, the flags say what the
        // item is and where it stands.
        const std::uint32_t flags =
            currentParent() ? ProjectItem::kSource : ProjectItem::kSource | ProjectItem::kTopLevel;
        auto source = std::make_unique<ProjectItem>(std::string(name), flags);

        if (!sourceExists(name) && askDrop(written)) {
            m_project.setModified(true);
            dropped = std::move(source);
            return dropped.get();
        }
        ProjectItem* kept = m_project.adoptItem(std::move(source));
        addToTree(kept);
        return kept;
    }

    // The folder of the project file, "\" and the name: joined as text, so a
    // name that looks absolute still lies inside the project folder.
    bool sourceExists(std::string_view name) const
    {
        if (name.find('\0') != std::string_view::npos)
            return false;
        std::filesystem::path full = m_folder;
        full += std::filesystem::path::preferred_separator;
        full += nativeFromModel(name);
        std::error_code ec;
        const auto status = std::filesystem::status(full, ec);
        return !ec && std::filesystem::exists(status) && !std::filesystem::is_directory(status);
    }

    bool askDrop(std::string_view written)
    {
        std::string text(msg::kLoseFileLine1);
        text.append("\n").append(written);
        text.append("\n").append(msg::kLoseFileLine3);
        text.append("\n").append(msg::kLoseFileQuestion);
        return m_port.ask(text, Buttons::OkCancel, msg::kLoseFileCaption) == Answer::Ok;
    }

    // An EditInfo block reads its lines whole-buffer by whole-buffer: the rest
    // of an over-long line is the next line here. False when the text ends
    // before "# End EditInfo"; the record read so far is kept.
    bool readEditInfo(ProjectItem& item)
    {
        EditInfoRecord record;
        record.fileName = item.id();
        std::string_view line;
        bool ended = false;
        while (m_lines.next(line, false) == LineSource::Status::Line) {
            if (startsWith(line, ptp::kEndEditInfo)) {
                ended = true;
                break;
            }
            storeField(record, line);
        }
        item.records().push_back(std::move(record));
        return ended;
    }

    static void storeField(EditInfoRecord& record, std::string_view line)
    {
        struct Field {
            std::string_view key;
            std::string EditInfoRecord::*member;
        };
        static constexpr Field textFields[] = {
            {ptp::kAlgoName, &EditInfoRecord::algoName},         {ptp::kBodyName, &EditInfoRecord::bodyName},
            {ptp::kEncodeName, &EditInfoRecord::encodeName},     {ptp::kEncodeSize, &EditInfoRecord::encodeSize},
            {ptp::kRenameEncode, &EditInfoRecord::renameEncode}, {ptp::kDecodeName, &EditInfoRecord::decodeName},
            {ptp::kDecodeSize, &EditInfoRecord::decodeSize},     {ptp::kEncodeBitRate, &EditInfoRecord::bitRate},
        };
        for (const Field& field : textFields) {
            if (startsWith(line, field.key)) {
                record.*field.member = valueAfter(line, field.key);
                return;
            }
        }
        if (startsWith(line, ptp::kMultiSelect))
            record.multiSelect = decimalInt32(line.substr(ptp::kMultiSelect.size()));
    }

    ProjectDocument& m_project;
    LineSource m_lines;
    UserPort& m_port;
    std::filesystem::path m_folder;
    std::vector<ProjectItem*> m_groups; // open groups; the last is the current parent
};

} // namespace

bool readProjectFile(ProjectDocument& project, std::string_view text, const std::filesystem::path& projectFile,
                     UserPort& port)
{
    return ProjectFileReader(project, text, projectFile, port).read();
}

} // namespace kestrelon
