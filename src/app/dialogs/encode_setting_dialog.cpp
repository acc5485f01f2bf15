#include "app/dialogs/encode_setting_dialog.h"

#include "project/project_item.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace kestrelon {

namespace {

QString qText(const std::string& text)
{
    return QString::fromStdString(text);
}

// Puts the entry showing `preferred` current, or the first one.
void choose(QComboBox* box, const QString& preferred)
{
    const int found = box->findText(preferred, Qt::MatchExactly | Qt::MatchCaseSensitive);
    box->setCurrentIndex(found >= 0 ? found : (box->count() > 0 ? 0 : -1));
}

std::optional<std::string> chosen(const QComboBox* box)
{
    if (box->currentIndex() < 0)
        return std::nullopt;
    return box->currentText().toStdString();
}

} // namespace

EncodeSettingDialog::EncodeSettingDialog(const std::vector<BodyInfo>& bodies, const LastEncodeSetting& last,
                                         const QString& sourceName, QWidget* parent)
    : QDialog(parent)
    , m_bodies(bodies)
    , m_source(new QLabel(sourceName, this))
    , m_body(new QComboBox(this))
    , m_name(new QComboBox(this))
    , m_bitRate(new QComboBox(this))
    , m_configuration(new QPushButton(tr("Configuration"), this))
    , m_applyToAll(new QCheckBox(tr("Apply to all files"), this))
{
    setWindowTitle(tr("Encode Setting"));
    m_source->setVisible(!sourceName.isEmpty());
    for (QComboBox* box : {m_body, m_name, m_bitRate}) {
        box->setMinimumWidth(200);
        box->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    }
    m_configuration->setEnabled(false);
    m_configuration->setToolTip(tr("The algorithms offer no options of their own."));
    m_applyToAll->setChecked(last.applyAllFiles);

    auto* top = new QFormLayout;
    top->addRow(tr("Body:"), m_body);
    auto* algorithm = new QGroupBox(tr("Algorithm"), this);
    auto* algorithmForm = new QFormLayout(algorithm);
    algorithmForm->addRow(tr("Name:"), m_name);
    algorithmForm->addRow(tr("Bit Rate:"), m_bitRate);
    algorithmForm->addRow(QString(), m_configuration);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_source);
    layout->addLayout(top);
    layout->addWidget(algorithm);
    layout->addWidget(m_applyToAll);
    layout->addWidget(buttons);

    for (const BodyInfo& body : m_bodies)
        m_body->addItem(qText(body.name));
    choose(m_body, qText(last.bodyName));
    fillAlgorithms(qText(last.algName));
    fillBitRates(qText(last.bitRate));

    connect(m_body, &QComboBox::currentIndexChanged, this, [this] { fillAlgorithms(m_name->currentText()); });
    connect(m_name, &QComboBox::currentIndexChanged, this, [this] { fillBitRates(m_bitRate->currentText()); });
    // OK closes the dialog whatever the lists hold; the answer says what was missing.
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

const BodyInfo* EncodeSettingDialog::currentBody() const
{
    const int index = m_body->currentIndex();
    if (index < 0 || static_cast<std::size_t>(index) >= m_bodies.size())
        return nullptr;
    return &m_bodies[static_cast<std::size_t>(index)];
}

const BodyAlgoInfo* EncodeSettingDialog::currentAlgorithm() const
{
    const BodyInfo* body = currentBody();
    const int index = m_name->currentIndex();
    if (!body || index < 0 || static_cast<std::size_t>(index) >= body->algorithms.size())
        return nullptr;
    return &body->algorithms[static_cast<std::size_t>(index)];
}

void EncodeSettingDialog::fillAlgorithms(const QString& preferred)
{
    const QSignalBlocker quiet(m_name);
    m_name->clear();
    if (const BodyInfo* body = currentBody()) {
        // The body's algorithms up to its ALGOCOUNT, as the settings file counts them.
        const std::size_t count =
            std::min(body->algorithms.size(), static_cast<std::size_t>(std::max(0, body->algoCount)));
        for (std::size_t i = 0; i < count; ++i)
            m_name->addItem(qText(body->algorithms[i].name));
    }
    choose(m_name, preferred);
    fillBitRates(m_bitRate->currentText());
}

void EncodeSettingDialog::fillBitRates(const QString& preferred)
{
    const QSignalBlocker quiet(m_bitRate);
    m_bitRate->clear();
    if (const BodyAlgoInfo* algorithm = currentAlgorithm())
        for (const std::string& rate : algorithm->bitRates)
            m_bitRate->addItem(qText(rate));
    choose(m_bitRate, preferred);
}

EncodeSettingAnswer EncodeSettingDialog::answer() const
{
    EncodeSettingAnswer answer;
    answer.confirmed = result() == QDialog::Accepted;
    answer.bodyName = chosen(m_body);
    answer.algName = chosen(m_name);
    answer.bitRate = chosen(m_bitRate);
    answer.applyToAll = m_applyToAll->isChecked();
    return answer;
}

EncodeSettingAnswer EncodeSettingDialogChooser::choose(const ProjectItem& source, const LastEncodeSetting& last)
{
    EncodeSettingDialog dialog(m_bodies, last, QString::fromStdString(source.id()), m_parent);
    dialog.exec();
    return dialog.answer();
}

} // namespace kestrelon
