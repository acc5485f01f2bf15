#pragma once
// Which body settings file the program reads and writes its volumes back to.
// The file ships beside the program, where an installed program may not
// write; the user's volumes then live in a copy in the user's configuration
// folder, which is read in preference from then on. The shipped file is never
// changed by a run that cannot write it, and nothing is lost when it cannot.
#include "bodies/body_settings.h"

#include <filesystem>
#include <string>

namespace kestrelon {

struct BodySettingsFiles {
    std::filesystem::path shipped; // <program folder>/KestrelonBodySetting.dat
    std::filesystem::path userCopy; // <config>/Corvane/KestrelonBodySetting.dat; empty without a config folder

    static BodySettingsFiles forProgram(const std::filesystem::path& programFolder,
                                        const std::filesystem::path& configFolder);
    // The user's copy when there is one, else the shipped file.
    std::filesystem::path inUse() const;
};

struct VolumesSaved {
    bool ok = false;
    std::filesystem::path file; // where the volumes are now kept
    std::string error; // why they could not be kept, when !ok
};

// Writes the current volumes back into the file in use (a file with no change
// is left alone). When that is the shipped file and it cannot be written, the
// shipped file is copied whole into the user's copy, which takes the volumes.
VolumesSaved saveCurrentVolumes(const BodySettings& bodies, const BodySettingsFiles& files);

} // namespace kestrelon
