#include "codec/codec_pool.h"

#include "codec/interim_packer.h"
#include "common/file_io.h"
#include "common/user_port.h"
#include "host/host_windows.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <utility>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

// What a codec call showed and asked, in order: its messages, its progress,
// and each time it asked whether to stop.
struct Shown {
    enum class Kind { Message, Failure, Range, Position, Text, StopAsked } kind;
    std::string text;
    std::string reason;
    int low = 0;
    int high = 0;
};

// One codec call as a helper made it: its answer and what it showed.
struct Step {
    bool ok = false;
    bool broke = false; // the codec crashed or stopped answering in it
    std::vector<Shown> shown;
};

std::string bytesOf(const fs::path& file)
{
    return file.empty() ? std::string() : readFile(file, kMaxInterimOriginalBytes).bytes;
}

// A helper's output goes where the engine wants it: the scratch folder lies
// in Temp, so this is a rename.
bool moveInto(const fs::path& from, const fs::path& to)
{
    std::error_code ec;
    fs::rename(from, to, ec);
    if (!ec)
        return true;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
    return !ec;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    if (from.empty())
        return;
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

// Paths the helper used, and the engine's paths for the same files.
using Renames = std::vector<std::pair<fs::path, fs::path>>;

// Shows what a helper's call showed, as the engine's own call would have,
// its progress on the engine's windows: the helper's scratch names become
// the engine's. False when the person asked to stop where the codec asked:
// the engine's own codec would have stopped there, writing nothing.
bool replay(UserPort& port, const Step& step, const Renames& renames, const kestrelon_host_window* bar = nullptr,
            const kestrelon_host_window* line = nullptr)
{
    using Kind = Shown::Kind;
    for (const Shown& shown : step.shown) {
        std::string text = shown.text;
        for (const auto& [helper, engine] : renames) {
            replaceAll(text, helper.string(), engine.string());
            replaceAll(text, helper.filename().string(), engine.filename().string());
        }
        switch (shown.kind) {
        case Kind::Message: port.showMessage(text); break;
        case Kind::Failure: port.showFailure(text, shown.reason); break;
        case Kind::Range:
            if (bar && bar->set_range)
                bar->set_range(bar->context, shown.low, shown.high);
            break;
        case Kind::Position:
            if (bar && bar->set_position)
                bar->set_position(bar->context, shown.low);
            break;
        case Kind::Text:
            if (line && line->set_text)
                line->set_text(line->context, text.c_str());
            break;
        case Kind::StopAsked:
            if (kestrelon_should_stop(bar))
                return false;
            break;
        }
    }
    return true;
}

// How far ahead of the engine the helpers may go, in jobs per helper: enough
// to keep them busy, little enough that a stop wastes little.
constexpr std::size_t kAheadPerHelper = 2;

} // namespace

// One expected row's codec calls as a helper made them.
struct CodecPool::Prepared {
    CodecJob job;
    std::size_t index = 0;
    std::string events; // the event file's bytes when the row was expected
    enum class State { Waiting, Taken, Done, PassedOver } state = State::Waiting;

    // The encode: load, events, encode (with its extension and tag), release.
    Step load, takeEvents, encode, release;
    fs::path encoded;
    std::optional<std::string> extension, tag;
    bool encodeUsed = false;

    // The decode after it, or of the row's interim file: load, tag, decode, release.
    bool decodePrepared = false;
    std::string decodeInput;
    fs::path decodeInputPath;
    Step decodeLoad, decode, decodeRelease;
    std::optional<std::string> decodeTag;
    fs::path decoded;
    bool decodeUsed = false;
};

// A helper's port: it keeps what the codec shows for the engine to show in
// row order, and asks the codec to stop when the batch ends early. Codecs
// ask no questions; one that did would hear Cancel.
class CodecPool::HelperPort : public UserPort {
public:
    explicit HelperPort(const std::atomic<bool>& cancel)
        : m_cancel(cancel)
    {}

