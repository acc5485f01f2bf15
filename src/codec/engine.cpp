#include "codec/engine.h"

#include "bodies/body_settings.h"
#include "codec/broken_codecs.h"
#include "codec/engine_scopes.h"
#include "codec/interim_packer.h"
#include "codec/project_algorithms.h"
#include "codec/quality_queue.h"
#include "codec/raw_extraction.h"
#include "codec/results.h"
#include "codec/row_quality.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/scratch_file.h"
#include "common/user_port.h"
#include "host/codec_host.h"
#include "host/host_windows.h"
#include "project/project_document.h"
#include "project/project_folder_ops.h"
#include "project/project_session.h"
#include "project/tree_selection.h"
#include "wave/speech_events.h"
#include "wave/wave_file.h"

#include <algorithm>
#include <system_error>
#include <unordered_set>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kDecodedExtension = ".dfn";
// The decoded wave before it is packed. Not ".wav": Close copies Temp\*.wav
// into Files, where a scratch file would turn into a source.
constexpr std::string_view kDecodeScratchExtension = ".dec";

// Characters a file name cannot hold on any of the platforms become "_", so
// a name made of a body name, a codec's extension or its tag never leaves
// the folder it is meant for.
std::string fileNameSafe(std::string_view text)
{
    std::string safe(text);
    for (char& c : safe)
        if (static_cast<unsigned char>(c) < 0x20 || std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos)
            c = '_';
    return safe;
}

// Sizes are kept as "%ld" text.
std::string sizeText(std::uintmax_t size)
{
    return std::to_string(size);
}

// Copies one file whole (staged beside its target, then renamed over it).
bool copyWhole(const fs::path& from, const fs::path& to, UserPort& port)
{
    if (const CopyOutcome copied = copyFilesStaged({{from, to}}); !copied.ok) {
        showCopyFailure(port, copied, msg::kCanNotCopySuffix);
        return false;
    }
    return true;
}

bool sameBytes(const fs::path& a, const fs::path& b)
{
    const ReadResult first = readFile(a);
    const ReadResult second = readFile(b);
    return first.status == ReadStatus::Ok && second.status == ReadStatus::Ok && first.bytes == second.bytes;
}

} // namespace

std::size_t BatchResult::count(RowOutcome outcome) const
{
    return static_cast<std::size_t>(std::count(rows.begin(), rows.end(), outcome));
}

bool BatchResult::allDone() const
{
    return std::all_of(rows.begin(), rows.end(),
                       [](RowOutcome o) { return o == RowOutcome::NotSelected || o == RowOutcome::Done; });
}

CodecEngine::CodecEngine(EngineEnvironment environment)
    : m_env(std::move(environment))
    , m_measures(m_env.quality ? std::make_unique<QualityQueue>(*m_env.quality) : nullptr)
{}

CodecEngine::~CodecEngine() = default;

std::string CodecEngine::exportName(const EditInfoRecord& record, std::string_view extension)
{
    std::string base = record.fileName;
    if (endsWithNoCase(base, ".wav"))
        base.resize(base.size() - 4);
    std::string name = base + "_" + record.bodyName + "_" + record.algoName + "_" + record.bitRate;
    if (!extension.empty())
        name += "." + std::string(extension);
    return fileNameSafe(name);
}

fs::path CodecEngine::sourceWavePath(const ProjectItem& source) const
{
    return m_env.session.filesFolder() / pathFromUtf8(source.id());
}

const BodyAlgoInfo* CodecEngine::validCombination(const EditInfoRecord& record) const
{
    const BodyAlgoInfo* algorithm = offeredAlgorithm(m_env.bodies, record.bodyName, record.algoName, record.bitRate);
    if (algorithm == nullptr || !m_env.session.isOpen())
        return nullptr;
    const std::string name = libraryNameOf(*algorithm);
    if (findRegistryEntry(m_env.registry, name) == nullptr ||
        !isRegularFile(algorithmLibraryPath(m_env.session.projectFolder(), name)))
        return nullptr;
    return algorithm;
}

bool CodecEngine::stopRequested()
{
    if (m_env.port.stopRequested())
        m_run = false;
    return !m_run;
}

std::optional<CodecJob> CodecEngine::encodeJob(const ProjectItem& source, const EditInfoRecord& record,
                                               bool autoDecode) const
{
    const BodyAlgoInfo* algorithm = validCombination(record);
    if (algorithm == nullptr || !isPlainFileName(source.id()) || refused(record.algoName))
        return std::nullopt;
    CodecJob job;
    job.library = codecLibrary(*algorithm);
    job.bitRate = record.bitRate;
    job.wave = sourceWavePath(source);
    if (const fs::path events = eventFilePath(job.wave); isRegularFile(events))
        job.events = events;
    job.decodeToo = autoDecode;
    return job;
}

