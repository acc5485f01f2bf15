#include "common/dynamic_library.h"

#include "common/paths.h"

#include <utility>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace kestrelon {

namespace {

#if defined(_WIN32)
std::string lastErrorText()
{
    const DWORD code = GetLastError();
    wchar_t* buffer = nullptr;
    const DWORD length =
        FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                       nullptr, code, 0, reinterpret_cast<LPWSTR>(&buffer), 0, nullptr);
    std::string text;
    if (length != 0 && buffer != nullptr) {
        const int bytes = WideCharToMultiByte(CP_UTF8, 0, buffer, int(length), nullptr, 0, nullptr, nullptr);
        text.resize(std::size_t(bytes > 0 ? bytes : 0));
        if (bytes > 0)
            WideCharToMultiByte(CP_UTF8, 0, buffer, int(length), text.data(), bytes, nullptr, nullptr);
        LocalFree(buffer);
    }
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
        text.pop_back();
    if (text.empty())
        text = "error " + std::to_string(code);
    return text;
}
#else
std::string lastErrorText()
{
    const char* text = dlerror();
    return text != nullptr ? text : "unknown dynamic loader error";
}
#endif

} // namespace

DynamicLibrary::~DynamicLibrary()
{
    unload();
}

DynamicLibrary::DynamicLibrary(DynamicLibrary&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr))
    , m_path(std::move(other.m_path))
    , m_error(std::move(other.m_error))
{
    other.m_path.clear();
    other.m_error.clear();
}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept
{
    if (this != &other) {
        unload();
        m_handle = std::exchange(other.m_handle, nullptr);
        m_path = std::move(other.m_path);
        m_error = std::move(other.m_error);
        other.m_path.clear();
        other.m_error.clear();
    }
    return *this;
}

bool DynamicLibrary::load(const std::filesystem::path& path)
{
    unload();
    m_error.clear();
    std::error_code ec;
    std::filesystem::path absolute = std::filesystem::absolute(path, ec);
    if (ec)
        absolute = path;

#if defined(_WIN32)
    // No "missing DLL" dialog boxes: a failure is reported through errorText.
    // Dependencies beside the plug-in are searched in its own folder.
    DWORD previousMode = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previousMode);
    HMODULE handle = LoadLibraryExW(absolute.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    const std::string error = handle == nullptr ? lastErrorText() : std::string();
    SetThreadErrorMode(previousMode, nullptr);
    if (handle == nullptr) {
        m_error = utf8FromPath(absolute) + ": " + error;
        return false;
    }
    m_handle = handle;
#else
    dlerror();
    void* handle = dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        m_error = lastErrorText();
        return false;
    }
    m_handle = handle;
#endif
    m_path = path;
    return true;
}

void* DynamicLibrary::symbol(std::string_view name) const
{
    if (m_handle == nullptr)
        return nullptr;
    const std::string terminated(name);
#if defined(_WIN32)
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_handle), terminated.c_str()));
#else
    return dlsym(m_handle, terminated.c_str());
#endif
}

void DynamicLibrary::unload()
{
    if (m_handle == nullptr)
        return;
#if defined(_WIN32)
    FreeLibrary(static_cast<HMODULE>(m_handle));
#else
    dlclose(m_handle);
#endif
    m_handle = nullptr;
    m_path.clear();
}

std::string libraryFileName(std::string_view baseName)
{
    std::string name(baseName);
    name += librarySuffix();
    return name;
}

} // namespace kestrelon
