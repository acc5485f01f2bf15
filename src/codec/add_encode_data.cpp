#include "codec/add_encode_data.h"

#include "codec/project_algorithms.h"
#include "common/messages.h"
#include "common/user_port.h"
#include "project/project_item.h"
#include "project/project_session.h"

#include <algorithm>
#include <map>
#include <optional>

namespace kestrelon {

FixedEncodeSetting::FixedEncodeSetting(std::string body, std::string algorithm, std::string bitRate)
    : m_body(std::move(body))
    , m_algorithm(std::move(algorithm))
    , m_bitRate(std::move(bitRate))
{}

EncodeSettingAnswer FixedEncodeSetting::choose(const ProjectItem&, const LastEncodeSetting&)
{
    ++m_shown;
    return {true, m_body, m_algorithm, m_bitRate, true};
}

namespace {

// Opens the dialog on each source's own row rather than on the kept choice.
class RowSettingChooser : public EncodeSettingChooser {
public:
    RowSettingChooser(EncodeSettingChooser& dialog, std::map<const ProjectItem*, LastEncodeSetting> settings)
        : m_dialog(dialog)
        , m_settings(std::move(settings))
    {}

    EncodeSettingAnswer choose(const ProjectItem& source, const LastEncodeSetting& last) override
    {
        LastEncodeSetting shown = m_settings.at(&source);
        shown.applyAllFiles = last.applyAllFiles;
        return m_dialog.choose(source, shown);
    }

private:
    EncodeSettingChooser& m_dialog;
    std::map<const ProjectItem*, LastEncodeSetting> m_settings;
};

struct Choice {
    std::string body;
    std::string algorithm;
    std::string bitRate;
};

// Encodes record `index` of `source` as a batch of one row. The list holds
// that row alone: building the whole list for each source would make the
// command cost the square of the project's size.
RowOutcome encodeOne(CodecEngine& engine, ProjectItem* source, std::size_t index, bool autoDecode, bool& stopped)
{
    MainList list;
    list.addRow(ListRow{source, index}, true);
    const BatchResult batch = engine.encodeSelected(list, autoDecode);
    stopped = batch.stopped;
    return batch.rows[0];
}

} // namespace

AddEncodeResult duplicateRows(const EngineEnvironment& environment, const MainList& list, EncodeSettingChooser& chooser,
                              LastEncodeSetting& last, bool autoDecode)
{
    std::vector<ProjectItem*> sources;
    std::map<const ProjectItem*, LastEncodeSetting> settings;
    for (std::size_t row = 0; row < list.size(); ++row) {
        const ListRow& shown = list.rows()[row];
        if (!list.isSelected(row) || settings.count(shown.source) != 0)
            continue;
        const EditInfoRecord& record = shown.record();
        settings[shown.source] = LastEncodeSetting{record.bodyName, record.algoName, record.bitRate};
        sources.push_back(shown.source);
    }
    RowSettingChooser rowChooser(chooser, std::move(settings));
    return addEncodeData(environment, sources, rowChooser, last, autoDecode);
}

std::string replaceQuestion(const ProjectItem& source, std::string_view algorithm)
{
    return "\"" + source.id() + "\" " + std::string(algorithm) + std::string(msg::kReplaceExistedMiddle) +
           std::string(msg::kReplaceQuestion);
}

AddEncodeResult addEncodeData(const EngineEnvironment& env, const std::vector<ProjectItem*>& selected,
                              EncodeSettingChooser& chooser, LastEncodeSetting& last, bool autoDecode)
{
    AddEncodeResult result;
    Choice choice;
    bool choiceValid = false;
    bool applyInForce = false;
    bool skipAll = false;
    bool first = true;
    CodecEngine engine(env); // one for the command: it gathers the names in use once
    std::unique_ptr<RowsAhead> ahead;
    bool aheadTold = false; // the rows to come were told to the codec, or it works one at a time

    for (std::size_t at = 0; at < selected.size(); ++at) {
        ProjectItem* source = selected[at];
        if (source == nullptr || !source->isSource())
            continue;

        if (first || !applyInForce) {
            first = false;
            choiceValid = false; // opening the dialog clears the invalid mark
            const EncodeSettingAnswer answer = chooser.choose(*source, last);
            if (!answer.confirmed) {
                result.cancelled = true;
                return result;
            }
            if (!answer.bodyName || !answer.algName || !answer.bitRate) {
                // The dialog closes as if confirmed; the kept choice and the
                // check box stay as they were.
                env.port.showMessage(msg::kThereIsAError);
            } else {
                choice = {*answer.bodyName, *answer.algName, *answer.bitRate};
                last.bodyName = choice.body;
                last.algName = choice.algorithm;
                last.bitRate = choice.bitRate;
                last.applyAllFiles = answer.applyToAll;
                choiceValid = true;
            }
            applyInForce = last.applyAllFiles;
        }

        AddedSource added;
        added.source = source;
        const BodyAlgoInfo* algorithm =
            choiceValid ? offeredAlgorithm(env.bodies, choice.body, choice.algorithm, choice.bitRate) : nullptr;
        if (algorithm == nullptr) {
            result.sources.push_back(added); // NoChoice
            continue;
        }

        // A row with the same algorithm already there: Replace, Skip, Skip All or Stop.
        std::vector<EditInfoRecord>& records = source->records();
        const auto existing = std::find_if(records.begin(), records.end(),
                                           [&](const EditInfoRecord& r) { return r.algoName == choice.algorithm; });
        if (existing != records.end()) {
            Answer answer = Answer::SkipAll;
            if (!skipAll)
                answer = env.port.ask(replaceQuestion(*source, choice.algorithm), Buttons::ReplaceSkipSkipAllStop);
            if (answer == Answer::Cancel) {
                result.stopped = true;
                return result;
            }
            if (answer != Answer::Yes) {
                skipAll = skipAll || answer == Answer::SkipAll;
                added.outcome = SourceOutcome::Skipped;
                result.sources.push_back(added);
                continue;
            }
        }

        bringAlgorithmIntoProject(env.session, env.registry, env.programFolder, *algorithm, env.port);

        // A replace whose encode fails gives the row back as it was: its old
        // results still describe its old data, which is still there.
        std::optional<EditInfoRecord> replaced;
        if (existing != records.end()) {
            replaced = *existing;
            // The row takes the new choice; results of the old one no longer
            // hold. Its interim file name is kept and reused by the encode.
            EditInfoRecord& record = *existing;
            record.bodyName = choice.body;
            record.bitRate = choice.bitRate;
            record.encodeSize.clear();
            record.compressionRate.clear();
            record.renameEncode.clear();
            record.decodeName.clear();
            record.decodeSize.clear();
            added.outcome = SourceOutcome::Replaced;
            added.recordIndex = static_cast<std::size_t>(existing - records.begin());
        } else {
            EditInfoRecord record;
            record.fileName = source->id();
            record.bodyName = choice.body;
            record.algoName = choice.algorithm;
            record.bitRate = choice.bitRate;
            records.push_back(std::move(record));
            added.outcome = SourceOutcome::Added;
            added.recordIndex = records.size() - 1;
        }
        env.session.markModified();

        // A codec that broke in an earlier batch is asked about before its first row.
        engine.mayUse(choice.algorithm);
        // With one choice for every source, the codec may start on the rest now.
        if (applyInForce && !aheadTold) {
            aheadTold = true;
            EditInfoRecord row;
            row.bodyName = choice.body;
            row.algoName = choice.algorithm;
            row.bitRate = choice.bitRate;
            std::vector<CodecJob> jobs;
            for (std::size_t rest = at; rest < selected.size() && env.host.rowsAtOnce() > 1; ++rest)
                if (selected[rest] != nullptr && selected[rest]->isSource())
                    if (auto job = engine.encodeJob(*selected[rest], row, autoDecode))
                        jobs.push_back(std::move(*job));
            ahead = engine.expectRows(jobs);
        }
        bool stopped = false;
        added.encode = encodeOne(engine, source, added.recordIndex, autoDecode, stopped);
        if (replaced && added.encode != RowOutcome::Done)
            source->records()[added.recordIndex] = *replaced;
        result.sources.push_back(added);
        if (stopped) {
            result.stopped = true;
            return result;
        }
    }
    return result;
}

} // namespace kestrelon