    void showMessage(std::string_view text) override { m_shown.push_back({Shown::Kind::Message, std::string(text)}); }
    void showFailure(std::string_view text, std::string_view reason) override
    {
        m_shown.push_back({Shown::Kind::Failure, std::string(text), std::string(reason)});
    }
    Answer ask(std::string_view text, Buttons, std::string_view) override
    {
        showMessage(text);
        return Answer::Cancel;
    }
    void setProgressRange(int low, int high) override { m_shown.push_back({Shown::Kind::Range, {}, {}, low, high}); }
    void setProgressPosition(int position) override { m_shown.push_back({Shown::Kind::Position, {}, {}, position}); }
    void setProgressText(std::string_view text) override { m_shown.push_back({Shown::Kind::Text, std::string(text)}); }
    bool stopRequested() override
    {
        m_shown.push_back({Shown::Kind::StopAsked});
        return m_cancel;
    }
    std::vector<Shown> take() { return std::exchange(m_shown, {}); }

private:
    const std::atomic<bool>& m_cancel;
    std::vector<Shown> m_shown;
};

CodecPool::CodecPool(std::unique_ptr<CodecRunner> own, UserPort& port, MakeCodec make, int helpers)
    : m_own(std::move(own))
    , m_port(port)
    , m_make(std::move(make))
    , m_helperCount(helpers)
{}

CodecPool::~CodecPool()
{
    stopExpecting();
    {
        const std::lock_guard lock(m_mutex);
        m_closing = true;
    }
    m_changed.notify_all();
    for (std::thread& helper : m_helpers)
        helper.join();
}

void CodecPool::expect(const std::vector<CodecJob>& jobs, const fs::path& scratch)
{
    stopExpecting();
    if (m_helperCount <= 0 || jobs.empty())
        return;
    std::error_code ec;
    fs::remove_all(scratch, ec); // left by a run that was killed
    if (!fs::create_directories(scratch, ec))
        return; // the engine's own codec does every row
    {
        const std::lock_guard lock(m_mutex);
        m_scratch = scratch;
        for (const CodecJob& job : jobs) {
            auto prepared = std::make_unique<Prepared>();
            prepared->job = job;
            prepared->index = m_jobs.size();
            prepared->events = bytesOf(job.events);
            if (job.interim.empty())
                m_encodes[job.library.string() + '\n' + job.bitRate + '\n' + job.wave.string()].push_back(
                    prepared->index);
            m_jobs.push_back(std::move(prepared));
        }
        m_cursor = m_nextTake = 0;
        m_cancel = false;
    }
    while (int(m_helpers.size()) < m_helperCount)
        m_helpers.emplace_back([this] { helperLoop(); });
    m_changed.notify_all();
}

void CodecPool::stopExpecting()
{
    std::unique_lock lock(m_mutex);
    if (m_jobs.empty())
        return;
    for (const auto& job : m_jobs)
        if (job->state == Prepared::State::Waiting)
            job->state = Prepared::State::PassedOver;
    m_cancel = true; // a helper's codec asks whether to stop and hears yes
    m_changed.notify_all();
    m_changed.wait(lock, [this] {
        return std::none_of(m_jobs.begin(), m_jobs.end(),
                            [](const auto& job) { return job->state == Prepared::State::Taken; });
    });
    m_jobs.clear();
    m_encodes.clear();
    m_answered = nullptr;
    m_cancel = false;
    std::error_code ec;
    fs::remove_all(m_scratch, ec);
}

void CodecPool::helperLoop()
{
    HelperPort port(m_cancel);
    MainHostWindow window;
    const std::unique_ptr<CodecRunner> codec = m_make(port, window);
    const std::size_t ahead = kAheadPerHelper * std::size_t(m_helperCount);
    while (true) {
        Prepared* job = nullptr;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] {
                while (m_nextTake < m_jobs.size() && m_jobs[m_nextTake]->state != Prepared::State::Waiting)
                    ++m_nextTake;
                return m_closing || (m_nextTake < m_jobs.size() && m_nextTake < m_cursor + ahead);
            });
            if (m_closing)
                return;
            job = m_jobs[m_nextTake++].get();
            job->state = Prepared::State::Taken;
        }
        prepare(*job, *codec, port);
        {
            const std::lock_guard lock(m_mutex);
            job->state = Prepared::State::Done;
        }
        m_changed.notify_all();
    }
}

