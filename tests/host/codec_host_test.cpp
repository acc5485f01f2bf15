#include "common/messages.h"
#include "common/paths.h"
#include "host/algorithm_info.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <sstream>

using namespace kestrelon;
using namespace kestrelon::test;
using Texts = std::vector<std::string>;
using Order = std::vector<std::string>;

namespace {

const std::filesystem::path kFailingCodec = KESTRELON_FAILING_CODEC_LIBRARY;
const std::filesystem::path kNoEntryCodec = KESTRELON_NO_ENTRY_LIBRARY;

void setEnv(const char* name, const std::string* value) // nullptr unsets
{
#if defined(_WIN32)
    _putenv_s(name, value ? value->c_str() : "");
#else
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
#endif
}

// Records the progress calls as text, besides what ScriptedPort records.
class ProgressPort : public ScriptedPort {
public:
    void setProgressRange(int low, int high) override
    {
        progress.push_back("range " + std::to_string(low) + " " + std::to_string(high));
    }
    void setProgressPosition(int position) override { progress.push_back("position " + std::to_string(position)); }
    void setProgressText(std::string_view text) override { progress.push_back("text " + std::string(text)); }
    std::vector<std::string> progress;
};

using Call = std::vector<std::string>; // name, then arguments

class CodecHostTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_savedFolder = std::filesystem::current_path();
        std::filesystem::create_directories(programFolder());
        std::filesystem::create_directories(algos());
        const std::string log = utf8FromPath(logPath());
        setEnv("KESTRELON_FAILING_CODEC_LOG", &log);
        setEnv("KESTRELON_FAILING_CODEC", nullptr);
    }
    void TearDown() override
    {
        std::filesystem::current_path(m_savedFolder);
        setEnv("KESTRELON_FAILING_CODEC", nullptr);
        setEnv("KESTRELON_FAILING_CODEC_LOG", nullptr);
    }

    std::filesystem::path programFolder() const { return m_dir / "program"; }
    std::filesystem::path project() const { return m_dir / "project"; }
    std::filesystem::path algos() const { return project() / "Algos"; }
    std::filesystem::path logPath() const { return m_dir / "calls.log"; }

    // Copies the failing codec into Algos as <name><suffix>, with its body
    // file unless told otherwise; returns the library's path.
    std::filesystem::path install(const std::string& name, bool withBody = true,
                                  const std::filesystem::path& from = kFailingCodec)
    {
        const auto library = algos() / libraryFileName(name);
        std::filesystem::copy_file(from, library, std::filesystem::copy_options::overwrite_existing);
        if (withBody)
            writeBytes(algos() / (name + ".bdy"), "body");
        return library;
    }

    static void mode(const std::string& value) { setEnv("KESTRELON_FAILING_CODEC", &value); }
    // A new failure mode, with no message shown and no call logged yet.
    void reset(const std::string& failing)
    {
        mode(failing);
        m_port.clear();
        clearLog();
    }

    std::vector<Call> calls() const
    {
        std::vector<Call> out;
        std::istringstream lines(readBytes(logPath()));
        for (std::string line; std::getline(lines, line);) {
            Call call;
            std::istringstream fields(line);
            for (std::string field; std::getline(fields, field, '\t');)
                call.push_back(field);
            out.push_back(call);
        }
        return out;
    }
    // The calls as "name" or "set_parameter <id>", for checking the order.
    std::vector<std::string> order() const
    {
        std::vector<std::string> out;
        for (const Call& call : calls())
            out.push_back(call[0] == "set_parameter" ? call[0] + " " + call[1] : call[0]);
        return out;
    }
    void clearLog() const { std::filesystem::remove(logPath()); }

    bool currentFolderIs(const std::filesystem::path& folder) const
    {
        return std::filesystem::equivalent(std::filesystem::current_path(), folder);
    }

    TempDir m_dir;
    ProgressPort m_port;
    MainHostWindow m_mainWindow;

private:
    std::filesystem::path m_savedFolder;
};

} // namespace

