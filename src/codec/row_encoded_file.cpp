#include "codec/row_encoded_file.h"

#include "codec/interim_packer.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"

namespace kestrelon {

namespace fs = std::filesystem;

fs::path findInterimFile(const ProjectSession& session, const std::string& interimName)
{
    for (const fs::path& folder : {session.tempFolder(), session.projectFolder()}) {
        const fs::path candidate = folder / pathFromUtf8(interimName);
        if (isRegularFile(candidate))
            return candidate;
    }
    return {};
}

RowEncodedRead readRowEncodedFile(const ProjectSession& session, const EditInfoRecord& record)
{
    const std::string& name = record.encodeName;
    if (name.empty())
        return {EncodedFileProblem::NotEncoded, std::nullopt};
    // A project file may name anything; only a plain name in the project's
    // own folders is looked for.
    const fs::path interim = isPlainFileName(name) ? findInterimFile(session, name) : fs::path();
    if (interim.empty())
        return {EncodedFileProblem::Missing, std::nullopt};
    const ReadResult packed = readFile(interim, kMaxEncodedFileBytes);
    const std::optional<std::string> unpacked =
        packed.status == ReadStatus::Ok ? unpackInterim(packed.bytes) : std::nullopt;
    if (!unpacked)
        return {EncodedFileProblem::Damaged, std::nullopt};
    const std::optional<EncodedHeaderFields> header = parseEncodedHeader(*unpacked);
    if (!header)
        return {EncodedFileProblem::NoHeader, std::nullopt};
    return {EncodedFileProblem::None,
            RowEncodedFile{interim, packed.bytes.size(), EncodedFileInfo{*header, unpacked->size()},
                           unpacked->substr(kEncodedHeaderSize)}};
}

std::string encodedFileProblemText(EncodedFileProblem problem, const EditInfoRecord& record)
{
    const std::string& name = record.encodeName;
    switch (problem) {
    case EncodedFileProblem::None: break;
    case EncodedFileProblem::NotEncoded: return std::string(msg::kRowNotEncoded);
    case EncodedFileProblem::Missing: return name + std::string(msg::kInterimMissing);
    case EncodedFileProblem::Damaged: return name + std::string(msg::kInterimCanNotUnpack);
    case EncodedFileProblem::NoHeader: return "\"" + name + "\"" + std::string(msg::kNotACorrectEncodedFile);
    }
    return {};
}

std::optional<RowEncodedFile> inspectRowEncodedFile(const ProjectSession& session, const EditInfoRecord& record,
                                                    UserPort& port)
{
    RowEncodedRead read = readRowEncodedFile(session, record);
    if (read.problem != EncodedFileProblem::None)
        port.showMessage(encodedFileProblemText(read.problem, record));
    return std::move(read.file);
}

} // namespace kestrelon
