#include "common/file_io.h"

#include "common/fault_points.h"

#include <atomic>
#include <cerrno>
#include <fstream>
#include <system_error>

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace kestrelon {

ReadResult readFile(const std::filesystem::path& path, std::uintmax_t maxBytes)
{
    const auto failed = [](ReadStatus status, int error) {
        return ReadResult{status, {}, std::generic_category().message(error)};
    };
    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec || !std::filesystem::exists(status))
        return failed(ReadStatus::Missing, ec && ec.value() != ENOENT ? ec.value() : ENOENT);
    if (std::filesystem::is_directory(status))
        return failed(ReadStatus::Unreadable, EISDIR);
    const auto size = std::filesystem::file_size(path, ec);
    if (ec)
        return failed(ReadStatus::Unreadable, ec.value());
    if (size > maxBytes)
        return failed(ReadStatus::Unreadable, EFBIG);

    errno = 0;
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return failed(ReadStatus::Unreadable, errno != 0 ? errno : EACCES);
    std::string bytes(static_cast<size_t>(size), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (in.bad() || static_cast<uintmax_t>(in.gcount()) != size)
        return failed(ReadStatus::Unreadable, errno != 0 ? errno : EIO);
    return {ReadStatus::Ok, std::move(bytes), {}};
}

namespace {

#ifndef _WIN32
// Writes all of `bytes` to `fd` and flushes them to the disk; false with errno set.
bool writeAllSynced(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t wrote = ::write(fd, bytes.data(), bytes.size());
        if (wrote < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        bytes.remove_prefix(std::size_t(wrote));
    }
    return ::fsync(fd) == 0;
}

#endif

} // namespace

bool syncToDisk(const std::filesystem::path& path)
{
#ifdef _WIN32
    return true; // not flushed: FlushFileBuffers needs a handle opened for writing, which a name does not give
#else
    const int fd = ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
#endif
}

bool writeFileAtomically(const std::filesystem::path& path, std::string_view bytes, std::string* why)
{
    static std::atomic<unsigned> counter{0};
    std::filesystem::path temp = path;
    temp += ".kestrelon-" + std::to_string(counter++) + ".part";
    const auto fail = [&](int error) {
        if (why)
            *why = std::generic_category().message(error);
        std::error_code ignored;
        std::filesystem::remove(temp, ignored);
        return false;
    };

    // A disk found full part-way leaves half a file behind, as a real one does.
    const bool full = injectedFault(FaultPoint::Write, path);
#ifdef _WIN32
    {
        std::ofstream out(temp, std::ios::binary | std::ios::trunc);
        if (!out)
            return fail(EACCES);
        out.write(bytes.data(), static_cast<std::streamsize>(full ? bytes.size() / 2 : bytes.size()));
        out.flush();
        if (!out || full)
            return fail(ENOSPC);
    }
#else
    const int fd = ::open(temp.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return fail(errno);
    const bool written = writeAllSynced(fd, full ? bytes.substr(0, bytes.size() / 2) : bytes);
    const int error = written ? 0 : errno;
    ::close(fd);
    if (!written || full)
        return fail(full ? ENOSPC : error);
#endif
    injectedFault(FaultPoint::Rename, path);
    std::error_code ec;
    std::filesystem::rename(temp, path, ec);
    if (ec)
        return fail(ec.value());
    // A rename is on the disk once the folder that holds the name is.
    syncToDisk(path.parent_path());
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
