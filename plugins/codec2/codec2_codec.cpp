// Codec2: the low-rate speech coder of Debian's libcodec2, at 8000 Hz, in every
// mode the library offers at that rate.
//
// Payload: the frames' bits back to back, most significant bit first, with no
// padding between frames; only the last byte is padded with zero bits. A frame
// holds exactly the library's bits_per_frame bits (its own packed frame,
// which pads to whole bytes, is cut to those bits).
//
// Time alignment: the decoder's output lags its input by a few frames. The
// encoder codes the sound followed by that many zero samples, and the decoder
// drops the lag from the front, so the decoded sound lines up with the source
// and is exactly as long. frames = ceil((n + lag) / samples_per_frame), or 0
// for an empty sound.
#include "common/messages.h"
#include "support/reference_codec.h"

#include <codec2/codec2.h>

#include <algorithm>
#include <memory>

namespace {

using namespace kestrelon;
using namespace kestrelon::support;

struct Codec2Mode {
    const char* bitRate;
    int bitsPerSecond;
    int libraryMode;
    int samplesPerFrame;
    int bitsPerFrame;
    // Output lag in samples, measured as the shift that best lines up the
    // energy envelopes of decoded and source speech (Debian's codec2 example
    // recordings).
    int lag;
};

constexpr int kWorkingRate = 8000;

constexpr Codec2Mode kModes[] = {
    {"3200", 3200, CODEC2_MODE_3200, 160, 64, 130}, {"2400", 2400, CODEC2_MODE_2400, 160, 48, 145},
    {"1600", 1600, CODEC2_MODE_1600, 320, 64, 135}, {"1400", 1400, CODEC2_MODE_1400, 320, 56, 150},
    {"1300", 1300, CODEC2_MODE_1300, 320, 52, 155}, {"1200", 1200, CODEC2_MODE_1200, 320, 48, 145},
    {"700", 700, CODEC2_MODE_700C, 320, 28, 235},   {"450", 450, CODEC2_MODE_450, 320, 18, 180},
};

struct StateDeleter {
    void operator()(CODEC2* state) const { codec2_destroy(state); }
};
using State = std::unique_ptr<CODEC2, StateDeleter>;

const Codec2Mode* findMode(int libraryMode)
{
    for (const Codec2Mode& mode : kModes)
        if (mode.libraryMode == libraryMode)
            return &mode;
    return nullptr;
}

// A state for the mode, provided the library has the mode and frames it as
// the table says.
State createState(const Codec2Mode& mode)
{
    State state(codec2_create(mode.libraryMode));
    if (state && (codec2_samples_per_frame(state.get()) != mode.samplesPerFrame ||
                  codec2_bits_per_frame(state.get()) != mode.bitsPerFrame))
        state.reset();
    return state;
}

// Every mode of the table, marked unavailable where this build of the
// library leaves it out. Asked once per load of the plug-in.
const std::vector<CodecMode>& knownModes()
{
    static const std::vector<CodecMode> modes = [] {
        std::vector<CodecMode> list;
        for (const Codec2Mode& mode : kModes)
            list.push_back({mode.bitRate, mode.bitsPerSecond, kWorkingRate,
                            static_cast<std::uint16_t>(mode.libraryMode), createState(mode) != nullptr});
        return list;
    }();
    return modes;
}

std::uint64_t frameCount(std::uint64_t sampleCount, const Codec2Mode& mode)
{
    if (sampleCount == 0)
        return 0;
    const std::uint64_t covered = sampleCount + static_cast<std::uint64_t>(mode.lag);
    return (covered + static_cast<std::uint64_t>(mode.samplesPerFrame) - 1) /
           static_cast<std::uint64_t>(mode.samplesPerFrame);
}

class BitWriter {
public:
    // Appends the first `count` bits of `bytes`, most significant bit first.
    void append(const unsigned char* bytes, int count)
    {
        for (int i = 0; i < count; ++i) {
            const bool bit = (bytes[i / 8] >> (7 - i % 8)) & 1;
            if (m_used % 8 == 0)
                m_bytes.push_back('\0');
            if (bit)
                m_bytes.back() =
                    static_cast<char>(static_cast<unsigned char>(m_bytes.back()) | (0x80u >> (m_used % 8)));
            ++m_used;
        }
    }
    std::string take() { return std::move(m_bytes); }

private:
    std::string m_bytes;
    std::uint64_t m_used = 0;
};

class BitReader {
public:
    explicit BitReader(std::string_view bytes)
        : m_bytes(bytes)
    {}
    // The next `count` bits into `out` (most significant bit first, the rest of
    // the last byte zero). False when fewer are left.
    bool read(int count, unsigned char* out, std::size_t outSize)
    {
        if (m_next + static_cast<std::uint64_t>(count) > std::uint64_t{m_bytes.size()} * 8)
            return false;
        std::fill(out, out + outSize, 0);
        for (int i = 0; i < count; ++i, ++m_next) {
            const bool bit = (static_cast<unsigned char>(m_bytes[m_next / 8]) >> (7 - m_next % 8)) & 1;
            if (bit)
                out[i / 8] = static_cast<unsigned char>(out[i / 8] | (0x80u >> (i % 8)));
        }
        return true;
    }

private:
    std::string_view m_bytes;
    std::uint64_t m_next = 0;
};

class Codec2Codec final : public ReferenceCodec {
public:
    Codec2Codec()
        : ReferenceCodec({"Codec2", 4, "c2", "codec2",
                          "Codec2 low-rate speech coder at 8000 Hz, 3200 down to 450 bit/s, frames bit-packed"},
                         knownModes())
    {}

private:
    bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode& codecMode,
                       const ProgressFunction& progress, std::string& payload, std::string& error) override
    {
        const Codec2Mode* mode = findMode(codecMode.mode);
        State state = mode ? createState(*mode) : State();
        if (!state) {
            error = identity().name + std::string(msg::kCodecLibraryFailed);
            return false;
        }
        const std::uint64_t frames = frameCount(samples.size(), *mode);
        const auto frameLength = static_cast<std::size_t>(mode->samplesPerFrame);
        std::vector<short> frame(frameLength);
        std::vector<unsigned char> packed(static_cast<std::size_t>(codec2_bytes_per_frame(state.get())));
        BitWriter writer;
        if (mode->libraryMode == CODEC2_MODE_450) {
            // The library's 450 mode compares the first frame's energy with a
            // "previous frame" value it never initialises, so the first frame
            // would depend on whatever the heap held. One silent frame, coded
            // and dropped, sets that value; the analysis history it leaves is
            // the silence a fresh state starts with, so timing is unchanged.
            std::fill(frame.begin(), frame.end(), short(0));
            codec2_encode(state.get(), packed.data(), frame.data());
        }
        for (std::uint64_t f = 0; f < frames; ++f) {
            const std::size_t start = static_cast<std::size_t>(f) * frameLength;
            for (std::size_t i = 0; i < frameLength; ++i)
                frame[i] = start + i < samples.size() ? samples[start + i] : 0;
            codec2_encode(state.get(), packed.data(), frame.data());
            writer.append(packed.data(), mode->bitsPerFrame);
            if (!progress(static_cast<std::size_t>(f + 1), static_cast<std::size_t>(frames)))
                return false;
        }
        payload = writer.take();
        return true;
    }

