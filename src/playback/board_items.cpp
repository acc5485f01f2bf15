#include "playback/board_items.h"

#include "bodies/body_settings.h"
#include "codec/row_encoded_file.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "project/edit_info_record.h"
#include "project/project_session.h"
#include "wave/wave_file.h"

#include <algorithm>

namespace kestrelon {

namespace {

struct CheckedRow {
    BoardItem item;
    bool rateOutOfRange = false;
};

// The checks of one row up to its sample rate; nullopt with the message shown.
std::optional<CheckedRow> checkRow(const ProjectSession& session, const EditInfoRecord& record,
                                   const BodySettings& bodies, UserPort& port)
{
    if (record.encodeName.empty()) {
        port.showMessage(msg::kNoEncodeFile);
        return std::nullopt;
    }
    const BodyInfo* body = record.bodyName.empty() ? nullptr : bodies.findBody(record.bodyName);
    if (!body) {
        port.showMessage(msg::kNoBody);
        return std::nullopt;
    }
    // The board runs what its body declares, nothing else.
    if (std::none_of(body->algorithms.begin(), body->algorithms.end(),
                     [&](const BodyAlgoInfo& algorithm) { return algorithm.name == record.algoName; })) {
        port.showMessage(record.algoName + std::string(msg::kAlgorithmNotSupported));
        return std::nullopt;
    }
    const std::filesystem::path source = session.filesFolder() / pathFromUtf8(record.fileName);
    if (!isPlainFileName(record.fileName) || !isRegularFile(source)) {
        port.showMessage(record.fileName + std::string(msg::kDoNotExistInProjectFolder));
        return std::nullopt;
    }
    RowEncodedRead read = readRowEncodedFile(session, record);
    if (read.problem == EncodedFileProblem::NoHeader) {
        port.showMessage(record.fileName + std::string(msg::kNotACorrectEncodeFile));
        return std::nullopt;
    }
    if (read.problem != EncodedFileProblem::None) {
        port.showMessage(encodedFileProblemText(read.problem, record));
        return std::nullopt;
    }
    WaveFile wave;
    if (!wave.load(source, WaveRead::FactsOnly)) {
        port.showMessage(wave.error());
        return std::nullopt;
    }
    // A body that gives no range takes any rate.
    const bool ranged = body->sampleRateMin != 0 || body->sampleRateMax != 0;
    const bool outOfRange =
        ranged && (wave.sampleRate() < body->sampleRateMin || wave.sampleRate() > body->sampleRateMax);
    RowEncodedFile& file = *read.file;
    return CheckedRow{
        BoardItem{std::move(file.speech), file.encoded.header.sampleRate, body->currentVolume, record.fileName},
        outOfRange};
}

std::string withName(std::string_view text, const std::string& name)
{
    std::string filled(text);
    filled.replace(filled.find("%s"), 2, name);
    return filled;
}

} // namespace

std::optional<std::vector<BoardItem>> boardItemsFor(const ProjectSession& session,
                                                    const std::vector<const EditInfoRecord*>& rows,
                                                    const BodySettings& bodies, UserPort& port)
{
    if (session.busy() || rows.empty())
        return std::nullopt;
    std::vector<BoardItem> items;
    std::vector<std::string> outOfRange;
    for (const EditInfoRecord* record : rows) {
        std::optional<CheckedRow> checked = checkRow(session, *record, bodies, port);
        if (!checked)
            return std::nullopt;
        if (checked->rateOutOfRange)
            outOfRange.push_back(record->fileName);
        items.push_back(std::move(checked->item));
    }
    if (outOfRange.empty())
        return items;
    const Answer answer = rows.size() == 1
                              ? port.ask(withName(msg::kSampleRateExceedsBody, outOfRange.front()), Buttons::YesNo)
                              : port.askAboutFiles(msg::kSampleRatesExceedBody, outOfRange, msg::kStillWantToPlay);
    if (answer != Answer::Yes)
        return std::nullopt;
    return items;
}

} // namespace kestrelon
