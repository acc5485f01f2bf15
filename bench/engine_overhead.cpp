// engine_overhead: what the encode/decode engine costs on top of the codec.
//
// For the real ImaAdpcm and Codec2 plug-ins of the program folder, one row of
// a real project in a temporary folder is encoded and decoded through the
// engine (CodecEngine on a MainList: validity check, temporary names, the
// event file, loading the source wave, the codec loaded through CodecHost,
// packing with EncryptZip, the copy beside the project file, unpacking with
// DecryptUnzip for the decode) and, in the same process, through the
// plug-in's C contract alone: the library loaded, its codec object created,
// parameters 0 to 3 and the event file set, encode (or decode) called on
// plain files, the object destroyed and the library unloaded. Both sides do
// the codec's own work (the source loaded, resampled, coded, the header and
// the file written) once per run.
//
// The source is Debian's codec2-examples all.wav (57 s of speech at 8 kHz).
// Runs alternate between the two sides; each side's best run is reported and
// the ratio engine / direct printed. The file work the engine is bound to do
// besides the codec (loading the source once to see that it loads, packing
// the output; unpacking the interim file and packing the decoded wave) is
// also timed alone, and the ratio without it printed, so what is left is the
// engine's own bookkeeping. Usage: engine_overhead [RUNS]; the project lies
// in the system's temporary folder (TMPDIR).
#include "bodies/body_settings.h"
#include "codec/add_encode_data.h"
#include "codec/engine.h"
#include "codec/interim_packer.h"
#include "codec/main_list.h"
#include "codec/project_algorithms.h"
#include "common/dynamic_library.h"
#include "common/paths.h"
#include "common/recording_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "kestrelon/codec_plugin.h"
#include "project/project_session.h"
#include "project/workspace_tree.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

using namespace kestrelon;
namespace fs = std::filesystem;

namespace {

const fs::path kProgramFolder = KESTRELON_PROGRAM_DIR;
const fs::path kSource = "/usr/share/codec2/wav/all.wav";
constexpr const char* kBody = "KS-1 Voice";

double milliseconds(const std::function<bool()>& work, bool& ok)
{
    const auto start = std::chrono::steady_clock::now();
    ok = work() && ok;
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// The best run: on a machine shared with other work, the fastest run is the
// one least disturbed, so it says most about the work itself.
double best(const std::vector<double>& values)
{
    return *std::min_element(values.begin(), values.end());
}

// The codec through its C contract, as a host without an engine would call it.
class DirectCodec {
public:
    DirectCodec(fs::path library, std::string bitRate, UserPort& port)
        : m_library(std::move(library))
        , m_bitRate(std::move(bitRate))
        , m_bar(port)
        , m_text(port)
    {}

    bool encode(const fs::path& wave, const fs::path& output)
    {
        return run([&](kestrelon_codec* codec) {
            return codec->vtable->set_event_file(codec, "") == 0 &&
                   codec->vtable->encode(codec, utf8FromPath(wave).c_str(), utf8FromPath(output).c_str(),
                                         m_bar.window(), m_text.window()) == 0;
        });
    }

    bool decode(const fs::path& encoded, const fs::path& wave)
    {
        return run([&](kestrelon_codec* codec) {
            return codec->vtable->decode(codec, utf8FromPath(encoded).c_str(), utf8FromPath(wave).c_str(),
                                         m_bar.window(), m_text.window()) == 0;
        });
    }

private:
    bool run(const std::function<bool(kestrelon_codec*)>& work)
    {
        DynamicLibrary library;
        if (!library.load(m_library))
            return false;
        const auto create = library.function<kestrelon_codec_factory>(KESTRELON_CODEC_CREATE_SYMBOL);
        const auto destroy = library.function<kestrelon_codec_factory>(KESTRELON_CODEC_DESTROY_SYMBOL);
        kestrelon_codec* codec = nullptr;
        if (!create || !destroy)
            return false;
        create(&codec);
        if (!codec)
            return false;
        fs::path body = m_library;
        body.replace_extension(".bdy");
        char window[32];
        std::snprintf(window, sizeof window, "%llx",
                      static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(m_main.window())));
        const auto set = [&](int32_t id, const std::string& value) {
            return codec->vtable->set_parameter(codec, id, value.c_str()) == 0;
        };
        const bool ok = set(KESTRELON_PARAM_BODY_FILE, utf8FromPath(body)) &&
                        set(KESTRELON_PARAM_BIT_RATE, m_bitRate) && set(KESTRELON_PARAM_MAIN_WINDOW, window) &&
                        set(KESTRELON_PARAM_STEP_MESSAGE, "403") && work(codec);
        destroy(&codec);
        return ok;
    }

    fs::path m_library;
    std::string m_bitRate;
    MainHostWindow m_main;
    ProgressBarWindow m_bar;
    ProgressTextWindow m_text;
};

struct Measured {
    std::vector<double> engine;
    std::vector<double> direct;
};

} // namespace