void CodecPool::prepare(Prepared& p, CodecRunner& codec, HelperPort& port) const
{
    const fs::path base = m_scratch / ("job" + std::to_string(p.index));
    const ProgressBarWindow bar(port);
    const ProgressTextWindow text(port);
    const auto step = [&port, &codec](Step& into, bool ok) {
        into.ok = ok;
        into.broke = codec.brokeSinceLoad();
        into.shown = port.take();
        return ok;
    };
    fs::path decodeFrom;
    if (p.job.interim.empty()) {
        p.encoded = fs::path(base).concat(".enc");
        if (step(p.load, codec.loadAlgorithmPath(p.job.library, p.job.bitRate))) {
            if (step(p.takeEvents, codec.setEventFile(p.job.events)) &&
                codec.encode(p.job.wave, p.encoded, bar.window(), text.window())) {
                p.encode.ok = true;
                std::string named;
                if (codec.outputExtension(named))
                    p.extension = named;
                if (codec.outputTag(named))
                    p.tag = named;
            }
            p.encode.shown = port.take();
            p.encode.broke = codec.brokeSinceLoad();
            step(p.release, codec.releaseAlgorithm());
        }
        if (!p.job.decodeToo || !p.encode.ok)
            return;
        decodeFrom = p.encoded;
    } else {
        decodeFrom = fs::path(base).concat(".unp");
        if (!DecryptUnzip(p.job.interim, decodeFrom, nullptr))
            return; // the engine meets the damage itself, and says so
    }
    p.decodeInput = bytesOf(decodeFrom);
    p.decodeInputPath = decodeFrom;
    p.decoded = fs::path(base).concat(".dec");
    if (step(p.decodeLoad, codec.loadAlgorithmPath(p.job.library, p.job.bitRate))) {
        if (std::string named; codec.outputTag(named))
            p.decodeTag = named;
        step(p.decode, codec.decode(decodeFrom, p.decoded, bar.window(), text.window()));
        step(p.decodeRelease, codec.releaseAlgorithm());
    }
    p.decodePrepared = true;
}

bool CodecPool::waitUntilPrepared(Prepared& job)
{
    std::unique_lock lock(m_mutex);
    // Not started yet: the engine does the row itself rather than wait.
    if (job.state == Prepared::State::Waiting)
        job.state = Prepared::State::PassedOver;
    while (job.state == Prepared::State::Taken) {
        m_changed.wait_for(lock, std::chrono::milliseconds(50));
        lock.unlock();
        // The person may stop the batch while a helper works on its row; the
        // row is then cut short as the engine's own codec would cut it.
        m_port.idle();
        if (m_port.stopRequested())
            m_cancel = true;
        lock.lock();
    }
    return job.state == Prepared::State::Done;
}

void CodecPool::passOver(std::size_t upTo)
{
    {
        const std::lock_guard lock(m_mutex);
        for (std::size_t i = m_cursor; i < upTo && i < m_jobs.size(); ++i)
            if (m_jobs[i]->state == Prepared::State::Waiting)
                m_jobs[i]->state = Prepared::State::PassedOver;
        m_cursor = std::max(m_cursor, upTo);
    }
    m_changed.notify_all();
}

CodecPool::Prepared* CodecPool::preparedEncode(const fs::path& wave)
{
    const auto found = m_encodes.find(m_library.string() + '\n' + m_bitRate + '\n' + wave.string());
    if (found == m_encodes.end())
        return nullptr;
    const std::string events = bytesOf(m_events.value_or(fs::path()));
    for (const std::size_t index : found->second) {
        Prepared& job = *m_jobs[index];
        if (index < m_cursor || job.encodeUsed)
            continue;
        passOver(index);
        if (!waitUntilPrepared(job) || job.events != events)
            return nullptr;
        job.encodeUsed = true;
        return &job;
    }
    return nullptr;
}

CodecPool::Prepared* CodecPool::preparedDecode(const std::string* bytes)
{
    const std::size_t ahead = kAheadPerHelper * std::size_t(m_helperCount);
    for (std::size_t index = m_cursor; index < m_jobs.size() && index < m_cursor + ahead; ++index) {
        Prepared& job = *m_jobs[index];
        if (job.decodeUsed || job.job.library != m_library || job.job.bitRate != m_bitRate ||
            (job.job.interim.empty() && !job.job.decodeToo))
            continue;
        if (!waitUntilPrepared(job) || !job.decodePrepared)
            continue;
        if (bytes == nullptr)
            return &job;
        if (job.decodeInput != *bytes)
            continue;
        job.decodeUsed = true;
        passOver(index + 1);
        return &job;
    }
    return nullptr;
}

