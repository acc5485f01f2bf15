#include "app/compare/compare_rates_dialog.h"

#include "app/compare/rate_chart.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTableWidget>
#include <QThread>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

QString qtText(const std::string& text)
{
    return QString::fromStdString(text);
}

QString measure(const std::optional<double>& value)
{
    return value ? QString::number(*value, 'f', 2) : QString();
}

std::optional<double> number(const QJsonValue& value)
{
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

} // namespace

CompareRatesDialog::CompareRatesDialog(Setup setup, AddRow addRow, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_setup(std::move(setup))
    , m_addRow(std::move(addRow))
    , m_port(port)
    , m_body(new QComboBox(this))
    , m_algorithms(new QWidget(this))
    , m_compare(new QPushButton(tr("&Compare"), this))
    , m_stop(new QPushButton(tr("&Stop"), this))
    , m_status(new QLabel(this))
    , m_progress(new QProgressBar(this))
    , m_metric(new QComboBox(this))
    , m_chart(new RateChart(this))
    , m_table(new QTableWidget(0, 5, this))
    , m_add(new QPushButton(tr("&Add as Row"), this))
{
    setWindowTitle(tr("Compare Bit Rates"));
    QStringList names;
    for (const std::filesystem::path& wave : m_setup.waves)
        names << qtText(utf8FromPath(wave.filename()));
    auto* sources =
        new QLabel(tr("%n source(s): %1", nullptr, int(names.size())).arg(names.join(QStringLiteral(", "))), this);
    sources->setWordWrap(true);

    for (const BodyInfo& body : m_setup.bodies)
        m_body->addItem(qtText(body.name));
    m_body->setCurrentText(qtText(m_setup.body));
    new QHBoxLayout(m_algorithms);
    m_algorithms->layout()->setContentsMargins(0, 0, 0, 0);
    showAlgorithms();
    connect(m_body, &QComboBox::currentIndexChanged, this, &CompareRatesDialog::showAlgorithms);

    m_metric->addItems({tr("Segmental SNR (dB)"), tr("Mel distance (dB)")});
    connect(m_metric, &QComboBox::currentIndexChanged, this, [this](int index) {
        m_chart->setMetric(index == 0 ? RateChart::Metric::SegmentalSnr : RateChart::Metric::MelDistance);
    });
    m_table->setHorizontalHeaderLabels(
        {tr("Algorithm"), tr("Bit Rate (bps)"), tr("Bytes"), tr("Seg. SNR (dB)"), tr("Mel Distance (dB)")});
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->verticalHeader()->setVisible(false);
    m_table->horizontalHeader()->setStretchLastSection(true);
    connect(m_table, &QTableWidget::currentCellChanged, this, [this](int row) {
        if (m_following || row < 0)
            return;
        // Rows run curve by curve, point by point.
        std::size_t at = std::size_t(row);
        for (std::size_t c = 0; c < m_curves.size(); ++c) {
            if (at < m_curves[c].points.size()) {
                m_chart->choose(std::pair(c, at));
                return;
            }
            at -= m_curves[c].points.size();
        }
    });
    connect(m_chart, &RateChart::pointChosen, this, &CompareRatesDialog::followChosenPoint);

    connect(m_compare, &QPushButton::clicked, this, &CompareRatesDialog::compare);
    connect(m_stop, &QPushButton::clicked, this, &CompareRatesDialog::stop);
    connect(m_add, &QPushButton::clicked, this, &CompareRatesDialog::addChosen);
    m_stop->setEnabled(false);
    m_add->setEnabled(false);
    m_progress->setVisible(false);
    m_status->setText(tr("Choose a body and its algorithms, then Compare."));

    auto* choose = new QHBoxLayout;
    choose->addWidget(new QLabel(tr("Body:"), this));
    choose->addWidget(m_body);
    choose->addWidget(m_algorithms, 1);
    choose->addWidget(m_compare);
    choose->addWidget(m_stop);
    auto* progress = new QHBoxLayout;
    progress->addWidget(m_status, 1);
    progress->addWidget(m_progress);
    auto* show = new QHBoxLayout;
    show->addWidget(new QLabel(tr("Quality:"), this));
    show->addWidget(m_metric);
    show->addStretch(1);
    auto* results = new QHBoxLayout;
    results->addWidget(m_chart, 3);
    results->addWidget(m_table, 2);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->addButton(m_add, QDialogButtonBox::ActionRole);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(sources);
    layout->addLayout(choose);
    layout->addLayout(progress);
    layout->addLayout(show);
    layout->addLayout(results, 1);
    layout->addWidget(buttons);
    resize(1100, 560);
}

CompareRatesDialog::~CompareRatesDialog()
{
    stop();
}

void CompareRatesDialog::showAlgorithms()
{
    for (QCheckBox* box : m_algorithmBoxes)
        delete box;
    m_algorithmBoxes.clear();
    const auto body = std::find_if(m_setup.bodies.begin(), m_setup.bodies.end(),
                                   [this](const BodyInfo& b) { return qtText(b.name) == m_body->currentText(); });
    if (body == m_setup.bodies.end())
        return;
    for (const BodyAlgoInfo& algorithm : body->algorithms) {
        auto* box = new QCheckBox(qtText(algorithm.name), m_algorithms);
        box->setChecked(true);
        m_algorithms->layout()->addWidget(box);
        m_algorithmBoxes.push_back(box);
    }
}

QCheckBox* CompareRatesDialog::algorithmBox(const QString& name) const
{
    for (QCheckBox* box : m_algorithmBoxes)
        if (box->text() == name)
            return box;
    return nullptr;
}

bool CompareRatesDialog::running() const
{
    return m_process != nullptr;
}

void CompareRatesDialog::compare()
{
    if (running())
        return;
    QStringList arguments = {QStringLiteral("--json")};
    if (!m_setup.bodySettingsFile.empty())
        arguments << QStringLiteral("--settings") << qtText(utf8FromPath(m_setup.bodySettingsFile));
    arguments << QStringLiteral("sweep") << QStringLiteral("--body") << m_body->currentText();
    int chosen = 0;
    for (QCheckBox* box : m_algorithmBoxes)
        if (box->isChecked()) {
            arguments << QStringLiteral("--algo") << box->text();
            ++chosen;
        }
    if (chosen == 0) {
        m_port.showMessage("Choose at least one algorithm to compare !");
        return;
    }
    arguments << QStringLiteral("--jobs") << QString::number(std::max(1, QThread::idealThreadCount()));
    for (const std::filesystem::path& wave : m_setup.waves)
        arguments << qtText(utf8FromPath(wave));

    m_process = new QProcess(this);
    connect(m_process, &QProcess::finished, this, &CompareRatesDialog::finished);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finished();
    });
    m_compare->setEnabled(false);
    m_stop->setEnabled(true);
    m_progress->setRange(0, 0);
    m_progress->setVisible(true);
    m_status->setText(
        tr("Encoding and decoding %n source(s) at every bit rate...", nullptr, int(m_setup.waves.size())));
    m_process->start(qtText(utf8FromPath(m_setup.cli)), arguments);
}

