#pragma once
// What the main view shows about the current row besides the list: the
// compression rate, the facts of the row's source wave ("File Information")
// and of its algorithm ("Algorithm Information").
#include "codec/main_list.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace kestrelon {

class CodecHost;
class ProjectDocument;

// The table of original sizes: a source's file name -> its size in bytes as
// decimal text. Looked up by exact comparison of the name.
using OriginalSizes = std::map<std::string, std::string, std::less<>>;

// One entry per source of the document whose wave file stands in
// `filesFolder`: the whole file's size, header included, so the rate compares
// what the firmware gets with what the user handed in.
OriginalSizes originalSizesOf(const ProjectDocument& document, const std::filesystem::path& filesFolder);
// One source's: the size of Files\<id> as text, empty when it is not there.
std::string originalSizeOf(const std::string& sourceId, const std::filesystem::path& filesFolder);

// The rate text of an encode size A and an original size B, both decimal
// text: empty when either is 0 (an empty or missing text counts as 0),
// otherwise A / B x 100 formatted "%.0f" (1234 of 9876 gives "12"; a result
// larger than the original gives more than 100).
std::string compressionRateText(std::string_view encodeSize, std::string_view originalSize);

// Sets the compression-rate field of every row's record from its encode size
// and its source's original size (looked up by the record's file name).
void updateCompressionRates(MainList& list, const OriginalSizes& originalSizes);

// "File Information" of a source wave, as shown.
struct WaveFacts {
    std::string name; // the file name
    std::string sampleRate; // "8000 Hz"
    std::string channels; // "Mono"
    std::string resolution; // bits per sample as stored: "16 bit" (a mu-law file shows "8 bit")
    std::string fileSize; // "96044 byte"
    std::string time; // length in milliseconds: "3000 ms"
};

// nullopt when the file cannot be loaded as a wave (its error in `error`).
std::optional<WaveFacts> waveFactsOf(const std::filesystem::path& wavePath, std::string* error = nullptr);

// "Algorithm Information" of a codec plug-in, as shown.
struct AlgorithmFacts {
    std::string name;
    std::string version = "1.0.0"; // until an algorithm is shown
    std::string sampleRate; // "8000 Hz"
    std::string resolution; // "16 bit"
};

// Asks the codec itself (loaded into `host` and released again). nullopt when
// it cannot be loaded or described; the host has said why.
std::optional<AlgorithmFacts> algorithmFactsOf(CodecHost& host, const std::filesystem::path& libraryPath);

} // namespace kestrelon
