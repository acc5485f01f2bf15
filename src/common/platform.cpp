#include "common/platform.h"

#if defined(_WIN32)
#include <windows.h>
#elif defined(__APPLE__)
#include <mach-o/dyld.h>
#include <vector>
#endif

#include <cstdlib>

namespace kestrelon {

namespace {

std::filesystem::path environmentPath(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? std::filesystem::path(value) : std::filesystem::path();
}

} // namespace

std::filesystem::path executableFolder()
{
#if defined(_WIN32)
    wchar_t buffer[32768];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, DWORD(std::size(buffer)));
    return std::filesystem::path(std::wstring(buffer, length)).parent_path();
#elif defined(__APPLE__)
    uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::vector<char> buffer(size + 1, '\0');
    _NSGetExecutablePath(buffer.data(), &size);
    return std::filesystem::weakly_canonical(buffer.data()).parent_path();
#else
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::current_path() : exe.parent_path();
#endif
}

std::filesystem::path userConfigFolder()
{
#if defined(_WIN32)
    return environmentPath("APPDATA");
#elif defined(__APPLE__)
    const auto home = environmentPath("HOME");
    return home.empty() ? home : home / "Library" / "Preferences";
#else
    if (auto config = environmentPath("XDG_CONFIG_HOME"); config.is_absolute())
        return config;
    const auto home = environmentPath("HOME");
    return home.empty() ? home : home / ".config";
#endif
}

} // namespace kestrelon
