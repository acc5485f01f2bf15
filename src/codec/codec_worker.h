#pragma once
// The engine's codec in a worker process (kestrelon-codec-worker): the same
// calls as CodecHost, carried over a pipe, with the codec's progress, stop
// question and messages brought back to this side as they happen. The worker
// is started at the first load and serves row after row; one that crashes is
// started again for the next row, one that takes too long is ended. Either
// fails only the call it was in, with a message naming the codec and the file.
#include "host/codec_runner.h"
#include "host/worker_frames.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace kestrelon {

class MainHostWindow;
class UserPort;

class CodecWorker : public CodecRunner {
public:
    // How long a call may take: this floor, plus ten times the length of the
    // sound an encode or decode works on. KESTRELON_CODEC_TIME_FLOOR (whole
    // seconds) overrides it.
    static constexpr std::chrono::seconds kTimeFloor{60};

    // `program` is the worker; `programFolder` is handed on to its codec host.
    CodecWorker(std::filesystem::path program, std::filesystem::path programFolder, UserPort& port,
                MainHostWindow& mainWindow);
    ~CodecWorker() override;
    CodecWorker(const CodecWorker&) = delete;
    CodecWorker& operator=(const CodecWorker&) = delete;

    bool loadAlgorithmPath(const std::filesystem::path& path, std::string_view bitRate) override;
    bool releaseAlgorithm() override;
    bool setEventFile(const std::filesystem::path& path) override;
    bool encode(const std::filesystem::path& wave, const std::filesystem::path& output,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool decode(const std::filesystem::path& encoded, const std::filesystem::path& wave,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool outputExtension(std::string& extension) override;
    bool outputTag(std::string& tag) override;

    bool brokeSinceLoad() const override { return m_broke; }

    // The worker's process, while one runs.
    std::optional<pid_t> process() const;

private:
    struct Reply {
        bool ok = false;
        std::string text;
    };
    // One ask and its answer; none when the worker died or was ended, after
    // saying so (`doing` completes the message: "encoding hts1a.wav").
    std::optional<Reply> call(worker::Ask ask, const std::vector<std::string>& fields,
                              std::chrono::steady_clock::duration limit, const std::string& doing,
                              const kestrelon_host_window* bar = nullptr, const kestrelon_host_window* text = nullptr);
    bool start();
    void end(bool kill);
    void report(const worker::Frame& frame, const kestrelon_host_window* bar, const kestrelon_host_window* text);
    std::chrono::steady_clock::duration limitFor(double soundSeconds) const;

    std::filesystem::path m_program;
    std::filesystem::path m_programFolder;
    UserPort& m_port;
    MainHostWindow& m_mainWindow;
    std::string m_algorithm; // the loaded codec's name, for messages
    bool m_broke = false;
    pid_t m_pid = -1;
    int m_asks = -1;
    int m_reports = -1;
    worker::FrameReader m_reader;
};

// The worker beside the other programs in `programFolder`, when it is there.
std::optional<std::filesystem::path> codecWorkerProgram(const std::filesystem::path& programFolder);

} // namespace kestrelon
