// The reference PC player: one object plays one wave file through SDL's
// audio device. The samples are read whole when the file is opened (the
// program's own wave reader, so the player hears what the views show); the
// device's callback hands them out and reports the position and the end to
// the host from SDL's audio thread, which the contract allows.
#include "common/paths.h"
#include "kestrelon/player_plugin.h"
#include "wave/wave_file.h"

#include <SDL.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

namespace {

// SDL's audio subsystem is shared by every player object of the process.
std::mutex g_sdlMutex;
int g_sdlUsers = 0;

bool acquireSdlAudio()
{
    std::lock_guard lock(g_sdlMutex);
    if (g_sdlUsers == 0 && SDL_InitSubSystem(SDL_INIT_AUDIO) != 0)
        return false;
    ++g_sdlUsers;
    return true;
}

void releaseSdlAudio()
{
    std::lock_guard lock(g_sdlMutex);
    // All of SDL goes with the last player: the host may unload this library,
    // and SDL's own state must not outlive it.
    if (--g_sdlUsers == 0)
        SDL_Quit();
}

struct PcPlayer : kestrelon_player {
    std::vector<std::int16_t> samples;
    int sampleRate = 0;
    SDL_AudioDeviceID device = 0;
    bool sdl = false;
    bool paused = false;
    bool viewPlay = false;

    // Written by the audio thread, read by the host's thread.
    std::atomic<std::size_t> position{0};
    std::atomic<bool> ended{false};
    kestrelon_play_notify notify = nullptr;
    void* hostContext = nullptr;
    std::size_t reportEvery = 0; // samples between position reports
    std::size_t nextReport = 0;
};

PcPlayer* self(kestrelon_player* player)
{
    return static_cast<PcPlayer*>(player);
}

void fill(void* user, Uint8* stream, int length)
{
    PcPlayer& p = *static_cast<PcPlayer*>(user);
    const std::size_t wanted = std::size_t(length) / sizeof(std::int16_t);
    const std::size_t at = p.position.load(std::memory_order_relaxed);
    const std::size_t count = at < p.samples.size() ? std::min(wanted, p.samples.size() - at) : 0;
    std::memcpy(stream, p.samples.data() + at, count * sizeof(std::int16_t));
    std::memset(stream + count * sizeof(std::int16_t), 0, std::size_t(length) - count * sizeof(std::int16_t));
    const std::size_t now = at + count;
    p.position.store(now, std::memory_order_relaxed);
    // The last position is always reported, so the host knows how much played.
    if (p.notify && count > 0 && (now >= p.nextReport || now >= p.samples.size())) {
        p.notify(p.hostContext, KESTRELON_PLAY_POSITION, static_cast<int32_t>(now));
        p.nextReport = now + p.reportEvery;
    }
    if (now >= p.samples.size() && !p.ended.exchange(true) && p.notify)
        p.notify(p.hostContext, KESTRELON_PLAY_ENDED, 0);
}

void closeDevice(PcPlayer& p)
{
    if (p.device != 0) {
        SDL_CloseAudioDevice(p.device); // waits for a running callback
        p.device = 0;
    }
}

int32_t openFile(kestrelon_player* player, const char* wavePath, int32_t, int32_t, int32_t)
{
    PcPlayer& p = *self(player);
    closeDevice(p);
    kestrelon::WaveFile wave;
    // Without SDL's audio there is nothing to play on: say so before playing.
    if (!p.sdl || !wavePath || !wave.load(kestrelon::pathFromUtf8(wavePath)))
        return 1;
    p.sampleRate = wave.sampleRate();
    p.samples = wave.takeSamples();
    p.position = 0;
    p.ended = false;
    return 0;
}

void play(kestrelon_player* player, int32_t, int32_t, kestrelon_play_notify notify, void* hostContext,
          float intervalSeconds)
{
    PcPlayer& p = *self(player);
    closeDevice(p);
    if (p.sampleRate <= 0) {
        if (notify)
            notify(hostContext, KESTRELON_PLAY_ENDED, 0); // nothing was opened: nothing plays
        return;
    }
    p.notify = notify;
    p.hostContext = hostContext;
    p.reportEvery = std::max<std::size_t>(1, std::size_t(double(p.sampleRate) * std::max(0.01f, intervalSeconds)));
    p.nextReport = p.viewPlay ? 0 : p.reportEvery;
    p.position = 0;
    p.ended = false;
    p.paused = false;

    SDL_AudioSpec wanted{};
    wanted.freq = p.sampleRate;
    wanted.format = AUDIO_S16SYS;
    wanted.channels = 1;
    wanted.samples = 1024;
    wanted.callback = fill;
    wanted.userdata = &p;
    SDL_AudioSpec obtained{};
    p.device = SDL_OpenAudioDevice(nullptr, 0, &wanted, &obtained, 0); // SDL converts for the hardware
    if (p.device == 0) {
        p.ended = true;
        if (notify)
            notify(hostContext, KESTRELON_PLAY_ENDED, 0);
        return;
    }
    SDL_PauseAudioDevice(p.device, 0);
}

void stop(kestrelon_player* player)
{
    closeDevice(*self(player));
}

void pause(kestrelon_player* player)
{
    PcPlayer& p = *self(player);
    if (p.device == 0)
        return;
    p.paused = !p.paused;
    SDL_PauseAudioDevice(p.device, p.paused ? 1 : 0);
}

int32_t isPlaying(kestrelon_player* player)
{
    const PcPlayer& p = *self(player);
    return p.device != 0 && !p.ended.load() ? 1 : 0;
}

void beginViewPlay(kestrelon_player* player)
{
    self(player)->viewPlay = true;
}

const kestrelon_player_vtable kVtable = {
    nullptr, openFile, nullptr, play,    stop,    pause,   isPlaying,
    nullptr, nullptr,  nullptr, nullptr, nullptr, nullptr, beginViewPlay,
};

} // namespace

extern "C" {

KESTRELON_EXPORT void SetPlayDllClassObject(kestrelon_player** player)
{
    if (!player)
        return;
    auto* p = new (std::nothrow) PcPlayer;
    if (p) {
        p->vtable = &kVtable;
        p->abi_version = KESTRELON_PLUGIN_ABI_VERSION;
        p->sdl = acquireSdlAudio();
    }
    *player = p;
}

KESTRELON_EXPORT void DelPlayDllClassObject(kestrelon_player** player)
{
    if (!player || !*player)
        return;
    PcPlayer* p = self(*player);
    closeDevice(*p);
    if (p->sdl)
        releaseSdlAudio();
    delete p;
    *player = nullptr;
}

} // extern "C"
