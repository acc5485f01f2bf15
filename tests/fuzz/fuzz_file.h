#pragma once
// Most readers take a path: each input is written to one scratch file of this
// process, under the name the reader expects, before the reader runs.
#include "common/recording_port.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace kestrelon::fuzz {

inline std::filesystem::path scratchFolder()
{
    static const std::filesystem::path folder = [] {
        const auto made = std::filesystem::temp_directory_path() / ("kestrelon-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(made);
        return made;
    }();
    return folder;
}

inline std::filesystem::path inputFile(const std::uint8_t* data, std::size_t size, const std::string& name)
{
    const std::filesystem::path path = scratchFolder() / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(data), std::streamsize(size));
    return path;
}

// Every question is answered No, as a script would.
inline RecordingPort& quietPort()
{
    static RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });
    port.clear();
    return port;
}

} // namespace kestrelon::fuzz
