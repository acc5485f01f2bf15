#include "bodies/body_settings_files.h"

#include "common/file_io.h"
#include "common/paths.h"
#include "common/platform.h"

#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

BodySettingsFiles BodySettingsFiles::forProgram(const fs::path& programFolder, const fs::path& configFolder)
{
    BodySettingsFiles files;
    files.shipped = programFolder / pathFromUtf8(kBodySettingsFileName);
    if (!configFolder.empty())
        files.userCopy = programConfigFolder(configFolder) / pathFromUtf8(kBodySettingsFileName);
    return files;
}

fs::path BodySettingsFiles::inUse() const
{
    return !userCopy.empty() && isRegularFile(userCopy) ? userCopy : shipped;
}

VolumesSaved saveCurrentVolumes(const BodySettings& bodies, const BodySettingsFiles& files)
{
    const fs::path target = files.inUse();
    if (bodies.saveCurrentVolumes(target))
        return {true, target, {}};
    if (target != files.shipped || files.userCopy.empty())
        return {false, target, utf8FromPath(target) + " could not be written"};

    const ReadResult shipped = readFile(files.shipped);
    if (shipped.status != ReadStatus::Ok)
        return {false, files.shipped, utf8FromPath(files.shipped) + " could not be read"};
    std::error_code ec;
    fs::create_directories(files.userCopy.parent_path(), ec);
    if (ec)
        return {false, files.userCopy, utf8FromPath(files.userCopy.parent_path()) + ": " + ec.message()};
    if (!writeFileAtomically(files.userCopy, shipped.bytes) || !bodies.saveCurrentVolumes(files.userCopy)) {
        removeQuietly(files.userCopy); // a copy without the volumes must not win over the shipped file
        return {false, files.userCopy, utf8FromPath(files.userCopy) + " could not be written"};
    }
    return {true, files.userCopy, {}};
}

} // namespace kestrelon
