#pragma once
// The speech events a reference codec carries in its encoded data, for the
// chip's player: it raises each event when playback reaches its sample.
//
// The block sits right after the 48-byte header, before the codec's payload.
// All numbers are little-endian:
//
//   2 bytes  count of events, 0 .. kMaxEncodedEvents
//   then per event, in ascending order of position:
//     4 bytes  sample position at the codec's working rate
//     1 byte   event id
//
// So a block is 2 + 5 * count bytes; a sound without events still carries the
// two zero bytes of an empty block. Decoders skip the block: events change
// nothing in the decoded sound.
#include "wave/speech_events.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::support {

struct EncodedEvent {
    std::uint32_t position = 0; // in samples at the working rate
    std::uint8_t id = 0;

    bool operator==(const EncodedEvent&) const = default;
};

// As many events as the event-file reader ever gives.
inline constexpr std::size_t kMaxEncodedEvents = 256;
inline constexpr std::size_t kEventBlockCountSize = 2;
inline constexpr std::size_t kEventBlockEntrySize = 5;

// The events of a source at `sourceRate`, moved onto a sound of `sampleCount`
// samples at `workingRate`: each position becomes round(p * workingRate /
// sourceRate) and is then clamped into the sound (0 .. sampleCount - 1; 0 for
// an empty sound), so an event never points past the data it belongs to. The
// order is kept; events beyond kMaxEncodedEvents are dropped. Rates that are
// not positive leave the positions unscaled.
std::vector<EncodedEvent> eventsAtRate(const SpeechEventList& events, int sourceRate, int workingRate,
                                       std::size_t sampleCount);

// The block's bytes; at most kMaxEncodedEvents events are written.
std::string eventBlockBytes(const std::vector<EncodedEvent>& events);

// Reads the block at the start of `bytes` into `events` and gives its size in
// bytes. nullopt (and `events` empty) when the bytes are too short for the
// count they give or the count is above kMaxEncodedEvents.
std::optional<std::size_t> readEventBlock(std::string_view bytes, std::vector<EncodedEvent>& events);

} // namespace kestrelon::support
