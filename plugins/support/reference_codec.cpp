#include "support/reference_codec.h"

#include "codec/encoded_header.h"
#include "codec/raw_extraction.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/recording_port.h"
#include "support/event_block.h"
#include "support/speech_input.h"
#include "wave/speech_events.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <fstream>
#include <limits>

namespace kestrelon::support {

namespace {

using sdk::Ok;

std::string text(std::string_view piece)
{
    return std::string(piece);
}

std::string fileName(const std::string& path)
{
    return utf8FromPath(pathFromUtf8(path).filename());
}

// Drives the host's progress bar over 0..100 and tells the main window about
// every percent gained, so a long file shows steady progress and a short one
// does not flood the host with messages. The host is asked whether to stop
// at each percent: it takes a Stop click while the bar moves.
class Progress {
public:
    Progress(sdk::HostWindow bar, std::function<void()> step)
        : m_bar(bar)
        , m_step(std::move(step))
    {
        m_bar.setRange(0, 100);
        m_bar.setPosition(0);
    }

    // False once the host asked to stop.
    bool at(int percent)
    {
        percent = std::clamp(percent, 0, 100);
        if (percent > m_position) {
            m_position = percent;
            m_bar.setPosition(percent);
            m_step();
            m_stopped = m_stopped || m_bar.shouldStop();
        }
        return !m_stopped;
    }
    bool stopped() const { return m_stopped; }

