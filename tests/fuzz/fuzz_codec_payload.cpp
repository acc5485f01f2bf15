// The payload decoder of one reference codec, whose own source is built into
// this target (KESTRELON_CODEC_BODY names its body file). At start the codec
// encodes a short sound at each bit rate its body offers; each input then
// becomes the payload of one of those files, header and event block kept
// whole, and the codec decodes it. It must refuse or decode, never crash, and
// a decode it accepts has the header's number of samples.
#include "codec/encoded_header.h"
#include "common/file_io.h"
#include "fuzz_file.h"
#include "support/body_file.h"
#include "support/event_block.h"
#include "wave/wave_file.h"

#include <kestrelon/codec_plugin.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

extern "C" void GetDllClassObject(kestrelon_codec** object);

namespace {

using namespace kestrelon;

struct Encoded {
    std::string bitRate;
    std::string front; // header and event block
    std::size_t payloadSize = 0;
};

kestrelon_codec* codec()
{
    static kestrelon_codec* made = [] {
        kestrelon_codec* object = nullptr;
        GetDllClassObject(&object);
        if (!object)
            std::abort();
        object->vtable->set_parameter(object, KESTRELON_PARAM_BODY_FILE, KESTRELON_CODEC_BODY);
        return object;
    }();
    return made;
}

// One well-formed encoding per offered bit rate, of a second of a rising tone.
const std::vector<Encoded>& encodings()
{
    static const std::vector<Encoded> made = [] {
        support::CodecBody body;
        std::string error;
        if (!support::readCodecBody(KESTRELON_CODEC_BODY, body, error))
            std::abort();
        std::vector<Encoded> out;
        for (const support::BodyOffer& offer : body.offers) {
            std::vector<std::int16_t> tone(std::size_t(offer.workingRate));
            for (std::size_t i = 0; i < tone.size(); ++i)
                tone[i] = std::int16_t(8000 * std::sin(double(i) * (0.05 + double(i) * 1e-5)));
            const auto wave = fuzz::scratchFolder() / "tone.wav";
            const auto encoded = fuzz::scratchFolder() / "tone.enc";
            writeWav16(wave, tone, offer.workingRate);
            kestrelon_codec* self = codec();
            if (self->vtable->set_parameter(self, KESTRELON_PARAM_BIT_RATE, offer.bitRate.c_str()) != 0 ||
                self->vtable->encode(self, wave.c_str(), encoded.c_str(), nullptr, nullptr) != 0)
                continue; // a rate the library was built without
            const std::string bytes = readFile(encoded, std::uintmax_t(1) << 24).bytes;
            std::vector<support::EncodedEvent> events;
            const auto block = support::readEventBlock(std::string_view(bytes).substr(kEncodedHeaderSize), events);
            if (!block)
                std::abort();
            const std::size_t front = kEncodedHeaderSize + *block;
            out.push_back({offer.bitRate, bytes.substr(0, front), bytes.size() - front});
        }
        if (out.empty())
            std::abort();
        return out;
    }();
    return made;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const Encoded& chosen = encodings()[data[0] % encodings().size()];
    // The payload exactly as long as the header says, so the decoder itself
    // meets every byte: the input repeated, or cut.
    std::string file = chosen.front;
    for (std::size_t i = 0; i < chosen.payloadSize; ++i)
        file.push_back(size > 1 ? char(data[1 + i % (size - 1)]) : '\0');
    const auto encoded = fuzz::inputFile(reinterpret_cast<const std::uint8_t*>(file.data()), file.size(), "in.enc");
    const auto decoded = fuzz::scratchFolder() / "out.wav";
    kestrelon_codec* self = codec();
    self->vtable->set_parameter(self, KESTRELON_PARAM_BIT_RATE, chosen.bitRate.c_str());
    if (self->vtable->decode(self, encoded.c_str(), decoded.c_str(), nullptr, nullptr) == 0) {
        WaveFile wave;
        if (!wave.load(decoded) || wave.frameCount() != std::int64_t(parseEncodedHeader(file)->field30))
            std::abort();
    }
    return 0;
}