TEST_F(CodecHostTest, LoadsConfiguresInOrderAndReleases)
{
    const auto library = install("FailingCodec");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    ASSERT_TRUE(host.loadAlgorithm(project(), libraryFileName("FailingCodec"), "16000"));
    EXPECT_TRUE(host.hasCodec());
    EXPECT_TRUE(currentFolderIs(algos())); // the codec finds its companions there
    EXPECT_TRUE(m_port.texts().empty());

    const std::vector<Call> loaded = calls();
    ASSERT_EQ(loaded.size(), 5u);
    EXPECT_EQ(loaded[0], Call{"create"});
    EXPECT_EQ(loaded[1], (Call{"set_parameter", "0", utf8FromPath(algos() / "FailingCodec.bdy")}));
    EXPECT_EQ(loaded[2], (Call{"set_parameter", "3", "16000"}));
    // Parameter 1 is the main window's address in lower-case hex: the codec
    // finds the window through it (checked end to end by the encode test).
    ASSERT_EQ(loaded[3].size(), 3u);
    EXPECT_EQ(loaded[3][1], "1");
    EXPECT_EQ(std::strtoull(loaded[3][2].c_str(), nullptr, 16), reinterpret_cast<uintptr_t>(m_mainWindow.window()));
    EXPECT_EQ(loaded[3][2].find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_EQ(loaded[4], (Call{"set_parameter", "2", "403"}));

    EXPECT_TRUE(host.releaseAlgorithm());
    EXPECT_FALSE(host.isLoaded());
    EXPECT_TRUE(currentFolderIs(programFolder()));
    EXPECT_EQ(order().back(), "destroy");

    // A relative path names the same file although loading moves the
    // current folder before the library is opened.
    std::filesystem::current_path(project());
    EXPECT_TRUE(host.loadAlgorithmPath(std::filesystem::path("Algos") / libraryFileName("FailingCodec"), ""));
    EXPECT_TRUE(std::filesystem::equivalent(host.libraryPath(), library));
}

TEST_F(CodecHostTest, BitRateParameterFollowsTheFamily)
{
    CodecHost host(programFolder(), m_port, m_mainWindow);
    // The V530 and V720 families take their fixed texts whatever was chosen;
    // V480 and the rest take the chosen one.
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"V530Speech", "5.3K"}, {"v720lite", "7.2K"}, {"V480Speech", "8K"}, {"XV530", "8K"}};
    for (const auto& [name, expected] : cases) {
        SCOPED_TRACE(name);
        install(name);
        clearLog();
        ASSERT_TRUE(host.loadAlgorithm(project(), libraryFileName(name), "8K"));
        ASSERT_GE(calls().size(), 3u);
        EXPECT_EQ(calls()[2], (Call{"set_parameter", "3", expected}));
        host.releaseAlgorithm();
    }
    EXPECT_TRUE(m_port.texts().empty());
}

TEST_F(CodecHostTest, RefusesLibrariesThatAreNoCodecs)
{
    CodecHost host(programFolder(), m_port, m_mainWindow);

    // Not a library at all.
    const auto bogus = algos() / libraryFileName("Bogus");
    writeBytes(bogus, "not a library");
    EXPECT_FALSE(host.loadAlgorithm(project(), libraryFileName("Bogus"), "8K"));
    EXPECT_EQ(m_port.texts(), Texts{utf8FromPath(bogus) + " is loaded unsuccessful !"});
    EXPECT_FALSE(host.isLoaded());

    // A missing body file is refused before any parameter is set.
    m_port.clear();
    install("NoBody", false);
    EXPECT_FALSE(host.loadAlgorithm(project(), libraryFileName("NoBody"), "8K"));
    EXPECT_EQ(m_port.texts(), Texts{"The body file of " + utf8FromPath(algos() / "NoBody.bdy") + " do not exist !"});
    EXPECT_EQ(order(), (Order{"create", "destroy"}));
    EXPECT_FALSE(host.isLoaded());
    EXPECT_TRUE(currentFolderIs(programFolder()));

    // A library without GetDllClassObject is refused and unloaded again.
    m_port.clear();
    const auto noEntry = install("NoEntry", true, kNoEntryCodec);
    EXPECT_FALSE(host.loadAlgorithmPath(noEntry, "8K"));
    EXPECT_EQ(m_port.texts(), Texts{utf8FromPath(noEntry) + " is not a correct algorithm !"});
    EXPECT_FALSE(host.isLoaded());

    // Objects of another contract, or without a table, are handed back to
    // their library to be destroyed, and never called.
    const auto library = install("FailingCodec");
    for (const std::string bad : {"wrong-abi", "null-vtable"}) {
        SCOPED_TRACE(bad);
        reset(bad);
        EXPECT_FALSE(host.loadAlgorithmPath(library, "8K"));
        EXPECT_EQ(m_port.texts(), Texts{utf8FromPath(library) + " is not a correct algorithm !"});
        EXPECT_EQ(order(), (Order{"create", "destroy"}));
        EXPECT_FALSE(host.isLoaded());
    }

    // No object: silent failure, and the library stays loaded until released.
    reset("null-object");
    EXPECT_FALSE(host.loadAlgorithmPath(library, "8K"));
    EXPECT_TRUE(m_port.texts().empty());
    EXPECT_TRUE(host.isLoaded());
    EXPECT_FALSE(host.hasCodec());
    host.releaseAlgorithm();
    EXPECT_FALSE(host.isLoaded());
    EXPECT_EQ(order(), (Order{"create"})); // nothing to destroy
}

