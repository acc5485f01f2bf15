#pragma once
// The one thing a view or a kestrelon-cli command holds: the project session
// with the files that travel with it (play list, algorithm registry), its
// quality measures, the bodies and folders the engine works from, and the
// operations that change its rows. Every change is published once it is
// complete, so a new view follows the project by subscribing.
#include "codec/add_encode_data.h"
#include "codec/engine.h"
#include "codec/main_list.h"
#include "codec/row_codec.h"
#include "codec/row_quality.h"
#include "common/observer.h"
#include "export/export.h"
#include "export/firmware_export.h"
#include "playback/project_companions.h"
#include "project/project_session.h"
#include "project/workspace_tree.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kestrelon {

class BodySettings;
class RecentProjects;
class UserPort;

// What an export wrote: the rows' files with their index, then the firmware's
// form of them (not tried when the index was not written).
struct ExportResult {
    ExportOutcome rows;
    FirmwareOutcome firmware;
};

struct ProjectChange {
    enum class Kind {
        Opened, // a project was made, opened, or saved under another name
        Closed, // no project is open any more
        Saved, // the open project was saved under its name
        Tree, // the Files tree changed, and with it the set of rows
        Rows, // the data of the rows in `rows` changed; the set of rows did not
        Algorithms, // the algorithm registry changed
        Busy, // a batch began or ended: see session().busy()
    };
    Kind kind;
    std::vector<std::string> rows; // Rows: their keys (rowKey)
};

class Project {
public:
    struct Places {
        // Where the program and its Algorithms folder are.
        std::filesystem::path program;
        // Where the codecs that broke are remembered (the user's configuration).
        std::filesystem::path config;
        // The current folder again once a project closes; the program's when empty.
        std::filesystem::path home = {};
    };

    // `recent` may be null (scripts keep the user's menu as it is).
    Project(UserPort& port, Places places, RecentProjects* recent = nullptr);
    ~Project();
    Project(const Project&) = delete;
    Project& operator=(const Project&) = delete;

    // Published after the change is complete, on the thread that made it.
    Publisher<ProjectChange> changed;

    ProjectSession& session() { return m_session; }
    const ProjectSession& session() const { return m_session; }
    ProjectCompanionFiles& companions() { return m_companions; }
    std::vector<AlgoRegEntry>& algorithms() { return m_companions.algorithms(); }
    PlayList& playList() { return m_companions.playList(); }
    const std::filesystem::path& programFolder() const { return m_places.program; }
    const std::filesystem::path& configFolder() const { return m_places.config; }

    // The Files tree of the open project, null when none: Add Files, Add
    // Folder, the deletes and a folder's new name. Its edits are published as
    // Tree changes. A tree made anew (open, Save As) outlives the message.
    WorkspaceTree* tree() const { return m_tree.get(); }

    // The measures of the open project's decoded rows, read when first asked for.
    QualityFile& quality();

    // What the engine runs with; without bodies no row is encoded or decoded.
    void setBodies(const BodySettings* bodies) { m_bodies = bodies; }
    const BodySettings* bodies() const { return m_bodies; }
    void setCodec(RowCodecChoice codec) { m_codec = codec; }
    RowCodecChoice codec() const { return m_codec; }

    // The rows of the open project, none selected.
    MainList rows();

    // The engine on the selected rows of `rows`, with `port` for the
    // progress and the questions of this batch. The project is busy while
    // they run; the rows that were selected are published as changed.
    BatchResult encode(MainList& rows, bool decodeToo, UserPort& port);
    BatchResult decode(MainList& rows, UserPort& port);
    // Add Encode Data on `sources`, and Duplicate on the selected rows: both
    // add rows (the tree is published as changed).
    AddEncodeResult addEncodeData(const std::vector<ProjectItem*>& sources, EncodeSettingChooser& chooser,
                                  LastEncodeSetting& last, bool decodeToo, UserPort& port);
    AddEncodeResult duplicate(const MainList& rows, EncodeSettingChooser& chooser, LastEncodeSetting& last,
                              bool decodeToo, UserPort& port);
    // Delete (the selected rows, or all) after the user's yes; false when nothing was deleted.
    bool deleteRows(MainList& rows, bool all);
    // The results of the selected rows dropped; how many rows had any.
    std::size_t clearRows(MainList& rows);

    // Export of the selected rows of `rows` (all of them for ExportKind::All).
    // It changes nothing of the project: nobody is told.
    ExportResult exportRows(const MainList& rows, const ExportOptions& options, ExportKind kind,
                            const FirmwareOptions& firmware, UserPort& port) const;

    // For edits made elsewhere (the Files tree, a row's properties, the
    // registry's dialog, Undo): the project is told, and tells its views.
    void treeEdited() { changed.publish({ProjectChange::Kind::Tree, {}}); }
    void rowsEdited(std::vector<std::string> keys) { changed.publish({ProjectChange::Kind::Rows, std::move(keys)}); }
    void algorithmsEdited() { changed.publish({ProjectChange::Kind::Algorithms, {}}); }

private:
    using EngineWork = std::function<void(const EngineEnvironment&)>;
    // The engine's world for one operation; false when there are no bodies.
    bool withEngine(UserPort& port, bool measuring, const EngineWork& work);
    void heard(SessionChange change);

    UserPort& m_port;
    Places m_places;
    const BodySettings* m_bodies = nullptr;
    RowCodecChoice m_codec;
    QualityFile m_quality;
    ProjectCompanionFiles m_companions;
    ProjectSession m_session;
    std::unique_ptr<WorkspaceTree> m_tree;
    Subscription m_sessionHeard;
};

} // namespace kestrelon
