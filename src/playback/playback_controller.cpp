#include "playback/playback_controller.h"

#include "codec/row_decoded_wave.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"
#include "wave/wave_file.h"

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

// The decoded wave plays from a copy in Temp's own folder for it: a ".wav"
// at Temp's top level would be carried into Files by Close.
constexpr std::string_view kPlayFolder = "play";

} // namespace

PlaybackController::PlaybackController(PcPlayerHost& pc, UserPort& port)
    : m_pc(pc)
    , m_port(port)
{}

PlaybackController::~PlaybackController()
{
    m_pc.stop();
    dropScratch();
}

bool PlaybackController::playRow(const ProjectSession& session, const EditInfoRecord& record, PlayWhat what,
                                 const std::string& rowKey, int loops)
{
    stop();
    fs::path wave;
    if (what == PlayWhat::Original) {
        wave = session.filesFolder() / pathFromUtf8(record.fileName);
        if (!isPlainFileName(record.fileName) || !isRegularFile(wave)) {
            m_port.showMessage(record.fileName + std::string(msg::kDoNotExistInProjectFolder));
            return false;
        }
    } else {
        wave = unpackDecodedWave(session, record, session.tempFolder() / pathFromUtf8(kPlayFolder), m_port);
        if (wave.empty())
            return false;
        m_scratch = wave;
    }
    m_status.what = what;
    m_status.rowKey = rowKey;
    if (start(wave, false, loops))
        return true;
    dropScratch();
    return false;
}

bool PlaybackController::playFile(const fs::path& wave, bool fromView, int loops)
{
    stop();
    m_status.what = PlayWhat::Original;
    m_status.rowKey.clear();
    return start(wave, fromView, loops);
}

bool PlaybackController::start(const fs::path& wave, bool fromView, int loops)
{
    WaveFile facts;
    if (!facts.load(wave, WaveRead::FactsOnly) || !m_pc.play(wave, fromView)) {
        m_port.showMessage(std::string(msg::kCanNotPlayPrefix) + utf8FromPath(wave.filename()) + " !");
        m_status = PlayStatus{};
        return false;
    }
    m_loops = loops;
    m_fromView = fromView;
    m_status.state = loops == 1 ? PlayState::Playing : PlayState::Looping;
    m_status.file = wave;
    m_status.sampleRate = facts.sampleRate();
    m_status.length = facts.frameCount();
    m_status.samplesPlayed = 0;
    m_status.position = 0;
    m_status.passes = 0;
    publish();
    return true;
}

void PlaybackController::stop()
{
    if (!isActive())
        return;
    m_pc.stop();
    m_status.samplesPlayed += m_pc.position();
    finish();
}

void PlaybackController::pause()
{
    if (!isActive())
        return;
    m_pc.pause();
    m_status.state = m_status.state == PlayState::Paused ? (m_loops == 1 ? PlayState::Playing : PlayState::Looping)
                                                         : PlayState::Paused;
    publish();
}

void PlaybackController::follow()
{
    if (!isActive())
        return;
    if (!m_pc.ended()) {
        if (m_pc.position() != m_status.position) {
            m_status.position = m_pc.position();
            publish();
        }
        return;
    }
    m_status.samplesPlayed += m_pc.position();
    ++m_status.passes;
    if (m_loops == 0 || m_status.passes < m_loops) {
        // Another pass through a fresh player, as every sound gets.
        m_status.position = 0;
        if (m_pc.play(m_status.file, m_fromView)) {
            publish();
            return;
        }
    }
    finish();
}

void PlaybackController::finish()
{
    m_pc.stop(); // the device is let go as soon as the sound is over
    m_status.state = PlayState::Idle;
    m_status.position = 0;
    dropScratch();
    publish();
}

void PlaybackController::dropScratch()
{
    if (!m_scratch.empty())
        removeQuietly(m_scratch);
    m_scratch.clear();
}

} // namespace kestrelon