TEST_F(CodecHostTest, AFailedParameterReleasesTheCodecAndStopsTheLoad)
{
    const auto library = install("FailingCodec");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    // Parameters go 0, 3, 1, 2; a failure is the last parameter the codec sees.
    Order sent = {"create"};
    for (const char* id : {"0", "3", "1", "2"}) {
        SCOPED_TRACE(id);
        sent.push_back("set_parameter " + std::string(id));
        reset("param" + std::string(id) + "=0x8003;error-text=Parameter refused");
        EXPECT_FALSE(host.loadAlgorithmPath(library, "8K"));
        EXPECT_EQ(m_port.texts(), Texts{"Parameter refused"});
        Order expected = sent;
        expected.insert(expected.end(), {"get_error_text", "destroy"});
        EXPECT_EQ(order(), expected);
        EXPECT_FALSE(host.isLoaded());
        EXPECT_TRUE(currentFolderIs(programFolder()));
    }

    // A codec that refuses with a code below 0x8000 is released silently.
    reset("param1=5");
    EXPECT_FALSE(host.loadAlgorithmPath(library, ""));
    EXPECT_TRUE(m_port.texts().empty());
    EXPECT_FALSE(host.isLoaded());
}

TEST_F(CodecHostTest, LoadingOverALoadedCodecUnloadsWithoutDestroying)
{
    install("First");
    install("Second");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    ASSERT_TRUE(host.loadAlgorithm(project(), libraryFileName("First"), ""));
    ASSERT_TRUE(host.loadAlgorithm(project(), libraryFileName("Second"), ""));
    const Order oneLoad = {"create", "set_parameter 0", "set_parameter 1", "set_parameter 2"};
    Order twoLoads = oneLoad;
    twoLoads.insert(twoLoads.end(), oneLoad.begin(), oneLoad.end());
    EXPECT_EQ(order(), twoLoads); // the first object was abandoned, not destroyed
    EXPECT_TRUE(std::filesystem::equivalent(host.libraryPath(), algos() / libraryFileName("Second")));

    host.releaseAlgorithm();
    twoLoads.push_back("destroy");
    EXPECT_EQ(order(), twoLoads);
}

TEST_F(CodecHostTest, ResultCodesDecideWhatIsShown)
{
    const auto library = install("FailingCodec");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    struct Case {
        std::string mode;
        bool ok;
        std::vector<std::string> shown;
        bool asksText;
    };
    const std::vector<Case> cases = {
        {"encode=0", true, {}, false},
        {"encode=0x7fff", false, {}, false},
        {"encode=0x8005;error-text=never shown", false, {}, false},
        {"encode=0xABCD", false, {"abcd"}, true}, // no text: the code, in lower-case hex
        {"encode=0x8001;error-text=The wave is too short", false, {"The wave is too short"}, true},
        {"encode=0x12345", false, {"12345"}, false}, // not a 16-bit code
    };
    writeBytes(m_dir / "in.wav", "RIFF");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.mode);
        // The mode is read at every call, so it can change under a loaded codec.
        mode("");
        ASSERT_TRUE(host.loadAlgorithmPath(library, ""));
        reset(c.mode);
        EXPECT_EQ(host.encode(m_dir / "in.wav", m_dir / "out.bin", nullptr, nullptr), c.ok);
        EXPECT_EQ(m_port.texts(), c.shown);
        const Order expected = c.asksText ? Order{"encode", "get_error_text"} : Order{"encode"};
        EXPECT_EQ(order(), expected);
        host.releaseAlgorithm();
    }

    // Without a codec there is no text to ask for: the code is shown.
    m_port.clear();
    EXPECT_FALSE(host.checkResult(0x8002));
    EXPECT_EQ(m_port.texts(), Texts{"8002"});
}

