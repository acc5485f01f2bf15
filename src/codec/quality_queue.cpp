#include "codec/quality_queue.h"

#include "codec/row_quality.h"
#include "wave/quality.h"
#include "wave/wave_file.h"

#include <optional>

namespace kestrelon {

namespace {

std::optional<QualityMeasures> measure(const std::filesystem::path& source, const std::vector<std::int16_t>& heard,
                                       int heardRate)
{
    WaveFile wave;
    if (!wave.load(source))
        return std::nullopt;
    return measureQuality(wave.samples(), wave.sampleRate(), heard, heardRate);
}

} // namespace

void QualityQueue::add(const EditInfoRecord& record, const std::filesystem::path& source,
                       std::vector<std::int16_t> heard, int heardRate)
{
    if (m_threads <= 1) {
        if (const auto measures = measure(source, heard, heardRate))
            m_file.put(record, *measures);
        return;
    }
    // The oldest is put before a new one starts once all threads are busy:
    // row order, and no more samples held than the threads work on.
    while (int(m_pending.size()) >= m_threads)
        putOldest();
    m_pending.push_back({record, std::async(std::launch::async, [source, heard = std::move(heard), heardRate] {
                             return measure(source, heard, heardRate);
                         })});
}

void QualityQueue::putOldest()
{
    // The file is written here, on the batch's thread, in row order.
    Pending& oldest = m_pending.front();
    if (const std::optional<QualityMeasures> measures = oldest.measures.get())
        m_file.put(oldest.record, *measures);
    m_pending.pop_front();
}

void QualityQueue::finish()
{
    while (!m_pending.empty())
        putOldest();
}

} // namespace kestrelon