    // A function that maps a coder's done/total onto low..high percent.
    ProgressFunction span(int low, int high)
    {
        return [this, low, high](std::size_t done, std::size_t total) {
            const double part = total == 0 ? 1.0 : std::min(1.0, double(done) / double(total));
            return at(low + static_cast<int>((high - low) * part));
        };
    }

private:
    sdk::HostWindow m_bar;
    std::function<void()> m_step;
    int m_position = 0;
    bool m_stopped = false;
};

// Messages of the event-file reader ("Invalid data!") are the host's to show
// when it reads the same file; the codec keeps the defaults the reader gives.
RecordingPort quietPort()
{
    return RecordingPort([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; });
}

} // namespace

ReferenceCodec::ReferenceCodec(CodecIdentity identity, std::vector<CodecMode> modes)
    : m_identity(std::move(identity))
    , m_modes(std::move(modes))
    , m_bodyError(m_identity.name + ".bdy" + text(msg::kCodecBodyUnreadable))
{}

uint16_t ReferenceCodec::setParameter(int32_t id, const std::string& value)
{
    if (id == KESTRELON_PARAM_BIT_RATE && !offeredMode(value))
        return fail(text(msg::kCodecBitRatePrefix) + value + text(msg::kCodecBitRateMiddle) + m_identity.name +
                    text(msg::kCodecSuffix));
    const uint16_t result = Codec::setParameter(id, value);
    if (id == KESTRELON_PARAM_BODY_FILE && result == Ok)
        readBody();
    return result;
}

void ReferenceCodec::readBody()
{
    m_bodyRead = false;
    const std::filesystem::path path = pathFromUtf8(bodyFile());
    const std::string name = utf8FromPath(path.filename());
    CodecBody body;
    if (!readCodecBody(path, body, m_bodyError))
        return;
    if (body.name != m_identity.name) {
        m_bodyError = name + text(msg::kCodecBodyOtherCodec) + body.name + text(msg::kCodecNot) + m_identity.name +
                      text(msg::kCodecSuffix);
        return;
    }
    // Every offer must be a bit rate this codec can work at, at its own rate.
    for (size_t k = 0; k < body.offers.size(); ++k) {
        const BodyOffer& offer = body.offers[k];
        const auto mode = std::find_if(m_modes.begin(), m_modes.end(),
                                       [&](const CodecMode& m) { return m.bitRate == offer.bitRate; });
        if (mode == m_modes.end()) {
            m_bodyError =
                name + text(msg::kCodecBodyBadValue) + "BITRATE" + std::to_string(k) + text(msg::kCodecSuffix);
            return;
        }
        if (mode->workingRate != offer.workingRate) {
            m_bodyError =
                name + text(msg::kCodecBodyBadValue) + "WORKRATE" + std::to_string(k) + text(msg::kCodecSuffix);
            return;
        }
    }
    m_body = std::move(body);
    m_bodyRead = true;
    m_bodyError.clear();
}

const CodecMode* ReferenceCodec::offeredMode(std::string_view bitRate) const
{
    for (const CodecMode* mode : offeredModes())
        if (mode->bitRate == bitRate)
            return mode;
    return nullptr;
}

std::vector<const CodecMode*> ReferenceCodec::offeredModes() const
{
    std::vector<const CodecMode*> offered;
    if (!m_bodyRead) {
        for (const CodecMode& mode : m_modes)
            if (mode.available)
                offered.push_back(&mode);
        return offered;
    }
    for (const BodyOffer& offer : m_body.offers)
        for (const CodecMode& mode : m_modes)
            if (mode.bitRate == offer.bitRate && mode.available)
                offered.push_back(&mode);
    return offered;
}

const CodecMode& ReferenceCodec::currentMode() const
{
    if (const CodecMode* chosen = offeredMode(bitRate()))
        return *chosen;
    const std::vector<const CodecMode*> offered = offeredModes();
    return offered.empty() ? m_modes.front() : *offered.front();
}

uint16_t ReferenceCodec::checkAlgorithm()
{
    return m_bodyRead ? uint16_t(Ok) : fail(m_bodyError);
}

uint16_t ReferenceCodec::getInfo(kestrelon_codec_info& info)
{
    info.sample_rate = currentMode().workingRate;
    info.resolution_bits = kDecodedBits;
    info.channels = 1;
    return Ok;
}

uint16_t ReferenceCodec::getRanges(kestrelon_range& sampleRates, kestrelon_range& bitRates)
{
    sampleRates = m_bodyRead ? kestrelon_range{m_body.sampleRateMin, m_body.sampleRateMax}
                             : kestrelon_range{kDefaultSampleRateMin, kDefaultSampleRateMax};
    bitRates = {std::numeric_limits<int32_t>::max(), 0};
    for (const CodecMode* mode : offeredModes()) {
        bitRates.low = std::min(bitRates.low, mode->bitsPerSecond);
        bitRates.high = std::max(bitRates.high, mode->bitsPerSecond);
    }
    if (bitRates.high == 0)
        bitRates.low = 0;
    return Ok;
}

int32_t ReferenceCodec::fileValue(const std::string& path)
{
    std::ifstream in(pathFromUtf8(path), std::ios::binary);
    std::string head(kEncodedHeaderSize, '\0');
    if (!in.read(head.data(), static_cast<std::streamsize>(head.size())))
        return 0;
    const std::optional<EncodedHeaderFields> header = parseEncodedHeader(head);
    if (!header || header->field22 != m_identity.id)
        return 0;
    return static_cast<int32_t>(std::min<std::uint32_t>(header->field30, std::numeric_limits<int32_t>::max()));
}

uint16_t ReferenceCodec::encode(const std::string& wavePath, const std::string& outputPath, sdk::HostWindow progressBar,
                                sdk::HostWindow /*progressText*/)
{
    if (!m_bodyRead)
        return fail(m_bodyError);
    if (bitRate().empty())
        return fail(text(msg::kCodecNoBitRate) + m_identity.name + text(msg::kCodecSuffix));
    // Set before the body file was read, the bit rate may not be one it offers.
    const CodecMode* chosen = offeredMode(bitRate());
    if (!chosen)
        return fail(text(msg::kCodecBitRatePrefix) + bitRate() + text(msg::kCodecBitRateMiddle) + m_identity.name +
                    text(msg::kCodecSuffix));
    const CodecMode& mode = *chosen;
    Progress progress(progressBar, [this] { stepDone(); });

    std::vector<std::int16_t> samples;
    std::string error;
    int sourceRate = 0;
    if (!loadSpeechAtRate(pathFromUtf8(wavePath), mode.workingRate, samples, &error, &sourceRate))
        return fail(error);
    if (sourceRate < m_body.sampleRateMin || sourceRate > m_body.sampleRateMax)
        return fail(fileName(wavePath) + text(msg::kCodecSourceRateMiddle) + m_identity.name +
                    text(msg::kCodecSourceRateSuffix));
    SpeechEventList events;
    if (!eventFile().empty()) {
        const std::filesystem::path eventPath = pathFromUtf8(eventFile());
        std::string label;
        RecordingPort port = quietPort();
        // A source without an event file simply has no events.
        if (!readSpeechEvents(eventPath, events, label, port) && std::filesystem::exists(eventPath))
            return fail(fileName(eventFile()) + text(msg::kCodecEventsUnreadable));
    }
    const std::string block = eventBlockBytes(eventsAtRate(events, sourceRate, mode.workingRate, samples.size()));

    std::string payload;
    const bool coded = progress.at(20) && encodePayload(samples, mode, progress.span(20, 95), payload, error);
    if (progress.stopped())
        return sdk::Stopped;
    if (!coded)
        return fail(error);
    if (payload.size() != payloadSize(samples.size(), mode))
        return fail(m_identity.name + text(msg::kCodecLibraryFailed));

    EncodedHeaderFields fields;
    fields.field22 = m_identity.id;
    fields.field24 = kDecodedBits;
    fields.sampleRate = static_cast<std::uint32_t>(mode.workingRate);
    fields.field30 = static_cast<std::uint32_t>(samples.size());
    fields.field34 = mode.mode;
    fields.field36 = kPayloadLayout;
    const EncodedHeaderBytes header = makeEncodedHeader(fields);
    std::string bytes(header.begin(), header.end());
    bytes += block;
    bytes += payload;
    if (!writeFileAtomically(pathFromUtf8(outputPath), bytes))
        return fail(text(msg::kCodecCanNotWrite) + fileName(outputPath) + text(msg::kCodecSuffix));
    progress.at(100);
    return Ok;
}

uint16_t ReferenceCodec::decode(const std::string& encodedPath, const std::string& wavePath,
                                sdk::HostWindow progressBar, sdk::HostWindow /*progressText*/)
{
    const std::string name = fileName(encodedPath);
    const std::string damaged = name + text(msg::kCodecDamaged);
    Progress progress(progressBar, [this] { stepDone(); });

    const ReadResult read = readFile(pathFromUtf8(encodedPath), kMaxEncodedFileBytes);
    if (read.status != ReadStatus::Ok)
        return fail(name + text(msg::kNotACorrectEncodedFile));
    const std::optional<EncodedHeaderFields> header = parseEncodedHeader(read.bytes);
    if (!header)
        return fail(name + text(msg::kNotACorrectEncodedFile));
    if (header->field22 != m_identity.id)
        return fail(name + text(msg::kCodecOtherCodecFile) + m_identity.name + text(msg::kCodecSuffix));
    const auto mode = std::find_if(m_modes.begin(), m_modes.end(), [&](const CodecMode& m) {
        return m.mode == header->field34 && static_cast<std::uint32_t>(m.workingRate) == header->sampleRate;
    });
    if (header->field36 != kPayloadLayout || header->field24 != kDecodedBits || mode == m_modes.end())
        return fail(damaged);
    if (!mode->available)
        return fail(text(msg::kCodecBitRatePrefix) + mode->bitRate + text(msg::kCodecBitRateMiddle) + m_identity.name +
                    text(msg::kCodecSuffix));

    // Events are for the chip; the decoded sound does not depend on them.
    const std::string_view rest = std::string_view(read.bytes).substr(kEncodedHeaderSize);
    std::vector<EncodedEvent> events;
    const std::optional<std::size_t> blockSize = readEventBlock(rest, events);
    if (!blockSize)
        return fail(damaged);
    const std::string_view payload = rest.substr(*blockSize);
    const std::uint64_t sampleCount = header->field30;
    if (payload.size() != payloadSize(sampleCount, *mode))
        return fail(damaged);

    std::vector<std::int16_t> samples;
    const bool decoded = progress.at(10) && decodePayload(payload, static_cast<std::size_t>(sampleCount), *mode,
                                                          progress.span(10, 90), samples);
    if (progress.stopped())
        return sdk::Stopped;
    if (!decoded || samples.size() != sampleCount)
        return fail(damaged);
    if (!writeWav16(pathFromUtf8(wavePath), samples, mode->workingRate))
        return fail(text(msg::kCodecCanNotWrite) + fileName(wavePath) + text(msg::kCodecSuffix));
    progress.at(100);
    return Ok;
}

} // namespace kestrelon::support
