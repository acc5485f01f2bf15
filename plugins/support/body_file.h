#pragma once
// The ".bdy" file beside a reference codec plug-in: the codec's name, the
// sample rates of source waves it accepts, and the bit rates it offers with
// the working rate of each. An ini file:
//
//   [CODEC]
//   NAME=ImaAdpcm
//   SAMPLERATE_MIN=4000
//   SAMPLERATE_MAX=48000
//   BITRATECOUNT=3
//   BITRATE0=32000
//   WORKRATE0=8000
//   ...
//
// The reader checks the form only; whether the codec can work at the rates
// the file names is the codec's own check.
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon::support {

struct BodyOffer {
    std::string bitRate; // the text shown to users, e.g. "32000" or "700"
    int workingRate = 0; // Hz
};

struct CodecBody {
    std::string name;
    int sampleRateMin = 0;
    int sampleRateMax = 0;
    std::vector<BodyOffer> offers; // in BITRATE<k> order
};

// Body files are a few lines; anything larger is not one.
inline constexpr std::uintmax_t kMaxBodyFileBytes = 64 * 1024;
// More bit rates than any codec offers; a larger count is a damaged file.
inline constexpr int kMaxBodyBitRates = 64;

// Reads the body file. False, with `error` naming the file and what is wrong,
// when it is missing or unreadable, lacks NAME, has a sample-rate range that is
// missing, not a number or empty, a BITRATECOUNT outside 1 .. kMaxBodyBitRates,
// or a BITRATE<k> / WORKRATE<k> pair that is missing or malformed.
bool readCodecBody(const std::filesystem::path& path, CodecBody& body, std::string& error);

} // namespace kestrelon::support
