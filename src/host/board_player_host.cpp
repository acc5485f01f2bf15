#include "host/board_player_host.h"

#include "common/messages.h"
#include "common/user_port.h"

#include <atomic>

namespace kestrelon {

namespace {

// The contract's callback carries no context: one host plays at a time.
std::atomic<BoardPlayerHost*> g_active{nullptr};

bool endsPlaying(std::uint32_t status)
{
    return status != 1 && status != 2 && status != 4 && status != 8;
}

} // namespace

BoardPlayerHost::BoardPlayerHost(UserPort& port)
    : m_port(port)
{}

BoardPlayerHost::~BoardPlayerHost()
{
    stop();
    BoardPlayerHost* self = this;
    g_active.compare_exchange_strong(self, nullptr);
}

bool BoardPlayerHost::load(const std::filesystem::path& library)
{
    m_play = nullptr;
    m_stop = nullptr;
    m_scan = nullptr;
    m_ready = nullptr;
    m_pause = nullptr;
    if (m_library.load(library)) {
        m_play = reinterpret_cast<kestrelon_uart_play>(m_library.symbol(KESTRELON_UART_PLAY_SYMBOL));
        m_stop = reinterpret_cast<kestrelon_uart_stop>(m_library.symbol(KESTRELON_UART_STOP_SYMBOL));
        m_scan = reinterpret_cast<kestrelon_uart_scan_ports>(m_library.symbol(KESTRELON_UART_SCAN_SYMBOL));
        m_ready = reinterpret_cast<kestrelon_uart_check_ready>(m_library.symbol(KESTRELON_UART_READY_SYMBOL));
        m_pause = reinterpret_cast<kestrelon_uart_pause>(m_library.symbol(KESTRELON_UART_PAUSE_SYMBOL));
    }
    if (m_play && m_stop && m_scan && m_ready)
        return true;
    m_pause = nullptr;
    m_play = nullptr;
    m_stop = nullptr;
    m_scan = nullptr;
    m_ready = nullptr;
    m_library.unload();
    m_port.showMessage(msg::kBoardPlayDllNotLoaded);
    return false;
}

bool BoardPlayerHost::play(std::uint8_t port, std::uint32_t baudRate, std::vector<BoardItem> items)
{
    if (!isLoaded()) {
        m_port.showMessage(msg::kBoardPlayDllNotLoaded);
        return false;
    }
    stop();
    std::uint8_t version = 0;
    if (m_scan(port, &version, baudRate) == 0) {
        m_port.showMessage(msg::kBoardPortError);
        return false;
    }
    m_data = std::move(items);
    m_items.clear();
    for (const BoardItem& item : m_data)
        m_items.push_back({sizeof(kestrelon_board_item), port, reinterpret_cast<const std::uint8_t*>(item.data.data()),
                           std::uint32_t(item.data.size()), item.sampleRate, item.volume, item.name.c_str()});
    const kestrelon_board_play_list list{std::uint32_t(m_items.size()), m_items.data()};
    m_playing = true;
    m_paused = false;
    g_active = this;
    m_play(0, &list, 0, 0, &BoardPlayerHost::report);
    return true;
}

void BoardPlayerHost::stop()
{
    if (m_stop)
        m_stop(); // waits for the plug-in's thread
    follow();
    m_playing = false;
    m_paused = false;
}

void BoardPlayerHost::pause()
{
    if (!m_pause || !m_playing)
        return;
    m_paused = !m_paused;
    m_pause(m_paused ? 1 : 0);
}

BoardVersionQuery BoardPlayerHost::queryVersions(std::uint8_t port, std::uint32_t baudRate)
{
    BoardVersionQuery query;
    std::uint8_t host = 0;
    if (!isLoaded() || m_scan(port, &host, baudRate) == 0) {
        query.status = msg::kBoardVersionFailed;
        return query;
    }
    query.host = host >> 4;
    std::uint8_t driver = 0;
    if (m_ready(port, &driver) == 0 && (driver & 0x0F) == port)
        query.driver = driver >> 4;
    query.status = std::string(msg::kBoardVersionHost) + std::to_string(*query.host) +
                   std::string(msg::kBoardVersionDriver) +
                   (query.driver ? std::to_string(*query.driver) : std::string(msg::kBoardDriverFailed));
    return query;
}

std::int32_t BoardPlayerHost::report(std::int16_t index, std::uint32_t status)
{
    BoardPlayerHost* host = g_active.load();
    if (!host)
        return 1;
    {
        std::lock_guard lock(host->m_mutex);
        host->m_reports.push_back({index, status});
    }
    if (host->onNotified)
        host->onNotified();
    return 1;
}

std::vector<BoardReport> BoardPlayerHost::follow()
{
    std::vector<BoardReport> reports;
    {
        std::lock_guard lock(m_mutex);
        reports.swap(m_reports);
    }
    for (const BoardReport& r : reports) {
        m_last = r;
        if (r.index != -1 || !endsPlaying(r.status))
            continue;
        if (r.status == KESTRELON_BOARD_NO_ACK)
            m_port.showMessage(msg::kBoardNoDataAck);
        m_playing = false;
        m_paused = false;
    }
    return reports;
}

} // namespace kestrelon
