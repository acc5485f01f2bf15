#include "app/views/info_panels.h"

#include "project/edit_info_record.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>

namespace kestrelon {

namespace {

const QString kNoAlgorithmVersion = QStringLiteral("1.0.0");

QString withUnit(const std::string& value, const char* unit)
{
    return value.empty() ? QString() : QString::fromStdString(value) + QLatin1String(unit);
}

} // namespace

InfoPanels::InfoPanels(QWidget* parent)
    : QWidget(parent)
{
    const auto makeGroup = [this](const QString& title, std::initializer_list<std::pair<Field, const char*>> rows) {
        auto* group = new QGroupBox(title, this);
        auto* form = new QFormLayout(group);
        form->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
        form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
        form->setRowWrapPolicy(QFormLayout::DontWrapRows);
        for (const auto& [field, label] : rows) {
            auto* value = new QLabel(group);
            value->setTextInteractionFlags(Qt::TextSelectableByMouse);
            // A long name must not hold the window wide: the text is cut at
            // the panel's edge and shows whole in the tool tip.
            value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
            value->setMinimumWidth(60);
            m_values[field] = value;
            auto* caption = new QLabel(tr(label), group);
            form->addRow(caption, value);
            if (field == AlgoCreator || field == AlgoDescription || field == AlgoConfiguration)
                form->setRowVisible(value, false);
        }
        return group;
    };

    QGroupBox* file = makeGroup(tr("File Information"), {{FileName, "Name:"},
                                                         {FileSampleRate, "Sample Rate:"},
                                                         {FileChannels, "Channels:"},
                                                         {FileResolution, "Resolution:"},
                                                         {FileSize, "File Size:"},
                                                         {FileTime, "Time:"}});
    QGroupBox* algorithm = makeGroup(tr("Algorithm Information"), {{AlgoName, "Name:"},
                                                                   {AlgoVersion, "Version:"},
                                                                   {AlgoSampleRate, "Sample Rate:"},
                                                                   {AlgoResolution, "Resolution:"},
                                                                   {AlgoCreator, "Creator:"},
                                                                   {AlgoDescription, "Description:"},
                                                                   {AlgoConfiguration, "Configuration:"}});
    QGroupBox* summary =
        makeGroup(QString(),
                  {{EncodeSize, "Encode Size:"}, {DecodeSize, "Decode Size:"}, {CompressionRate, "Compression Rate:"}});

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(file, 3);
    layout->addWidget(algorithm, 3);
    layout->addWidget(summary, 2);
    clear();
}

void InfoPanels::set(Field field, const QString& text)
{
    m_values[field]->setText(text);
    m_values[field]->setToolTip(text); // a long file name may not fit
}

void InfoPanels::set(Field field, const std::string& text)
{
    set(field, QString::fromStdString(text));
}

void InfoPanels::show(const QString& fileName, const std::optional<WaveFacts>& wave, const QString& algorithmName,
                      const std::optional<AlgorithmFacts>& algorithm, const EditInfoRecord& record)
{
    clear();
    set(FileName, wave ? QString::fromStdString(wave->name) : fileName);
    if (wave) {
        set(FileSampleRate, wave->sampleRate);
        set(FileChannels, wave->channels);
        set(FileResolution, wave->resolution);
        set(FileSize, wave->fileSize);
        set(FileTime, wave->time);
    }
    set(AlgoName, algorithm ? QString::fromStdString(algorithm->name) : algorithmName);
    if (algorithm) {
        set(AlgoVersion, algorithm->version);
        set(AlgoSampleRate, algorithm->sampleRate);
        set(AlgoResolution, algorithm->resolution);
    }
    // What the codec will do to the recording, where it differs from it.
    if (wave && algorithm) {
        const QString note = codecNote(*wave, *algorithm);
        m_values[FileSampleRate]->setToolTip(note.isEmpty() ? m_values[FileSampleRate]->text() : note);
        m_values[FileChannels]->setToolTip(note.isEmpty() ? m_values[FileChannels]->text() : note);
    }
    set(EncodeSize, withUnit(record.encodeSize, " byte"));
    set(DecodeSize, withUnit(record.decodeSize, " byte"));
    set(CompressionRate, withUnit(record.compressionRate, " %"));
}

QString InfoPanels::codecNote(const WaveFacts& wave, const AlgorithmFacts& algorithm)
{
    QStringList notes;
    if (!algorithm.sampleRate.empty() && wave.sampleRate != algorithm.sampleRate)
        notes << tr("Recorded at %1; %2 works at %3, so it is resampled when encoded.")
                     .arg(QString::fromStdString(wave.sampleRate), QString::fromStdString(algorithm.name),
                          QString::fromStdString(algorithm.sampleRate));
    if (wave.channels != "Mono")
        notes << tr("%1: its channels are mixed into one when encoded.").arg(QString::fromStdString(wave.channels));
    return notes.join(QLatin1Char('\n'));
}

void InfoPanels::clear()
{
    for (QLabel* value : m_values) {
        value->clear();
        value->setToolTip(QString());
    }
    m_values[AlgoVersion]->setText(kNoAlgorithmVersion);
}

QString InfoPanels::text(Field field) const
{
    return m_values[field]->text();
}

} // namespace kestrelon