std::optional<CodecJob> CodecEngine::decodeJob(const EditInfoRecord& record) const
{
    const BodyAlgoInfo* algorithm = validCombination(record);
    if (algorithm == nullptr || !isPlainFileName(record.encodeName) || refused(record.algoName))
        return std::nullopt;
    CodecJob job;
    job.library = codecLibrary(*algorithm);
    job.bitRate = record.bitRate;
    for (const fs::path& interim : {m_env.session.tempFolder() / pathFromUtf8(record.encodeName),
                                    m_env.session.projectFolder() / pathFromUtf8(record.encodeName)})
        if (isRegularFile(interim)) {
            job.interim = interim;
            return job;
        }
    return std::nullopt;
}

std::unique_ptr<RowsAhead> CodecEngine::expectRows(const std::vector<CodecJob>& jobs)
{
    if (m_rowsTold || m_env.host.rowsAtOnce() <= 1)
        return nullptr;
    // Measuring keeps pace with the codecs; every measure is in before the scope ends.
    if (m_measures)
        m_measures->setThreads(m_env.host.rowsAtOnce());
    const auto measured = [this] {
        if (m_measures) {
            m_measures->finish();
            m_measures->setThreads(1);
        }
    };
    // Inside Temp, so that a helper's output reaches its place by a rename.
    return std::make_unique<RowsAhead>(m_env.host, m_rowsTold, jobs, m_env.session.tempFolder() / "codec-pool",
                                       measured);
}

std::unique_ptr<RowsAhead>
CodecEngine::expectSelected(const MainList& list, const std::function<std::optional<CodecJob>(const ListRow&)>& jobOf)
{
    if (m_rowsTold || m_env.host.rowsAtOnce() <= 1)
        return nullptr; // told already, or a codec that does not work ahead: no jobs to make
    std::vector<CodecJob> jobs;
    for (std::size_t row = 0; row < list.size(); ++row)
        if (list.isSelected(row))
            if (auto job = jobOf(list.rows()[row]))
                jobs.push_back(std::move(*job));
    return expectRows(jobs);
}

bool CodecEngine::refused(const std::string& algorithm) const
{
    const auto asked = m_mayUse.find(algorithm);
    return asked != m_mayUse.end() && !asked->second;
}

bool CodecEngine::mayUse(const std::string& algorithm)
{
    const auto asked = m_mayUse.find(algorithm);
    if (asked != m_mayUse.end())
        return asked->second;
    // A codec that breaks from now on is asked about by the next batch, not this one.
    const bool marked = m_env.broken != nullptr && m_env.broken->has(algorithm);
    const bool yes =
        !marked || m_env.port.ask(algorithm + std::string(msg::kCodecBrokeBefore), Buttons::YesNo) == Answer::Yes;
    if (marked && yes)
        m_env.broken->forgive(algorithm);
    m_mayUse[algorithm] = yes;
    return yes;
}

void CodecEngine::askAboutBrokenCodecs(const MainList& list)
{
    if (m_env.broken == nullptr)
        return;
    for (std::size_t row = 0; row < list.size(); ++row)
        if (const EditInfoRecord& record = list.rows()[row].record();
            list.isSelected(row) && m_env.broken->has(record.algoName) && validCombination(record))
            mayUse(record.algoName);
}

BatchResult CodecEngine::encodeSelected(MainList& list, bool autoDecode)
{
    askAboutBrokenCodecs(list);
    const auto ahead =
        expectSelected(list, [&](const ListRow& row) { return encodeJob(*row.source, row.record(), autoDecode); });
    return runBatch(list, "Encoding", [&](const ListRow& row) {
        RowOutcome outcome = encodeRow(row);
        if (outcome == RowOutcome::Done && autoDecode)
            outcome = decodeRow(row);
        return outcome;
    });
}

BatchResult CodecEngine::decodeSelected(MainList& list)
{
    askAboutBrokenCodecs(list);
    const auto ahead = expectSelected(list, [&](const ListRow& row) { return decodeJob(row.record()); });
    return runBatch(list, "Decoding", [&](const ListRow& row) { return decodeRow(row); });
}

