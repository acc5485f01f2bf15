#pragma once
// The three areas above the main list: "File Information" (the current row's
// source wave), "Algorithm Information" (its algorithm) and the summary strip
// (its sizes and compression rate). They only show texts handed to them; with
// no current row every field is empty again and the version reads "1.0.0".
#include "codec/results.h"

#include <QWidget>

#include <array>
#include <optional>

class QLabel;

namespace kestrelon {

struct EditInfoRecord;

class InfoPanels : public QWidget {
    Q_OBJECT
public:
    enum Field {
        FileName,
        FileSampleRate,
        FileChannels,
        FileResolution,
        FileSize,
        FileTime,
        AlgoName,
        AlgoVersion,
        AlgoSampleRate,
        AlgoResolution,
        AlgoCreator, // present but hidden
        AlgoDescription, // present but hidden
        AlgoConfiguration, // present but hidden
        EncodeSize,
        DecodeSize,
        CompressionRate,
        FieldCount
    };

    explicit InfoPanels(QWidget* parent = nullptr);

    // The current row: its wave's facts (none when the wave cannot be read:
    // the name alone is shown), its algorithm's (none when the algorithm
    // cannot be described: the name alone) and its record's sizes and rate.
    void show(const QString& fileName, const std::optional<WaveFacts>& wave, const QString& algorithmName,
              const std::optional<AlgorithmFacts>& algorithm, const EditInfoRecord& record);
    // No current row.
    // What the codec does to a recording that is not as it works ("Recorded
    // at 44100 Hz; ImaAdpcm works at 8000 Hz, ..."); empty when nothing.
    static QString codecNote(const WaveFacts& wave, const AlgorithmFacts& algorithm);
    void clear();

    QString text(Field field) const;
    QLabel* valueLabel(Field field) const { return m_values[field]; }

private:
    void set(Field field, const std::string& text);
    void set(Field field, const QString& text);

    std::array<QLabel*, FieldCount> m_values{};
};

} // namespace kestrelon
