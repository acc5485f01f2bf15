#include "host/worker_frames.h"

#include <cerrno>

#include <unistd.h>

namespace kestrelon::worker {

std::string encodeFrame(char type, std::string_view payload)
{
    std::string frame(1, type);
    const auto length = static_cast<std::uint32_t>(payload.size());
    for (int shift = 0; shift < 32; shift += 8)
        frame.push_back(static_cast<char>((length >> shift) & 0xFF));
    frame.append(payload);
    return frame;
}

std::string joinFields(const std::vector<std::string>& fields)
{
    std::string joined;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (i > 0)
            joined.push_back('\0');
        joined.append(fields[i]);
    }
    return joined;
}

std::vector<std::string> splitFields(std::string_view payload)
{
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (std::size_t at = payload.find('\0'); at != std::string_view::npos; at = payload.find('\0', start)) {
        fields.emplace_back(payload.substr(start, at - start));
        start = at + 1;
    }
    fields.emplace_back(payload.substr(start));
    return fields;
}

std::optional<Frame> FrameReader::next()
{
    if (m_buffer.size() < 5)
        return std::nullopt;
    std::uint32_t length = 0;
    for (int i = 0; i < 4; ++i)
        length |= static_cast<std::uint32_t>(static_cast<unsigned char>(m_buffer[std::size_t(1 + i)])) << (8 * i);
    if (m_buffer.size() < 5 + std::size_t(length))
        return std::nullopt;
    Frame frame{m_buffer[0], m_buffer.substr(5, length)};
    m_buffer.erase(0, 5 + std::size_t(length));
    return frame;
}

bool writeAll(int fd, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t wrote = ::write(fd, bytes.data(), bytes.size());
        if (wrote < 0 && errno == EINTR)
            continue;
        if (wrote <= 0)
            return false;
        bytes.remove_prefix(std::size_t(wrote));
    }
    return true;
}

bool writeFrame(int fd, char type, std::string_view payload)
{
    return writeAll(fd, encodeFrame(type, payload));
}

} // namespace kestrelon::worker
