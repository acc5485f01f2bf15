#pragma once
// What the engine asks of a codec for one row: load it at a bit rate, hand it
// the row's events, encode or decode, and name its output. CodecHost does it
// in this process; CodecWorker (one layer up) in a worker process of its own,
// so that a plug-in that crashes or hangs costs a row, never the program.
#include "kestrelon/plugin_base.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

// A row a batch is about to work on, as far as its codec is concerned: what a
// runner may start on before it is asked (CodecPool runs rows ahead).
struct CodecJob {
    std::filesystem::path library;
    std::string bitRate;
    std::filesystem::path wave; // encode: the source
    std::filesystem::path events; // encode: the source's event file, or empty
    bool decodeToo = false; // encode: the row is decoded right after
    std::filesystem::path interim; // decode only: the row's packed encoding
};

class CodecRunner {
public:
    virtual ~CodecRunner() = default;

    // False after saying why (or silently when the library made no object).
    virtual bool loadAlgorithmPath(const std::filesystem::path& path, std::string_view bitRate) = 0;
    virtual bool releaseAlgorithm() = 0;
    virtual bool setEventFile(const std::filesystem::path& path) = 0;
    // The windows are the caller's: progress and the stop question reach them.
    virtual bool encode(const std::filesystem::path& wave, const std::filesystem::path& output,
                        const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) = 0;
    virtual bool decode(const std::filesystem::path& encoded, const std::filesystem::path& wave,
                        const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) = 0;
    virtual bool outputExtension(std::string& extension) = 0;
    virtual bool outputTag(std::string& tag) = 0;

    // The rows a batch is about to ask for, in order, with a folder of
    // Temp to work ahead in; and the end of them (a stop, or the batch's
    // end). A runner that works one call at a time ignores both.
    // Whether the codec crashed or stopped answering in a call since the last
    // load: a plug-in to be wary of.
    virtual bool brokeSinceLoad() const { return false; }

    // How many rows it works on at once, ahead of the caller when more than one.
    virtual int rowsAtOnce() const { return 1; }
    virtual void expect(const std::vector<CodecJob>& jobs, const std::filesystem::path& scratch) {}
    virtual void stopExpecting() {}
};

} // namespace kestrelon