TEST_F(CodecHostTest, EncodesAndDecodesThroughTheHostWindows)
{
    const auto library = install("FailingCodec");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    ASSERT_TRUE(host.loadAlgorithmPath(library, "16000"));
    const ProgressBarWindow bar(m_port);
    const ProgressTextWindow text(m_port);

    const std::string wave = "RIFF....WAVEfmt fake wave bytes";
    writeBytes(m_dir / "in.wav", wave);
    ASSERT_TRUE(host.encode(m_dir / "in.wav", m_dir / "out.bin", bar.window(), text.window()));
    const std::string encoded = readBytes(m_dir / "out.bin");
    ASSERT_EQ(encoded.size(), 48 + wave.size());
    EXPECT_EQ(encoded.substr(48), wave);
    EXPECT_EQ(m_port.progress, (Texts{"text FailingCodec encoding", "range 0 100", "position 100"}));
    // The codec reached the main window through parameter 1.
    EXPECT_EQ(m_mainWindow.stepsDone(), 1);

    int32_t value = 0;
    ASSERT_TRUE(host.getFileValue(m_dir / "out.bin", value));
    EXPECT_EQ(value, int32_t(wave.size()));
    std::string extension, tag;
    ASSERT_TRUE(host.outputExtension(extension));
    ASSERT_TRUE(host.outputTag(tag));
    EXPECT_EQ(extension, "fcd");
    EXPECT_EQ(tag, "FC");
    EXPECT_TRUE(host.setEventFile(m_dir / "in.evt"));
    EXPECT_EQ(calls().back(), (Call{"set_event_file", utf8FromPath(m_dir / "in.evt")}));

    ASSERT_TRUE(host.decode(m_dir / "out.bin", m_dir / "back.wav", bar.window(), text.window()));
    EXPECT_EQ(readBytes(m_dir / "back.wav"), wave);

    // The codec's own error text reaches the user.
    EXPECT_FALSE(host.decode(m_dir / "in.wav", m_dir / "back2.wav", nullptr, nullptr));
    EXPECT_EQ(m_port.texts(), Texts{utf8FromPath(m_dir / "in.wav") + " is not a FailingCodec file"});
    EXPECT_FALSE(std::filesystem::exists(m_dir / "back2.wav"));
}

TEST_F(CodecHostTest, EmptySlotsAndAMissingCodecAreNeverCalled)
{
    const auto library = install("FailingCodec");
    CodecHost host(programFolder(), m_port, m_mainWindow);

    // Releasing with nothing loaded still restores the program folder.
    std::filesystem::current_path(project());
    EXPECT_TRUE(host.releaseAlgorithm());
    EXPECT_TRUE(currentFolderIs(programFolder()));

    // Nothing loaded: every call is refused.
    std::string text;
    int32_t value = 0;
    EXPECT_FALSE(host.encode(m_dir / "a.wav", m_dir / "b", nullptr, nullptr));
    EXPECT_FALSE(host.outputExtension(text));
    EXPECT_FALSE(host.getFileValue(m_dir / "b", value));
    EXPECT_FALSE(host.encodeStep(value));

    // Slots 1 (encode), 12 (extension) and 11 (error text) left empty.
    mode("null-slots=1,12,11;decode=0x8001");
    ASSERT_TRUE(host.loadAlgorithmPath(library, ""));
    clearLog();
    EXPECT_FALSE(host.encode(m_dir / "a.wav", m_dir / "b", nullptr, nullptr));
    EXPECT_FALSE(host.outputExtension(text));
    EXPECT_TRUE(host.outputTag(text));
    // Without an error-text slot the code itself is shown.
    EXPECT_FALSE(host.decode(m_dir / "a.wav", m_dir / "b", nullptr, nullptr));
    EXPECT_EQ(m_port.texts(), Texts{"8001"});
    EXPECT_EQ(order(), (Order{"get_output_tag", "decode"}));
    EXPECT_TRUE(m_port.progress.empty());
}

