#include "app/views/main_view.h"

#include "app/dialogs/algorithm_info_dialog.h"
#include "app/dialogs/encode_info_dialog.h"
#include "app/dialogs/encode_setting_dialog.h"
#include "app/dialogs/export_dialog.h"
#include "app/dialogs/progress_dialog.h"
#include "app/dialogs/property_dialog.h"
#include "app/undo/project_undo.h"
#include "app/views/info_panels.h"
#include "app/views/list_columns.h"
#include "app/views/record_sort_proxy.h"
#include "app/views/record_table_model.h"
#include "bodies/body_settings.h"
#include "codec/add_encode_data.h"
#include "codec/engine.h"
#include "codec/row_encoded_file.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/recording_port.h"
#include "export/export.h"
#include "host/algorithm_info.h"
#include "host/codec_host.h"
#include "project/project_session.h"
#include "settings/settings_store.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QStackedLayout>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <unordered_set>

namespace kestrelon {

namespace {

// Progress of the view's batches goes to its window; each finished row is
// repainted at once, so the list follows the batch.
class ViewProgressPort : public ProgressPort {
public:
    ViewProgressPort(UserPort& inner, ProgressDialog& dialog, RecordTableModel& model)
        : ProgressPort(inner, dialog)
        , m_model(model)
    {}
    void endProgress() override
    {
        m_model.recordsChanged();
        ProgressPort::endProgress();
    }

private:
    RecordTableModel& m_model;
};

// Delete in the list deletes rows; everything else is the table's.
class DeleteKeyFilter : public QObject {
public:
    DeleteKeyFilter(MainView* view)
        : QObject(view)
        , m_view(view)
    {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete &&
            static_cast<QKeyEvent*>(event)->modifiers() == Qt::NoModifier) {
            m_view->deleteSelected();
            return true;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    MainView* m_view;
};

// "Multiple" is the record's columns' widths against their sum at scale 1.0;
// the quality columns, which may be hidden, follow the scale but do not set it.
constexpr int kBaseWidthSum = std::accumulate(kListBaseWidths.begin(), kListBaseWidths.begin() + kRecordColumnCount, 0);

} // namespace

MainView::MainView(UserPort& port, QWidget* parent)
    : QWidget(parent)
    , m_port(port)
    , m_model(new RecordTableModel(this))
    , m_proxy(new RecordSortProxy(this))
    , m_table(new QTableView(this))
    , m_panels(new InfoPanels(this))
    , m_progress(new ProgressDialog(this))
    , m_quietPort(std::make_unique<RecordingPort>(
          [](std::string_view, Buttons buttons, std::string_view) { return answerFor(Answer::No, buttons); }))
{
    m_proxy->setSourceModel(m_model);
    m_model->setToolTips([this](const ListRow& row) {
        const std::optional<WaveFacts> wave = waveFacts(*row.source);
        const std::optional<AlgorithmFacts> algorithm = algorithmFacts(row.record().algoName);
        return wave && algorithm ? InfoPanels::codecNote(*wave, *algorithm) : QString();
    });
    m_table->setModel(m_proxy);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->setShowGrid(true);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_table->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    m_table->setContextMenuPolicy(Qt::CustomContextMenu);
    // Every row has the same height and no row is measured: a list of tens of
    // thousands of rows scrolls as fast as a short one.
    QHeaderView* rows = m_table->verticalHeader();
    rows->setVisible(false);
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(m_table->fontMetrics().height() + 6);
    QHeaderView* header = m_table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(false);
    header->setHighlightSections(false);
    header->setSortIndicatorShown(true);
    m_table->setSortingEnabled(true);
    applyListSettings();
    m_table->installEventFilter(new DeleteKeyFilter(this));

    // With no project open the view says how to begin instead of showing
    // empty panels and an empty list.
    m_start = new QLabel(this);
    m_start->setAlignment(Qt::AlignCenter);
    m_start->setTextFormat(Qt::RichText);
    m_start->setWordWrap(true);
    connect(m_start, &QLabel::linkActivated, this, &MainView::startChosen);
    auto* work = new QWidget(this);
    auto* layout = new QVBoxLayout(work);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(m_panels);
    layout->addWidget(m_table, 1);
    m_pages = new QStackedLayout(this);
    m_pages->addWidget(m_start);
    m_pages->addWidget(work);
    showRecentProjects({});

    buildContextMenu();
    connect(m_table, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& at) { m_menu->popup(m_table->viewport()->mapToGlobal(at)); });
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QWidget::customContextMenuRequested, this, &MainView::chooseQualityColumns);
    connect(header, &QHeaderView::sortIndicatorChanged, this, &MainView::storeSortSettings);
    connect(header, &QHeaderView::sectionResized, this, [this] {
        if (!m_applyingScale)
            storeColumnScale();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
        updatePanels();
        emit selectionChanged();
    });
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { emit selectionChanged(); });
    connect(m_table, &QTableView::clicked, this, [this](const QModelIndex& index) {
        const int column = index.column();
        const bool playCell = column == int(ListColumn::OriginalPlay) || column == int(ListColumn::EncodePlay) ||
                              column == int(ListColumn::DecodePlay);
        if (playCell && !index.data().toString().isEmpty())
            emit playCellClicked(m_model->listRow(m_proxy->mapToSource(index).row()), column);
    });
}

