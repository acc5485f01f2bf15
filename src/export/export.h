#pragma once
// Export: the encoded rows of the main list as files for the firmware build.
// Each visited row's interim file is unpacked and its encoded data written
// under the row's export name into a folder the user chose, with or without
// the 48-byte encoded-file header; the row's speech events go beside it as a
// ".tab" file; last comes the index "All_Export_FileName.txt" of every visited
// row, grouped by source file. docs/export.md says what is written and why.
#include "codec/main_list.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class ProjectSession;
class UserPort;

inline constexpr std::string_view kExportIndexFileName = "All_Export_FileName.txt";
inline constexpr std::string_view kExportEventExtension = ".tab";
// The unpacked copy of an interim file lives only while its row is exported.
inline constexpr std::string_view kExportScratchExtension = ".dfn";

// The two commands differ only in the rows they visit and in two details: how
// much of a missing folder they make, and the wording of the replace question.
enum class ExportKind { Selected, All };

// The export dialog's two values.
struct ExportOptions {
    std::string folder; // "Path :" as typed (UTF-8)
    bool addHeader = false; // "Add Encode File Header"
};

// One encoded file the export wrote, with what a firmware build wants to know of it.
struct ExportedFile {
    std::filesystem::path path;
    std::string exportName;
    std::string bodyName;
    std::string algoName;
    std::string bitRate;
    std::uint32_t sampleRate = 0; // from the encoded header
    std::string bytes; // what was written: with or without the header
};

struct ExportOutcome {
    // False when the folder was refused, a row could not be exported (for a
    // reason other than the user declining to replace a file) or the index
    // could not be written.
    bool ok = false;
    std::vector<std::filesystem::path> exported; // encoded files written, in row order
    std::vector<ExportedFile> files; // the same, with their bytes and settings
    std::vector<std::filesystem::path> eventFiles; // ".tab" files written, in row order
    std::filesystem::path indexFile; // empty when it was not written
};

// Runs the export of the main list's rows, in list order, into
// `options.folder`. ExportKind::All visits every row; ExportKind::Selected
// only the selected ones. Records are only read. Every message and question
// goes through `port`.
ExportOutcome exportRows(const ProjectSession& session, const MainList& list, const ExportOptions& options,
                         ExportKind kind, UserPort& port);

// The name a row's encoded file is exported under: its rename-encode text, or
// its interim file's name when the row was never given one. Empty for a row
// that has neither.
std::string exportNameOf(const EditInfoRecord& record);

// The text of "All_Export_FileName.txt" for the visited rows: per source file
// name, in the order of first appearance, a heading "name:" and then the
// export name of each of its rows. A row never encoded is listed too, with an
// empty line when it has no export name.
std::string exportIndexText(const std::vector<ListRow>& visited);

} // namespace kestrelon
