#pragma once
// The docked "Workspace" bar: the open project's Files tree (folders and
// source wave files, several nodes selectable with click, Ctrl-click and
// Shift-click) and its Algorithms tree (the project's algorithm registry).
// The bar shows and selects; the commands themselves are WorkspaceTree's,
// run by the frame.
#include "common/observer.h"
#include "project/workspace_tree.h"

#include <QDockWidget>
#include <QIcon>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

class QMenu;
class QStandardItem;
class QStandardItemModel;
class QTabWidget;
class QTreeView;
class QTreeWidget;

namespace kestrelon {

struct AlgoRegEntry;

class Project;
class ProjectUndo;

class WorkspaceBar : public QDockWidget {
    Q_OBJECT
public:
    // Data roles of the Files model.
    static constexpr int kItemRole = Qt::UserRole + 1; // the ProjectItem*, as quintptr; 0 for the root
    static constexpr int kRootRole = Qt::UserRole + 2; // true on the root node

    explicit WorkspaceBar(QWidget* parent = nullptr);

    // The trees of the open project, or of none (tree null). `algorithms` is
    // the project's registry and must outlive the bar's use of it.
    void setProject(WorkspaceTree* tree, const ProjectDocument* document, const QString& projectName,
                    const std::vector<AlgoRegEntry>* algorithms);

    // The trees follow `project`'s edits of the Files tree and of the
    // registry by themselves. May be null.
    void follow(Project* project);

    // Rebuild the trees from the project, keeping which folders are collapsed
    // and which nodes are selected.
    void refreshFiles();
    void refreshAlgorithms();

    // Where Add Folder and Add Files put their items: the root node stands for
    // the top level, any other node as WorkspaceTree::targetFor says. None
    // when nothing is selected.
    std::optional<TreeTarget> target() const;
    bool rootSelected() const;

    // The algorithm selected in the Algorithms tree when exactly one is; empty otherwise.
    std::string selectedAlgorithm() const;

    // Selects exactly these nodes (and the root when `root`), as clicks would.
    void selectItems(const std::vector<ProjectItem*>& items, bool root = false);

    void setFilesMenu(QMenu* menu) { m_filesMenu = menu; }
    void setAlgorithmsMenu(QMenu* menu) { m_algorithmsMenu = menu; }
    // Where a folder's new name is kept as a step of the history.
    void setUndo(ProjectUndo* undo) { m_undo = undo; }

    QTabWidget* tabs() const { return m_tabs; }
    QTreeView* filesView() const { return m_filesView; }
    QStandardItemModel* filesModel() const { return m_filesModel; }
    QTreeWidget* algorithmsView() const { return m_algorithmsView; }

    QSize sizeHint() const override;

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void selectionChanged();
    // Files dropped on the Files tree: onto a folder (or a source, for its
    // folder) or the root and the empty space below it (the top level).
    void filesDropped(const kestrelon::TreeTarget& target, const std::vector<std::filesystem::path>& files);
    // A source node was double-clicked.
    void sourceActivated(ProjectItem* source);

private:
    Subscription m_following;
    std::optional<TreeTarget> dropTarget(const QPoint& at) const;
    void addChildren(QStandardItem* parent, const std::vector<ProjectItem*>& items);
    void restoreView(QStandardItem* node);
    void takeSelectionFromView();
    void giveSelectionToView();
    void collapsedOrExpanded(const QModelIndex& index, bool expanded);
    void renamed(QStandardItem* node);
    static ProjectItem* itemOf(const QModelIndex& index);

    WorkspaceTree* m_tree = nullptr;
    ProjectUndo* m_undo = nullptr;
    const ProjectDocument* m_document = nullptr;
    QString m_projectName;
    const std::vector<AlgoRegEntry>* m_algorithms = nullptr;
    QTabWidget* m_tabs;
    QTreeView* m_filesView;
    QStandardItemModel* m_filesModel;
    QTreeWidget* m_algorithmsView;
    QMenu* m_filesMenu = nullptr;
    QMenu* m_algorithmsMenu = nullptr;
    bool m_rootSelected = false;
    bool m_syncing = false; // the view is being set from the selection, or rebuilt
    // Made once: a style's icons are decoded from pictures each time they are asked for.
    QIcon m_folderIcon;
    QIcon m_fileIcon;
};

} // namespace kestrelon
