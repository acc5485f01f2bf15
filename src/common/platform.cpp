#include "common/platform.h"

#if defined(_WIN32)
#include <windows.h>
#elif defined(__APPLE__)
#include <mach-o/dyld.h>
#include <vector>
#endif

#include <cstdlib>
#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace kestrelon {

namespace {

std::filesystem::path environmentPath(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? std::filesystem::path(value) : std::filesystem::path();
}

// One argument for the system's command interpreter, taken literally.
std::string quoted(const std::string& word)
{
#if defined(_WIN32)
    std::string out = "\"";
    for (char c : word)
        out += c == '"' ? std::string("\"\"") : std::string(1, c);
    return out + "\"";
#else
    std::string out = "'";
    for (char c : word)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
#endif
}

// The running executable, or empty when the system will not say.
std::filesystem::path executablePath()
{
#if defined(_WIN32)
    wchar_t buffer[32768];
    const DWORD length = GetModuleFileNameW(nullptr, buffer, DWORD(std::size(buffer)));
    return std::filesystem::path(std::wstring(buffer, length));
#elif defined(__APPLE__)
    uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size);
    std::vector<char> buffer(size + 1, '\0');
    _NSGetExecutablePath(buffer.data(), &size);
    return std::filesystem::weakly_canonical(buffer.data());
#else
    std::error_code ec;
    const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
    return ec ? std::filesystem::path() : exe;
#endif
}

} // namespace

std::filesystem::path executableFolder()
{
    const std::filesystem::path exe = executablePath();
    return exe.empty() ? std::filesystem::current_path() : exe.parent_path();
}

std::string programName()
{
    const std::filesystem::path exe = executablePath();
    return exe.empty() ? std::string("kestrelon") : exe.filename().string();
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

std::filesystem::path programConfigFolder(const std::filesystem::path& configFolder)
{
    return configFolder / "Corvane";
}

int runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
               const std::filesystem::path& output, const std::filesystem::path& errors)
{
    std::string command = quoted(program.string());
    for (const std::string& argument : arguments)
        command += " " + quoted(argument);
    command += " >" + quoted(output.string()) + " 2>" + quoted(errors.string());
#if defined(_WIN32)
    return std::system(("\"" + command + "\"").c_str());
#else
    const int status = std::system(command.c_str());
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

} // namespace kestrelon
