#pragma once
// A file that goes when its scope ends, unless it was kept: the owner of
// every temporary file a step makes, so no exit of the step can forget it.
#include "common/file_io.h"

#include <filesystem>
#include <utility>

namespace kestrelon {

class ScratchFile {
public:
    ScratchFile() = default;
    explicit ScratchFile(std::filesystem::path path)
        : m_path(std::move(path))
    {}
    ~ScratchFile()
    {
        if (!m_path.empty())
            removeQuietly(m_path);
    }
    ScratchFile(ScratchFile&& other) noexcept
        : m_path(std::exchange(other.m_path, {}))
    {}
    ScratchFile& operator=(ScratchFile&& other) noexcept
    {
        if (this != &other) {
            if (!m_path.empty())
                removeQuietly(m_path);
            m_path = std::exchange(other.m_path, {});
        }
        return *this;
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    // The file stays: it has become part of the project's work.
    void keep() { m_path.clear(); }

private:
    std::filesystem::path m_path;
};

} // namespace kestrelon
