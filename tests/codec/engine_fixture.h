#pragma once
// A real project in a temporary folder with the real reference codecs (and the
// failing test codec) in a program folder of its own, for the engine's tests.
#include "bodies/body_settings.h"
#include "codec/engine.h"
#include "codec/interim_packer.h"
#include "common/paths.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "project/project_document.h"
#include "project/project_session.h"
#include "project/workspace_tree.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>

namespace kestrelon::test {

inline const std::filesystem::path kCodecDir = KESTRELON_CODEC_DIR;
inline const std::filesystem::path kFailingCodecLibrary = KESTRELON_FAILING_CODEC_LIBRARY;
inline const std::filesystem::path kSpeech = "/usr/share/codec2/wav";
inline constexpr const char* kBody = "Test Body";

// An empty value removes the variable, as it does on Windows.
inline void setEnv(const char* name, const std::string& value)
{
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1);
#endif
}

// Records progress and answers stop requests besides what ScriptedPort does.
class EnginePort : public ScriptedPort {
public:
    void beginProgress(std::string_view title) override
    {
        titles.emplace_back(title);
        position = 0;
    }
    void endProgress() override { ++ended; }
    void setProgressPosition(int reached) override
    {
        position = reached;
        furthest = std::max(furthest, reached);
    }
    bool stopRequested() override { return stop && stop(); }

    std::vector<std::string> titles;
    int ended = 0;
    int furthest = 0; // the highest progress position a codec reported
    int position = 0; // the last one in the current progress
    std::function<bool()> stop;
};

// The body settings of the tests: one body offering every reference codec
// and the failing codec, one offering ImaAdpcm only.
inline std::string testBodySettings()
{
    const std::string suffix(librarySuffix());
    std::string text = "[BODY]\nCOUNT=2\nPCPLAYDLL=none\nBOARDPLAYDLL=none\nBAUDRATE=115200\n"
                       "BODY0=Test Body\nBODY1=Small Body\n"
                       "[Test Body]\nBODYID=1\nSAMPLERATE_MAX=16000\nSAMPLERATE_MIN=8000\nVOLUME_MAX=15\n"
                       "VOLUME_MIN=0\nDEFAULT_VOL=10\nCURRENT_VOL=10\nALGOCOUNT=6\n"
                       "ALGO0=ImaAdpcm\nALGO0_SECTION=IMA\nALGO1=MuLaw\nALGO1_SECTION=MULAW\n"
                       "ALGO2=Pcm\nALGO2_SECTION=PCM\nALGO3=Codec2\nALGO3_SECTION=CODEC2\n"
                       "ALGO4=Speex\nALGO4_SECTION=SPEEX\nALGO5=FailingCodec\nALGO5_SECTION=FAILING\n"
                       "[Small Body]\nBODYID=2\nALGOCOUNT=1\nALGO0=ImaAdpcm\nALGO0_SECTION=IMA\n";
    const auto section = [&](const std::string& name, const std::string& library, std::vector<std::string> rates) {
        std::string s = "[" + name + "]\nDLLDIR=Algorithms\nPATHNAME=Algorithms\\" + library + suffix +
                        "\nBITRATECOUNT=" + std::to_string(rates.size()) + "\n";
        for (size_t i = 0; i < rates.size(); ++i)
            s += "BITRATE" + std::to_string(i) + "=" + rates[i] + "\n";
        return s + "CONFIG=0\n";
    };
    text += section("IMA", "ImaAdpcm", {"32000", "24000", "16000"});
    text += section("MULAW", "MuLaw", {"64000"});
    text += section("PCM", "Pcm", {"128000"});
    text += section("CODEC2", "Codec2", {"3200", "1200"});
    text += section("SPEEX", "Speex", {"8000"});
    text += section("FAILING", "FailingCodec", {"16000"});
    return text;
}

class EngineTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_savedFolder = std::filesystem::current_path();
        const std::filesystem::path algorithms = program() / "Algorithms";
        std::filesystem::create_directories(algorithms);
        const std::string suffix(librarySuffix());
        for (const std::string name : {"ImaAdpcm", "MuLaw", "Pcm", "Codec2", "Speex"}) {
            place(kCodecDir / (name + suffix), algorithms / (name + suffix));
            place(kCodecDir / (name + ".bdy"), algorithms / (name + ".bdy"));
        }
        place(kFailingCodecLibrary, algorithms / ("FailingCodec" + suffix));
        writeBytes(algorithms / "FailingCodec.bdy", "; the failing codec reads no body file\n");
        writeBytes(program() / "KestrelonBodySetting.dat", testBodySettings());
        ASSERT_TRUE(bodies.load(program() / "KestrelonBodySetting.dat", program(), port));

        setEnv("KESTRELON_FAILING_CODEC_LOG", utf8FromPath(temp / "calls.log"));
        setEnv("KESTRELON_FAILING_CODEC", "");
        session = std::make_unique<ProjectSession>(port, nullptr, nullptr, program());
        ASSERT_TRUE(session->newProject(utf8FromPath(temp.path()), "Demo"));
        host = std::make_unique<CodecHost>(program(), port, mainWindow);
    }

    void TearDown() override
    {
        host.reset();
        std::filesystem::current_path(m_savedFolder);
        setEnv("KESTRELON_FAILING_CODEC", "");
        setEnv("KESTRELON_FAILING_CODEC_LOG", "");
    }

    // A link where the platform allows it: the reference codecs are large.
    static void place(const std::filesystem::path& from, const std::filesystem::path& to)
    {
        std::error_code ec;
        std::filesystem::create_symlink(from, to, ec);
        if (ec)
            std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing);
    }

    std::filesystem::path program() const { return temp / "program"; }
    std::filesystem::path project() const { return session->projectFolder(); }
    std::filesystem::path tempFolder() const { return session->tempFolder(); }

    // A source added through the Files tree, as Add Files does.
    ProjectItem* addSource(const std::filesystem::path& wave, ProjectItem* folder = nullptr)
    {
        WorkspaceTree tree(session->document(), session->projectFolder(), session->deletionList(), port);
        const std::vector<AddedFile> added = tree.addFiles(TreeTarget{folder}, {wave});
        EXPECT_EQ(added.size(), 1u);
        return added.empty() ? nullptr : added.front().item;
    }

    // A record for `source` as Add Encode Data makes it, not yet encoded.
    EditInfoRecord& addRecord(ProjectItem* source, const std::string& algorithm, const std::string& bitRate,
                              const std::string& body = kBody)
    {
        EditInfoRecord record;
        record.fileName = source->id();
        record.bodyName = body;
        record.algoName = algorithm;
        record.bitRate = bitRate;
        source->records().push_back(record);
        return source->records().back();
    }

    // The codec in Algos and in the registry, as Add Encode Data leaves it.
    void install(const std::string& name)
    {
        const std::string suffix(librarySuffix());
        place(program() / "Algorithms" / (name + suffix), project() / "Algos" / (name + suffix));
        std::filesystem::copy_file(program() / "Algorithms" / (name + ".bdy"), project() / "Algos" / (name + ".bdy"),
                                   std::filesystem::copy_options::overwrite_existing);
        registry.push_back({name, "Algos\\" + name + suffix});
    }

    EngineEnvironment env() { return {*session, registry, bodies, runner ? *runner : *host, port, program()}; }

    // Encodes (or decodes) exactly the given rows of the main list.
    BatchResult encodeRows(const std::vector<size_t>& rows, bool autoDecode = false)
    {
        MainList list = MainList::fromDocument(session->document());
        EXPECT_TRUE(list.selectRows(rows));
        return CodecEngine(env()).encodeSelected(list, autoDecode);
    }
    BatchResult decodeRows(const std::vector<size_t>& rows)
    {
        MainList list = MainList::fromDocument(session->document());
        EXPECT_TRUE(list.selectRows(rows));
        return CodecEngine(env()).decodeSelected(list);
    }

    // The unpacked contents of a packed file in Temp.
    std::string unpacked(const std::string& name)
    {
        const std::filesystem::path target = temp / ("unpacked-" + name);
        EXPECT_TRUE(DecryptUnzip(tempFolder() / name, target)) << name;
        return readBytes(target);
    }

    std::vector<std::string> codecCalls() const
    {
        std::vector<std::string> calls;
        std::istringstream text(readBytes(temp / "calls.log"));
        for (std::string line; std::getline(text, line);)
            calls.push_back(line);
        return calls;
    }

    TempDir temp;
    EnginePort port;
    BodySettings bodies;
    std::vector<AlgoRegEntry> registry;
    MainHostWindow mainWindow;
    std::unique_ptr<ProjectSession> session;
    std::unique_ptr<CodecHost> host;
    CodecRunner* runner = nullptr; // when set, the rows run through it rather than the host

private:
    std::filesystem::path m_savedFolder;
};

} // namespace kestrelon::test
