#include "codec/row_quality.h"

#include "codec/interim_packer.h"
#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"
#include "wave/wave_file.h"

#include <cstdio>
#include <sstream>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kFirstLine = "# decode\tsize\tsegmental SNR (dB)\tmel distance (dB)\tduration ratio\tlag";

std::string keyOf(const EditInfoRecord& record)
{
    return record.decodeName + "\t" + record.decodeSize;
}

} // namespace

fs::path qualityFileOf(const fs::path& projectFile)
{
    fs::path path = projectFile;
    return path.replace_extension(pathFromUtf8(kQualityFileExtension));
}

void QualityFile::load(const fs::path& projectFile)
{
    m_path = qualityFileOf(projectFile);
    m_lines.clear();
    const ReadResult read = readFile(m_path);
    std::istringstream lines(textModeFromBytes(read.bytes));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string name, size;
        QualityMeasures m;
        if (line.empty() || line[0] == '#' || !std::getline(fields, name, '\t') || !std::getline(fields, size, '\t') ||
            !(fields >> m.segmentalSnrDb >> m.melDistanceDb >> m.durationRatio >> m.lagSamples))
            continue;
        m_lines[name + "\t" + size] = m;
    }
}

bool QualityFile::save() const
{
    std::string text = std::string(kFirstLine) + std::string(kNativeEol);
    for (const auto& [key, m] : m_lines) {
        char numbers[128];
        std::snprintf(numbers, sizeof numbers, "\t%.2f\t%.2f\t%.4f\t%d", m.segmentalSnrDb, m.melDistanceDb,
                      m.durationRatio, m.lagSamples);
        text += key + numbers + std::string(kNativeEol);
    }
    return writeFileAtomically(m_path, text);
}

std::optional<QualityMeasures> QualityFile::find(const EditInfoRecord& record) const
{
    const auto found = m_lines.find(keyOf(record));
    return found == m_lines.end() ? std::nullopt : std::optional(found->second);
}

void QualityFile::put(const EditInfoRecord& record, const QualityMeasures& measures)
{
    m_lines[keyOf(record)] = measures;
}

std::optional<QualityMeasures> measureRowQuality(const ProjectSession& session, const EditInfoRecord& record,
                                                 UserPort& port)
{
    if (record.decodeName.empty()) {
        port.showMessage(msg::kNothingDecodedToPlay);
        return std::nullopt;
    }
    WaveFile source;
    if (!isPlainFileName(record.fileName) || !source.load(session.filesFolder() / pathFromUtf8(record.fileName))) {
        port.showMessage(record.fileName + std::string(msg::kDoNotExistInProjectFolder));
        return std::nullopt;
    }
    const fs::path packed =
        isPlainFileName(record.decodeName) ? findInterimFile(session, record.decodeName) : fs::path();
    if (packed.empty()) {
        port.showMessage(msg::kDecodedTempNotFound);
        return std::nullopt;
    }
    // Not ".wav": Close carries Temp's waves into Files.
    const fs::path scratch = session.tempFolder() / pathFromUtf8(fileStem(record.decodeName) + ".measured");
    WaveFile decoded;
    const bool read = DecryptUnzip(packed, scratch) && decoded.load(scratch);
    removeQuietly(scratch);
    if (!read) {
        port.showMessage(record.decodeName + std::string(msg::kInterimCanNotUnpack));
        return std::nullopt;
    }
    return measureQuality(source.samples(), source.sampleRate(), decoded.samples(), decoded.sampleRate());
}

} // namespace kestrelon
