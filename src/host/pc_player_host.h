#pragma once
// The PC player plug-in as the program uses it: the library named by the body
// settings, loaded once (after the frame is shown; at exit it goes), and a
// fresh player object for every sound, the previous one destroyed first.
//
// The player reports positions and the end from its own audio thread. The
// host only records them (atomics) and calls `onNotified`, which must itself
// be safe to call from any thread: the workbench posts a queued call to its
// user-interface thread there; a command-line run simply polls. Nothing calls
// into the player from inside a notification.
#include "common/dynamic_library.h"
#include "kestrelon/player_plugin.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>

namespace kestrelon {

class UserPort;

class PcPlayerHost {
public:
    explicit PcPlayerHost(UserPort& port);
    ~PcPlayerHost();
    PcPlayerHost(const PcPlayerHost&) = delete;
    PcPlayerHost& operator=(const PcPlayerHost&) = delete;

    // Loads the library; "Body PcPlay DLL not found!!" when it cannot be, and
    // the program goes on without PC playback.
    bool load(const std::filesystem::path& library);
    // Destroys the player and unloads the library.
    void unload();
    bool isLoaded() const { return m_create && m_destroy; }

    // Plays one wave file: destroys the current player, makes a new one, opens
    // the file, (from a view: begin_view_play,) plays. False when no player
    // could be made or the file could not be opened.
    bool play(const std::filesystem::path& wave, bool fromView = false);
    void stop();
    // Pauses, or resumes a paused sound.
    void pause();
    bool isPlaying() const;
    // The last sample position the player reported, and whether it reported the end.
    std::int64_t position() const { return m_position.load(); }
    bool ended() const { return m_ended.load(); }

    // Called on the player's thread after each notification was recorded.
    std::function<void()> onNotified;

private:
    static void notify(void* context, std::uint32_t event, std::int32_t value);
    void destroyPlayer();

    UserPort& m_port;
    DynamicLibrary m_library;
    kestrelon_player_factory m_create = nullptr;
    kestrelon_player_factory m_destroy = nullptr;
    kestrelon_player* m_player = nullptr;
    std::atomic<std::int64_t> m_position{0};
    std::atomic<bool> m_ended{false};
};

} // namespace kestrelon
