#pragma once
// The main view: the three information areas above the list of edit-info
// records, and the list itself, from which rows are selected, deleted,
// encoded, decoded, exported and looked at. The frame hosts it as its central
// widget, hands it the open project and the program's data, and routes the
// list commands of its menus and toolbars to the slots below.
//
// The view adds windows, not rules: selection, deletion, the engine, Add
// Encode Data and export are the core's (src/codec, src/settings); the view
// hands them the rows in the order it shows them, with its selection.
#include "codec/main_list.h"
#include "common/observer.h"
#include "codec/engine_world.h"
#include "codec/results.h"
#include "codec/row_quality.h"
#include "host/algorithm_registry.h"
#include "host/host_windows.h"
#include "export/firmware_export.h"

#include <QWidget>

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class QAction;
class QLabel;
class QStackedLayout;
class QMenu;
class QTableView;

namespace kestrelon {

class BodySettings;
class CodecHost;
class EncodeSettingChooser;
class InfoPanels;
class ProgressDialog;
class ProjectSession;
class RecordSortProxy;
class RecordTableModel;
class RecordingPort;
class UserPort;
struct BatchResult;
struct EngineEnvironment;
struct LastEncodeSetting;
struct SettingsStore;

class ProjectUndo;

class MainView : public QWidget {
    Q_OBJECT
public:
    // Messages and questions go through `port`; progress of the view's own
    // batches goes to a progress window of the view, with a "Stop" button.
    explicit MainView(UserPort& port, QWidget* parent = nullptr);
    ~MainView() override;

    // The open project, or null. Call refresh() after a project was opened,
    // closed or its rows changed elsewhere.
    void setSession(ProjectSession* session);
    // Where the list's edits are kept as steps of the history (Delete, Delete
    // All, Clear, Property), and which encode and decode empty; may be null.
    void setUndo(ProjectUndo* undo) { m_undo = undo; }
    // The body settings, the project's algorithm registry (the companion
    // files' list) and the program folder the shipped codecs lie under. The
    // engine, Add Encode Data and the Encode Setting dialog need them.
    void setEnvironment(BodySettings* bodies, std::vector<AlgoRegEntry>* registry,
                        std::filesystem::path programFolder);
    // The in-memory settings: the list's sort (SortIndex, SortOrder) and
    // column scale (Multiple) are taken from them now and written back into
    // them whenever they change; the last Encode Setting choice and the
    // automatic decode switch are read and kept there. The frame saves them.
    void setSettings(SettingsStore* settings);
    // Where codecs that broke are remembered from run to run.
    void setConfigFolder(std::filesystem::path folder) { m_configFolder = std::move(folder); }

    // Fills the list again from the project (cleared when none is open).
    void refresh();

    bool hasProject() const;
    bool hasRows() const;
    bool hasSelection() const;
    int selectedCount() const;
    bool hasCurrentRow() const;
    // True while a batch of the view runs (the session's busy flag).
    bool isBusy() const;

    // The rows as shown, top to bottom, with the selection.
    MainList shownList() const;

    QTableView* table() const { return m_table; }
    InfoPanels* panels() const { return m_panels; }
    RecordTableModel* model() const { return m_model; }
    ProgressDialog* progressDialog() const { return m_progress; }
    // The actions of the list's pop-up menu, in menu order.
    const std::vector<QAction*>& contextActions() const { return m_contextActions; }

public slots:
    void selectAll();
    void deleteSelected();
    void deleteAll();
    void encodeSelected();
    void decodeSelected();
    // "Add Encode Data" for the selected items of the Files tree, in tree
    // order; groups among them are passed over.
    void addEncodeData(const std::vector<kestrelon::ProjectItem*>& selectedItems);
    void showProperty();
    void exportSelected();
    void exportAll();
    // The current row's encoded file, read from the file itself.
    void showEncodeInfo();
    // "Clear": the selected rows lose their results and can be encoded afresh.
    void clearSelected();
    // "Duplicate": another row for each selected row's file, chosen in the
    // "Encode Setting" dialog opened on that row's setting.
    void duplicateSelected();
    // "Show configuration": what the current row's codec says of itself.
    void showConfiguration();
    // A row of each source at the given setting, encoded (and decoded, when
    // automatic decoding is on) as Add Encode Data would, without asking.
    void addEncodeRows(const std::vector<kestrelon::ProjectItem*>& sources, const std::string& body,
                       const std::string& algorithm, const std::string& bitRate);
    // The same for the project's algorithm `name` (the Algorithms tree).
    void showAlgorithmConfiguration(const std::string& name);

