#include "codec/temp_names.h"

#include "common/paths.h"

#include <atomic>
#include <cstdio>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

std::atomic<std::uint32_t> g_counter{0};

std::uint32_t nextCounter()
{
    // 1..0xFFFF, as the service's 16-bit counter never yields 0.
    return g_counter.fetch_add(1) % kMaxUniqueTempNames + 1;
}

// Creates `path` as a new empty file; false when anything stands there
// already or it cannot be made. The exclusive mode makes the check and the
// creation one step.
bool createExclusive(const fs::path& path)
{
#ifdef _WIN32
    std::FILE* file = _wfopen(path.c_str(), L"wbx");
#else
    std::FILE* file = std::fopen(path.c_str(), "wbx");
#endif
    if (file == nullptr)
        return false;
    return std::fclose(file) == 0;
}

} // namespace

std::string uniqueTempName(std::uint32_t counter, std::string_view prefix, std::string_view extension)
{
    char hex[16];
    std::snprintf(hex, sizeof hex, "%X", static_cast<unsigned>(counter));
    return std::string(prefix) + hex + std::string(extension);
}

std::optional<fs::path> createUniqueTempFile(const fs::path& folder, const StemTaken& taken, std::string_view prefix,
                                             std::string_view extension)
{
    std::error_code ec;
    if (!fs::is_directory(folder, ec))
        return std::nullopt;
    for (std::uint32_t tries = 0; tries < kMaxUniqueTempNames; ++tries) {
        const std::string name = uniqueTempName(nextCounter(), prefix, extension);
        const std::string_view stem = std::string_view(name).substr(0, name.size() - extension.size());
        if (taken && taken(stem))
            continue;
        const fs::path path = folder / pathFromUtf8(name);
        if (fs::exists(fs::symlink_status(path, ec)))
            continue;
        if (createExclusive(path))
            return path;
    }
    return std::nullopt;
}

bool isPlainFileName(std::string_view name)
{
    if (name.empty() || name == "." || name == "..")
        return false;
    for (const char c : name)
        if (c == '\\' || c == '/' || c == ':' || c == '\0')
            return false;
    return true;
}

} // namespace kestrelon
