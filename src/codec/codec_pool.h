#pragma once
// Rows encoded and decoded in parallel, with the batch still run row by row.
//
// The engine works through its rows in order, as it always has: it names the
// files, asks the questions, shows the messages and writes the records. What
// CodecPool adds is helpers (codecs of their own, each driven by a thread)
// that make the codec calls of the rows ahead (expect) into a scratch folder
// and keep each call's result and messages. When the engine reaches a row and
// makes the same calls, they are answered from what a helper kept: the output
// is moved into place and the messages are shown then, in row order. A call
// nobody prepared, or one that differs from what was prepared (other events,
// other input bytes), is made on the engine's own codec. Codecs give the same
// bytes for the same input, so a batch leaves the same project, files and
// messages with any number of helpers.
#include "host/codec_runner.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace kestrelon {

class MainHostWindow;
class UserPort;

class CodecPool : public CodecRunner {
public:
    // A helper's codec, talking to the port it is given.
    using MakeCodec = std::function<std::unique_ptr<CodecRunner>(UserPort& port, MainHostWindow& window)>;

    // `own` serves the calls nobody prepared; `helpers` codecs made by `make`
    // prepare the rows expected.
    CodecPool(std::unique_ptr<CodecRunner> own, UserPort& port, MakeCodec make, int helpers);
    ~CodecPool() override;
    CodecPool(const CodecPool&) = delete;
    CodecPool& operator=(const CodecPool&) = delete;

    bool loadAlgorithmPath(const std::filesystem::path& path, std::string_view bitRate) override;
    bool releaseAlgorithm() override;
    bool setEventFile(const std::filesystem::path& path) override;
    bool encode(const std::filesystem::path& wave, const std::filesystem::path& output,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool decode(const std::filesystem::path& encoded, const std::filesystem::path& wave,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool outputExtension(std::string& extension) override;
    bool outputTag(std::string& tag) override;
    int rowsAtOnce() const override { return m_helperCount; }
    bool brokeSinceLoad() const override { return m_live ? m_own->brokeSinceLoad() : m_broke; }
    void expect(const std::vector<CodecJob>& jobs, const std::filesystem::path& scratch) override;
    void stopExpecting() override;

    // How many encodes and decodes a helper's work answered.
    int served() const { return m_served; }

private:
    struct Prepared;
    class HelperPort;

    void helperLoop();
    void prepare(Prepared& job, CodecRunner& codec, HelperPort& port) const;
    // Waits for a helper to finish `job`, taking it on when nobody will; false
    // when it was not prepared after all.
    bool waitUntilPrepared(Prepared& job);
    // The expected encode the engine's deferred calls and `wave` describe.
    Prepared* preparedEncode(const std::filesystem::path& wave);
    // The expected decode of the same library and rate whose input has `bytes`;
    // without bytes, the first such one (for the tag asked before a decode).
    Prepared* preparedDecode(const std::string* bytes);
    void passOver(std::size_t upTo);
    // The engine's own codec, loaded as the deferred calls asked.
    bool goLive();

    std::unique_ptr<CodecRunner> m_own;
    UserPort& m_port;
    MakeCodec m_make;
    int m_helperCount;
    std::filesystem::path m_scratch;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::unique_ptr<Prepared>> m_jobs;
    // Encodes by library, rate and source, in row order.
    std::unordered_map<std::string, std::vector<std::size_t>> m_encodes;
    std::size_t m_cursor = 0; // jobs before it will not be asked for
    std::size_t m_nextTake = 0; // the next job a helper may take
    bool m_closing = false;
    std::atomic<bool> m_cancel{false};
    std::vector<std::thread> m_helpers;

    // The row under way: the calls held back until it is known whether a
    // helper answers them.
    std::filesystem::path m_library;
    std::string m_bitRate;
    std::optional<std::filesystem::path> m_events;
    Prepared* m_answered = nullptr; // whose encode answered the row's last encode
    bool m_live = false; // the engine's own codec serves the row
    bool m_liveLoaded = false; // and loaded
    bool m_broke = false; // a helper's codec broke in the row's calls
    int m_served = 0;
};

} // namespace kestrelon