std::optional<ListRow> MainView::currentListRow() const
{
    const QModelIndex current = m_table->selectionModel()->currentIndex();
    if (!current.isValid())
        return std::nullopt;
    return m_model->listRow(m_proxy->mapToSource(current).row());
}

void MainView::showPlaying(const std::string& key, int column, bool paused)
{
    m_playingKey = key;
    m_playingColumn = column;
    m_playingPaused = paused;
    int row = -1;
    if (!key.empty())
        for (std::size_t i = 0; i < m_rowKeys.size(); ++i)
            if (m_rowKeys[i] == key)
                row = int(i);
    m_model->setPlayingCell(row, column, paused);
}

MainView::~MainView()
{
    m_factsHost.reset(); // before the window it was handed
}

void MainView::buildContextMenu()
{
    m_menu = new QMenu(this);
    // Each entry with the rule that enables it when the menu opens.
    std::vector<std::function<bool()>> rules;
    const auto add = [this, &rules](const QString& text, void (MainView::*slot)(), std::function<bool()> rule) {
        QAction* action = m_menu->addAction(text);
        connect(action, &QAction::triggered, this, slot);
        m_contextActions.push_back(action);
        rules.push_back(std::move(rule));
    };
    const auto rows = [this] { return readyForCommand() && hasRows(); };
    const auto selection = [this] { return readyForCommand() && hasSelection(); };
    const auto current = [this] { return readyForCommand() && hasCurrentRow(); };
    add(tr("Select A&ll"), &MainView::selectAll, rows);
    add(tr("Delete"), &MainView::deleteSelected, selection);
    add(tr("Dele&te All"), &MainView::deleteAll, rows);
    m_menu->addSeparator();
    add(tr("Encode"), &MainView::encodeSelected, selection);
    add(tr("&Decode"), &MainView::decodeSelected, selection);
    add(tr("Duplicate"), &MainView::duplicateSelected,
        [this, selection] { return selection() && m_project && m_project->bodies(); });
    add(tr("Clear"), &MainView::clearSelected, selection);
    add(tr("Compare &Bit Rates..."), &MainView::compareBitRatesRequested,
        [this, selection] { return selection() && m_project && m_project->bodies(); });
    m_menu->addSeparator();
    add(tr("E&xport"), &MainView::exportSelected, selection);
    add(tr("&Property"), &MainView::showProperty, current);
    add(tr("Encode &Info"), &MainView::showEncodeInfo, current);
    add(tr("Show configuration"), &MainView::showConfiguration, current);
    connect(m_menu, &QMenu::aboutToShow, this, [this, rules] {
        for (std::size_t i = 0; i < m_contextActions.size(); ++i)
            m_contextActions[i]->setEnabled(rules[i]());
    });
}

// --- project and settings --------------------------------------------------

void MainView::setProject(Project* project)
{
    m_project = project;
    m_factsHost.reset(); // it ran the codecs of the program folder it was made for
    m_projectHeard =
        project ? project->changed.subscribe([this](const ProjectChange& change) { heard(change); }) : Subscription();
    m_model->setQuality(project ? &project->quality() : nullptr);
    refresh();
}

