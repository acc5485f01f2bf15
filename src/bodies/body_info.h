#pragma once
// One target chip configuration ("body") and the algorithms it can run, as the
// body settings file declares them. Plain values, copied whole.
#include <string>
#include <vector>

namespace kestrelon {

struct BodyAlgoInfo {
    std::string name; // ALGO<j>
    std::string section; // ALGO<j>_SECTION: the section describing the algorithm
    std::string dllDir; // DLLDIR
    std::string pathName; // PATHNAME
    std::vector<std::string> bitRates; // the non-empty BITRATE<k>, as shown to the user
    int config = 0; // CONFIG
};

struct BodyInfo {
    std::string name; // BODY<i>, also the name of the body's own section
    int bodyId = 0;
    // ALGOCOUNT exactly as read, even when empty slots left `algorithms`
    // shorter: the encode-setting choices walk a body's algorithms up to it.
    int algoCount = 0;
    int sampleRateMax = 0; // Hz
    int sampleRateMin = 0; // Hz
    int volumeMax = 0;
    int volumeMin = 0;
    int defaultVolume = 0;
    int currentVolume = 0; // written back at exit
    int confirmedVolume = 0; // the current volume as last confirmed; Cancel restores it
    std::vector<BodyAlgoInfo> algorithms;
};

} // namespace kestrelon
