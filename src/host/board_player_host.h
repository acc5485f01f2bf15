#pragma once
// The board player plug-in as the program uses it: the library the body
// settings name, taken only with all four of its functions; a port check
// before every play; and the board's status reports, which come on the
// plug-in's own thread, recorded there and applied by follow() on the
// owner's thread (the board-playing flag, the no-acknowledgement message).
#include "common/dynamic_library.h"
#include "kestrelon/board_plugin.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kestrelon {

class UserPort;

struct BoardItem {
    std::string data; // encoded data without its header
    std::uint32_t sampleRate = 0;
    std::int32_t volume = 0;
    std::string name;
};

struct BoardReport {
    std::int16_t index = -1; // the item being played, or -1 with a status
    std::uint32_t status = 0;
};

// What "Get Version" learns, and the status line that says it.
struct BoardVersionQuery {
    std::string status;
    std::optional<int> host;
    std::optional<int> driver;
};

class BoardPlayerHost {
public:
    explicit BoardPlayerHost(UserPort& port);
    ~BoardPlayerHost();
    BoardPlayerHost(const BoardPlayerHost&) = delete;
    BoardPlayerHost& operator=(const BoardPlayerHost&) = delete;

    // "BoardPlay dll did not load successfully !" when the library cannot be
    // loaded or lacks one of its four functions; nothing is kept then.
    bool load(const std::filesystem::path& library);
    bool isLoaded() const { return m_play != nullptr; }

    // Checks that a board answers on `port` ("Hardware port checked error.
    // Please connect the board properly!" when none does), then plays the
    // items. False when nothing plays.
    bool play(std::uint8_t port, std::uint32_t baudRate, std::vector<BoardItem> items);
    void stop();
    // Holds play, or lets held play go on; only with a plug-in that offers it.
    bool canPause() const { return m_pause != nullptr; }
    void pause();
    bool paused() const { return m_paused; }
    // The board-playing flag: set when playing starts, cleared by a status
    // other than 1, 2, 4 or 8.
    bool playing() const { return m_playing; }

    // Asks the board on `port` for its host version, then its driver.
    BoardVersionQuery queryVersions(std::uint8_t port, std::uint32_t baudRate);

    // Applies what the plug-in reported since the last call and returns it.
    std::vector<BoardReport> follow();
    // The last report follow() applied.
    const BoardReport& lastReport() const { return m_last; }
    // Called on the plug-in's thread after each report was recorded.
    std::function<void()> onNotified;

private:
    static std::int32_t report(std::int16_t index, std::uint32_t status);

    UserPort& m_port;
    DynamicLibrary m_library;
    kestrelon_uart_play m_play = nullptr;
    kestrelon_uart_stop m_stop = nullptr;
    kestrelon_uart_scan_ports m_scan = nullptr;
    kestrelon_uart_check_ready m_ready = nullptr;
    kestrelon_uart_pause m_pause = nullptr;
    bool m_playing = false;
    bool m_paused = false;
    std::vector<kestrelon_board_item> m_items; // what the plug-in reads while it plays
    std::vector<BoardItem> m_data;
    std::mutex m_mutex;
    std::vector<BoardReport> m_reports;
    BoardReport m_last;
};

} // namespace kestrelon