void MainView::heard(const ProjectChange& change)
{
    switch (change.kind) {
    case ProjectChange::Kind::Opened:
    case ProjectChange::Kind::Closed:
    case ProjectChange::Kind::Tree:
    case ProjectChange::Kind::Algorithms: refresh(); break;
    case ProjectChange::Kind::Rows:
        // The engine gave the rows their sizes and rates itself.
        rowsRewritten();
        break;
    case ProjectChange::Kind::Saved:
    case ProjectChange::Kind::Busy: break;
    }
}

void MainView::setSettings(SettingsStore* settings)
{
    m_settings = settings;
    applyListSettings();
}

void MainView::applyListSettings()
{
    int column = 1;
    Qt::SortOrder order = Qt::AscendingOrder;
    float scale = 1.0f;
    if (m_settings) {
        column = m_settings->sortIndex >= 0 && m_settings->sortIndex < kListColumnCount ? m_settings->sortIndex : 1;
        order = m_settings->sortOrder == 0 ? Qt::AscendingOrder : Qt::DescendingOrder;
        scale = m_settings->columnScale;
    }
    applyColumnScale(scale);
    applyHiddenQualityColumns();
    // Sorting now would write the same values back; nothing else listens yet.
    m_table->sortByColumn(column, order);
}

void MainView::applyColumnScale(float scale)
{
    if (!std::isfinite(scale) || scale <= 0.0f)
        scale = 1.0f;
    m_applyingScale = true;
    for (int column = 0; column < kListColumnCount; ++column) {
        const float width = static_cast<float>(kListBaseWidths[static_cast<std::size_t>(column)]) * scale;
        m_table->horizontalHeader()->resizeSection(column, std::max(8, static_cast<int>(std::lround(width))));
    }
    m_applyingScale = false;
}

void MainView::applyHiddenQualityColumns()
{
    const int hidden = m_settings ? m_settings->hiddenQualityColumns : 0;
    for (int column = kFirstQualityColumn; column < kListColumnCount; ++column)
        m_table->setColumnHidden(column, (hidden >> (column - kFirstQualityColumn)) & 1);
}

void MainView::chooseQualityColumns(const QPoint& at)
{
    QMenu menu(this);
    for (int column = kFirstQualityColumn; column < kListColumnCount; ++column) {
        const std::string_view header = kListHeaders[std::size_t(column)];
        QAction* shown = menu.addAction(QString::fromUtf8(header.data(), qsizetype(header.size())));
        shown->setCheckable(true);
        shown->setChecked(!m_table->isColumnHidden(column));
        connect(shown, &QAction::toggled, this, [this, column](bool show) {
            m_table->setColumnHidden(column, !show);
            if (!m_settings)
                return;
            const int bit = 1 << (column - kFirstQualityColumn);
            m_settings->hiddenQualityColumns =
                show ? m_settings->hiddenQualityColumns & ~bit : m_settings->hiddenQualityColumns | bit;
        });
    }
    menu.exec(m_table->horizontalHeader()->mapToGlobal(at));
}

void MainView::storeSortSettings(int column, Qt::SortOrder order)
{
    if (!m_settings)
        return;
    m_settings->sortIndex = column;
    m_settings->sortOrder = order == Qt::AscendingOrder ? 0 : 1;
}

void MainView::storeColumnScale()
{
    if (!m_settings)
        return;
    // Dragging a column edge changes the scale of the whole list: the sum of
    // the widths against the sum at scale 1.0.
    int total = 0;
    for (int column = 0; column < kRecordColumnCount; ++column)
        total += m_table->horizontalHeader()->sectionSize(column);
    m_settings->columnScale = static_cast<float>(total) / static_cast<float>(kBaseWidthSum);
}

