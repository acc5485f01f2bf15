#include "protocol.h"

#include <cerrno>
#include <random>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace kestrelon::board {

namespace {

constexpr char kSync0 = '\x7E';
constexpr char kSync1 = 'K';
constexpr std::size_t kHeader = 6; // sync (2), type, sequence, length (2)
constexpr std::size_t kTrailer = 2;

} // namespace

std::uint16_t crc16(std::string_view bytes)
{
    std::uint16_t crc = 0xFFFF;
    for (const unsigned char c : bytes) {
        crc ^= std::uint16_t(c << 8);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 0x8000) ? std::uint16_t((crc << 1) ^ 0x1021) : std::uint16_t(crc << 1);
    }
    return crc;
}

void putU16(std::string& out, std::uint16_t value)
{
    out += char(value & 0xFF);
    out += char(value >> 8);
}

void putU32(std::string& out, std::uint32_t value)
{
    putU16(out, std::uint16_t(value & 0xFFFF));
    putU16(out, std::uint16_t(value >> 16));
}

std::uint16_t getU16(std::string_view bytes, std::size_t at)
{
    return std::uint16_t(std::uint8_t(bytes[at]) | std::uint8_t(bytes[at + 1]) << 8);
}

std::uint32_t getU32(std::string_view bytes, std::size_t at)
{
    return std::uint32_t(getU16(bytes, at)) | std::uint32_t(getU16(bytes, at + 2)) << 16;
}

std::string encodeFrame(const Frame& frame)
{
    std::string out{kSync0, kSync1};
    out += char(frame.type);
    out += char(frame.sequence);
    putU16(out, std::uint16_t(frame.payload.size()));
    out += frame.payload;
    putU16(out, crc16(std::string_view(out).substr(2)));
    return out;
}

void FrameParser::feed(std::string_view bytes)
{
    m_buffer.append(bytes);
}

std::optional<Frame> FrameParser::next()
{
    for (;;) {
        const std::size_t sync = m_buffer.find(kSync0);
        if (sync == std::string::npos) {
            m_buffer.clear();
            return std::nullopt;
        }
        m_buffer.erase(0, sync);
        if (m_buffer.size() < kHeader)
            return std::nullopt;
        const std::size_t length = getU16(m_buffer, 4);
        if (m_buffer[1] != kSync1 || length > kMaxPayload) {
            m_buffer.erase(0, 1);
            ++m_rejected;
            continue;
        }
        if (m_buffer.size() < kHeader + length + kTrailer)
            return std::nullopt; // the rest is still on its way
        const std::string_view body = std::string_view(m_buffer).substr(2, kHeader - 2 + length);
        if (crc16(body) != getU16(m_buffer, kHeader + length)) {
            m_buffer.erase(0, 1); // a damaged frame: look for the next sync from here
            ++m_rejected;
            continue;
        }
        Frame frame{FrameType(std::uint8_t(m_buffer[2])), std::uint8_t(m_buffer[3]), m_buffer.substr(kHeader, length)};
        m_buffer.erase(0, kHeader + length + kTrailer);
        return frame;
    }
}

bool Line::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t wrote = ::write(m_fd, bytes.data(), bytes.size());
        if (wrote < 0) {
            if (errno == EINTR || errno == EAGAIN)
                continue;
            return false;
        }
        bytes.remove_prefix(std::size_t(wrote));
    }
    return true;
}

std::string Line::read(std::chrono::milliseconds timeout)
{
    pollfd wait{m_fd, POLLIN, 0};
    if (::poll(&wait, 1, int(timeout.count())) <= 0 || !(wait.revents & POLLIN))
        return {};
    char buffer[4096];
    const ssize_t got = ::read(m_fd, buffer, sizeof buffer);
    return got > 0 ? std::string(buffer, std::size_t(got)) : std::string();
}

HostLink::HostLink(Line& line)
    : m_line(line)
    , m_sequence(std::uint8_t(std::random_device{}()))
{}

bool HostLink::send(FrameType type, std::string payload)
{
    const std::uint8_t sequence = m_sequence++;
    ++m_sent;
    const std::string bytes = encodeFrame(Frame{type, sequence, std::move(payload)});
    for (int attempt = 0; attempt < kRetries; ++attempt) {
        if (attempt > 0)
            ++m_resent;
        if (!m_line.write(bytes))
            return false;
        const auto deadline = std::chrono::steady_clock::now() + kAckWait;
        while (std::chrono::steady_clock::now() < deadline) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            m_parser.feed(m_line.read(std::max(left, std::chrono::milliseconds(1))));
            while (std::optional<Frame> frame = m_parser.next()) {
                if (frame->type == FrameType::Ack) {
                    if (frame->payload.size() == 1 && std::uint8_t(frame->payload[0]) == sequence)
                        return true;
                } else {
                    m_pending.push_back(std::move(*frame));
                }
            }
        }
    }
    return false;
}

