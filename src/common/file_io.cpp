#include "common/file_io.h"

#include <atomic>
#include <fstream>
#include <system_error>

namespace kestrelon {

ReadResult readFile(const std::filesystem::path& path, std::uintmax_t maxBytes)
{
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec || !std::filesystem::exists(status))
        return {ReadStatus::Missing, {}};
    if (std::filesystem::is_directory(status))
        return {ReadStatus::Unreadable, {}};
    const auto size = std::filesystem::file_size(path, ec);
    if (ec || size > maxBytes)
        return {ReadStatus::Unreadable, {}};

    std::ifstream in(path, std::ios::binary);
    if (!in)
        return {ReadStatus::Unreadable, {}};
    std::string bytes(static_cast<size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (in.bad() || static_cast<uintmax_t>(in.gcount()) != size)
        return {ReadStatus::Unreadable, {}};
    return {ReadStatus::Ok, std::move(bytes)};
}

bool writeFileAtomically(const std::filesystem::path& path, std::string_view bytes)
{
    static std::atomic<unsigned> counter{0};
    std::filesystem::path temp = path;
    temp += ".kestrelon-" + std::to_string(counter++) + ".part";

    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            return false;
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.flush();
        if (!out) {
            out.close();
            std::error_code ignored;
            std::filesystem::remove(temp, ignored);
            return false;
        }
    }
    std::error_code ec;
    std::filesystem::rename(temp, path, ec);
    if (ec) {
        std::error_code ignored;
        std::filesystem::remove(temp, ignored);
        return false;
    }
    return true;
}

bool isRegularFile(const std::filesystem::path& path)
{
    std::error_code ec;
    return std::filesystem::is_regular_file(path, ec);
}

bool entryExists(const std::filesystem::path& path)
{
    std::error_code ec;
    return std::filesystem::exists(std::filesystem::symlink_status(path, ec));
}

void removeQuietly(const std::filesystem::path& path)
{
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

std::string textModeFromBytes(std::string_view bytes)
{
    std::string out;
    out.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
            continue;
        out.push_back(bytes[i]);
    }
    return out;
}

} // namespace kestrelon
