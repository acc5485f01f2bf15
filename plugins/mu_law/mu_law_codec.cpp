// MuLaw: 8-bit G.711 mu-law, one byte per sample (support/mu_law.h). The bit
// rate chooses the working rate.
#include "support/mu_law.h"
#include "support/reference_codec.h"

namespace {

using namespace kestrelon::support;

constexpr std::uint16_t kBitsPerCode = 8;
// Samples coded between two progress reports.
constexpr std::size_t kChunk = 4096;

class MuLawCodec final : public ReferenceCodec {
public:
    MuLawCodec()
        : ReferenceCodec({"MuLaw", 2, "ulw", "ulaw", "G.711 mu-law, 8 bits per sample at 8000 or 6000 Hz"},
                         {{"64000", 64000, 8000, kBitsPerCode}, {"48000", 48000, 6000, kBitsPerCode}})
    {}

private:
    bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode&, const ProgressFunction& progress,
                       std::string& payload, std::string&) override
    {
        payload.clear();
        payload.reserve(samples.size());
        for (std::size_t i = 0; i < samples.size(); ++i) {
            payload.push_back(static_cast<char>(muLawFromSample(samples[i])));
            if ((i + 1) % kChunk == 0 && !progress(i + 1, samples.size()))
                return false;
        }
        progress(samples.size(), samples.size());
        return true;
    }

    std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode&) const override { return sampleCount; }

    bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode&,
                       const ProgressFunction& progress, std::vector<std::int16_t>& samples) override
    {
        if (payload.size() != sampleCount)
            return false;
        samples.clear();
        samples.reserve(sampleCount);
        for (std::size_t i = 0; i < sampleCount; ++i) {
            samples.push_back(sampleFromMuLaw(static_cast<std::uint8_t>(payload[i])));
            if ((i + 1) % kChunk == 0 && !progress(i + 1, sampleCount))
                return false;
        }
        progress(sampleCount, sampleCount);
        return true;
    }
};

} // namespace

KESTRELON_CODEC_PLUGIN(MuLawCodec)
