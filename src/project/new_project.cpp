#include "project/new_project.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

bool isSeparator(char c)
{
#ifdef _WIN32
    return c == '\\' || c == '/';
#else
    return c == '/';
#endif
}

bool isBlank(char c)
{
    return c == ' ' || c == '\t';
}

// Anything at the path, a dangling link included, counts as existing: a name
// that is taken is taken.
} // namespace

bool locationHasRoot(std::string_view location)
{
    const fs::path path = pathFromUtf8(location);
#ifdef _WIN32
    return path.has_root_name();
#else
    return path.is_absolute();
#endif
}

std::optional<fs::path> newProjectFilePath(std::string_view name, std::string_view location)
{
    if (!locationHasRoot(location))
        return std::nullopt;
    std::string folder(location);
    while (!folder.empty() && isSeparator(folder.back()))
        folder.pop_back();
    std::string fileName(name);
    if (toUpperAscii(fileName).find(toUpperAscii(kProjectExtension)) == std::string::npos)
        fileName += kProjectExtension;
    // Joined as text: "/" stripped to "" must give "/NAME", not "NAME".
    const std::string separator(1, static_cast<char>(fs::path::preferred_separator));
    return pathFromUtf8(folder + separator + std::string(name) + separator + fileName);
}

NewProjectCheck checkNewProject(std::string name, std::string location, UserPort& port)
{
    NewProjectCheck result;
    if (name.empty()) {
        port.showMessage(msg::kFileNameIsNull);
        return result;
    }
    if (isBlank(name.front()) || isBlank(name.back()) ||
        name.find_first_of(kInvalidNameCharacters) != std::string::npos) {
        port.showMessage(msg::kInvalidCharacters);
        result.clearName = true;
        return result;
    }
    const std::optional<fs::path> file = newProjectFilePath(name, location);
    if (!file) {
        port.showMessage(msg::kWrongPath);
        return result;
    }
    const std::string shown = utf8FromPath(*file);
    if (entryExists(*file)) {
        port.showMessage(std::string(msg::kCanNotCreatePrefix) + shown + std::string(msg::kBecauseFileExisted));
        return result;
    }
    if (entryExists(file->parent_path())) {
        port.showMessage(std::string(msg::kCanNotCreatePrefix) + shown + std::string(msg::kBecauseFolderExisted));
        return result;
    }
    std::error_code ec;
    if (!fs::is_directory(file->parent_path().parent_path(), ec)) {
        port.showMessage(msg::kPathNotExisted);
        return result;
    }
    result.ok = true;
    result.projectFile = *file;
    return result;
}

fs::path withProjectExtension(const fs::path& path)
{
    if (equalsNoCase(utf8FromPath(path.extension()), kProjectExtension))
        return path;
    fs::path out = path;
    out += kProjectExtension;
    return out;
}

} // namespace kestrelon
