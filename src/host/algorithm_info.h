#pragma once
// What the "Algorithm Information" panel shows about a codec plug-in, asked
// from the codec itself: its version, working format, accepted sample rates,
// offered bit rates and description.
#include "kestrelon/codec_plugin.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon {

class CodecHost;
class UserPort;

struct AlgorithmInfo {
    std::string name; // the library's base name
    std::filesystem::path libraryPath;

    // As the codec answered.
    uint32_t version = 0;
    kestrelon_codec_info info{};
    kestrelon_range sampleRates{};
    kestrelon_range bitRates{}; // bit/s
    std::string description;

    // As shown.
    std::string versionText; // "1.0"
    std::string sampleRateText; // "8000 Hz"
    std::string resolutionText; // "16 bit"
    std::string channelsText; // "Mono"
    std::string sampleRatesText; // "8000" or "8000 ~ 16000"
    std::string bitRatesText; // "16000 ~ 32000"
};

// "%d" when both ends are equal, "%d ~ %d" otherwise.
std::string rangeText(const kestrelon_range& range);
// The same for a range of bit rates, each end shown as bit-rate text.
std::string bitRateRangeText(const kestrelon_range& range);
// A bit rate in bit/s as shown: its decimal value.
std::string bitRateText(int32_t bitsPerSecond);
// Major (high 16 bits) "." minor (low 16 bits).
std::string versionText(uint32_t version);

// Loads the codec library at `libraryPath` into `host`, asks it for its
// version, info, ranges and description, and releases it again. False when
// the library cannot be loaded or any answer fails. A failed load is reported
// by the host itself; a library that gave no object, a refused fixed bit rate
// and a refused answer show the name followed by " is loaded unsuccessful !".
bool describeAlgorithm(CodecHost& host, const std::filesystem::path& libraryPath, AlgorithmInfo& info);

// Describes every codec library ("*" + library suffix, in any case) in the
// project's Algos folder, in order of file name; the ones that fail are
// reported and left out.
std::vector<AlgorithmInfo> listAlgorithmInfo(CodecHost& host, const std::filesystem::path& projectFolder);
// The same with a host of its own whose program folder is the executable's.
std::vector<AlgorithmInfo> listAlgorithmInfo(const std::filesystem::path& projectFolder, UserPort& port);

} // namespace kestrelon
