#pragma once
// The codec the engine runs rows with, as the program was asked to run it.
#include "host/codec_runner.h"

#include <filesystem>
#include <memory>

namespace kestrelon {

class MainHostWindow;
class UserPort;

struct RowCodecChoice {
    // The plug-in in this process, for a debugger: no worker, no parallel rows.
    bool inProcess = false;
    // Codec workers that run rows at once; 1 runs them one after the other.
    int jobs = 1;
};

// As many rows at once as the machine has cores.
int defaultCodecJobs();
// More would only wait on each other.
inline constexpr int kMostCodecJobs = 256;

// Workers when the worker program lies in `programFolder` and the plug-in is
// not wanted in process: one, or a pool of `jobs` that run rows ahead of the
// engine. Otherwise a codec host in this process.
std::unique_ptr<CodecRunner> makeRowCodec(const std::filesystem::path& programFolder, UserPort& port,
                                          MainHostWindow& mainWindow, RowCodecChoice choice);

} // namespace kestrelon