std::optional<Frame> HostLink::receive(std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        while (std::optional<Frame> frame = m_parser.next())
            if (frame->type != FrameType::Ack)
                m_pending.push_back(std::move(*frame));
        if (!m_pending.empty()) {
            Frame frame = std::move(m_pending.front());
            m_pending.pop_front();
            return frame;
        }
        const auto now = std::chrono::steady_clock::now();
        if (now >= deadline)
            return std::nullopt;
        m_parser.feed(m_line.read(std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now)));
    }
}

SendEnd sendPlayList(HostLink& link, const std::vector<ListItem>& items, const SendHooks& hooks)
{
    const auto passOn = [&](std::chrono::milliseconds wait) {
        while (std::optional<Frame> frame = link.receive(wait)) {
            if (frame->type == FrameType::Status && frame->payload.size() >= 6)
                hooks.status(std::int16_t(getU16(frame->payload, 0)), getU32(frame->payload, 2));
            wait = std::chrono::milliseconds(0);
        }
    };
    bool paused = false;
    // False when the board did not acknowledge a change of state.
    const auto holdWhilePaused = [&] {
        while (paused != hooks.pauseWanted() || (paused && !hooks.stopped())) {
            if (paused != hooks.pauseWanted()) {
                paused = !paused;
                if (!link.send(FrameType::Pause, std::string(1, char(paused ? 1 : 0))))
                    return false;
            }
            passOn(std::chrono::milliseconds(paused ? 20 : 0));
        }
        return true;
    };
    std::string begin;
    putU16(begin, std::uint16_t(items.size()));
    if (!link.send(FrameType::Begin, begin))
        return SendEnd::NoAck;
    hooks.status(-1, 1); // started
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (!holdWhilePaused())
            return SendEnd::NoAck;
        if (hooks.stopped()) {
            link.send(FrameType::Stop, {});
            return SendEnd::Stopped;
        }
        const ListItem& item = items[i];
        std::string head;
        putU16(head, std::uint16_t(i));
        putU32(head, item.sampleRate);
        putU32(head, std::uint32_t(item.volume));
        putU32(head, std::uint32_t(item.data.size()));
        if (!link.send(FrameType::Item, head))
            return SendEnd::NoAck;
        hooks.status(std::int16_t(i), 1);
        for (std::size_t offset = 0; offset < item.data.size(); offset += kDataChunk) {
            if (!holdWhilePaused())
                return SendEnd::NoAck;
            if (hooks.stopped())
                break;
            std::string chunk;
            putU16(chunk, std::uint16_t(i));
            putU32(chunk, std::uint32_t(offset));
            chunk += item.data.substr(offset, kDataChunk);
            if (!link.send(FrameType::Data, chunk))
                return SendEnd::NoAck;
        }
        std::string end;
        putU16(end, std::uint16_t(i));
        putU32(end, std::uint32_t(item.data.size()));
        if (!hooks.stopped() && !link.send(FrameType::ItemEnd, end))
            return SendEnd::NoAck;
        passOn(std::chrono::milliseconds(0));
    }
    return hooks.stopped() ? SendEnd::Stopped : SendEnd::AllSent;
}

namespace {

speed_t speedOf(std::uint32_t baud)
{
    switch (baud) {
    case 9600: return B9600;
    case 19200: return B19200;
    case 38400: return B38400;
    case 57600: return B57600;
    case 230400: return B230400;
    case 460800: return B460800;
    case 921600: return B921600;
    default: return B115200;
    }
}

} // namespace

int openSerialPort(const std::string& device, std::uint32_t baud)
{
    const int fd = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return -1;
    termios mode{};
    if (::tcgetattr(fd, &mode) == 0) {
        ::cfmakeraw(&mode);
        ::cfsetispeed(&mode, speedOf(baud));
        ::cfsetospeed(&mode, speedOf(baud));
        mode.c_cflag |= CLOCAL | CREAD;
        ::tcsetattr(fd, TCSANOW, &mode);
    }
    ::tcflush(fd, TCIOFLUSH); // what a board said to nobody is no answer to us
    return fd;
}

} // namespace kestrelon::board
