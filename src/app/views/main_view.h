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
#include "codec/results.h"
#include "common/observer.h"
#include "export/firmware_export.h"
#include "host/algorithm_registry.h"
#include "host/host_windows.h"
#include "model/project.h"

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
class RecordSortProxy;
class RecordTableModel;
class RecordingPort;
class UserPort;
struct BatchResult;
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

    // The project the list shows and follows: its tree, rows and state
    // changes reach the list by themselves. May be null.
    void setProject(Project* project);
    // Where the list's edits are kept as steps of the history (Delete, Delete
    // All, Clear, Property), and which encode and decode empty; may be null.
    void setUndo(ProjectUndo* undo) { m_undo = undo; }
    // The in-memory settings: the list's sort (SortIndex, SortOrder) and
    // column scale (Multiple) are taken from them now and written back into
    // them whenever they change; the last Encode Setting choice and the
    // automatic decode switch are read and kept there. The frame saves them.
    void setSettings(SettingsStore* settings);
    // Fills the list again from the project (cleared when none is open); the
    // rows that were selected stay selected while they exist.
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

    // Playing: the current row, and the play cell that shows the state of
    // the row of that key (idle clears it).
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

private:
    void buildContextMenu();
    void heard(const ProjectChange& change);
    // The model, the panels and the frame follow records changed in place.
    void rowsRewritten();
    // The rows of these keys selected, and the current row the one of `current`.
    void selectKeys(const std::vector<std::string>& keys, const std::string& current);
    // Runs a command that shows the "Encode Setting" dialog (Add Encode
    // Data, Duplicate) with the kept choice, then keeps the new one.
    using EncodeSettingCommand =
        std::function<void(EncodeSettingChooser&, LastEncodeSetting&, bool autoDecode, UserPort& port)>;
    // A `fixed` choice stands in for the dialog.
    void runWithEncodeSetting(const EncodeSettingCommand& command, EncodeSettingChooser* fixed = nullptr);
    void applyListSettings();
    void storeSortSettings(int column, Qt::SortOrder order);
    void storeColumnScale();
    void applyColumnScale(float scale);
    // The header's pop-up: which quality columns show.
    void chooseQualityColumns(const QPoint& at);
    void applyHiddenQualityColumns();
    void updatePanels();
    void runBatch(bool encode);
    // Rows in worker processes, as many at once as the settings ask.
    void chooseCodec();
    // Runs `edit` as one step of the history, when there is one.
    void recorded(const QString& text, const std::function<void()>& edit);
    // After a command that writes or deletes files no step can restore: the
    // history goes when the command changed the project.
    void forgetHistory();
    // The status bar's words for what a batch came to.
    static QString batchSummary(const BatchResult& batch, bool encode);
    void runExport(bool all);
    std::optional<int> currentSourceRow() const;
    CodecHost& factsHost();
    std::optional<AlgorithmFacts> algorithmFacts(const std::string& name);
    std::optional<WaveFacts> waveFacts(const ProjectItem& source);
    bool readyForCommand() const;

    UserPort& m_port;
    Project* m_project = nullptr;
    ProjectUndo* m_undo = nullptr;
    SettingsStore* m_settings = nullptr;
    Subscription m_projectHeard;

    RecordTableModel* m_model;
    RecordSortProxy* m_proxy;
    QTableView* m_table;
    std::string m_playingKey; // the row whose cell shows the play state
    int m_playingColumn = -1;
    bool m_playingPaused = false;
    InfoPanels* m_panels;
    QLabel* m_start = nullptr; // what to do with no project open
    QStackedLayout* m_pages = nullptr; // that, or the panels and the list
    ProgressDialog* m_progress;
    QMenu* m_menu = nullptr;
    std::vector<QAction*> m_contextActions;

    // Each model row's key, kept apart from the rows: an undo destroys the
    // items the rows point at before the list hears of it.
    std::vector<std::string> m_rowKeys;
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
