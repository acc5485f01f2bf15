#pragma once
// The encode/decode engine: turns the selected rows of the main list into
// interim encoded files (the codec's output packed with EncryptZip, Temp\SAF*.tmp)
// and back into decoded waves (packed, Temp\SAF*.dfn), recording names and
// sizes in the rows' edit-info records. docs/engine.md walks through one row.
//
// Everything runs on the caller's thread, one row at a time; the person sees
// progress and messages through the port and stops a batch through the port's
// stopRequested(), which is asked before each row.
#include "codec/engine_scopes.h"
#include "codec/main_list.h"
#include "codec/temp_names.h"
#include "host/algorithm_registry.h"
#include "host/codec_runner.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace kestrelon {

class BodySettings;
class QualityQueue;
class BrokenCodecs;
struct BodyAlgoInfo;
class ProjectSession;
class QualityFile;
class UserPort;

// What the engine works with: the open project, its algorithm registry (as
// the project's companion files hold it), the body settings and one codec
// holder. The registry is changed only by Add Encode Data and add-algo.
struct EngineEnvironment {
    ProjectSession& session;
    std::vector<AlgoRegEntry>& registry;
    const BodySettings& bodies;
    CodecRunner& host; // in this process, or a worker's
    UserPort& port;
    // Where the body settings' PATHNAMEs are taken from.
    std::filesystem::path programFolder;
    // When set, each row decoded is measured against its source while its
    // wave is at hand, and the measures are put here for the caller to keep.
    QualityFile* quality = nullptr;
    // When set, a codec that crashes or stops answering is marked here, and a
    // batch asks before it gives a marked codec a row.
    BrokenCodecs* broken = nullptr;
};

// What became of one row of a batch.
enum class RowOutcome {
    NotSelected,
    Done, // encoded (and decoded, when asked) or decoded
    Invalid, // body / algorithm / bit rate not a valid combination: passed over silently
    Unreadable, // the source wave is missing or not loadable (encode), or nothing was encoded yet (decode)
    Failed, // the codec or the file work failed; the row keeps its old results
    NotReached, // the batch was stopped before this row, or in it (the row keeps its earlier results)
};

struct BatchResult {
    std::vector<RowOutcome> rows; // one per row of the list
    bool stopped = false;

    std::size_t count(RowOutcome outcome) const;
    // True when every selected row was done.
    bool allDone() const;
};

class CodecEngine {
public:
    explicit CodecEngine(EngineEnvironment environment);
    ~CodecEngine();

    // Encodes the selected rows in list order. With `autoDecode` each row that
    // encodes is decoded at once, before the next row (the automatic decode
    // switch). The busy flag is set for the whole batch; the compression rates
    // of the rows done are recomputed at the end.
    BatchResult encodeSelected(MainList& list, bool autoDecode = false);
    // Decodes the selected rows in list order, then recomputes their rates.
    BatchResult decodeSelected(MainList& list);

    // Whether a row's body, algorithm and bit rate form a combination the
    // engine can run: the body settings offer the algorithm with that bit rate
    // for that body, and the project's registry names its library, which
    // stands in Algos. The body algorithm, or null.
    const BodyAlgoInfo* validCombination(const EditInfoRecord& record) const;

    // The export name of a row: base_body_algorithm_bitrate.ext, base being
    // the source's file name without ".wav". Characters a file name cannot
    // hold become "_"; an empty extension leaves no dot.
    static std::string exportName(const EditInfoRecord& record, std::string_view extension);

    // The source wave of a row: Files\<source file name>.
    std::filesystem::path sourceWavePath(const ProjectItem& source) const;

    // What the codec does for a row, told ahead to a codec that works ahead:
    // none for a row the engine would pass over before its codec.
    std::optional<CodecJob> encodeJob(const ProjectItem& source, const EditInfoRecord& record, bool autoDecode) const;
    std::optional<CodecJob> decodeJob(const EditInfoRecord& record) const;
    // Tells the codec these rows come, until the scope ends; batches run
    // meanwhile tell nothing of their own (Add Encode Data runs one row a
    // batch, and knows the rows to come).
    std::unique_ptr<RowsAhead> expectRows(const std::vector<CodecJob>& jobs);
    // Whether rows may use the algorithm: yes, unless it broke in an earlier
    // batch and the person says no, asked once per engine at its first use.
    bool mayUse(const std::string& algorithm);

private:
    // `doing` names the work for the person: "Encoding 2 of 4: hts1a.wav".
    BatchResult runBatch(MainList& list, std::string_view doing, const std::function<RowOutcome(const ListRow&)>& work);
    RowOutcome encodeRow(const ListRow& row);
    RowOutcome decodeRow(const ListRow& row);
    bool stopRequested();
    // Tells the codec the jobs of the selected rows, as expectRows does.
    std::unique_ptr<RowsAhead> expectSelected(const MainList& list,
                                              const std::function<std::optional<CodecJob>(const ListRow&)>& jobOf);
    // Asks about the broken codecs of the selected rows before the first row.
    void askAboutBrokenCodecs(const MainList& list);
    // Rows may not use the algorithm: the person said so this batch.
    bool refused(const std::string& algorithm) const;
    // Names no record, Temp file or file beside the project file uses. The
    // records' names are gathered once per engine: a name given out since
    // stands in Temp, which the test looks at anyway.
    StemTaken takenStems();
    // A new SAF*.tmp in Temp, entered in the session's temporary files.
    std::optional<std::filesystem::path> newTempFile();
    // The project's copy of the algorithm's library (Algos).
    std::filesystem::path codecLibrary(const BodyAlgoInfo& algorithm) const;
    // Lets go of a decoded wave the row no longer names.
    void dropDecodedWave(const std::string& name);

    EngineEnvironment m_env;
    bool m_run = false; // the batch's run flag
    bool m_rowsTold = false;
    bool m_rowBroke = false; // the row's codec crashed or stopped answering
    std::map<std::string, bool> m_mayUse; // the answers about broken codecs
    std::unique_ptr<QualityQueue> m_measures; // when the environment keeps quality
    std::shared_ptr<const std::unordered_set<std::string>> m_recordedStems;
};

} // namespace kestrelon
