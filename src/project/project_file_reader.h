#pragma once
#include <cstddef>
#include <filesystem>
#include <string_view>

namespace kestrelon {

class ProjectDocument;
class UserPort;

// Groups nested deeper than this make the read fail: no real project comes
// near it, and every later walk over the tree stays shallow.
inline constexpr std::size_t kMaxGroupDepth = 256;

// Reads the Files section of a project file into `project`, which the caller
// has emptied. `text` is the file in text mode (CR LF already turned into LF);
// `projectFile` names the file, whose folder the sources are looked for in.
// Everything after "# End Files" is left unread. False when the file holds no
// "# Begin Project" or no "# Begin Files" line, ends inside an over-long line
// before the Files section, or nests groups too deeply; what was read is kept.
bool readProjectFile(ProjectDocument& project, std::string_view text, const std::filesystem::path& projectFile,
                     UserPort& port);

} // namespace kestrelon
