#pragma once
// What a row's encode or decode holds while it runs, each let go by its
// scope: the codec loaded for the row, and the progress window with its
// title. With these, a step can end at any line and still clean up.
#include "common/user_port.h"
#include "plugins/codec_runner.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kestrelon {

class LoadedCodec {
public:
    LoadedCodec(CodecRunner& host, const std::filesystem::path& library, const std::string& bitRate)
        : m_host(host), m_loaded(host.loadAlgorithmPath(library, bitRate))
    {
    }
    ~LoadedCodec() { m_host.releaseAlgorithm(); }
    LoadedCodec(const LoadedCodec&) = delete;
    LoadedCodec& operator=(const LoadedCodec&) = delete;

    // False when it did not load; the host has said why.
    explicit operator bool() const { return m_loaded; }
    CodecRunner* operator->() const { return &m_host; }

private:
    CodecRunner& m_host;
    bool m_loaded;
};

class ProgressScope {
public:
    // The title shows as the text too, until the codec says more.
    ProgressScope(UserPort& port, std::string_view title) : m_port(port)
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
