#pragma once
// Everything below a folder, as a comparable value: each entry's relative
// path with its kind and, for a file, its bytes, for a link its target. Two
// equal snapshots mean the folder was left byte for byte as it was.
#include <filesystem>
#include <map>
#include <string>

#include "support/files.h"

namespace kestrelon::test {

using FolderSnapshot = std::map<std::string, std::string>;

inline FolderSnapshot snapshot(const std::filesystem::path& folder)
{
    namespace fs = std::filesystem;
    FolderSnapshot out;
    for (fs::recursive_directory_iterator it(folder), end; it != end; ++it) {
        const std::string key = it->path().lexically_relative(folder).generic_string();
        const fs::file_status status = fs::symlink_status(it->path());
        if (fs::is_symlink(status))
            out[key] = "link:" + fs::read_symlink(it->path()).string();
        else if (fs::is_directory(status))
            out[key] = "dir";
        else
            out[key] = "file:" + readBytes(it->path());
    }
    return out;
}

} // namespace kestrelon::test
