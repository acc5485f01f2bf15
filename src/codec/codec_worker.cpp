#include "codec/codec_worker.h"

#include "codec/encoded_header.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "host/host_windows.h"
#include "wave/wave_file.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrelon {

namespace fs = std::filesystem;
using namespace std::chrono;
using worker::Ask;
using worker::Report;

namespace {

constexpr int kPollMilliseconds = 50;

// The length of the sound in a wave file, or of an encoded file's sound; 0 when unknown.
double waveSeconds(const fs::path& wave)
{
    WaveFile facts;
    if (!facts.load(wave, WaveRead::FactsOnly) || facts.sampleRate() <= 0)
        return 0;
    return double(facts.frameCount()) / facts.sampleRate();
}

double encodedSeconds(const fs::path& encoded)
{
    std::string head(kEncodedHeaderSize, '\0');
    std::ifstream in(encoded, std::ios::binary);
    if (!in.read(head.data(), std::streamsize(head.size())))
        return 0;
    const std::optional<EncodedHeaderFields> header = parseEncodedHeader(head);
    return header && header->sampleRate > 0 ? double(header->field30) / header->sampleRate : 0;
}

int toInt(const std::string& text)
{
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

} // namespace

std::optional<fs::path> codecWorkerProgram(const fs::path& programFolder)
{
    const fs::path program = programFolder / "kestrelon-codec-worker";
    return isRegularFile(program) ? std::optional(program) : std::nullopt;
}

CodecWorker::CodecWorker(fs::path program, fs::path programFolder, UserPort& port, MainHostWindow& mainWindow)
    : m_program(std::move(program))
    , m_programFolder(std::move(programFolder))
    , m_port(port)
    , m_mainWindow(mainWindow)
{}

CodecWorker::~CodecWorker()
{
    end(false);
}

std::optional<pid_t> CodecWorker::process() const
{
    return m_pid > 0 ? std::optional(m_pid) : std::nullopt;
}

bool CodecWorker::start()
{
    // A worker that dies mid-write must not take this process with it.
    std::signal(SIGPIPE, SIG_IGN);
    int asks[2];
    int reports[2];
    if (::pipe2(asks, O_CLOEXEC) != 0)
        return false;
    if (::pipe2(reports, O_CLOEXEC) != 0) {
        ::close(asks[0]);
        ::close(asks[1]);
        return false;
    }
    const std::string program = m_program.string();
    const std::string folder = m_programFolder.string();
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(asks[0], STDIN_FILENO);
        ::dup2(reports[1], STDOUT_FILENO);
        char* argv[] = {const_cast<char*>(program.c_str()), const_cast<char*>(folder.c_str()), nullptr};
        ::execv(program.c_str(), argv);
        ::_exit(127);
    }
    ::close(asks[0]);
    ::close(reports[1]);
    if (pid < 0) {
        ::close(asks[1]);
        ::close(reports[0]);
        return false;
    }
    m_pid = pid;
    m_asks = asks[1];
    m_reports = reports[0];
    m_reader = {};
    return true;
}

