#pragma once
// A shared library loaded at run time and its exports looked up by name: how
// the codec and player plug-ins are bound. This is the only place that calls
// the operating system's loader (dlopen / LoadLibraryW and friends).
#include <filesystem>
#include <string>
#include <string_view>

namespace kestrelon {

class DynamicLibrary {
public:
    DynamicLibrary() = default;
    ~DynamicLibrary();
    DynamicLibrary(DynamicLibrary&& other) noexcept;
    DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    // Loads the library file at `path`, first unloading any library this
    // object holds. The path names a file, never a name for the loader to
    // search for: a relative path is taken from the current folder. On failure
    // errorText() says why (the loader's own text).
    bool load(const std::filesystem::path& path);

    // The export `name`, or nullptr when it is missing or nothing is loaded.
    void* symbol(std::string_view name) const;

    // The export `name` as a function pointer of type Function, or nullptr.
    template <typename Function>
    Function function(std::string_view name) const
    {
        return reinterpret_cast<Function>(symbol(name));
    }

    // Unloads the library; pointers obtained from it are then invalid.
    void unload();

    bool isLoaded() const { return m_handle != nullptr; }
    const std::filesystem::path& path() const { return m_path; }
    const std::string& errorText() const { return m_error; }

private:
    void* m_handle = nullptr;
    std::filesystem::path m_path;
    std::string m_error;
};

// The file name of a plug-in library on this platform: baseName + librarySuffix().
std::string libraryFileName(std::string_view baseName);

} // namespace kestrelon
