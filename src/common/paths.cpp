#include "common/paths.h"

#include <algorithm>

namespace kestrelon {

std::filesystem::path pathFromUtf8(std::string_view text)
{
    const std::u8string u8(reinterpret_cast<const char8_t*>(text.data()), text.size());
    return std::filesystem::path(u8);
}

std::string utf8FromPath(const std::filesystem::path& path)
{
    const std::u8string u8 = path.u8string();
    return std::string(reinterpret_cast<const char*>(u8.data()), u8.size());
}

std::filesystem::path nativeFromModel(std::string_view modelPath)
{
    std::string text(modelPath);
#ifndef _WIN32
    std::replace(text.begin(), text.end(), '\\', '/');
#endif
    return pathFromUtf8(text);
}

std::filesystem::path joinModel(const std::filesystem::path& folder, std::string_view modelPath)
{
    return folder / nativeFromModel(modelPath);
}

std::string fileStem(std::string_view fileName)
{
    const size_t dot = fileName.rfind('.');
    return std::string(dot == std::string_view::npos || dot == 0 ? fileName : fileName.substr(0, dot));
}

std::string_view librarySuffix()
{
#if defined(_WIN32)
    return ".dll";
#elif defined(__APPLE__)
    return ".dylib";
#else
    return ".so";
#endif
}

namespace {
char lowerAscii(char c)
{
    return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
}
} // namespace

bool equalsNoCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return lowerAscii(x) == lowerAscii(y); });
}

bool startsWithNoCase(std::string_view text, std::string_view prefix)
{
    return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

bool endsWithNoCase(std::string_view text, std::string_view suffix)
{
    return text.size() >= suffix.size() && equalsNoCase(text.substr(text.size() - suffix.size()), suffix);
}

std::string toUpperAscii(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z')
            c = char(c - 'a' + 'A');
    return out;
}

std::string toLowerAscii(std::string_view text)
{
    std::string out(text);
    for (char& c : out)
        c = lowerAscii(c);
    return out;
}

} // namespace kestrelon
