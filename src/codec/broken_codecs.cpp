#include "codec/broken_codecs.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/user_port.h"

#include <sstream>

namespace kestrelon {

namespace fs = std::filesystem;

BrokenCodecs::BrokenCodecs(fs::path configFolder)
{
    if (configFolder.empty())
        return;
    m_file = programConfigFolder(configFolder) / "BrokenCodecs.txt";
    std::istringstream lines(readFile(m_file).bytes);
    for (std::string line; std::getline(lines, line);)
        if (!line.empty())
            m_names.insert(line);
}

void BrokenCodecs::mark(const std::string& algorithm)
{
    m_changed = m_names.insert(algorithm).second || m_changed;
}

void BrokenCodecs::forgive(const std::string& algorithm)
{
    m_changed = m_names.erase(algorithm) != 0 || m_changed;
}

bool BrokenCodecs::save(std::string* why)
{
    if (!m_changed || m_file.empty())
        return true;
    std::string text;
    for (const std::string& name : m_names)
        text += name + "\n";
    std::error_code ec;
    fs::create_directories(m_file.parent_path(), ec);
    if (!writeFileAtomically(m_file, text, why))
        return false;
    m_changed = false;
    return true;
}

void keepBrokenCodecs(BrokenCodecs& broken, UserPort& port)
{
    if (std::string why; !broken.save(&why))
        port.showFailure(utf8FromPath(broken.file()) + std::string(msg::kBrokenCodecsNotWritten), why);
}

} // namespace kestrelon
