#include "host/pc_player_host.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

namespace kestrelon {

PcPlayerHost::PcPlayerHost(UserPort& port)
    : m_port(port)
{}

PcPlayerHost::~PcPlayerHost()
{
    unload();
}

bool PcPlayerHost::load(const std::filesystem::path& library)
{
    unload();
    if (m_library.load(library)) {
        m_create = m_library.function<kestrelon_player_factory>(KESTRELON_PLAYER_CREATE_SYMBOL);
        m_destroy = m_library.function<kestrelon_player_factory>(KESTRELON_PLAYER_DESTROY_SYMBOL);
    }
    if (isLoaded())
        return true;
    unload();
    m_port.showMessage(msg::kPcPlayDllNotFound);
    return false;
}

void PcPlayerHost::unload()
{
    destroyPlayer();
    m_create = nullptr;
    m_destroy = nullptr;
    m_library.unload();
}

void PcPlayerHost::destroyPlayer()
{
    if (m_player && m_destroy)
        m_destroy(&m_player); // closes the device: no notification comes after this
    m_player = nullptr;
}

bool PcPlayerHost::play(const std::filesystem::path& wave, bool fromView)
{
    destroyPlayer();
    if (!isLoaded())
        return false;
    m_create(&m_player);
    if (!m_player)
        return false;
    if (m_player->abi_version != KESTRELON_PLUGIN_ABI_VERSION || !m_player->vtable->open_file ||
        !m_player->vtable->play) {
        destroyPlayer();
        return false;
    }
    if (m_player->vtable->open_file(m_player, utf8FromPath(wave).c_str(), 0, 0, 0) != 0)
        return false;
    if (fromView && m_player->vtable->begin_view_play)
        m_player->vtable->begin_view_play(m_player);
    m_position = 0;
    m_ended = false;
    m_player->vtable->play(m_player, 0, 255, &PcPlayerHost::notify, this, 0.1f);
    return true;
}

void PcPlayerHost::stop()
{
    if (m_player && m_player->vtable->stop)
        m_player->vtable->stop(m_player);
}

void PcPlayerHost::pause()
{
    if (m_player && m_player->vtable->pause)
        m_player->vtable->pause(m_player);
}

bool PcPlayerHost::isPlaying() const
{
    return m_player && m_player->vtable->is_playing && m_player->vtable->is_playing(m_player) != 0;
}

void PcPlayerHost::notify(void* context, std::uint32_t event, std::int32_t value)
{
    auto* host = static_cast<PcPlayerHost*>(context);
    if (event == KESTRELON_PLAY_POSITION)
        host->m_position = value;
    else if (event == KESTRELON_PLAY_ENDED)
        host->m_ended = true;
    if (host->onNotified)
        host->onNotified();
}

} // namespace kestrelon
