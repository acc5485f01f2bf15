#pragma once
// What the reference codec plug-ins share: reading the body file, checking
// the bit rate, loading the source at the working rate, carrying the speech
// events, the 48-byte header, progress, and the checks a decoder makes before
// it trusts a file. A codec adds only its bit rates and its payload.
//
// An encoded file is
//
//   48 bytes  header (codec/encoded_header.h), fields as below
//   2 + 5n    event block (support/event_block.h)
//   rest      the codec's payload, exactly payloadSize(sampleCount) bytes
//
// Header fields used (all others keep the fresh header's values):
//   22  codec id (CodecIdentity::id)        24  16, bits of a decoded sample
//   26  working rate in Hz                  30  sample count at that rate
//   34  the codec's mode number (CodecMode::mode)
//   36  kPayloadLayout, the layout above
#include "kestrelon/codec_plugin.hpp"
#include "support/body_file.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::support {

inline constexpr std::uint8_t kPayloadLayout = 1;
inline constexpr std::uint16_t kDecodedBits = 16;
// Source rates accepted when no body file says otherwise.
inline constexpr int kDefaultSampleRateMin = 4000;
inline constexpr int kDefaultSampleRateMax = 48000;

// One bit rate a codec can work at.
struct CodecMode {
    std::string bitRate; // as users see it: "32000", "700"
    int bitsPerSecond = 0; // 700 for "700"
    int workingRate = 0; // Hz
    std::uint16_t mode = 0; // the codec's own number for it, kept in the header
    // False when the codec knows the bit rate but its library was built
    // without it: a body file may name it, yet it is never offered.
    bool available = true;
};

struct CodecIdentity {
    std::string name; // the algorithm name, also the library's base name
    std::uint16_t id = 0; // kept in the header, so a codec knows its own files
    std::string extension; // of encoded files, without the dot
    std::string tag; // for output names
    std::string description;
};

// Called by a payload coder as it goes: `done` of `total` units finished.
// False when the host asked to stop: the coder returns at once.
using ProgressFunction = std::function<bool(std::size_t done, std::size_t total)>;

class ReferenceCodec : public sdk::Codec {
public:
    uint16_t encode(const std::string& wavePath, const std::string& outputPath, sdk::HostWindow progressBar,
                    sdk::HostWindow progressText) final;
    uint16_t decode(const std::string& encodedPath, const std::string& wavePath, sdk::HostWindow progressBar,
                    sdk::HostWindow progressText) final;
    uint16_t checkAlgorithm() override;
    uint16_t getInfo(kestrelon_codec_info& info) override;
    uint16_t getRanges(kestrelon_range& sampleRates, kestrelon_range& bitRates) override;
    uint32_t version() const override { return 1u << 16 | 0u; }
    int32_t fileValue(const std::string& path) override;
    std::string outputExtension() override { return m_identity.extension; }
    std::string outputTag() override { return m_identity.tag; }
    std::string description() override { return m_identity.description; }
    uint16_t setParameter(int32_t id, const std::string& value) override;

protected:
    // `modes` are every bit rate the codec can work at, in the order it offers
    // them; a body file may offer fewer.
    ReferenceCodec(CodecIdentity identity, std::vector<CodecMode> modes);

    // The payload for `samples`, which are at mode.workingRate. Must be
    // exactly payloadSize(samples.size(), mode) bytes. False, with `error`
    // set, when the codec's library fails.
    virtual bool encodePayload(const std::vector<std::int16_t>& samples, const CodecMode& mode,
                               const ProgressFunction& progress, std::string& payload, std::string& error) = 0;
    // The exact payload size for `sampleCount` samples.
    virtual std::uint64_t payloadSize(std::uint64_t sampleCount, const CodecMode& mode) const = 0;
    // Decodes exactly `sampleCount` samples from a payload of exactly
    // payloadSize(sampleCount, mode) bytes. False when the payload is damaged.
    virtual bool decodePayload(std::string_view payload, std::size_t sampleCount, const CodecMode& mode,
                               const ProgressFunction& progress, std::vector<std::int16_t>& samples) = 0;

    const CodecIdentity& identity() const { return m_identity; }

private:
    void readBody();
    // The mode whose text is `bitRate`, among those the codec can work at and
    // (when the body file was read) the body offers; null when none is.
    const CodecMode* offeredMode(std::string_view bitRate) const;
    // The chosen bit rate's mode, or the first offered one when none is chosen.
    const CodecMode& currentMode() const;
    std::vector<const CodecMode*> offeredModes() const;

    CodecIdentity m_identity;
    std::vector<CodecMode> m_modes;
    CodecBody m_body;
    bool m_bodyRead = false;
    std::string m_bodyError;
};

} // namespace kestrelon::support
