#pragma once
// What the play cells and the Action menu's playing commands do, without a
// window: which file a row's cell plays, the checks before it plays (each with
// its message through the port), the decoded wave unpacked into a scratch copy
// that goes when playing ends, looping, pausing and stopping, and the play
// state, published for the views that show it.
//
// The player reports from its own thread; the owner calls follow() on its own
// thread (the workbench after a queued signal from the host's notification,
// a command-line run in a polling loop) and the controller acts there.
#include "common/observer.h"
#include "host/pc_player_host.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace kestrelon {

class ProjectSession;
class UserPort;
struct EditInfoRecord;

enum class PlayWhat { Original, Decoded };
enum class PlayState { Idle, Playing, Paused, Looping };

struct PlayStatus {
    PlayState state = PlayState::Idle;
    PlayWhat what = PlayWhat::Original;
    std::string rowKey; // the row playing, as its owner names it; empty for a plain file
    std::filesystem::path file; // what the player was handed
    int sampleRate = 0; // of that file
    std::int64_t length = 0; // its samples
    std::int64_t samplesPlayed = 0; // over every pass of a loop
    std::int64_t position = 0; // within the current pass
    int passes = 0; // passes completed
};

class PlaybackController {
public:
    PlaybackController(PcPlayerHost& pc, UserPort& port);
    ~PlaybackController();
    PlaybackController(const PlaybackController&) = delete;
    PlaybackController& operator=(const PlaybackController&) = delete;

    // Plays what the row's cell plays: the source wave (Files\<file name>) or
    // the decoded wave. `loops`: how many passes (0: until stopped). False,
    // with the reason shown, when nothing plays.
    bool playRow(const ProjectSession& session, const EditInfoRecord& record, PlayWhat what,
                 const std::string& rowKey = {}, int loops = 1);
    // Plays a wave file as it is (a waveform view's sound).
    bool playFile(const std::filesystem::path& wave, bool fromView = false, int loops = 1);

    void stop();
    // Pauses, or resumes a paused sound.
    void pause();

    // Follows the player: counts what played, starts the next pass of a loop,
    // ends when the sound ended, and publishes each change.
    void follow();

    const PlayStatus& status() const { return m_status; }
    bool isActive() const { return m_status.state != PlayState::Idle; }
    Publisher<PlayStatus> changed;

private:
    bool start(const std::filesystem::path& wave, bool fromView, int loops);
    void finish();
    void dropScratch();
    void publish() { changed.publish(m_status); }

    PcPlayerHost& m_pc;
    UserPort& m_port;
    PlayStatus m_status;
    int m_loops = 1;
    bool m_fromView = false;
    std::filesystem::path m_scratch; // the decoded wave's playing copy
};

} // namespace kestrelon
