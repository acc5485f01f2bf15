#pragma once
// Plain file helpers for tests: write a fixture, read a result back.
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace kestrelon::test {

inline void writeBytes(const std::filesystem::path& path, const std::string& bytes)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
}

inline std::string readBytes(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream buffer;
    buffer << in.rdbuf();
    return buffer.str();
}

} // namespace kestrelon::test
