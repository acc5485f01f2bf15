#pragma once
// What a row's encode or decode holds while it runs, each let go by its
// scope: the codec loaded for the row, and the progress window with its
// title. With these, a step can end at any line and still clean up.
#include "common/user_port.h"
#include "host/codec_runner.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class LoadedCodec {
public:
    // `broke` learns, as the codec is let go, whether it crashed or stopped answering.
    LoadedCodec(CodecRunner& host, const std::filesystem::path& library, const std::string& bitRate, bool& broke)
        : m_host(host)
        , m_loaded(host.loadAlgorithmPath(library, bitRate))
        , m_broke(broke)
    {}
    ~LoadedCodec()
    {
        m_broke = m_broke || m_host.brokeSinceLoad();
        m_host.releaseAlgorithm();
    }
    LoadedCodec(const LoadedCodec&) = delete;
    LoadedCodec& operator=(const LoadedCodec&) = delete;

    // False when it did not load; the host has said why.
    explicit operator bool() const { return m_loaded; }
    CodecRunner* operator->() const { return &m_host; }

private:
    CodecRunner& m_host;
    bool m_loaded;
    bool& m_broke;
};

// The rows a batch is about to run, told to the codec so that it can work
// ahead, and taken back when the scope ends: at the batch's end or its stop.
// `told` is true meanwhile, so that batches run inside tell nothing of their own.
class RowsAhead {
public:
    RowsAhead(CodecRunner& host, bool& told, const std::vector<CodecJob>& jobs, const std::filesystem::path& scratch,
              std::function<void()> onEnd)
        : m_host(host)
        , m_told(told)
        , m_onEnd(std::move(onEnd))
    {
        m_told = true;
        m_host.expect(jobs, scratch);
    }
    ~RowsAhead()
    {
        m_onEnd();
        m_host.stopExpecting();
        m_told = false;
    }
    RowsAhead(const RowsAhead&) = delete;
    RowsAhead& operator=(const RowsAhead&) = delete;

private:
    CodecRunner& m_host;
    bool& m_told;
    std::function<void()> m_onEnd;
};

class ProgressScope {
public:
    // The title shows as the text too, until the codec says more.
    ProgressScope(UserPort& port, std::string_view title)
        : m_port(port)
    {
        m_port.beginProgress(title);
        m_port.setProgressRange(0, 100);
        m_port.setProgressText(title);
    }
    ~ProgressScope() { m_port.endProgress(); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

private:
    UserPort& m_port;
};

} // namespace kestrelon
