// Pcm: 16-bit linear samples, little-endian (wave/wave_file.h's packPcm16).
// The bit rate chooses the working rate. The reference for the others: what it
// decodes is the resampled source, sample for sample.
#include "support/reference_codec.h"
#include "wave/wave_file.h"

namespace {

using namespace kestrelon::support;

constexpr std::uint16_t kBitsPerCode = 16;

class PcmCodec final : public ReferenceCodec {
public:
    PcmCodec()
        : ReferenceCodec({"Pcm", 3, "pcm", "pcm", "Linear PCM, 16 bits per sample at 8000 or 16000 Hz"},
                         {{"128000", 128000, 8000, kBitsPerCode}, {"256000", 256000, 16000, kBitsPerCode}})
    {}

private:
    bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode&, const ProgressFunction& progress,
                       std::string& payload, std::string&) override
    {
        payload = kestrelon::packPcm16(samples);
        progress(1, 1);
        return true;
    }

    std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode&) const override { return sampleCount * 2; }

    bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode&,
                       const ProgressFunction& progress, std::vector<std::int16_t>& samples) override
    {
        progress(1, 1);
        return kestrelon::unpackPcm16(payload, samples) && samples.size() == sampleCount;
    }
};

} // namespace

KESTRELON_CODEC_PLUGIN(PcmCodec)
