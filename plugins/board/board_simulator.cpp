// kestrelon-board-sim: a target board on a pseudo-terminal, for trying board
// play without hardware. It prints the terminal's device path on its first
// line (and links it at --link PATH), speaks the board protocol
// (docs/board-protocol.md) at the baud rate's pace unless --fast, and writes
// every item it receives whole as DIR/item-<k>.bin, k counting from 0.
//
//     kestrelon-board-sim [--link PATH] [--record DIR] [--fast] [--baud N]
//                         [--host-version N] [--driver-version N] [--driver-fails]
//                         [--stop-acking-after BYTES] [--corrupt-rate P] [--seed S]
//
// --stop-acking-after BYTES: once that many bytes came in, the board answers
// no more, as one that hangs. --corrupt-rate P: each byte crossing the line,
// either way, has the chance P (0 to 1) of one bit flipped. SIGTERM ends it.
#include "protocol.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

using namespace kestrelon::board;

namespace {

struct Options {
    std::string link;
    std::string record;
    bool fast = false;
    std::uint32_t baud = 115200;
    int hostVersion = 3;
    int driverVersion = 2;
    bool driverFails = false;
    long long stopAckingAfter = -1;
    double corruptRate = 0;
    unsigned seed = 1;
};

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        const auto value = [&]() -> std::string { return i + 1 < argc ? argv[++i] : std::string(); };
        if (name == "--link")
            options.link = value();
        else if (name == "--record")
            options.record = value();
        else if (name == "--fast")
            options.fast = true;
        else if (name == "--baud")
            options.baud = std::uint32_t(std::max(1L, std::atol(value().c_str())));
        else if (name == "--host-version")
            options.hostVersion = std::atoi(value().c_str());
        else if (name == "--driver-version")
            options.driverVersion = std::atoi(value().c_str());
        else if (name == "--driver-fails")
            options.driverFails = true;
        else if (name == "--stop-acking-after")
            options.stopAckingAfter = std::atoll(value().c_str());
        else if (name == "--corrupt-rate")
            options.corruptRate = std::atof(value().c_str());
        else if (name == "--seed")
            options.seed = unsigned(std::atol(value().c_str()));
    }
    return options;
}

std::string g_link; // removed when the simulator ends

void endOnSignal(int)
{
    if (!g_link.empty())
        ::unlink(g_link.c_str());
    ::_exit(0);
}

class Board {
public:
    Board(Line& line, Options options)
        : m_line(line)
        , m_options(std::move(options))
        , m_random(m_options.seed)
    {}

    void run()
    {
        FrameParser parser;
        for (;;) {
            const std::string bytes = m_line.read(std::chrono::milliseconds(1000));
            if (bytes.empty()) {
                // With no host on the line the terminal reports a hang-up at once.
                ::usleep(10000);
                continue;
            }
            m_received += bytes.size();
            // A real line delivers ten bits a byte at the baud rate.
            if (!m_options.fast)
                ::usleep(useconds_t(bytes.size() * 10'000'000ull / m_options.baud));
            parser.feed(noisy(bytes));
            while (std::optional<Frame> frame = parser.next())
                handle(*frame);
        }
    }

private:
    std::string noisy(std::string bytes)
    {
        if (m_options.corruptRate <= 0)
            return bytes;
        std::bernoulli_distribution flip(m_options.corruptRate);
        std::uniform_int_distribution<int> bit(0, 7);
        for (char& c : bytes)
            if (flip(m_random))
                c = char(c ^ (1 << bit(m_random)));
        return bytes;
    }

    void send(FrameType type, std::string payload)
    {
        m_line.write(noisy(encodeFrame(Frame{type, m_sent++, std::move(payload)})));
    }

    void handle(const Frame& frame)
    {
        if (m_options.stopAckingAfter >= 0 && (long long)m_received >= m_options.stopAckingAfter)
            return;
        // Every frame is acknowledged once it was acted on (an item is kept
        // before its end is acknowledged). One sent again because its
        // acknowledgement was lost changes nothing the second time: each
        // names its item and offset, and is taken only when it is the next.
        const std::string_view p = frame.payload;
        switch (frame.type) {
        case FrameType::Version: {
            std::string reply;
            reply += char(m_options.hostVersion);
            reply += char(m_options.driverVersion);
            reply += char(m_options.driverFails ? 0 : 1); // the driver answered its check
            send(FrameType::VersionReply, reply);
            break;
        }
        case FrameType::Begin:
            m_item.clear();
            m_open = false;
            m_paused = false;
            break;
        case FrameType::Item:
            if (p.size() >= 14 && !(m_open && getU16(p, 0) == m_index)) {
                m_index = getU16(p, 0);
                m_open = true;
                m_item.clear();
                std::string status;
                putU16(status, m_index);
                putU32(status, 1); // started
                send(FrameType::Status, status);
            }
            break;
        case FrameType::Data:
            if (m_open && p.size() >= 6 && getU16(p, 0) == m_index && getU32(p, 2) == m_item.size())
                m_item.append(p.substr(6));
            break;
        case FrameType::ItemEnd:
            if (m_open && p.size() >= 6 && getU16(p, 0) == m_index && getU32(p, 2) == m_item.size()) {
                m_open = false;
                if (!m_options.record.empty())
                    std::ofstream(m_options.record + "/item-" + std::to_string(m_recorded) + ".bin", std::ios::binary)
                        << m_item;
                ++m_recorded;
                std::string status;
                putU16(status, 0xFFFF);
                putU32(status, 2); // item done
                send(FrameType::Status, status);
            }
            break;
        case FrameType::Pause:
            // Only a change is reported: a resent Pause changes nothing.
            if (!p.empty() && (p[0] != 0) != m_paused) {
                m_paused = p[0] != 0;
                std::string status;
                putU16(status, 0xFFFF);
                putU32(status, m_paused ? 4 : 1); // paused, or playing again
                send(FrameType::Status, status);
            }
            break;
        default: break;
        }
        send(FrameType::Ack, std::string(1, char(frame.sequence)));
    }

    Line& m_line;
    Options m_options;
    std::mt19937 m_random;
    std::string m_item;
    std::uint16_t m_index = 0;
    std::uint8_t m_sent = 0;
    bool m_open = false; // an item is being received
    bool m_paused = false;
    std::uint64_t m_received = 0;
    int m_recorded = 0;
};

} // namespace

int main(int argc, char** argv)
{
    const Options options = parse(argc, argv);
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0) {
        std::perror("kestrelon-board-sim");
        return 1;
    }
    const std::string device = ::ptsname(master);
    // The terminal exists while one end is open; the simulator keeps a handle
    // to its own device so the host may come and go.
    const int keep = ::open(device.c_str(), O_RDWR | O_NOCTTY);
    if (keep >= 0) {
        termios raw{};
        ::tcgetattr(keep, &raw);
        ::cfmakeraw(&raw);
        ::tcsetattr(keep, TCSANOW, &raw);
    }
    if (!options.link.empty()) {
        ::unlink(options.link.c_str());
        if (::symlink(device.c_str(), options.link.c_str()) != 0) {
            std::perror("kestrelon-board-sim: --link");
            return 1;
        }
        g_link = options.link;
    }
    std::signal(SIGTERM, endOnSignal);
    std::signal(SIGINT, endOnSignal);
    std::printf("%s\n", device.c_str());
    std::fflush(stdout);
    Line line(master);
    Board(line, options).run();
}
