#pragma once
// Paths inside project data are 8-bit text with "\" between parts, as the
// files written on Windows hold them. They become native paths only at the disk.
#include <filesystem>
#include <string>
#include <string_view>

namespace kestrelon {

// UTF-8 text <-> filesystem path, without the ANSI code page on Windows.
std::filesystem::path pathFromUtf8(std::string_view text);
std::string utf8FromPath(const std::filesystem::path& path);

// A model path ("Files\a.wav") as a native path.
std::filesystem::path nativeFromModel(std::string_view modelPath);
// Joins a folder on disk with a model path relative to it.
std::filesystem::path joinModel(const std::filesystem::path& folder, std::string_view modelPath);

// A file name without its extension: the text up to the last "." ("a.b.wav"
// -> "a.b"); a name whose only "." is its first character is kept whole.
std::string fileStem(std::string_view fileName);

// The platform's suffix of a plug-in library: ".so", ".dll" or ".dylib".
std::string_view librarySuffix();

// ASCII case-insensitive comparisons, as the program's files need them.
bool equalsNoCase(std::string_view a, std::string_view b);
bool startsWithNoCase(std::string_view text, std::string_view prefix);
bool endsWithNoCase(std::string_view text, std::string_view suffix);
std::string toUpperAscii(std::string_view text);
std::string toLowerAscii(std::string_view text);

} // namespace kestrelon
