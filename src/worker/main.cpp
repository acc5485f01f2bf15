// kestrelon-codec-worker: one codec plug-in in a process of its own. The
// engine's CodecWorker starts it and asks over a pipe; it answers over
// another, with the codec's progress and messages on the way (the frames of
// plugins/worker_frames.h, described in docs/codec-worker.md). Every rule of
// the codec host applies here unchanged, since this is the codec host; a
// plug-in that crashes or hangs takes only this process with it.
//
//     kestrelon-codec-worker PROGRAM-FOLDER
#include "common/user_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "host/worker_frames.h"

#include <cerrno>
#include <cstdio>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace kestrelon;
using namespace kestrelon::worker;

int g_asks = -1; // where the host's frames come from
int g_reports = -1; // where ours go

void report(Report type, std::string_view payload = {})
{
    writeFrame(g_reports, static_cast<char>(type), payload);
}

// The host's port as the worker has it: messages go to the host, which shows
// them in order with the rest of its batch. A codec host asks nothing.
class ReportingPort : public UserPort {
public:
    void showMessage(std::string_view text) override { report(Report::Message, text); }
    Answer ask(std::string_view text, Buttons, std::string_view) override
    {
        report(Report::Message, text);
        return Answer::Cancel;
    }
};

// The host's frames, read as they come.
class Asks {
public:
    // Blocks for the next frame; none when the host is gone.
    std::optional<Frame> next()
    {
        while (true) {
            if (std::optional<Frame> frame = m_reader.next())
                return frame;
            if (!readSome())
                return std::nullopt;
        }
    }

    // The codec's stop question, put to the host, which answers from its own
    // progress window at once: a stop lands exactly where it would in process.
    bool stopAsked()
    {
        report(Report::StopQuestion);
        const std::optional<Frame> answer = next();
        return !answer || (answer->type == static_cast<char>(Ask::Stop) && answer->payload == "1");
    }

private:
    bool readSome()
    {
        char buffer[4096];
        ssize_t got;
        do {
            got = ::read(g_asks, buffer, sizeof buffer);
        } while (got < 0 && errno == EINTR);
        if (got <= 0)
            return false;
        m_reader.feed(std::string_view(buffer, std::size_t(got)));
        return true;
    }

    FrameReader m_reader;
};

Asks g_input;

// The progress windows a codec sees in here: their calls travel to the host.
struct RemoteWindows {
    kestrelon_host_window bar{};
    kestrelon_host_window text{};

    RemoteWindows()
    {
        bar.struct_size = sizeof bar;
        bar.set_range = [](void*, int32_t low, int32_t high) {
            report(Report::Range, std::to_string(low) + '\0' + std::to_string(high));
        };
        bar.set_position = [](void*, int32_t position) { report(Report::Position, std::to_string(position)); };
        bar.should_stop = [](void*) -> int32_t { return g_input.stopAsked() ? 1 : 0; };
        text.struct_size = sizeof text;
        text.set_text = [](void*, const char* utf8) { report(Report::Text, utf8 ? utf8 : ""); };
    }
};

void answer(bool ok, std::string_view text = {})
{
    report(Report::Answer,
           std::string(ok ? "1" : "0") + (text.empty() ? "" : std::string(1, '\0') + std::string(text)));
}

// The pipes move to descriptors of their own, and standard output becomes
// standard error: a plug-in that prints must not garble the frames.
bool takePipes()
{
    g_asks = ::dup(STDIN_FILENO);
    g_reports = ::dup(STDOUT_FILENO);
    const int nothing = ::open("/dev/null", O_RDONLY);
    return g_asks >= 0 && g_reports >= 0 && nothing >= 0 && ::dup2(nothing, STDIN_FILENO) >= 0 &&
           ::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || !takePipes()) {
        std::fprintf(stderr, "usage: kestrelon-codec-worker PROGRAM-FOLDER (started by Kestrelon)\n");
        return 2;
    }
    ReportingPort port;
    MainHostWindow mainWindow([] { report(Report::Step); });
    CodecHost host(argv[1], port, mainWindow);
    while (const std::optional<Frame> frame = g_input.next()) {
        const std::vector<std::string> fields = splitFields(frame->payload);
        const auto field = [&](std::size_t i) { return i < fields.size() ? fields[i] : std::string(); };
        switch (static_cast<Ask>(frame->type)) {
        case Ask::Load: answer(host.loadAlgorithmPath(field(0), field(1))); break;
        case Ask::EventFile: answer(host.setEventFile(field(0))); break;
        case Ask::Encode:
        case Ask::Decode: {
            RemoteWindows windows;
            const bool ok = static_cast<Ask>(frame->type) == Ask::Encode
                                ? host.encode(field(0), field(1), &windows.bar, &windows.text)
                                : host.decode(field(0), field(1), &windows.bar, &windows.text);
            answer(ok);
            break;
        }
        case Ask::Extension:
        case Ask::Tag: {
            std::string text;
            const bool ok =
                static_cast<Ask>(frame->type) == Ask::Extension ? host.outputExtension(text) : host.outputTag(text);
            answer(ok, text);
            break;
        }
        case Ask::Release: answer(host.releaseAlgorithm()); break;
        default: answer(false); break;
        }
    }
    return 0;
}
