// Speex: Debian's libspeex in narrowband (8000 Hz), one bit rate per
// narrowband mode. Constant bit rate, fixed complexity, no variable-rate or
// discontinuous coding, so the same sound always gives the same bytes.
//
// Payload: the frames (160 samples, 20 ms) written back to back through one
// SpeexBits stream, each exactly bits_per_second / 50 bits (the mode's own
// bits, starting with its 4-bit mode number after the narrowband flag); the
// last byte is filled with libspeex's terminator bits (a 0, then 1s).
//
// Time alignment: the decoder's output lags its input by kLag samples; the
// encoder codes the sound followed by kLag zero samples and the decoder drops
// the first kLag, so the decoded sound lines up with the source and is exactly
// as long. frames = ceil((n + kLag) / 160), or 0 for an empty sound.
#include "common/messages.h"
#include "support/reference_codec.h"

#include <speex/speex.h>

#include <memory>

namespace {

using namespace kestrelon;
using namespace kestrelon::support;

constexpr int kWorkingRate = 8000;
constexpr int kFrameLength = 160;
constexpr int kFramesPerSecond = kWorkingRate / kFrameLength;
// The lag of narrowband decoding, measured by cross-correlating decoded and
// source speech (the same in every mode).
constexpr std::size_t kLag = 80;
constexpr int kComplexity = 3;

// Bit rates in the order offered; the mode numbers are libspeex's narrowband
// sub-modes.
std::vector<CodecMode> speexModes()
{
    const struct {
        int bitsPerSecond;
        std::uint16_t subMode;
    } modes[] = {{2150, 1}, {3950, 8}, {5950, 2}, {8000, 3}, {11000, 4}, {15000, 5}, {18200, 6}, {24600, 7}};
    std::vector<CodecMode> list;
    for (const auto& mode : modes)
        list.push_back({std::to_string(mode.bitsPerSecond), mode.bitsPerSecond, kWorkingRate, mode.subMode});
    return list;
}

int bitsPerFrame(const CodecMode& mode)
{
    return mode.bitsPerSecond / kFramesPerSecond;
}

std::uint64_t frameCount(std::uint64_t sampleCount)
{
    return sampleCount == 0 ? 0 : (sampleCount + kLag + kFrameLength - 1) / kFrameLength;
}

struct EncoderDeleter {
    void operator()(void* state) const { speex_encoder_destroy(state); }
};
struct DecoderDeleter {
    void operator()(void* state) const { speex_decoder_destroy(state); }
};

class SpeexCodec final : public ReferenceCodec {
public:
    SpeexCodec()
        : ReferenceCodec(
              {"Speex", 5, "spx", "speex", "Speex narrowband at 8000 Hz, 2150 to 24600 bit/s, constant bit rate"},
              speexModes())
    {}

private:
    bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode& mode,
                       const ProgressFunction& progress, std::string& payload, std::string& error) override
    {
        error = identity().name + std::string(msg::kCodecLibraryFailed);
        std::unique_ptr<void, EncoderDeleter> encoder(speex_encoder_init(&speex_nb_mode));
        if (!encoder)
            return false;
        int subMode = mode.mode;
        int complexity = kComplexity;
        int off = 0;
        speex_encoder_ctl(encoder.get(), SPEEX_SET_MODE, &subMode);
        speex_encoder_ctl(encoder.get(), SPEEX_SET_COMPLEXITY, &complexity);
        speex_encoder_ctl(encoder.get(), SPEEX_SET_VBR, &off);
        speex_encoder_ctl(encoder.get(), SPEEX_SET_VAD, &off);
        speex_encoder_ctl(encoder.get(), SPEEX_SET_DTX, &off);
        int actualRate = 0;
        int frameLength = 0;
        speex_encoder_ctl(encoder.get(), SPEEX_GET_BITRATE, &actualRate);
        speex_encoder_ctl(encoder.get(), SPEEX_GET_FRAME_SIZE, &frameLength);
        if (actualRate != mode.bitsPerSecond || frameLength != kFrameLength)
            return false;

        const std::uint64_t frames = frameCount(samples.size());
        const int frameBits = bitsPerFrame(mode);
        const std::size_t size = static_cast<std::size_t>(payloadSize(samples.size(), mode));
        // Our own buffer, sized with room to spare: libspeex then never has to
        // grow it (and complain on the console).
        std::string buffer(size + 16, '\0');
        // Over a buffer it does not own, SpeexBits allocates nothing to free.
        SpeexBits bits{};
        speex_bits_init_buffer(&bits, buffer.data(), static_cast<int>(buffer.size()));
        spx_int16_t frame[kFrameLength];
        for (std::uint64_t f = 0; f < frames; ++f) {
            const std::size_t start = static_cast<std::size_t>(f) * kFrameLength;
            for (std::size_t i = 0; i < kFrameLength; ++i)
                frame[i] = start + i < samples.size() ? samples[start + i] : 0;
            speex_encode_int(encoder.get(), frame, &bits);
            if (static_cast<std::uint64_t>(bits.nbBits) != (f + 1) * static_cast<std::uint64_t>(frameBits))
                return false;
            if (!progress(static_cast<std::size_t>(f + 1), static_cast<std::size_t>(frames)))
                return false;
        }
        payload.assign(size, '\0');
        if (size > 0 && speex_bits_write(&bits, payload.data(), static_cast<int>(size)) != static_cast<int>(size))
            return false;
        error.clear();
        return true;
    }

    std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode& mode) const override
    {
        return (frameCount(sampleCount) * static_cast<std::uint64_t>(bitsPerFrame(mode)) + 7) / 8;
    }

    bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode& mode,
                       const ProgressFunction& progress, std::vector<std::int16_t>& samples) override
    {
        std::unique_ptr<void, DecoderDeleter> decoder(speex_decoder_init(&speex_nb_mode));
        if (!decoder)
            return false;
        int on = 1;
        speex_decoder_ctl(decoder.get(), SPEEX_SET_ENH, &on);
        // libspeex reads from a writable buffer; a copy keeps the caller's
        // bytes as they are.
        std::string buffer(payload);
        SpeexBits bits{};
        speex_bits_set_bit_buffer(&bits, buffer.data(), static_cast<int>(buffer.size()));

        const std::uint64_t frames = frameCount(sampleCount);
        const int frameBits = bitsPerFrame(mode);
        spx_int16_t frame[kFrameLength];
        samples.clear();
        samples.reserve(sampleCount);
        std::size_t produced = 0;
        for (std::uint64_t f = 0; f < frames; ++f) {
            // Every frame must be one frame of the file's mode: damaged bits
            // that switch the mode, signal in-band or end the stream early
            // show as a different number of bits read.
            const int before = speex_bits_remaining(&bits);
            if (before < frameBits)
                return false;
            if (speex_decode_int(decoder.get(), &bits, frame) != 0)
                return false;
            if (before - speex_bits_remaining(&bits) != frameBits)
                return false;
            for (std::size_t i = 0; i < kFrameLength; ++i, ++produced)
                if (produced >= kLag && samples.size() < sampleCount)
                    samples.push_back(frame[i]);
            if (!progress(static_cast<std::size_t>(f + 1), static_cast<std::size_t>(frames)))
                return false;
        }
        return samples.size() == sampleCount;
    }
};

} // namespace

KESTRELON_CODEC_PLUGIN(SpeexCodec)