int main(int argc, char** argv)
{
    const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 7;
    if (!fs::is_regular_file(kSource)) {
        std::fprintf(stderr, "engine_overhead: %s is missing (install Debian's codec2-examples)\n",
                     kSource.string().c_str());
        return 1;
    }
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });
    BodySettings bodies;
    if (!bodies.load(kProgramFolder / pathFromUtf8(kBodySettingsFileName), kProgramFolder, port)) {
        std::fprintf(stderr, "engine_overhead: the program folder's body settings cannot be read\n");
        return 1;
    }

    std::random_device random;
    const fs::path scratch = fs::temp_directory_path() / ("kestrelon-bench-" + std::to_string(random()));
    fs::create_directories(scratch);
    const fs::path startFolder = fs::current_path();
    int status = 0;
    {
        ProjectSession session(port, nullptr, nullptr, kProgramFolder);
        std::vector<AlgoRegEntry> registry;
        MainHostWindow mainWindow;
        CodecHost host(kProgramFolder, port, mainWindow);
        if (!session.newProject(utf8FromPath(scratch), "Bench")) {
            std::fprintf(stderr, "engine_overhead: cannot make a project in %s\n", scratch.string().c_str());
            return 1;
        }
        WorkspaceTree tree(session.document(), session.projectFolder(), session.deletionList(), port);
        ProjectItem* source = tree.addFiles(TreeTarget::topLevel(), {kSource}).front().item;
        const EngineEnvironment env{session, registry, bodies, host, port, kProgramFolder};

        std::printf("engine_overhead: %s (%.1f s of speech), best of %d runs each\n",
                    kSource.filename().string().c_str(), double(fs::file_size(kSource) - 44) / 16000.0, runs);
        std::printf("%-9s %-6s %10s %10s %8s %12s %8s\n", "codec", "step", "engine ms", "direct ms", "ratio",
                    "file work ms", "w/o it");
        for (const auto& [algorithm, bitRate] :
             std::vector<std::pair<std::string, std::string>>{{"ImaAdpcm", "32000"}, {"Codec2", "3200"}}) {
            // One row, added and encoded as Add Encode Data does it.
            FixedEncodeSetting chooser(kBody, algorithm, bitRate);
            LastEncodeSetting last;
            const AddEncodeResult added = addEncodeData(env, {source}, chooser, last);
            if (added.sources.empty() || added.sources.front().encode != RowOutcome::Done) {
                std::fprintf(stderr, "engine_overhead: %s could not be added and encoded\n", algorithm.c_str());
                status = 1;
                continue;
            }
            MainList list = MainList::fromDocument(session.document());
            list.selectRows({*list.rowOf(source, added.sources.front().recordIndex)});
            CodecEngine engine(env);

            const fs::path library = algorithmLibraryPath(session.projectFolder(), algorithm);
            DirectCodec direct(library, bitRate, port);
            const fs::path encoded = scratch / (algorithm + ".raw");
            const fs::path decoded = scratch / (algorithm + ".wav");

            Measured encode;
            Measured decode;
            // What the engine must do besides the codec, timed alone: the
            // source loaded to see that it loads, the output packed (encode);
            // the interim file unpacked and the decoded wave packed (decode).
            std::vector<double> encodeFileWork;
            std::vector<double> decodeFileWork;
            const fs::path packed = scratch / (algorithm + ".packed");
            bool ok = true;
            for (int run = 0; run < runs; ++run) {
                encode.engine.push_back(milliseconds([&] { return engine.encodeSelected(list).allDone(); }, ok));
                encode.direct.push_back(milliseconds([&] { return direct.encode(kSource, encoded); }, ok));
                decode.engine.push_back(milliseconds([&] { return engine.decodeSelected(list).allDone(); }, ok));
                decode.direct.push_back(milliseconds([&] { return direct.decode(encoded, decoded); }, ok));
                encodeFileWork.push_back(milliseconds(
                    [&] {
                        WaveFile wave;
                        return wave.load(kSource) && EncryptZip(encoded, packed);
                    },
                    ok));
                decodeFileWork.push_back(milliseconds(
                    [&] { return DecryptUnzip(packed, scratch / "unpacked") && EncryptZip(decoded, packed); }, ok));
            }
            if (!ok) {
                std::fprintf(stderr, "engine_overhead: a run of %s failed\n", algorithm.c_str());
                status = 1;
            }
            for (const auto& [step, measured, fileWork] :
                 {std::tuple{"encode", &encode, &encodeFileWork}, std::tuple{"decode", &decode, &decodeFileWork}}) {
                const double e = best(measured->engine);
                const double d = best(measured->direct);
                const double f = best(*fileWork);
                std::printf("%-9s %-6s %10.2f %10.2f %8.3f %12.2f %8.3f\n", algorithm.c_str(), step, e, d, e / d, f,
                            (e - f) / d);
            }
        }
        session.document().setModified(false);
        session.closeProject();
    }
    fs::current_path(startFolder);
    std::error_code ec;
    fs::remove_all(scratch, ec);
    return status;
}
