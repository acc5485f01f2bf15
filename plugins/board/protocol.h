#pragma once
// The serial protocol between the board player and a target board (see
// docs/board-protocol.md): framed messages with a length and a CRC, each
// acknowledged by its sequence number, resent a bounded number of times.
// Shared by the board player plug-in and the board simulator.
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::board {

enum class FrameType : std::uint8_t {
    Version = 0x01, // host asks for the versions
    Begin = 0x02, // u16 item count
    Item = 0x03, // u16 index, u32 sample rate, i32 volume, u32 size
    Data = 0x04, // u16 index, u32 offset, bytes
    ItemEnd = 0x05, // u16 index, u32 size
    Stop = 0x06,
    Pause = 0x07, // u8 1 to pause, 0 to go on
    Ack = 0x80, // acknowledges the frame with this sequence number
    VersionReply = 0x82, // u8 host (board) version, u8 driver version
    Status = 0x83, // i16 index, u32 status
};

struct Frame {
    FrameType type = FrameType::Ack;
    std::uint8_t sequence = 0;
    std::string payload;
};

inline constexpr std::size_t kMaxPayload = 1024;
inline constexpr std::size_t kDataChunk = 256;

std::uint16_t crc16(std::string_view bytes); // CRC-16/CCITT-FALSE
std::string encodeFrame(const Frame& frame);

// Takes bytes as they come and gives back whole frames whose CRC holds;
// anything else is skipped, never taken as data.
class FrameParser {
public:
    void feed(std::string_view bytes);
    std::optional<Frame> next();
    std::uint64_t rejected() const { return m_rejected; }

private:
    std::string m_buffer;
    std::uint64_t m_rejected = 0;
};

// Little-endian fields of a payload.
void putU16(std::string& out, std::uint16_t value);
void putU32(std::string& out, std::uint32_t value);
std::uint16_t getU16(std::string_view bytes, std::size_t at);
std::uint32_t getU32(std::string_view bytes, std::size_t at);

// One end of a serial line: raw bytes on a file descriptor.
class Line {
public:
    explicit Line(int fd)
        : m_fd(fd)
    {}
    bool write(std::string_view bytes);
    // Up to what is there within `timeout`; empty when nothing came.
    std::string read(std::chrono::milliseconds timeout);
    int fd() const { return m_fd; }

private:
    int m_fd;
};

// The host's side: every frame sent is acknowledged or resent, and frames
// the board sends of its own accord (status) are kept for the caller.
class HostLink {
public:
    // Numbers start anywhere, so a board cannot take a new run's first frame
    // for the last one of the run before.
    explicit HostLink(Line& line);
    // False when the board did not acknowledge after every retry.
    bool send(FrameType type, std::string payload);
    // A frame of the board's (not an acknowledgement) within `timeout`.
    std::optional<Frame> receive(std::chrono::milliseconds timeout);

    static constexpr int kRetries = 6;
    static constexpr std::chrono::milliseconds kAckWait{250};
    // Frames sent (each counted once) and sent again for want of an ack.
    std::uint64_t sent() const { return m_sent; }
    std::uint64_t resent() const { return m_resent; }

private:
    Line& m_line;
    FrameParser m_parser;
    std::deque<Frame> m_pending;
    std::uint8_t m_sequence = 0;
    std::uint64_t m_sent = 0;
    std::uint64_t m_resent = 0;
};

// One sound of a play list.
struct ListItem {
    std::string data;
    std::uint32_t sampleRate = 0;
    std::int32_t volume = 0;
};

// What the sender asks of its owner between frames.
struct SendHooks {
    std::function<bool()> stopped; // play was stopped
    std::function<bool()> pauseWanted; // play should be held
    std::function<void(std::int16_t, std::uint32_t)> status; // a report for the host
};

enum class SendEnd { AllSent, Stopped, NoAck };

// Sends a play list: Begin, then per item Item, its Data and ItemEnd, holding
// between frames while a pause is wanted (told to the board with Pause) and
// passing the board's status reports on as they come.
SendEnd sendPlayList(HostLink& link, const std::vector<ListItem>& items, const SendHooks& hooks);

// Opens a serial device raw, at `baud`; -1 when it cannot be opened.
int openSerialPort(const std::string& device, std::uint32_t baud);

} // namespace kestrelon::board
