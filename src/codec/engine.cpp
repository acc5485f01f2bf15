#include "codec/engine.h"

#include "bodies/body_settings.h"
#include "codec/interim_packer.h"
#include "codec/project_algorithms.h"
#include "codec/raw_extraction.h"
#include "codec/results.h"
#include "codec/temp_names.h"
#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "plugins/codec_host.h"
#include "plugins/host_windows.h"
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

std::string lowerAscii(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

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
        port.showMessage(std::string(msg::kCanNotCopyPrefix) + utf8FromPath(from) + std::string(msg::kCopyTo) +
                         utf8FromPath(to) + std::string(msg::kCanNotCopySuffix));
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

CodecEngine::CodecEngine(EngineEnvironment environment) : m_env(std::move(environment)) {}

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

BatchResult CodecEngine::encodeSelected(MainList& list, bool autoDecode)
{
    return runBatch(list, [&](const ListRow& row) {
        RowOutcome outcome = encodeRow(row);
        if (outcome == RowOutcome::Done && autoDecode)
            outcome = decodeRow(row);
        return outcome;
    });
}

BatchResult CodecEngine::decodeSelected(MainList& list)
{
    return runBatch(list, [&](const ListRow& row) { return decodeRow(row); });
}

BatchResult CodecEngine::runBatch(MainList& list, const std::function<RowOutcome(const ListRow&)>& work)
{
    BatchResult result;
    result.rows.assign(list.size(), RowOutcome::NotSelected);
    m_env.session.setBusy(true);
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
        result.rows[row] = work(list.rows()[row]);
        changed = changed || result.rows[row] == RowOutcome::Done;
    }
    m_env.session.setBusy(false);
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
                    stems->insert(lowerAscii(fileStem(record.encodeName)));
                if (!record.decodeName.empty())
                    stems->insert(lowerAscii(fileStem(record.decodeName)));
            }
        m_recordedStems = std::move(stems);
    }
    const auto stems = m_recordedStems;
    const fs::path project = m_env.session.projectFolder();
    const fs::path temp = m_env.session.tempFolder();
    return [stems, project, temp](std::string_view stem) {
        if (stems->count(lowerAscii(stem)) != 0)
            return true;
        const std::string s(stem);
        for (const fs::path& candidate :
             {project / pathFromUtf8(s + ".tmp"), project / pathFromUtf8(s + ".evt"), project / pathFromUtf8(s + ".dfn"),
              temp / pathFromUtf8(s + ".dfn"), temp / "evt" / pathFromUtf8(s + ".evt")}) {
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
        m_env.port.showMessage(std::string(msg::kNoTempFileIn) + utf8FromPath(temp) + std::string(msg::kCanNotCopySuffix));
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

bool CodecEngine::loadCodec(const BodyAlgoInfo& algorithm, const EditInfoRecord& record)
{
    const fs::path library = algorithmLibraryPath(m_env.session.projectFolder(), libraryNameOf(algorithm));
    if (m_env.host.loadAlgorithmPath(library, record.bitRate))
        return true;
    m_env.host.releaseAlgorithm();
    return false;
}

RowOutcome CodecEngine::encodeRow(const ListRow& row)
{
    EditInfoRecord& record = row.record();
    const BodyAlgoInfo* algorithm = validCombination(record);
    if (algorithm == nullptr)
        return RowOutcome::Invalid;
    if (!isPlainFileName(row.source->id()))
        return RowOutcome::Unreadable;
    const fs::path project = m_env.session.projectFolder();
    const fs::path temp = m_env.session.tempFolder();
    UserPort& port = m_env.port;

    // The interim file: the one the record names, brought back from beside
    // the project file when Temp lost it, or a new one.
    fs::path interim;
    bool createdNow = false;
    if (isPlainFileName(record.encodeName)) {
        interim = temp / pathFromUtf8(record.encodeName);
        const fs::path kept = project / pathFromUtf8(record.encodeName);
        if (!isRegularFile(interim) && isRegularFile(kept))
            copyWhole(kept, interim, port);
    } else {
        const std::optional<fs::path> made = newTempFile();
        if (!made)
            return RowOutcome::Failed;
        interim = *made;
        createdNow = true;
    }
    const auto dropCreated = [&] {
        if (createdNow)
            removeQuietly(interim);
    };
    const std::string interimStem = utf8FromPath(interim.stem());

    // The speech events travel as the row's working copy, Temp\evt\<interim>.evt.
    const fs::path wave = sourceWavePath(*row.source);
    const fs::path events = eventFilePath(wave);
    const fs::path eventCopy = temp / "evt" / pathFromUtf8(interimStem + ".evt");
    bool withEvents = false;
    if (isRegularFile(events)) {
        std::error_code ec;
        fs::create_directories(eventCopy.parent_path(), ec);
        // A copy made before the events were edited would carry old events.
        if ((!isRegularFile(eventCopy) || !sameBytes(events, eventCopy)) && !copyWhole(events, eventCopy, port)) {
            dropCreated();
            return RowOutcome::Failed;
        }
        withEvents = true;
    } else {
        removeQuietly(eventCopy); // events removed from the source since the last encode
    }

    WaveFile source;
    if (!source.load(wave)) {
        dropCreated();
        return RowOutcome::Unreadable;
    }
    source = WaveFile(); // the codec reads the file itself

    if (!loadCodec(*algorithm, record)) {
        dropCreated();
        return RowOutcome::Failed;
    }
    CodecHost& host = m_env.host;
    // Handed over before the encode, which is the call that carries them.
    if (!host.setEventFile(withEvents ? eventCopy : fs::path())) {
        host.releaseAlgorithm();
        dropCreated();
        return RowOutcome::Failed;
    }

    // A row encoded before keeps its interim file untouched until the new
    // output is complete, so a failing codec cannot spoil the old results.
    fs::path output = interim;
    if (!createdNow) {
        const std::optional<fs::path> scratch = newTempFile();
        if (!scratch) {
            host.releaseAlgorithm();
            return RowOutcome::Failed;
        }
        output = *scratch;
    }

    const std::string title = record.algoName + std::string(msg::kEncodingSuffix);
    port.beginProgress(title);
    port.setProgressRange(0, 100);
    port.setProgressText(title); // until the codec says more
    ProgressBarWindow bar(port);
    ProgressTextWindow text(port);
    bool ok = host.encode(wave, output, bar.window(), text.window());
    std::string extension;
    std::string tag;
    ok = ok && host.outputExtension(extension);
    if (ok)
        host.outputTag(tag); // not part of the stored names of an encode (docs/engine.md)
    std::error_code ec;
    const std::uintmax_t rawSize = ok ? fs::file_size(output, ec) : 0;
    ok = ok && !ec;
    // A codec that says it succeeded has still to deliver an encoded file:
    // without its header the data would reach the firmware as speech.
    ok = ok && inspectEncodedFile(output, port).has_value();
    std::string writeError;
    if (ok && !EncryptZip(output, interim, &writeError)) {
        port.showMessage(interimFailureText(utf8FromPath(interim.filename()), true, writeError));
        ok = false;
    }
    port.endProgress();
    host.releaseAlgorithm();
    if (output != interim)
        removeQuietly(output);
    if (!ok) {
        dropCreated();
        return RowOutcome::Failed;
    }

    // The saved project may name this interim file with the old encoding's record.
    if (!createdNow)
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
    // events the source no longer has.
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

    const std::optional<fs::path> unpacked = newTempFile();
    if (!unpacked)
        return RowOutcome::Failed;
    const std::string decodeStem = utf8FromPath(unpacked->stem());
    const std::string decodeName = decodeStem + std::string(kDecodedExtension);
    std::string writeError;
    if (!DecryptUnzip(interim, *unpacked, &writeError)) {
        port.showMessage(interimFailureText(record.encodeName, false, writeError));
        removeQuietly(*unpacked);
        return RowOutcome::Failed;
    }
    if (!loadCodec(*algorithm, record)) {
        removeQuietly(*unpacked);
        return RowOutcome::Failed;
    }
    CodecHost& host = m_env.host;

    // The codec's name part goes in front of the scratch wave's name.
    std::string tag;
    host.outputTag(tag);
    while (!tag.empty() && tag.back() == '_')
        tag.pop_back();
    const fs::path scratch =
        temp / pathFromUtf8(fileNameSafe(normalizeNamePart(tag)) + decodeStem + std::string(kDecodeScratchExtension));

    const std::string title = record.algoName + std::string(msg::kDecodingSuffix);
    port.beginProgress(title);
    port.setProgressRange(0, 100);
    port.setProgressText(title);
    ProgressBarWindow bar(port);
    ProgressTextWindow text(port);
    bool ok = host.decode(*unpacked, scratch, bar.window(), text.window());
    port.endProgress();
    host.releaseAlgorithm();
    removeQuietly(*unpacked);

    std::error_code ec;
    const std::uintmax_t waveSize = ok ? fs::file_size(scratch, ec) : 0;
    ok = ok && !ec;
    const fs::path decoded = temp / pathFromUtf8(decodeName);
    if (ok && !EncryptZip(scratch, decoded, &writeError)) {
        port.showMessage(interimFailureText(decodeName, true, writeError));
        ok = false;
    }
    removeQuietly(scratch);
    if (!ok)
        return RowOutcome::Failed;

    m_env.session.addTemporaryFile(decoded);
    if (record.decodeName != decodeName)
        dropDecodedWave(record.decodeName);
    record.decodeName = decodeName;
    record.decodeSize = sizeText(waveSize);
    return RowOutcome::Done;
}

} // namespace kestrelon