BatchResult CodecEngine::runBatch(MainList& list, std::string_view doing,
                                  const std::function<RowOutcome(const ListRow&)>& work)
{
    const std::size_t count = list.selectedCount();
    std::size_t reached = 0;
    BatchResult result;
    result.rows.assign(list.size(), RowOutcome::NotSelected);
    std::optional<BusyScope> busy(std::in_place, m_env.session);
    m_run = true;
    bool changed = false;
    for (std::size_t row = 0; row < list.size(); ++row) {
        if (stopRequested()) {
            result.stopped = true;
            for (std::size_t rest = row; rest < list.size(); ++rest)
                if (list.isSelected(rest))
                    result.rows[rest] = RowOutcome::NotReached;
            break;
        }
        if (!list.isSelected(row))
            continue;
        m_env.port.setBatchItem(std::string(doing) + " " + std::to_string(++reached) + " of " + std::to_string(count) +
                                ": " + list.rows()[row].record().fileName);
        m_rowBroke = false;
        result.rows[row] = work(list.rows()[row]);
        if (m_rowBroke && m_env.broken)
            m_env.broken->mark(list.rows()[row].record().algoName);
        // A row cut short by Stop failed only because it was asked to: it
        // keeps its earlier results and counts as not reached.
        if (result.rows[row] == RowOutcome::Failed && stopRequested()) {
            result.rows[row] = RowOutcome::NotReached;
            result.stopped = true;
        }
        changed = changed || result.rows[row] == RowOutcome::Done;
    }
    busy.reset();
    if (changed)
        m_env.session.markModified();
    // Only the rows of this batch have new sizes; a source's size is looked at once.
    OriginalSizes sizes;
    for (std::size_t row = 0; row < list.size(); ++row) {
        if (result.rows[row] != RowOutcome::Done)
            continue;
        EditInfoRecord& record = list.rows()[row].record();
        auto known = sizes.find(record.fileName);
        if (known == sizes.end())
            known = sizes.emplace(record.fileName, originalSizeOf(record.fileName, m_env.session.filesFolder())).first;
        record.compressionRate = compressionRateText(record.encodeSize, known->second);
    }
    return result;
}

StemTaken CodecEngine::takenStems()
{
    // A stem is taken while any record names a file of it, and while a file of
    // it stands in Temp or beside the project file (where Close puts them).
    if (!m_recordedStems) {
        auto stems = std::make_shared<std::unordered_set<std::string>>();
        for (const ProjectItem* item : filesTreeOrder(m_env.session.document()))
            for (const EditInfoRecord& record : item->records()) {
                if (!record.encodeName.empty())
                    stems->insert(toLowerAscii(fileStem(record.encodeName)));
                if (!record.decodeName.empty())
                    stems->insert(toLowerAscii(fileStem(record.decodeName)));
            }
        m_recordedStems = std::move(stems);
    }
    const auto stems = m_recordedStems;
    const fs::path project = m_env.session.projectFolder();
    const fs::path temp = m_env.session.tempFolder();
    return [stems, project, temp](std::string_view stem) {
        if (stems->count(toLowerAscii(stem)) != 0)
            return true;
        const std::string s(stem);
        for (const fs::path& candidate : {project / pathFromUtf8(s + ".tmp"), project / pathFromUtf8(s + ".evt"),
                                          project / pathFromUtf8(s + ".dfn"), temp / pathFromUtf8(s + ".dfn"),
                                          temp / "evt" / pathFromUtf8(s + ".evt")}) {
            std::error_code ec;
            if (fs::exists(fs::symlink_status(candidate, ec)))
                return true;
        }
        return false;
    };
}

std::optional<fs::path> CodecEngine::newTempFile()
{
    const fs::path temp = m_env.session.tempFolder();
    std::error_code ec;
    fs::create_directories(temp, ec); // a missing Temp folder never stops work
    std::optional<fs::path> made = createUniqueTempFile(temp, takenStems());
    if (!made) {
        m_env.port.showMessage(std::string(msg::kNoTempFileIn) + utf8FromPath(temp) +
                               std::string(msg::kCanNotCopySuffix));
        return std::nullopt;
    }
    m_env.session.addTemporaryFile(*made);
    return made;
}

void CodecEngine::dropDecodedWave(const std::string& name)
{
    if (!isPlainFileName(name))
        return;
    // The working copy goes now; the copy a Save or Close put beside the
    // project file goes with the next Save, since the saved project file
    // names it until then.
    removeQuietly(m_env.session.tempFolder() / pathFromUtf8(name));
    m_env.session.dropAtSave(m_env.session.projectFolder() / pathFromUtf8(name));
}

