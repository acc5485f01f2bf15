#pragma once
// The quality of a row's decode, measured against its source and kept with
// the row's results in a companion file beside the project file,
// "<project>.quality": one line per decoded wave, keyed by the decoded file's
// name and size, so a decode made again (a new name) is measured again and a
// stale line is never taken for it. The project file itself is not touched.
#include "wave/quality.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace kestrelon {

class ProjectSession;
class UserPort;
struct EditInfoRecord;

inline constexpr std::string_view kQualityFileExtension = ".quality";

// Where the measures of the project at `projectFile` are kept.
std::filesystem::path qualityFileOf(const std::filesystem::path& projectFile);

class QualityFile {
public:
    // Reads the companion of `projectFile`; a missing file is an empty one,
    // lines that do not read are passed over.
    void load(const std::filesystem::path& projectFile);
    // Writes it whole, then renames it into place.
    bool save() const;

    std::optional<QualityMeasures> find(const EditInfoRecord& record) const;
    void put(const EditInfoRecord& record, const QualityMeasures& measures);
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
    std::map<std::string, QualityMeasures> m_lines; // "decodeName\tdecodeSize"
};

// Measures the row's decode against its source wave: the decoded wave (Temp
// first, else beside the project file) is unpacked into a scratch file in
// Temp that goes afterwards. Nullopt, with the reason through `port`, when the
// row has no decode or a file is missing or unreadable.
std::optional<QualityMeasures> measureRowQuality(const ProjectSession& session, const EditInfoRecord& record,
                                                 UserPort& port);

} // namespace kestrelon