void CodecWorker::end(bool kill)
{
    if (m_pid <= 0)
        return;
    // Closing its input ends a worker that waits; one that is stuck is killed.
    ::close(m_asks);
    if (kill)
        ::kill(m_pid, SIGKILL);
    int status = 0;
    while (::waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {}
    ::close(m_reports);
    m_pid = -1;
    m_asks = m_reports = -1;
}

steady_clock::duration CodecWorker::limitFor(double soundSeconds) const
{
    seconds floor = kTimeFloor;
    if (const char* set = std::getenv("KESTRELON_CODEC_TIME_FLOOR"); set && std::atoi(set) > 0)
        floor = seconds(std::atoi(set));
    return floor + duration_cast<steady_clock::duration>(duration<double>(10 * soundSeconds));
}

void CodecWorker::report(const worker::Frame& frame, const kestrelon_host_window* bar,
                         const kestrelon_host_window* text)
{
    const std::vector<std::string> fields = worker::splitFields(frame.payload);
    switch (static_cast<Report>(frame.type)) {
    case Report::Range:
        if (bar && bar->set_range && fields.size() == 2)
            bar->set_range(bar->context, toInt(fields[0]), toInt(fields[1]));
        break;
    case Report::Position:
        if (bar && bar->set_position)
            bar->set_position(bar->context, toInt(frame.payload));
        break;
    case Report::Text:
        if (text && text->set_text)
            text->set_text(text->context, frame.payload.c_str());
        break;
    case Report::Step: m_mainWindow.stepDone(); break;
    case Report::Message: m_port.showMessage(frame.payload); break;
    case Report::StopQuestion:
        worker::writeFrame(m_asks, static_cast<char>(Ask::Stop), kestrelon_should_stop(bar) ? "1" : "0");
        break;
    default: break;
    }
}

std::optional<CodecWorker::Reply> CodecWorker::call(Ask ask, const std::vector<std::string>& fields,
                                                    steady_clock::duration limit, const std::string& doing,
                                                    const kestrelon_host_window* bar, const kestrelon_host_window* text)
{
    if (m_pid <= 0 && !start()) {
        m_port.showFailure(std::string(msg::kCodecWorkerMissing) + m_program.string(), std::strerror(errno));
        return std::nullopt;
    }
    const std::string name = m_algorithm.empty() ? std::string("The codec") : m_algorithm;
    const auto lost = [&](std::string_view what, bool kill, std::string_view reason) -> std::optional<Reply> {
        end(kill);
        m_broke = true;
        m_port.showFailure(name + std::string(what) + doing + " !", reason);
        return std::nullopt;
    };
    if (!worker::writeFrame(m_asks, static_cast<char>(ask), worker::joinFields(fields)))
        return lost(msg::kCodecStoppedWorking, false, {});

    const auto deadline = steady_clock::now() + limit;
    while (true) {
        while (std::optional<worker::Frame> frame = m_reader.next()) {
            if (frame->type != static_cast<char>(Report::Answer)) {
                report(*frame, bar, text);
                continue;
            }
            const std::vector<std::string> answer = worker::splitFields(frame->payload);
            return Reply{answer[0] == "1", answer.size() > 1 ? answer[1] : std::string()};
        }
        if (steady_clock::now() > deadline)
            return lost(msg::kCodecStoppedAnswering, true,
                        "no answer in " + std::to_string(duration_cast<seconds>(limit).count()) + " s");
        pollfd ready{m_reports, POLLIN, 0};
        if (::poll(&ready, 1, kPollMilliseconds) <= 0)
            continue;
        char buffer[4096];
        const ssize_t got = ::read(m_reports, buffer, sizeof buffer);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0) {
            int status = 0;
            ::waitpid(m_pid, &status, 0);
            m_pid = -1; // reaped: end() only closes what is left
            ::close(m_asks);
            ::close(m_reports);
            m_asks = m_reports = -1;
            m_broke = true;
            const std::string reason = WIFSIGNALED(status) ? std::string(strsignal(WTERMSIG(status)))
                                                           : "exit status " + std::to_string(WEXITSTATUS(status));
            m_port.showFailure(name + std::string(msg::kCodecStoppedWorking) + doing + " !", reason);
            return std::nullopt;
        }
        m_reader.feed(std::string_view(buffer, std::size_t(got)));
    }
}

bool CodecWorker::loadAlgorithmPath(const fs::path& path, std::string_view bitRate)
{
    m_algorithm = utf8FromPath(path.stem());
    m_broke = false;
    const auto reply = call(Ask::Load, {path.string(), std::string(bitRate)}, limitFor(0), "loading");
    return reply && reply->ok;
}

bool CodecWorker::releaseAlgorithm()
{
    if (m_pid > 0)
        call(Ask::Release, {}, limitFor(0), "unloading");
    m_algorithm.clear();
    return true;
}

bool CodecWorker::setEventFile(const fs::path& path)
{
    const auto reply = call(Ask::EventFile, {path.string()}, limitFor(0), "taking the events");
    return reply && reply->ok;
}

bool CodecWorker::encode(const fs::path& wave, const fs::path& output, const kestrelon_host_window* progressBar,
                         const kestrelon_host_window* progressText)
{
    const auto reply = call(Ask::Encode, {wave.string(), output.string()}, limitFor(waveSeconds(wave)),
                            "encoding " + utf8FromPath(wave.filename()), progressBar, progressText);
    return reply && reply->ok;
}

bool CodecWorker::decode(const fs::path& encoded, const fs::path& wave, const kestrelon_host_window* progressBar,
                         const kestrelon_host_window* progressText)
{
    const auto reply = call(Ask::Decode, {encoded.string(), wave.string()}, limitFor(encodedSeconds(encoded)),
                            "decoding " + utf8FromPath(encoded.filename()), progressBar, progressText);
    return reply && reply->ok;
}

bool CodecWorker::outputExtension(std::string& extension)
{
    const auto reply = call(Ask::Extension, {}, limitFor(0), "naming its output");
    if (reply && reply->ok)
        extension = reply->text;
    return reply && reply->ok;
}

bool CodecWorker::outputTag(std::string& tag)
{
    const auto reply = call(Ask::Tag, {}, limitFor(0), "naming its output");
    if (reply && reply->ok)
        tag = reply->text;
    return reply && reply->ok;
}

} // namespace kestrelon
