#pragma once
// A fresh folder for one test, removed with everything in it afterwards.
#include <filesystem>
#include <random>
#include <string>

namespace kestrelon::test {

class TempDir {
public:
    TempDir()
    {
        std::random_device random;
        m_path = std::filesystem::temp_directory_path() /
                 ("kestrelon-test-" + std::to_string(random()) + std::to_string(random()));
        std::filesystem::create_directories(m_path);
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

} // namespace kestrelon::test
