#include "codec/project_algorithms.h"

#include "bodies/body_settings.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "host/codec_host.h"
#include "project/project_folder_ops.h"
#include "project/project_session.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

fs::path bodyFileOf(fs::path library)
{
    library.replace_extension(".bdy");
    return library;
}

// The file a program-side path stands for: an installation may link its
// plug-ins into place, and the project gets the file, not the link.
fs::path resolved(const fs::path& path)
{
    std::error_code ec;
    const fs::path real = fs::canonical(path, ec);
    return ec ? path : real;
}

// The last part of a model path ("Algorithms\ImaAdpcm.so" -> "ImaAdpcm.so").
std::string_view lastPart(std::string_view modelPath)
{
    const size_t cut = modelPath.find_last_of("\\/");
    return cut == std::string_view::npos ? modelPath : modelPath.substr(cut + 1);
}

void addOrRefreshEntry(std::vector<AlgoRegEntry>& registry, const std::string& name, const std::string& path)
{
    if (AlgoRegEntry* entry = findRegistryEntry(registry, name))
        entry->path = path;
    else
        registry.push_back({name, path});
}

} // namespace

AlgoRegEntry* findRegistryEntry(std::vector<AlgoRegEntry>& registry, std::string_view name)
{
    const auto it =
        std::find_if(registry.begin(), registry.end(), [&](const AlgoRegEntry& e) { return e.name == name; });
    return it == registry.end() ? nullptr : &*it;
}

const AlgoRegEntry* findRegistryEntry(const std::vector<AlgoRegEntry>& registry, std::string_view name)
{
    const auto it =
        std::find_if(registry.begin(), registry.end(), [&](const AlgoRegEntry& e) { return e.name == name; });
    return it == registry.end() ? nullptr : &*it;
}

fs::path shippedLibraryPath(const fs::path& programFolder, const BodyAlgoInfo& algorithm)
{
    return joinModel(programFolder, algorithm.pathName);
}

std::string libraryNameOf(const BodyAlgoInfo& algorithm)
{
    return fileStem(lastPart(algorithm.pathName));
}

std::string registryPathFor(std::string_view libraryFileName)
{
    return "Algos\\" + std::string(libraryFileName);
}

const BodyAlgoInfo* offeredAlgorithm(const BodySettings& bodies, std::string_view body, std::string_view algorithm,
                                     std::string_view bitRate)
{
    const BodyInfo* info = bodies.findBody(body);
    if (info == nullptr)
        return nullptr;
    for (const BodyAlgoInfo& candidate : info->algorithms) {
        if (candidate.name != algorithm || candidate.pathName.empty())
            continue;
        if (std::find(candidate.bitRates.begin(), candidate.bitRates.end(), bitRate) != candidate.bitRates.end())
            return &candidate;
    }
    return nullptr;
}

bool bringAlgorithmIntoProject(ProjectSession& session, std::vector<AlgoRegEntry>& registry,
                               const fs::path& programFolder, const BodyAlgoInfo& algorithm, UserPort& port)
{
    const std::string name = libraryNameOf(algorithm);
    if (name.empty() || !session.isOpen())
        return false;
    const fs::path library = algorithmLibraryPath(session.projectFolder(), name);
    const fs::path body = bodyFileOf(library);
    const fs::path shipped = shippedLibraryPath(programFolder, algorithm);

    std::vector<FileCopy> plan;
    if (!isRegularFile(library))
        plan.push_back({resolved(shipped), library});
    if (!isRegularFile(body))
        plan.push_back({resolved(bodyFileOf(shipped)), body});
    for (const FileCopy& copy : plan)
        if (!isRegularFile(copy.from)) {
            showCopyFailure(port, {false, copy, std::generic_category().message(ENOENT)},
                            msg::kAlgorithmNotAddedSuffix);
            return false;
        }
    if (const CopyOutcome copied = copyFilesStaged(plan); !copied.ok) {
        showCopyFailure(port, copied, msg::kAlgorithmNotAddedSuffix);
        return false;
    }

    const std::string path = registryPathFor(utf8FromPath(library.filename()));
    const AlgoRegEntry* entry = findRegistryEntry(registry, name);
    if (!plan.empty() || entry == nullptr || entry->path != path) {
        addOrRefreshEntry(registry, name, path);
        session.markModified();
    }
    return true;
}

AddAlgorithmOutcome addAlgorithmToProject(ProjectSession& session, std::vector<AlgoRegEntry>& registry, CodecHost& host,
                                          const fs::path& givenLibrary, UserPort& port)
{
    if (!session.isOpen())
        return AddAlgorithmOutcome::Refused;
    std::error_code ec;
    fs::path library = fs::absolute(givenLibrary, ec);
    if (ec)
        library = givenLibrary;

    // Checked where it lies, so a codec that is refused never reaches the project.
    const bool loaded = host.loadAlgorithmPath(library, {});
    const bool checked = loaded && host.checkAlgorithm();
    if (!checked && host.isLoaded() && loaded)
        port.showMessage(utf8FromPath(library) + std::string(msg::kLoadedUnsuccessful));
    else if (!loaded && host.isLoaded()) // a library that gave no object: the host said nothing
        port.showMessage(utf8FromPath(library) + std::string(msg::kNotACorrectAlgorithm));
    host.releaseAlgorithm();
    if (!checked)
        return AddAlgorithmOutcome::Refused;

    const std::string name = utf8FromPath(library.stem());
    const fs::path target = algorithmLibraryPath(session.projectFolder(), name);
    const fs::path targetBody = bodyFileOf(target);
    std::vector<FileCopy> plan;
    bool replacing = false;
    for (const FileCopy& copy :
         {FileCopy{resolved(library), target}, FileCopy{resolved(bodyFileOf(library)), targetBody}}) {
        if (samePath(copy.from, copy.to))
            continue; // added from the project's own Algos: nothing to copy
        if (entryExists(copy.to) && !replacing) {
            const std::string question = std::string(msg::kTheFilePrefix) + "\"" + utf8FromPath(copy.to.filename()) +
                                         "\"" + std::string(msg::kOverwriteSuffix);
            if (port.ask(question, Buttons::YesNo) != Answer::Yes)
                return AddAlgorithmOutcome::Declined;
            replacing = true; // the library and its body file travel together: one answer
        }
        plan.push_back(copy);
    }
    if (const CopyOutcome copied = copyFilesStaged(plan); !copied.ok) {
        showCopyFailure(port, copied, msg::kAlgorithmNotAddedSuffix);
        return AddAlgorithmOutcome::Refused;
    }

    const bool known = findRegistryEntry(registry, name) != nullptr;
    addOrRefreshEntry(registry, name, registryPathFor(utf8FromPath(target.filename())));
    session.markModified();
    return known || replacing ? AddAlgorithmOutcome::Refreshed : AddAlgorithmOutcome::Added;
}

} // namespace kestrelon