fs::path CodecEngine::codecLibrary(const BodyAlgoInfo& algorithm) const
{
    return algorithmLibraryPath(m_env.session.projectFolder(), libraryNameOf(algorithm));
}

RowOutcome CodecEngine::encodeRow(const ListRow& row)
{
    EditInfoRecord& record = row.record();
    const BodyAlgoInfo* algorithm = validCombination(record);
    if (algorithm == nullptr)
        return RowOutcome::Invalid;
    if (refused(record.algoName))
        return RowOutcome::Failed;
    if (!isPlainFileName(row.source->id()))
        return RowOutcome::Unreadable;
    const fs::path project = m_env.session.projectFolder();
    const fs::path temp = m_env.session.tempFolder();
    UserPort& port = m_env.port;

    // The interim file: the one the record names, or a new one, which goes
    // again unless this encode succeeds.
    fs::path interim;
    ScratchFile created;
    if (isPlainFileName(record.encodeName)) {
        interim = temp / pathFromUtf8(record.encodeName);
        // Brought back from beside the project file when Temp lost it, only
        // so that a failing encode leaves it where the row expects it: the
        // copy beside the project file stays either way.
        const fs::path kept = project / pathFromUtf8(record.encodeName);
        if (!isRegularFile(interim) && isRegularFile(kept) && !copyWhole(kept, interim, port))
            return RowOutcome::Failed;
    } else {
        const std::optional<fs::path> made = newTempFile();
        if (!made)
            return RowOutcome::Failed;
        interim = *made;
        created = ScratchFile(interim);
    }
    const bool encodedBefore = created.path().empty();
    const std::string interimStem = utf8FromPath(interim.stem());

    // The speech events travel as the row's working copy, Temp\evt\<interim>.evt.
    const fs::path wave = sourceWavePath(*row.source);
    const fs::path events = eventFilePath(wave);
    const fs::path eventCopy = temp / "evt" / pathFromUtf8(interimStem + ".evt");
    const bool withEvents = isRegularFile(events);
    if (withEvents) {
        std::error_code ec;
        fs::create_directories(eventCopy.parent_path(), ec);
        // A copy made before the events were edited would carry old events.
        if ((!isRegularFile(eventCopy) || !sameBytes(events, eventCopy)) && !copyWhole(events, eventCopy, port))
            return RowOutcome::Failed;
    } else {
        removeQuietly(eventCopy); // events removed from the source since the last encode
    }
    // The codec reads the file itself; this only proves it loads, and says why not.
    if (WaveFile source; !source.load(wave)) {
        port.showFailure(utf8FromPath(wave) + std::string(msg::kSourceUnreadableSuffix), source.error());
        return RowOutcome::Unreadable;
    }

    const LoadedCodec codec(m_env.host, codecLibrary(*algorithm), record.bitRate, m_rowBroke);
    // The events are handed over before the encode, which is the call that carries them.
    if (!codec || !codec->setEventFile(withEvents ? eventCopy : fs::path()))
        return RowOutcome::Failed;

    // A row encoded before keeps its interim file untouched until the new
    // output is complete, so a failing codec cannot spoil the old results.
    ScratchFile output;
    if (encodedBefore) {
        const std::optional<fs::path> made = newTempFile();
        if (!made)
            return RowOutcome::Failed;
        output = ScratchFile(*made);
    }
    const fs::path& encoded = encodedBefore ? output.path() : interim;

    const ProgressScope progress(port, record.algoName + std::string(msg::kEncodingSuffix));
    ProgressBarWindow bar(port);
    ProgressTextWindow text(port);
    std::string extension;
    std::error_code ec;
    if (!codec->encode(wave, encoded, bar.window(), text.window()) || !codec->outputExtension(extension))
        return RowOutcome::Failed;
    std::string tag;
    codec->outputTag(
        tag); // asked for, as the contract has it, but not part of an encode's stored names (docs/engine.md)
    const std::uintmax_t rawSize = fs::file_size(encoded, ec);
    // A codec that says it succeeded has still to deliver an encoded file:
    // without its header the data would reach the firmware as speech.
    if (ec || !inspectEncodedFile(encoded, port))
        return RowOutcome::Failed;
    std::string writeError;
    if (!EncryptZip(encoded, interim, &writeError)) {
        port.showMessage(interimFailureText(utf8FromPath(interim.filename()), true, writeError));
        return RowOutcome::Failed;
    }
    created.keep();

    // The saved project may name this interim file with the old encoding's record.
    if (encodedBefore)
        m_env.session.workReplaced(interim);
    // A decoded wave of the old encoding no longer belongs to the row.
    dropDecodedWave(record.decodeName);
    record.decodeName.clear();
    record.decodeSize.clear();
    record.encodeName = utf8FromPath(interim.filename());
    record.encodeSize = sizeText(rawSize);
    record.renameEncode = exportName(record, fileNameSafe(extension));

    // Save and Close put the interim file beside the project file, and Close
    // the working event file too; Save purges Temp\evt without copying it.
    // The row's event file beside the project file is brought up to date
    // now, so an event file left there by an earlier Close never describes
    // events the source no longer has. A copy that fails has said so; the
    // encoding itself is done.
    const fs::path eventsBeside = project / pathFromUtf8(interimStem + ".evt");
    if (withEvents)
        copyWhole(eventCopy, eventsBeside, port);
    else
        removeQuietly(eventsBeside);
    return RowOutcome::Done;
}