void CompareRatesDialog::stop()
{
    if (!m_process)
        return;
    QProcess* process = std::exchange(m_process, nullptr);
    process->disconnect(this);
    process->kill();
    process->waitForFinished();
    process->deleteLater();
    done(tr("Stopped: nothing was compared."));
}

void CompareRatesDialog::done(const QString& status)
{
    m_compare->setEnabled(true);
    m_stop->setEnabled(false);
    m_progress->setVisible(false);
    m_status->setText(status);
}

void CompareRatesDialog::finished()
{
    QProcess* process = std::exchange(m_process, nullptr);
    if (!process)
        return;
    process->deleteLater();
    const QByteArray printed = process->readAllStandardOutput();
    const QJsonObject answer = QJsonDocument::fromJson(printed).object();
    if (process->error() == QProcess::FailedToStart || answer.isEmpty()) {
        const std::string why = process->error() == QProcess::FailedToStart
                                    ? utf8FromPath(m_setup.cli) + " could not be started"
                                    : process->readAllStandardError().trimmed().toStdString();
        m_port.showMessage("The bit rates could not be compared: " + why + " !");
        done(tr("Not compared."));
        return;
    }
    if (!answer.value(QStringLiteral("ok")).toBool()) {
        m_port.showMessage("The bit rates could not be compared: " +
                           answer.value(QStringLiteral("error")).toString().toStdString() + " !");
        done(tr("Not compared."));
        return;
    }
    std::vector<SweepRow> rows;
    for (const QJsonValue& value : answer.value(QStringLiteral("rows")).toArray()) {
        const QJsonObject row = value.toObject();
        rows.push_back({row.value(QStringLiteral("fileName")).toString().toStdString(),
                        row.value(QStringLiteral("algorithm")).toString().toStdString(),
                        row.value(QStringLiteral("bitRate")).toString().toStdString(),
                        row.value(QStringLiteral("encodeSize")).toString().toULongLong(),
                        number(row.value(QStringLiteral("segmentalSnrDb"))),
                        number(row.value(QStringLiteral("melDistanceDb")))});
    }
    showCurves(rateCurves(rows));
    done(tr("%n setting(s) compared; click a point to choose it.", nullptr, int(m_table->rowCount())));
}

void CompareRatesDialog::showCurves(std::vector<RateCurve> curves)
{
    m_curves = curves;
    m_following = true;
    m_table->setRowCount(0);
    for (const RateCurve& curve : curves)
        for (const RatePoint& point : curve.points) {
            const int row = m_table->rowCount();
            m_table->insertRow(row);
            const QStringList cells = {qtText(point.algorithm), qtText(point.bitRate),
                                       QString::number(point.totalBytes), measure(point.meanSegmentalSnrDb),
                                       measure(point.meanMelDistanceDb)};
            for (int column = 0; column < cells.size(); ++column) {
                auto* item = new QTableWidgetItem(cells[column]);
                if (column > 0)
                    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                m_table->setItem(row, column, item);
            }
        }
    m_following = false;
    m_table->resizeColumnsToContents();
    m_chart->setCurves(std::move(curves));
    m_add->setEnabled(false);
}

void CompareRatesDialog::followChosenPoint()
{
    const RatePoint* chosen = m_chart->chosen();
    m_add->setEnabled(chosen != nullptr);
    if (!chosen)
        return;
    m_following = true;
    for (int row = 0; row < m_table->rowCount(); ++row)
        if (m_table->item(row, 0)->text() == qtText(chosen->algorithm) &&
            m_table->item(row, 1)->text() == qtText(chosen->bitRate))
            m_table->setCurrentCell(row, 0);
    m_following = false;
}

void CompareRatesDialog::addChosen()
{
    const RatePoint* chosen = m_chart->chosen();
    if (!chosen || !m_addRow)
        return;
    m_addRow(m_body->currentText().toStdString(), chosen->algorithm, chosen->bitRate);
    m_status->setText(
        tr("Added %1 at %2 bps for each source.").arg(qtText(chosen->algorithm), qtText(chosen->bitRate)));
}

} // namespace kestrelon
