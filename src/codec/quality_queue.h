#pragma once
// The measures of rows decoded in a batch, taken on threads of their own when
// rows run several at once, so that measuring keeps pace with the codecs. They
// reach the quality file in row order, all of them before finish() returns.
#include "project/edit_info_record.h"
#include "wave/quality.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <future>
#include <optional>
#include <utility>
#include <vector>

namespace kestrelon {

class QualityFile;

class QualityQueue {
public:
    explicit QualityQueue(QualityFile& file)
        : m_file(file)
    {}
    ~QualityQueue() { finish(); }
    QualityQueue(const QualityQueue&) = delete;
    QualityQueue& operator=(const QualityQueue&) = delete;

    // Up to `threads` measures at once from now on; 1 measures in add() itself.
    void setThreads(int threads) { m_threads = threads; }
    // Measures `heard` against the source wave at `source` for `record` (a
    // copy: the key is the decode as it is now). Nothing is kept when the
    // source no longer reads.
    void add(const EditInfoRecord& record, const std::filesystem::path& source, std::vector<std::int16_t> heard,
             int heardRate);
    void finish();

private:
    // Puts the oldest measure in the file, once it is taken.
    void putOldest();

    struct Pending {
        EditInfoRecord record;
        std::future<std::optional<QualityMeasures>> measures;
    };
    QualityFile& m_file;
    int m_threads = 1;
    std::deque<Pending> m_pending;
};

} // namespace kestrelon