void MainView::showRecentProjects(const QStringList& recent)
{
    QString text = tr("<h2>No project is open</h2>"
                      "<p><a href=\"new\">New Project...</a> (Ctrl+N) makes a project folder; drop WAV files "
                      "on its Files tree to begin.</p>"
                      "<p><a href=\"open\">Open Project...</a> (Ctrl+O)</p>");
    if (!recent.isEmpty()) {
        text += tr("<p>Recent projects:</p>");
        for (int i = 0; i < recent.size(); ++i)
            text += QStringLiteral("<p><a href=\"recent:%1\">%2</a></p>").arg(i).arg(recent[i].toHtmlEscaped());
    }
    text += tr("<p>F1 opens the user manual.</p>");
    m_start->setText(text);
}

void MainView::refresh()
{
    m_pages->setCurrentIndex(hasProject() ? 1 : 0);
    // The keys of the selection before the rows are made anew.
    std::vector<std::string> selected;
    std::string current;
    for (const QModelIndex& index : m_table->selectionModel()->selectedRows())
        selected.push_back(m_rowKeys[std::size_t(m_proxy->mapToSource(index).row())]);
    if (const std::optional<int> row = currentSourceRow())
        current = m_rowKeys[std::size_t(*row)];

    m_algorithmFacts.clear();
    m_waveFacts.clear();
    MainList list;
    if (hasProject()) {
        ProjectSession& session = m_project->session();
        m_project->quality(); // read now: the list shows its measures
        list = MainList::fromDocument(session.document());
        updateCompressionRates(list, originalSizesOf(session.document(), session.filesFolder()));
    }
    m_rowKeys.clear();
    m_rowKeys.reserve(list.size());
    for (const ListRow& row : list.rows())
        m_rowKeys.push_back(rowKey(row));
    m_model->setList(std::move(list));
    showPlaying(m_playingKey, m_playingColumn, m_playingPaused); // the rows were made anew
    const QHeaderView* header = m_table->horizontalHeader();
    m_proxy->sort(header->sortIndicatorSection(), header->sortIndicatorOrder());
    selectKeys(selected, current);
    updatePanels();
    emit rowsChanged();
    emit selectionChanged();
}

// --- state -------------------------------------------------------------------

bool MainView::hasProject() const
{
    return m_project && m_project->session().isOpen();
}

bool MainView::hasRows() const
{
    return m_model->rowCount() > 0;
}

bool MainView::hasSelection() const
{
    return m_table->selectionModel()->hasSelection();
}

int MainView::selectedCount() const
{
    return static_cast<int>(m_table->selectionModel()->selectedRows().size());
}

bool MainView::hasCurrentRow() const
{
    return currentSourceRow().has_value();
}

bool MainView::isBusy() const
{
    return m_project && m_project->session().busy();
}

bool MainView::readyForCommand() const
{
    return hasProject() && !isBusy();
}

std::optional<int> MainView::currentSourceRow() const
{
    const QModelIndex current = m_table->selectionModel()->currentIndex();
    if (!current.isValid())
        return std::nullopt;
    const QModelIndex source = m_proxy->mapToSource(current);
    if (!source.isValid() || source.row() >= m_model->rowCount())
        return std::nullopt;
    return source.row();
}

MainList MainView::shownList() const
{
    MainList shown;
    const int count = m_proxy->rowCount();
    shown.reserve(static_cast<std::size_t>(count));
    const QItemSelectionModel* selection = m_table->selectionModel();
    for (int row = 0; row < count; ++row) {
        const QModelIndex source = m_proxy->mapToSource(m_proxy->index(row, 0));
        shown.addRow(m_model->listRow(source.row()), selection->isRowSelected(row, QModelIndex()));
    }
    return shown;
}

// --- panels ------------------------------------------------------------------

CodecHost& MainView::factsHost()
{
    if (!m_factsHost)
        m_factsHost = std::make_unique<CodecHost>(m_project->programFolder(), *m_quietPort, m_hostWindow);
    return *m_factsHost;
}

std::optional<AlgorithmFacts> MainView::algorithmFacts(const std::string& name)
{
    if (name.empty() || !hasProject())
        return std::nullopt;
    if (const auto known = m_algorithmFacts.find(name); known != m_algorithmFacts.end())
        return known->second;
    // A codec that cannot be described leaves the panel with its name only;
    // the reason is told when the row is encoded, not on every click.
    std::optional<AlgorithmFacts> facts;
    const std::filesystem::path library = algorithmLibraryPath(m_project->session().projectFolder(), name);
    std::error_code error;
    if (std::filesystem::is_regular_file(library, error))
        facts = algorithmFactsOf(factsHost(), library);
    m_algorithmFacts.emplace(name, facts);
    return facts;
}

