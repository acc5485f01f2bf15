// ImaAdpcm: 4-bit IMA ADPCM. The bit rate chooses the working rate (4 bits per
// sample); the payload is support/ima_adpcm.h's stream, the sample count
// travelling in the header.
#include "support/ima_adpcm.h"
#include "support/reference_codec.h"

namespace {

using namespace kestrelon::support;

constexpr std::uint16_t kBitsPerCode = 4;

class ImaAdpcmCodec final : public ReferenceCodec {
public:
    ImaAdpcmCodec()
        : ReferenceCodec({"ImaAdpcm", 1, "adp", "adpcm", "IMA ADPCM, 4 bits per sample at 8000, 6000 or 4000 Hz"},
                         {{"32000", 32000, 8000, kBitsPerCode},
                          {"24000", 24000, 6000, kBitsPerCode},
                          {"16000", 16000, 4000, kBitsPerCode}})
    {}

private:
    bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode&, const ProgressFunction& progress,
                       std::string& payload, std::string&) override
    {
        payload = imaAdpcmEncode(samples);
        progress(1, 1);
        return true;
    }

    std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode&) const override
    {
        return (sampleCount + 1) / 2;
    }

    bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode&,
                       const ProgressFunction& progress, std::vector<std::int16_t>& samples) override
    {
        samples = imaAdpcmDecode(payload, sampleCount);
        progress(1, 1);
        return samples.size() == sampleCount;
    }
};

} // namespace

KESTRELON_CODEC_PLUGIN(ImaAdpcmCodec)
