#include "codec/results.h"

#include "common/paths.h"
#include "host/algorithm_info.h"
#include "project/project_document.h"
#include "project/tree_selection.h"
#include "wave/wave_file.h"

#include <cstdio>
#include <system_error>

namespace kestrelon {

namespace fs = std::filesystem;

std::string originalSizeOf(const std::string& sourceId, const fs::path& filesFolder)
{
    if (sourceId.empty())
        return {};
    std::error_code ec;
    const fs::path path = joinModel(filesFolder, sourceId);
    if (!fs::is_regular_file(path, ec))
        return {};
    const std::uintmax_t size = fs::file_size(path, ec);
    return ec ? std::string() : std::to_string(size);
}

OriginalSizes originalSizesOf(const ProjectDocument& document, const fs::path& filesFolder)
{
    OriginalSizes sizes;
    for (const ProjectItem* item : filesTreeOrder(document)) {
        if (!item->isSource())
            continue;
        if (std::string size = originalSizeOf(item->id(), filesFolder); !size.empty())
            sizes.insert_or_assign(item->id(), std::move(size));
    }
    return sizes;
}

std::string compressionRateText(std::string_view encodeSize, std::string_view originalSize)
{
    const double a = static_cast<double>(sizeFromText(encodeSize));
    const double b = static_cast<double>(sizeFromText(originalSize));
    if (a == 0.0 || b == 0.0)
        return {};
    char text[64];
    std::snprintf(text, sizeof text, "%.0f", a / b * 100.0);
    return text;
}

void updateCompressionRates(MainList& list, const OriginalSizes& originalSizes)
{
    for (const ListRow& row : list.rows()) {
        EditInfoRecord& record = row.record();
        const auto original = originalSizes.find(record.fileName);
        record.compressionRate = compressionRateText(
            record.encodeSize, original == originalSizes.end() ? std::string_view() : original->second);
    }
}

std::optional<WaveFacts> waveFactsOf(const fs::path& wavePath, std::string* error)
{
    WaveFile wave;
    if (!wave.load(wavePath)) {
        if (error)
            *error = wave.error();
        return std::nullopt;
    }
    WaveFacts facts;
    facts.name = utf8FromPath(wavePath.filename());
    facts.sampleRate = std::to_string(wave.sampleRate()) + " Hz";
    switch (wave.channels()) {
    case 1: facts.channels = "Mono"; break;
    case 2: facts.channels = "Stereo"; break;
    default: facts.channels = std::to_string(wave.channels()); break;
    }
    facts.resolution = std::to_string(wave.bitsPerSample()) + " bit";
    facts.fileSize = std::to_string(wave.fileSize()) + " byte";
    facts.time = std::to_string(wave.lengthMs()) + " ms";
    return facts;
}

std::optional<AlgorithmFacts> algorithmFactsOf(CodecHost& host, const fs::path& libraryPath)
{
    AlgorithmInfo info;
    if (!describeAlgorithm(host, libraryPath, info))
        return std::nullopt;
    AlgorithmFacts facts;
    facts.name = info.name;
    facts.version = info.versionText;
    facts.sampleRate = info.sampleRateText;
    facts.resolution = info.resolutionText;
    return facts;
}

} // namespace kestrelon