    std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode& codecMode) const override
    {
        const Codec2Mode* mode = findMode(codecMode.mode);
        if (!mode)
            return 0;
        return (frameCount(sampleCount, *mode) * static_cast<std::uint64_t>(mode->bitsPerFrame) + 7) / 8;
    }

    bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode& codecMode,
                       const ProgressFunction& progress, std::vector<std::int16_t>& samples) override
    {
        const Codec2Mode* mode = findMode(codecMode.mode);
        State state = mode ? createState(*mode) : State();
        if (!state)
            return false;
        const std::uint64_t frames = frameCount(sampleCount, *mode);
        const auto frameLength = static_cast<std::size_t>(mode->samplesPerFrame);
        const auto lag = static_cast<std::size_t>(mode->lag);
        std::vector<short> frame(frameLength);
        std::vector<unsigned char> packed(static_cast<std::size_t>(codec2_bytes_per_frame(state.get())));
        BitReader reader(payload);
        samples.clear();
        samples.reserve(sampleCount);
        std::size_t produced = 0;
        for (std::uint64_t f = 0; f < frames; ++f) {
            if (!reader.read(mode->bitsPerFrame, packed.data(), packed.size()))
                return false;
            codec2_decode(state.get(), frame.data(), packed.data());
            for (std::size_t i = 0; i < frameLength; ++i, ++produced)
                if (produced >= lag && samples.size() < sampleCount)
                    samples.push_back(frame[i]);
            if (!progress(static_cast<std::size_t>(f + 1), static_cast<std::size_t>(frames)))
                return false;
        }
        return samples.size() == sampleCount;
    }
};

} // namespace

KESTRELON_CODEC_PLUGIN(Codec2Codec)
