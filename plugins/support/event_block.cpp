#include "support/event_block.h"

#include <algorithm>

namespace kestrelon::support {

namespace {

std::uint32_t scaledPosition(std::uint32_t position, int sourceRate, int workingRate)
{
    if (sourceRate <= 0 || workingRate <= 0 || sourceRate == workingRate)
        return position;
    // Rounded to the nearest sample, halves up; 64 bits hold any 32-bit
    // position times any rate the resampler accepts.
    const std::uint64_t scaled = (std::uint64_t{position} * static_cast<std::uint64_t>(workingRate) * 2 +
                                  static_cast<std::uint64_t>(sourceRate)) /
                                 (static_cast<std::uint64_t>(sourceRate) * 2);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(scaled, UINT32_MAX));
}

void putU16(std::string& out, std::uint16_t value)
{
    out.push_back(static_cast<char>(value & 0xFF));
    out.push_back(static_cast<char>(value >> 8));
}

void putU32(std::string& out, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

std::uint32_t getLittle(std::string_view bytes, std::size_t at, std::size_t size)
{
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value |= std::uint32_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
    return value;
}

} // namespace

std::vector<EncodedEvent> eventsAtRate(const SpeechEventList& events, int sourceRate, int workingRate,
                                       std::size_t sampleCount)
{
    const std::uint32_t last =
        sampleCount == 0 ? 0 : static_cast<std::uint32_t>(std::min<std::size_t>(sampleCount - 1, UINT32_MAX));
    std::vector<EncodedEvent> out;
    for (const SpeechEvent& event : events) {
        if (out.size() == kMaxEncodedEvents)
            break;
        out.push_back({std::min(scaledPosition(event.samples, sourceRate, workingRate), last), event.id});
    }
    return out;
}

std::string eventBlockBytes(const std::vector<EncodedEvent>& events)
{
    const std::size_t count = std::min(events.size(), kMaxEncodedEvents);
    std::string out;
    out.reserve(kEventBlockCountSize + count * kEventBlockEntrySize);
    putU16(out, static_cast<std::uint16_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        putU32(out, events[i].position);
        out.push_back(static_cast<char>(events[i].id));
    }
    return out;
}

std::optional<std::size_t> readEventBlock(std::string_view bytes, std::vector<EncodedEvent>& events)
{
    events.clear();
    if (bytes.size() < kEventBlockCountSize)
        return std::nullopt;
    const std::size_t count = getLittle(bytes, 0, 2);
    const std::size_t size = kEventBlockCountSize + count * kEventBlockEntrySize;
    if (count > kMaxEncodedEvents || bytes.size() < size)
        return std::nullopt;
    events.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = kEventBlockCountSize + i * kEventBlockEntrySize;
        events.push_back({getLittle(bytes, at, 4), static_cast<std::uint8_t>(bytes[at + 4])});
    }
    return size;
}

} // namespace kestrelon::support
