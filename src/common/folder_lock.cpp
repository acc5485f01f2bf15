#include "common/folder_lock.h"

#include "common/platform.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <sstream>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrelon {

namespace {

LockHolder readHolder(int fd)
{
    char text[512] = {};
    const ssize_t got = pread(fd, text, sizeof text - 1, 0);
    LockHolder holder;
    if (got <= 0)
        return holder;
    std::istringstream in(std::string(text, std::size_t(got)));
    std::getline(in, holder.program);
    in >> holder.process;
    in.ignore();
    std::getline(in, holder.host);
    return holder;
}

std::string hostName()
{
    char name[256] = {};
    if (gethostname(name, sizeof name - 1) != 0)
        return "?";
    return name;
}

// Up to a second, in steps of 20 ms.
constexpr int kGoneHolderWaits = 50;

// The holder the lock file names has ended (on this machine).
bool holderIsGone(const LockHolder& holder)
{
    return holder.process > 0 && holder.host == hostName() && ::kill(pid_t(holder.process), 0) != 0 && errno == ESRCH;
}

} // namespace

FolderLock::FolderLock(FolderLock&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_folder(std::move(other.m_folder))
    , m_holder(std::move(other.m_holder))
    , m_error(std::move(other.m_error))
{}

FolderLock& FolderLock::operator=(FolderLock&& other) noexcept
{
    if (this != &other) {
        release();
        m_fd = std::exchange(other.m_fd, -1);
        m_folder = std::move(other.m_folder);
        m_holder = std::move(other.m_holder);
        m_error = std::move(other.m_error);
    }
    return *this;
}

FolderLock::Outcome FolderLock::take(const std::filesystem::path& folder)
{
    release();
    m_holder = {};
    m_error.clear();
    const std::filesystem::path file = folder / kFileName;
    // A holder that lets go removes the file; a file opened just before that
    // is then no longer the one at the path, and the attempt is made again.
    int waited = 0;
    for (int attempt = 0; attempt < 8; ++attempt) {
        const int fd = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (fd < 0) {
            m_error = std::strerror(errno);
            return Outcome::Failed;
        }
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int why = errno;
            if (why == EWOULDBLOCK)
                m_holder = readHolder(fd);
            else
                m_error = std::strerror(why);
            ::close(fd);
            // A holder killed a moment ago can still be letting go: a child it
            // was starting keeps the lock until that child's program begins.
            if (why == EWOULDBLOCK && holderIsGone(m_holder) && waited < kGoneHolderWaits) {
                ++waited;
                --attempt;
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
                continue;
            }
            return why == EWOULDBLOCK ? Outcome::HeldByOther : Outcome::Failed;
        }
        struct stat opened {};
        struct stat atPath {};
        if (::fstat(fd, &opened) != 0 || ::stat(file.c_str(), &atPath) != 0 || opened.st_ino != atPath.st_ino ||
            opened.st_dev != atPath.st_dev) {
            ::close(fd);
            continue;
        }
        const std::string me = programName() + "\n" + std::to_string(long(::getpid())) + "\n" + hostName() + "\n";
        if (::ftruncate(fd, 0) != 0 || ::pwrite(fd, me.data(), me.size(), 0) != ssize_t(me.size())) {
            // The lock holds without its note; the next opener just learns less.
        }
        m_fd = fd;
        m_folder = folder;
        return Outcome::Taken;
    }
    m_error = "the lock file keeps changing";
    return Outcome::Failed;
}

void FolderLock::release()
{
    if (m_fd < 0)
        return;
    // Removed while still locked, so nobody takes a file that is going.
    ::unlink((m_folder / kFileName).c_str());
    ::close(m_fd);
    m_fd = -1;
    m_folder.clear();
}

std::string describeHolder(const LockHolder& holder)
{
    return (holder.program.empty() ? std::string("another program") : holder.program) + " (process " +
           std::to_string(holder.process) + " on " + (holder.host.empty() ? std::string("?") : holder.host) + ")";
}

} // namespace kestrelon