bool CodecPool::goLive()
{
    if (!m_live) {
        m_live = true;
        m_liveLoaded = m_own->loadAlgorithmPath(m_library, m_bitRate) && (!m_events || m_own->setEventFile(*m_events));
    }
    return m_liveLoaded;
}

bool CodecPool::loadAlgorithmPath(const fs::path& path, std::string_view bitRate)
{
    m_library = path;
    m_bitRate = std::string(bitRate);
    m_events.reset();
    m_answered = nullptr;
    m_live = false;
    m_broke = false;
    // Nothing expected: the engine's own codec, at once.
    if (m_jobs.empty()) {
        m_live = true;
        m_liveLoaded = m_own->loadAlgorithmPath(path, bitRate);
        return m_liveLoaded;
    }
    return true;
}

bool CodecPool::releaseAlgorithm()
{
    if (m_answered != nullptr)
        replay(m_port, m_answered->decodeUsed ? m_answered->decodeRelease : m_answered->release, {});
    m_answered = nullptr;
    m_events.reset();
    if (!std::exchange(m_live, false))
        return true;
    const bool released = m_own->releaseAlgorithm();
    m_broke = m_own->brokeSinceLoad();
    return released;
}

bool CodecPool::setEventFile(const fs::path& path)
{
    if (m_live)
        return m_own->setEventFile(path);
    m_events = path;
    return true;
}

bool CodecPool::encode(const fs::path& wave, const fs::path& output, const kestrelon_host_window* progressBar,
                       const kestrelon_host_window* progressText)
{
    Prepared* job = m_live ? nullptr : preparedEncode(wave);
    // A helper's encode that failed left no output; one that succeeded must
    // reach the engine's file, or the engine's own codec does the row.
    if (job == nullptr || (job->encode.ok && !moveInto(job->encoded, output)))
        return goLive() && m_own->encode(wave, output, progressBar, progressText);
    const Renames renames{{job->encoded, output}, {job->job.events, m_events.value_or(fs::path())}};
    m_answered = job;
    ++m_served;
    m_broke = job->load.broke || job->takeEvents.broke || job->encode.broke;
    replay(m_port, job->load, renames);
    if (!job->load.ok)
        return false;
    replay(m_port, job->takeEvents, renames);
    if (!job->takeEvents.ok)
        return false;
    return replay(m_port, job->encode, renames, progressBar, progressText) && job->encode.ok;
}

bool CodecPool::decode(const fs::path& encoded, const fs::path& wave, const kestrelon_host_window* progressBar,
                       const kestrelon_host_window* progressText)
{
    Prepared* job = nullptr;
    if (!m_live) {
        const std::string bytes = bytesOf(encoded);
        job = preparedDecode(&bytes);
    }
    if (job == nullptr || (job->decode.ok && !moveInto(job->decoded, wave)))
        return goLive() && m_own->decode(encoded, wave, progressBar, progressText);
    const Renames renames{{job->decodeInputPath, encoded}, {job->decoded, wave}};
    m_answered = job;
    ++m_served;
    m_broke = job->decodeLoad.broke || job->decode.broke;
    replay(m_port, job->decodeLoad, renames);
    if (!job->decodeLoad.ok)
        return false;
    return replay(m_port, job->decode, renames, progressBar, progressText) && job->decode.ok;
}

bool CodecPool::outputExtension(std::string& extension)
{
    if (m_answered == nullptr || m_answered->decodeUsed)
        return goLive() && m_own->outputExtension(extension);
    if (m_answered->extension)
        extension = *m_answered->extension;
    return m_answered->extension.has_value();
}

bool CodecPool::outputTag(std::string& tag)
{
    if (m_answered != nullptr && !m_answered->decodeUsed) {
        if (m_answered->tag)
            tag = *m_answered->tag;
        return m_answered->tag.has_value();
    }
    // Asked before a decode: the codec's tag at this rate, as a helper that
    // loaded it heard it.
    if (!m_live)
        if (const Prepared* job = preparedDecode(nullptr); job && job->decodeLoad.ok && job->decodeTag) {
            tag = *job->decodeTag;
            return true;
        }
    return goLive() && m_own->outputTag(tag);
}

} // namespace kestrelon