    // Playing: the key a row is known by while it plays, the current row, and
    // the play cell that shows the state (idle clears it).
    static std::string rowKey(const ListRow& row);
    std::optional<ListRow> currentListRow() const;
    // The recent projects the empty view offers, most recent first.
    void showRecentProjects(const QStringList& recent);
    QLabel* startPage() const { return m_start; }
    // The sources of the selected rows, each once, in the list's order.
    std::vector<ProjectItem*> selectedSources() const;
    void showPlaying(const std::string& rowKey, int column, bool paused);

signals:
    // What a batch or an export came to, for the status bar: "Encoded 4
    // rows (1 failed)", "Exported 7 files to DIR".
    void finished(const QString& what);
    // A link of the empty view: "new", "open" or "recent:N".
    void startChosen(const QString& link);
    // "Compare Bit Rates..." was chosen from the list's pop-up menu.
    void compareBitRatesRequested();
    // A play cell with something to play was clicked: the row and its column.
    void playCellClicked(const kestrelon::ListRow& row, int column);
    // The selection or the current row changed: commands may change state.
    void selectionChanged();
    // Rows were added, removed or rewritten.
    void rowsChanged();
    // A batch of the view started or ended (the session's busy flag changed).
    void busyChanged();

private:
    void buildContextMenu();
    // The model, the panels and the frame follow records changed in place.
    void rowsRewritten();
    // Runs a command that shows the "Encode Setting" dialog (Add Encode
    // Data, Duplicate) with the kept choice, then keeps the new one.
    using EncodeSettingCommand =
        std::function<void(const EngineEnvironment&, EncodeSettingChooser&, LastEncodeSetting&, bool autoDecode)>;
    // A `fixed` choice stands in for the dialog.
    void runWithEncodeSetting(const EncodeSettingCommand& command, EncodeSettingChooser* fixed = nullptr);
    void applyListSettings();
    void storeSortSettings(int column, Qt::SortOrder order);
    void storeColumnScale();
    void applyColumnScale(float scale);
    // The header's pop-up: which quality columns show.
    void chooseQualityColumns(const QPoint& at);
    void applyHiddenQualityColumns();
    // Writes the measures a batch made, saying so when they cannot be kept.
    void keepQuality();
    void updatePanels();
    void runBatch(bool encode);
    // The batch's world: rows in worker processes, as many at once as the
    // settings ask, the quality measures kept in the view's file.
    EngineWorld::Setup engineSetup(UserPort& port);
    // Runs `edit` as one step of the history, when there is one.
    void recorded(const QString& text, const std::function<void()>& edit);
    // After a command that writes or deletes files no step can restore: the
    // history goes when the command changed the project.
    void forgetHistory();
    // The status bar's words for what a batch came to.
    static QString batchSummary(const BatchResult& batch, bool encode);
    void setBusy(bool busy);
    void runExport(bool all);
    std::optional<int> currentSourceRow() const;
    CodecHost& factsHost();
    std::optional<AlgorithmFacts> algorithmFacts(const std::string& name);
    std::optional<WaveFacts> waveFacts(const ProjectItem& source);
    bool readyForCommand() const;

    UserPort& m_port;
    ProjectSession* m_session = nullptr;
    ProjectUndo* m_undo = nullptr;
    BodySettings* m_bodies = nullptr;
    std::vector<AlgoRegEntry>* m_registry = nullptr;
    std::filesystem::path m_programFolder;
    SettingsStore* m_settings = nullptr;
    std::filesystem::path m_configFolder;
    Subscription m_sessionHeard;

    RecordTableModel* m_model;
    RecordSortProxy* m_proxy;
    QTableView* m_table;
    std::string m_playingKey; // the row whose cell shows the play state
    int m_playingColumn = -1;
    bool m_playingPaused = false;
    InfoPanels* m_panels;
    QLabel* m_start = nullptr;         // what to do with no project open
    QStackedLayout* m_pages = nullptr; // that, or the panels and the list
    ProgressDialog* m_progress;
    QMenu* m_menu = nullptr;
    std::vector<QAction*> m_contextActions;

    OriginalSizes m_originalSizes;
    QualityFile m_quality; // the open project's measures, as the engine adds them
    // The panels ask codecs and waves once per refresh, not on every click.
    std::map<std::string, std::optional<AlgorithmFacts>> m_algorithmFacts;
    std::map<std::string, std::optional<WaveFacts>> m_waveFacts;
    std::unique_ptr<RecordingPort> m_quietPort; // the panels' codec host reports to no one
    MainHostWindow m_hostWindow;
    std::unique_ptr<CodecHost> m_factsHost;

    std::string m_lastExportFolder;
    bool m_lastExportHeader = false;
    FirmwareOptions m_lastFirmware;
    bool m_applyingScale = false;
};

} // namespace kestrelon
