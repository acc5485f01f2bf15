#include "host/algorithm_registry.h"

#include "common/ini_document.h"
#include "common/paths.h"

#include <system_error>

namespace kestrelon {

namespace {

std::string itemSection(size_t index)
{
    return "ITEM" + std::to_string(index);
}

} // namespace

std::filesystem::path algorithmRegistryPath(const std::filesystem::path& projectFolder)
{
    return projectFolder / "Algos" / kAlgorithmRegistryFileName;
}

std::filesystem::path algorithmLibraryPath(const std::filesystem::path& projectFolder, std::string_view name)
{
    // Joined as text: the name is whatever the file holds, and one that looks
    // absolute must not replace the project folder.
    return joinModel(projectFolder, "Algos\\" + std::string(name) + std::string(librarySuffix()));
}

bool loadAlgorithmRegistry(const std::filesystem::path& projectFolder, std::vector<AlgoRegEntry>& entries,
                           UserPort& port)
{
    entries.clear();
    IniDocument doc;
    if (!doc.load(algorithmRegistryPath(projectFolder)))
        return false;
    const int count = doc.getInt("COUNT", "Count", 0, port).value_or(0);
    // Only the ITEM sections the file holds are read: a huge Count costs
    // nothing, and a number without a section gives no entry (it would name
    // no library).
    for (const int n : doc.numberedSections("ITEM", count)) {
        const std::string section = itemSection(static_cast<size_t>(n));
        entries.push_back({doc.getString(section, "algorithm"), doc.getString(section, "Path")});
    }
    return true;
}

bool saveAlgorithmRegistry(const std::filesystem::path& projectFolder, const std::vector<AlgoRegEntry>& entries,
                           std::string* why)
{
    IniDocument doc;
    doc.setInt("COUNT", "Count", static_cast<long long>(entries.size()));
    for (size_t i = 0; i < entries.size(); ++i) {
        doc.setString(itemSection(i), "algorithm", entries[i].name);
        doc.setString(itemSection(i), "Path", entries[i].path);
    }
    return doc.save(algorithmRegistryPath(projectFolder), why);
}

bool pruneAndSaveAlgorithmRegistry(const std::filesystem::path& projectFolder, std::vector<AlgoRegEntry>& entries)
{
    for (size_t i = 0; i < entries.size();) {
        std::error_code ec;
        if (std::filesystem::exists(algorithmLibraryPath(projectFolder, entries[i].name), ec))
            ++i;
        else
            entries.erase(entries.begin() + static_cast<std::ptrdiff_t>(i)); // the next entry moves into i
    }
    return saveAlgorithmRegistry(projectFolder, entries);
}

} // namespace kestrelon