std::optional<WaveFacts> MainView::waveFacts(const ProjectItem& source)
{
    if (!hasProject() || source.id().empty())
        return std::nullopt;
    if (const auto known = m_waveFacts.find(source.id()); known != m_waveFacts.end())
        return known->second;
    std::optional<WaveFacts> facts = waveFactsOf(joinModel(m_project->session().filesFolder(), source.id()));
    m_waveFacts.emplace(source.id(), facts);
    return facts;
}

void MainView::updatePanels()
{
    const std::optional<int> row = currentSourceRow();
    if (!row || !hasProject()) {
        m_panels->clear();
        return;
    }
    const ListRow& listRow = m_model->listRow(*row);
    const EditInfoRecord& record = listRow.record();
    m_panels->show(RecordTableModel::fileNameOf(listRow), waveFacts(*listRow.source),
                   QString::fromStdString(record.algoName), algorithmFacts(record.algoName), record);
}

// --- commands ----------------------------------------------------------------

void MainView::selectAll()
{
    if (hasRows())
        m_table->selectAll();
}

void MainView::deleteSelected()
{
    if (!readyForCommand())
        return;
    recorded(tr("Delete"), [this] {
        MainList shown = shownList();
        m_project->deleteRows(shown, false);
    });
}

void MainView::deleteAll()
{
    if (!readyForCommand())
        return;
    recorded(tr("Delete All"), [this] {
        MainList shown = shownList();
        m_project->deleteRows(shown, true);
    });
}

void MainView::encodeSelected()
{
    runBatch(true);
}

void MainView::decodeSelected()
{
    runBatch(false);
}

void MainView::chooseCodec()
{
    const int jobs = m_settings && m_settings->codecJobs > 0 ? m_settings->codecJobs : defaultCodecJobs();
    m_project->setCodec({false, std::min(jobs, kMostCodecJobs)});
}

void MainView::runBatch(bool encode)
{
    if (!readyForCommand() || !m_project->bodies())
        return;
    MainList shown = shownList();
    if (shown.selectedCount() == 0)
        return;
    ViewProgressPort port(m_port, *m_progress, *m_model);
    const bool decoding = !encode || (m_settings && m_settings->autoDecode != 0);
    // Plug-ins run in worker processes: one that crashes or hangs costs its row, not the workbench.
    chooseCodec();
    const BatchResult batch = encode ? m_project->encode(shown, decoding, port) : m_project->decode(shown, port);
    forgetHistory();
    emit finished(batchSummary(batch, encode));
}

QString MainView::batchSummary(const BatchResult& batch, bool encode)
{
    const int done = int(batch.count(RowOutcome::Done));
    const int failed = int(batch.count(RowOutcome::Failed) + batch.count(RowOutcome::Unreadable));
    const int passed = int(batch.count(RowOutcome::Invalid));
    const int notReached = int(batch.count(RowOutcome::NotReached));
    const auto rows = [](int n) {
        return QString::number(n) + (n == 1 ? QStringLiteral(" row") : QStringLiteral(" rows"));
    };
    QString text = (encode ? tr("Encoded ") : tr("Decoded ")) + rows(done);
    QStringList notes;
    if (failed > 0)
        notes << tr("%1 failed").arg(failed);
    if (passed > 0)
        notes << tr("%1 passed over: not a body, algorithm and bit rate there is").arg(passed);
    if (batch.stopped)
        notes << tr("%1 not reached").arg(notReached);
    if (!notes.isEmpty())
        text += QStringLiteral(" (") + notes.join(QStringLiteral(", ")) + QLatin1Char(')');
    // What the person asked for comes first: the batch did stop.
    return batch.stopped ? tr("Stopped: ") + text.left(1).toLower() + text.mid(1) : text;
}

void MainView::recorded(const QString& text, const std::function<void()>& edit)
{
    if (m_undo)
        m_undo->record(text, edit);
    else
        edit();
}

