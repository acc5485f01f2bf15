#include "host/algorithm_info.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/platform.h"
#include "common/user_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"

#include <algorithm>
#include <system_error>

namespace kestrelon {

namespace {

std::string channelsText(int32_t channels)
{
    switch (channels) {
    case 1: return "Mono";
    case 2: return "Stereo";
    default: return std::to_string(channels);
    }
}

// Reports a codec that loaded but would not describe itself, and drops it.
bool refuse(CodecHost& host, const std::string& name)
{
    host.port().showMessage(name + std::string(msg::kLoadedUnsuccessful));
    host.releaseAlgorithm();
    return false;
}

} // namespace

std::string rangeText(const kestrelon_range& range)
{
    if (range.low == range.high)
        return std::to_string(range.low);
    return std::to_string(range.low) + " ~ " + std::to_string(range.high);
}

std::string bitRateText(int32_t bitsPerSecond)
{
    return std::to_string(bitsPerSecond);
}

std::string bitRateRangeText(const kestrelon_range& range)
{
    if (range.low == range.high)
        return bitRateText(range.low);
    return bitRateText(range.low) + " ~ " + bitRateText(range.high);
}

std::string versionText(uint32_t version)
{
    return std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFFu);
}

bool describeAlgorithm(CodecHost& host, const std::filesystem::path& libraryPath, AlgorithmInfo& info)
{
    info = AlgorithmInfo{};
    info.name = utf8FromPath(libraryPath.stem());
    info.libraryPath = libraryPath;

    // Without a bit rate: only the families with a fixed one are given it.
    if (!host.loadAlgorithmPath(libraryPath, {})) {
        // The host has said why, except for a library that gave no object,
        // which it keeps loaded and does not report.
        if (host.isLoaded())
            return refuse(host, info.name);
        return false;
    }
    const std::string_view fixed = fixedBitRateOf(codecFamilyOf(info.name));
    if (!fixed.empty() && !host.setParameter(KESTRELON_PARAM_BIT_RATE, std::string(fixed)))
        return refuse(host, info.name);

    if (!host.getVersion(info.version) || !host.getInfo(info.info) ||
        !host.getRanges(info.sampleRates, info.bitRates) || !host.getDescription(info.description))
        return refuse(host, info.name);
    host.releaseAlgorithm();

    info.versionText = versionText(info.version);
    info.sampleRateText = std::to_string(info.info.sample_rate) + " Hz";
    info.resolutionText = std::to_string(info.info.resolution_bits) + " bit";
    info.channelsText = channelsText(info.info.channels);
    info.sampleRatesText = rangeText(info.sampleRates);
    info.bitRatesText = bitRateRangeText(info.bitRates);
    return true;
}

} // namespace kestrelon

namespace kestrelon {

std::vector<AlgorithmInfo> listAlgorithmInfo(CodecHost& host, const std::filesystem::path& projectFolder)
{
    // Each load moves the current folder, so a relative project folder is
    // pinned down first.
    std::error_code ec;
    std::filesystem::path algos = std::filesystem::absolute(projectFolder / "Algos", ec);
    if (ec)
        algos = projectFolder / "Algos";
    ec.clear();
    std::vector<std::filesystem::path> libraries;
    for (std::filesystem::directory_iterator it(algos, ec), end; !ec && it != end; it.increment(ec)) {
        const std::string fileName = utf8FromPath(it->path().filename());
        std::error_code typeError;
        if (endsWithNoCase(fileName, librarySuffix()) && fileName.size() > librarySuffix().size() &&
            it->is_regular_file(typeError))
            libraries.push_back(it->path());
    }
    // The folder's own order differs from one file system to the next.
    std::sort(libraries.begin(), libraries.end());

    std::vector<AlgorithmInfo> described;
    for (const std::filesystem::path& library : libraries) {
        AlgorithmInfo info;
        if (describeAlgorithm(host, library, info))
            described.push_back(std::move(info));
    }
    return described;
}

std::vector<AlgorithmInfo> listAlgorithmInfo(const std::filesystem::path& projectFolder, UserPort& port)
{
    MainHostWindow mainWindow;
    CodecHost host(executableFolder(), port, mainWindow);
    return listAlgorithmInfo(host, projectFolder);
}

} // namespace kestrelon
