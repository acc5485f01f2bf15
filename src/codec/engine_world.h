#pragma once
// The world a batch of rows runs in, made in one place for kestrelon-cli and
// the workbench: the codec that runs the rows (workers, one or several at
// once, or the plug-in in this process), the main window its codecs post
// their steps to, the codecs that broke before, and the environment that ties
// them to the open project.
#include "codec/broken_codecs.h"
#include "codec/engine.h"
#include "codec/row_codec.h"
#include "host/host_windows.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace kestrelon {

class BodySettings;
class ProjectSession;
class QualityFile;
class UserPort;
struct AlgoRegEntry;

class EngineWorld {
public:
    struct Setup {
        ProjectSession& session;
        std::vector<AlgoRegEntry>& registry;
        const BodySettings& bodies;
        UserPort& port;
        std::filesystem::path programFolder;
        // Where the codecs that broke are remembered (the user's configuration).
        std::filesystem::path configFolder;
        RowCodecChoice codec;
        // Where the measures of decoded rows go; none measures nothing.
        QualityFile* quality = nullptr;
    };

    explicit EngineWorld(const Setup& setup);
    // Lets the codec go and keeps what was learnt about broken codecs.
    ~EngineWorld();
    EngineWorld(const EngineWorld&) = delete;
    EngineWorld& operator=(const EngineWorld&) = delete;

    const EngineEnvironment& environment() const { return m_environment; }

private:
    UserPort& m_port;
    MainHostWindow m_window;
    std::unique_ptr<CodecRunner> m_codec;
    BrokenCodecs m_broken;
    EngineEnvironment m_environment;
};

} // namespace kestrelon