void MainView::forgetHistory()
{
    if (m_undo)
        m_undo->forgetIfChanged();
}

void MainView::rowsRewritten()
{
    m_model->recordsChanged();
    updatePanels();
    emit rowsChanged();
}

void MainView::showProperty()
{
    const std::optional<int> row = currentSourceRow();
    if (!row || !readyForCommand())
        return;
    recorded(tr("Property"), [&] {
        PropertyDialog dialog(m_model->listRow(*row).record(), m_port, this);
        if (dialog.exec() == QDialog::Accepted && dialog.changed()) {
            m_project->session().markModified();
            m_project->rowsEdited({m_rowKeys[std::size_t(*row)]}); // the export name: the key stays
        }
    });
}

void MainView::showEncodeInfo()
{
    const std::optional<int> row = currentSourceRow();
    if (!row || !readyForCommand())
        return;
    const EditInfoRecord& record = m_model->listRow(*row).record();
    if (const std::optional<RowEncodedFile> file = inspectRowEncodedFile(m_project->session(), record, m_port)) {
        EncodeInfoDialog dialog(record, *file, this);
        dialog.exec();
    }
}

void MainView::clearSelected()
{
    if (!readyForCommand())
        return;
    MainList shown = shownList();
    if (shown.selectedCount() == 0 || m_port.ask(msg::kClearQuestion, Buttons::YesNo) != Answer::Yes)
        return;
    recorded(tr("Clear"), [&] { m_project->clearRows(shown); });
}

void MainView::duplicateSelected()
{
    if (!readyForCommand() || !m_project->bodies() || !hasSelection())
        return;
    runWithEncodeSetting(
        [this](EncodeSettingChooser& chooser, LastEncodeSetting& last, bool autoDecode, UserPort& port) {
            m_project->duplicate(shownList(), chooser, last, autoDecode, port);
        });
}

void MainView::showConfiguration()
{
    const std::optional<int> row = currentSourceRow();
    if (row && readyForCommand())
        showAlgorithmConfiguration(m_model->listRow(*row).record().algoName);
}

void MainView::showAlgorithmConfiguration(const std::string& name)
{
    if (!readyForCommand() || name.empty())
        return;
    MainHostWindow window;
    CodecHost host(m_project->programFolder(), m_port, window);
    AlgorithmInfo info;
    if (describeAlgorithm(host, algorithmLibraryPath(m_project->session().projectFolder(), name), info)) {
        AlgorithmInfoDialog dialog(info, this);
        dialog.exec();
    }
}

void MainView::exportSelected()
{
    runExport(false);
}

void MainView::exportAll()
{
    runExport(true);
}

