#pragma once
// One writer per project: a lock on the project folder, held from open to
// close by whichever program has the project open (the workbench or a
// kestrelon-cli command). The lock lives in a hidden file in the folder; the
// operating system lets go of it when its holder ends, however it ends, so a
// lock left by a killed process is simply taken over.
//
// The file names its holder (program, process, host) for the message the
// next opener sees.
#include <filesystem>
#include <string>

namespace kestrelon {

struct LockHolder {
    std::string program;
    long process = 0;
    std::string host;
};

class FolderLock {
public:
    // The lock file's name in a locked folder.
    static constexpr const char* kFileName = ".kestrelon.lock";

    enum class Outcome { Taken, HeldByOther, Failed };

    FolderLock() = default;
    ~FolderLock() { release(); }
    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&& other) noexcept;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

    // Takes the lock on `folder`. HeldByOther: holder() says who has it;
    // Failed: error() says why the lock file could not be made (a read-only
    // folder, no permission).
    Outcome take(const std::filesystem::path& folder);
    void release();
    bool held() const { return m_fd >= 0; }
    const std::filesystem::path& folder() const { return m_folder; }

    const LockHolder& holder() const { return m_holder; }
    const std::string& error() const { return m_error; }

private:
    int m_fd = -1;
    std::filesystem::path m_folder;
    LockHolder m_holder;
    std::string m_error;
};

// "kestrelon-cli (process 1234 on ws1)".
std::string describeHolder(const LockHolder& holder);

} // namespace kestrelon