RowOutcome CodecEngine::decodeRow(const ListRow& row)
{
    EditInfoRecord& record = row.record();
    const BodyAlgoInfo* algorithm = validCombination(record);
    if (algorithm == nullptr)
        return RowOutcome::Invalid;
    if (refused(record.algoName))
        return RowOutcome::Failed;
    if (!isPlainFileName(record.encodeName))
        return RowOutcome::Unreadable; // never encoded
    const fs::path project = m_env.session.projectFolder();
    const fs::path temp = m_env.session.tempFolder();
    UserPort& port = m_env.port;

    const fs::path interim = temp / pathFromUtf8(record.encodeName);
    if (!isRegularFile(interim)) {
        const fs::path kept = project / pathFromUtf8(record.encodeName);
        if (!isRegularFile(kept)) {
            port.showMessage(record.encodeName + std::string(msg::kInterimMissing));
            return RowOutcome::Failed;
        }
        if (!copyWhole(kept, interim, port))
            return RowOutcome::Failed;
    }

    const std::optional<fs::path> made = newTempFile();
    if (!made)
        return RowOutcome::Failed;
    const ScratchFile unpacked(*made);
    const std::string decodeStem = utf8FromPath(unpacked.path().stem());
    const std::string decodeName = decodeStem + std::string(kDecodedExtension);
    std::string writeError;
    if (!DecryptUnzip(interim, unpacked.path(), &writeError)) {
        port.showMessage(interimFailureText(record.encodeName, false, writeError));
        return RowOutcome::Failed;
    }
    const LoadedCodec codec(m_env.host, codecLibrary(*algorithm), record.bitRate, m_rowBroke);
    if (!codec)
        return RowOutcome::Failed;

    // The codec's name part goes in front of the scratch wave's name.
    std::string tag;
    codec->outputTag(tag);
    while (!tag.empty() && tag.back() == '_')
        tag.pop_back();
    const ScratchFile wave(
        temp / pathFromUtf8(fileNameSafe(normalizeNamePart(tag)) + decodeStem + std::string(kDecodeScratchExtension)));
    {
        const ProgressScope progress(port, record.algoName + std::string(msg::kDecodingSuffix));
        ProgressBarWindow bar(port);
        ProgressTextWindow text(port);
        if (!codec->decode(unpacked.path(), wave.path(), bar.window(), text.window()))
            return RowOutcome::Failed;
    }
    // A codec that says it succeeded has still to deliver a wave: a listener
    // and the firmware's tests would otherwise meet noise as speech.
    if (WaveFile facts; !facts.load(wave.path(), WaveRead::FactsOnly)) {
        port.showFailure(record.algoName + std::string(msg::kDecodeNotAWave), facts.error());
        return RowOutcome::Failed;
    }
    std::error_code ec;
    const std::uintmax_t waveSize = fs::file_size(wave.path(), ec);
    if (ec)
        return RowOutcome::Failed;
    const fs::path decoded = temp / pathFromUtf8(decodeName);
    if (!EncryptZip(wave.path(), decoded, &writeError)) {
        port.showMessage(interimFailureText(decodeName, true, writeError));
        return RowOutcome::Failed;
    }

    m_env.session.addTemporaryFile(decoded);
    if (record.decodeName != decodeName)
        dropDecodedWave(record.decodeName);
    record.decodeName = decodeName;
    record.decodeSize = sizeText(waveSize);
    if (WaveFile heard; m_measures && heard.load(wave.path()))
        m_measures->add(record, sourceWavePath(*row.source), heard.samples(), heard.sampleRate());
    return RowOutcome::Done;
}

} // namespace kestrelon