TEST(NameParts, NormalisationLooksAtAllButTheFirstCharacter)
{
    EXPECT_EQ(normalizeNamePart(""), "_");
    EXPECT_EQ(normalizeNamePart("_"), "__");
    EXPECT_EQ(normalizeNamePart("a_"), "a_");
    EXPECT_EQ(normalizeNamePart("ab_"), "ab__");
}

TEST_F(CodecHostTest, DescribesAlgorithmsForTheInformationPanel)
{
    const auto library = install("V530Speech");
    CodecHost host(programFolder(), m_port, m_mainWindow);
    AlgorithmInfo info;
    ASSERT_TRUE(describeAlgorithm(host, library, info));
    EXPECT_EQ((Texts{info.name, info.versionText, info.sampleRateText, info.resolutionText, info.channelsText,
                     info.sampleRatesText, info.bitRatesText, info.description}),
              (Texts{"V530Speech", "1.0", "8000 Hz", "16 bit", "Mono", "8000", "16000 ~ 32000", "Failing test codec"}));
    EXPECT_EQ(order(), (Order{"create", "set_parameter 0", "set_parameter 1", "set_parameter 2", "set_parameter 3",
                              "get_version", "get_info", "get_ranges", "get_description", "destroy"}));
    EXPECT_EQ(calls()[4], (Call{"set_parameter", "3", "5.3K"}));
    EXPECT_FALSE(host.isLoaded());
    EXPECT_TRUE(m_port.texts().empty());

    EXPECT_EQ(versionText(0x00020011u), "2.17");
    EXPECT_EQ(rangeText({-5, 7}), "-5 ~ 7");

    // A refused answer or a refused fixed bit rate: the codec's text, then the name.
    for (const std::string failing : {"ranges=0x8002;error-text=No ranges", "param3=0x8002;error-text=No ranges"}) {
        SCOPED_TRACE(failing);
        reset(failing);
        EXPECT_FALSE(describeAlgorithm(host, library, info));
        EXPECT_EQ(m_port.texts(), (Texts{"No ranges", "V530Speech is loaded unsuccessful !"}));
        EXPECT_EQ(order().back(), "destroy");
        EXPECT_FALSE(host.isLoaded());
    }

    // A library that gives no object is named too, and unloaded.
    reset("null-object");
    EXPECT_FALSE(describeAlgorithm(host, library, info));
    EXPECT_EQ(m_port.texts(), Texts{"V530Speech is loaded unsuccessful !"});
    EXPECT_FALSE(host.isLoaded());
}

TEST_F(CodecHostTest, ListsEveryCodecInTheAlgosFolder)
{
    install("Beta");
    install("Alpha");
    const auto upper = algos() / (std::string("Upper") + toUpperAscii(librarySuffix()));
    std::filesystem::copy_file(kFailingCodec, upper);
    writeBytes(algos() / "Upper.bdy", "body");
    const auto bogus = algos() / libraryFileName("Bogus");
    writeBytes(bogus, "not a library");
    writeBytes(algos() / "readme.txt", "not a codec");

    // Given relative to the current folder, which every load moves.
    CodecHost host(programFolder(), m_port, m_mainWindow);
    std::filesystem::current_path(m_dir.path());
    std::vector<std::string> names;
    for (const AlgorithmInfo& info : listAlgorithmInfo(host, "project"))
        names.push_back(info.name);
    EXPECT_EQ(names, (Texts{"Alpha", "Beta", "Upper"}));
    EXPECT_EQ(m_port.texts(), Texts{utf8FromPath(bogus) + " is loaded unsuccessful !"});
    EXPECT_TRUE(currentFolderIs(programFolder()));

    // A project without an Algos folder lists nothing.
    m_port.clear();
    EXPECT_TRUE(listAlgorithmInfo(host, m_dir / "elsewhere").empty());
    EXPECT_TRUE(m_port.texts().empty());
}