void MainView::runExport(bool all)
{
    if (!readyForCommand() || (!all && !hasSelection()) || !hasRows())
        return;
    const MainList shown = shownList();
    std::vector<std::uintmax_t> sizes; // of the rows the export would write, for the dialog's summary
    for (std::size_t i = 0; i < shown.size(); ++i) {
        const EditInfoRecord& record = shown.rows()[i].record();
        if ((all || shown.isSelected(i)) && !record.encodeName.empty())
            sizes.push_back(static_cast<std::uintmax_t>(std::max<std::int64_t>(0, record.encodeSizeValue())));
    }
    ExportDialog dialog(ExportOptions{m_lastExportFolder, m_lastExportHeader}, m_lastFirmware, std::move(sizes), this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    const ExportOptions options = dialog.options();
    m_lastExportFolder = options.folder;
    m_lastExportHeader = options.addHeader;
    m_lastFirmware = dialog.firmwareOptions();

    const ExportResult written =
        m_project->exportRows(shown, options, all ? ExportKind::All : ExportKind::Selected, m_lastFirmware, m_port);
    const ExportOutcome& outcome = written.rows;
    if (outcome.indexFile.empty())
        return;
    if (!written.firmware.ok)
        m_port.showMessage(written.firmware.error + " !");
    const int files = int(outcome.exported.size());
    emit finished(tr("Exported %1 %2 to %3")
                      .arg(files)
                      .arg(files == 1 ? tr("file") : tr("files"))
                      .arg(QString::fromStdString(utf8FromPath(outcome.indexFile.parent_path()))));
}

void MainView::addEncodeData(const std::vector<ProjectItem*>& selectedItems)
{
    if (!readyForCommand() || !m_project->bodies() || selectedItems.empty())
        return;
    runWithEncodeSetting([&](EncodeSettingChooser& chooser, LastEncodeSetting& last, bool autoDecode, UserPort& port) {
        m_project->addEncodeData(selectedItems, chooser, last, autoDecode, port);
    });
}

std::vector<ProjectItem*> MainView::selectedSources() const
{
    std::vector<ProjectItem*> sources;
    const MainList shown = shownList();
    for (std::size_t row = 0; row < shown.size(); ++row) {
        ProjectItem* source = shown.rows()[row].source;
        if (shown.isSelected(row) && std::find(sources.begin(), sources.end(), source) == sources.end())
            sources.push_back(source);
    }
    return sources;
}

void MainView::addEncodeRows(const std::vector<ProjectItem*>& sources, const std::string& body,
                             const std::string& algorithm, const std::string& bitRate)
{
    if (!readyForCommand() || !m_project->bodies() || sources.empty())
        return;
    FixedEncodeSetting fixed(body, algorithm, bitRate);
    runWithEncodeSetting([&](EncodeSettingChooser& chooser, LastEncodeSetting& last, bool autoDecode,
                             UserPort& port) { m_project->addEncodeData(sources, chooser, last, autoDecode, port); },
                         &fixed);
}

void MainView::runWithEncodeSetting(const EncodeSettingCommand& command, EncodeSettingChooser* fixed)
{
    LastEncodeSetting last;
    if (m_settings)
        last = LastEncodeSetting{m_settings->lastBodyName, m_settings->lastAlgName, m_settings->lastBitRate,
                                 m_settings->applyAllFiles != 0};
    ProgressPort port(m_port, *m_progress);
    EncodeSettingDialogChooser dialogChooser(m_project->bodies()->bodies(), this);
    EncodeSettingChooser& chooser = fixed ? *fixed : dialogChooser;
    const bool decoding = m_settings && m_settings->autoDecode != 0;
    // These commands add records or change them in place: the list is made
    // again and keeps its selection by the rows' keys.
    chooseCodec();
    command(chooser, last, decoding, port);
    forgetHistory();
    if (m_settings) {
        m_settings->lastBodyName = last.bodyName;
        m_settings->lastAlgName = last.algName;
        m_settings->lastBitRate = last.bitRate;
        m_settings->applyAllFiles = last.applyAllFiles ? 1 : 0;
    }
}

void MainView::selectKeys(const std::vector<std::string>& keys, const std::string& current)
{
    if (keys.empty() && current.empty())
        return;
    const std::unordered_set<std::string> wanted(keys.begin(), keys.end());
    std::vector<int> shownRows;
    QModelIndex currentIndex;
    for (std::size_t row = 0; row < m_rowKeys.size(); ++row) {
        const bool isCurrent = !current.empty() && m_rowKeys[row] == current;
        const bool isWanted = wanted.contains(m_rowKeys[row]);
        if (!isCurrent && !isWanted)
            continue;
        const QModelIndex shown = m_proxy->mapFromSource(m_model->index(int(row), 0));
        if (isCurrent)
            currentIndex = shown;
        if (isWanted)
            shownRows.push_back(shown.row());
    }
    // Runs of neighbouring rows as one range each: a selection of thousands
    // of rows one by one would cost the selection model far more.
    std::sort(shownRows.begin(), shownRows.end());
    QItemSelection selection;
    for (std::size_t first = 0; first < shownRows.size();) {
        std::size_t last = first;
        while (last + 1 < shownRows.size() && shownRows[last + 1] == shownRows[last] + 1)
            ++last;
        selection.select(m_proxy->index(shownRows[first], 0), m_proxy->index(shownRows[last], 0));
        first = last + 1;
    }
    QItemSelectionModel* model = m_table->selectionModel();
    model->select(selection, QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (currentIndex.isValid())
        model->setCurrentIndex(currentIndex, QItemSelectionModel::NoUpdate);
}

} // namespace kestrelon
