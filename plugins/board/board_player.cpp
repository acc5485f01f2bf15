// The reference board player: plays a list of encoded items on a target board
// over a serial line, with the board protocol (docs/board-protocol.md).
// Port n is the device named by KESTRELON_BOARD_PORT<n>, else /dev/ttyUSB<n>.
// Playing runs on the plug-in's own thread; the status callback is called
// from there.
#include "kestrelon/board_plugin.h"
#include "protocol.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

using namespace kestrelon::board;

namespace {

// Status words at the end of a play list.
constexpr std::uint32_t kAllPlayed = 16;
constexpr std::uint32_t kStopped = 32;
constexpr std::uint32_t kPortFailed = 64;

std::string deviceOf(std::uint8_t port)
{
    const std::string variable = "KESTRELON_BOARD_PORT" + std::to_string(port);
    if (const char* named = std::getenv(variable.c_str()); named && *named)
        return named;
    return "/dev/ttyUSB" + std::to_string(port);
}

struct Player {
    std::mutex mutex;
    std::thread worker;
    std::atomic<bool> stop{false};
    std::atomic<bool> pause{false}; // what the host asked; the play thread tells the board
    std::uint32_t baud = 115200;
};

Player& player()
{
    static Player instance;
    return instance;
}

void playAll(std::uint8_t port, std::vector<ListItem> items, std::uint32_t baud, kestrelon_board_status status)
{
    const int fd = openSerialPort(deviceOf(port), baud);
    if (fd < 0) {
        status(-1, kPortFailed);
        return;
    }
    Line line(fd);
    HostLink link(line);
    const SendEnd end =
        sendPlayList(link, items,
                     SendHooks{[] { return player().stop.load(); }, [] { return player().pause.load(); },
                               [status](std::int16_t index, std::uint32_t word) { status(index, word); }});
    ::close(fd);
    status(-1, end == SendEnd::AllSent ? kAllPlayed : end == SendEnd::Stopped ? kStopped : KESTRELON_BOARD_NO_ACK);
}

// The board's versions and whether its driver answered; nullopt when no
// board answers on the port.
struct BoardVersions {
    std::uint8_t host = 0;
    std::uint8_t driver = 0;
    bool driverOk = false;
};

std::optional<BoardVersions> askVersions(std::uint8_t port, std::uint32_t baud)
{
    const int fd = openSerialPort(deviceOf(port), baud);
    if (fd < 0)
        return std::nullopt;
    Line line(fd);
    HostLink link(line);
    std::optional<BoardVersions> versions;
    if (link.send(FrameType::Version, {})) {
        const std::optional<Frame> reply = link.receive(HostLink::kAckWait);
        if (reply && reply->type == FrameType::VersionReply && reply->payload.size() >= 3)
            versions =
                BoardVersions{std::uint8_t(reply->payload[0]), std::uint8_t(reply->payload[1]), reply->payload[2] != 0};
    }
    ::close(fd);
    return versions;
}

} // namespace

extern "C" {

KESTRELON_EXPORT int32_t UART_ScanPorts(uint8_t port, uint8_t* version, uint32_t baud_rate)
{
    player().baud = baud_rate;
    const std::optional<BoardVersions> versions = askVersions(port, baud_rate);
    if (versions && version)
        *version = std::uint8_t((versions->host & 0x0F) << 4);
    return versions ? 1 : 0;
}

KESTRELON_EXPORT int32_t UART_CheckIsDeviceReady(uint8_t port, uint8_t* version)
{
    const std::optional<BoardVersions> versions = askVersions(port, player().baud);
    if (!versions || !versions->driverOk)
        return 1;
    if (version)
        *version = std::uint8_t((port & 0x0F) | ((versions->driver & 0x0F) << 4));
    return 0;
}

KESTRELON_EXPORT void UART_Stop(void)
{
    Player& p = player();
    std::lock_guard lock(p.mutex);
    p.stop = true;
    if (p.worker.joinable())
        p.worker.join();
}

// Optional: a host that finds it can hold play and let it go on.
KESTRELON_EXPORT void UART_Pause(int32_t pause)
{
    player().pause = pause != 0;
}

KESTRELON_EXPORT void UART_Play(uint32_t, const kestrelon_board_play_list* list, uint32_t, uint32_t,
                                kestrelon_board_status status)
{
    UART_Stop();
    if (!list || !status || list->count == 0)
        return;
    std::vector<ListItem> items;
    for (uint32_t i = 0; i < list->count; ++i) {
        const kestrelon_board_item& item = list->items[i];
        items.push_back(
            {std::string(reinterpret_cast<const char*>(item.data), item.size), item.sample_rate, item.volume});
    }
    Player& p = player();
    std::lock_guard lock(p.mutex);
    p.stop = false;
    p.pause = false;
    p.worker = std::thread(playAll, list->items[0].port, std::move(items), p.baud, status);
}

} // extern "C"
