#include "app/workspace_bar.h"

#include "app/file_chooser.h"
#include "app/undo/project_undo.h"
#include "host/algorithm_registry.h"
#include "model/project.h"
#include "project/project_document.h"

#include <QApplication>
#include <QDropEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QStandardItemModel>
#include <QStyle>
#include <QTabWidget>
#include <QTimer>
#include <QTreeView>
#include <QTreeWidget>
#include <QUrl>

#include <algorithm>

namespace kestrelon {

namespace {

QString qtText(const std::string& text)
{
    return QString::fromStdString(text);
}

// Calls `visit` on every node below `parent`, parents before children.
template <typename Visit>
void forEachNode(QStandardItem* parent, Visit&& visit)
{
    for (int row = 0; row < parent->rowCount(); ++row) {
        QStandardItem* child = parent->child(row);
        visit(child);
        forEachNode(child, visit);
    }
}

} // namespace

WorkspaceBar::WorkspaceBar(QWidget* parent)
    : QDockWidget(QStringLiteral("Workspace"), parent)
{
    setObjectName(QStringLiteral("WorkspaceBar"));
    setAllowedAreas(Qt::AllDockWidgetAreas);

    m_folderIcon = style()->standardIcon(QStyle::SP_DirIcon);
    m_fileIcon = style()->standardIcon(QStyle::SP_FileIcon);
    m_filesModel = new QStandardItemModel(this);
    m_filesView = new QTreeView;
    m_filesView->setObjectName(QStringLiteral("FilesTree"));
    m_filesView->setModel(m_filesModel);
    m_filesView->setHeaderHidden(true);
    m_filesView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_filesView->setEditTriggers(QAbstractItemView::EditKeyPressed);
    m_filesView->setContextMenuPolicy(Qt::CustomContextMenu);
    m_filesView->setUniformRowHeights(true);
    // Wave files dragged from a file manager are added where they are dropped.
    m_filesView->setAcceptDrops(true);
    m_filesView->viewport()->installEventFilter(this);

    m_algorithmsView = new QTreeWidget;
    m_algorithmsView->setObjectName(QStringLiteral("AlgorithmsTree"));
    m_algorithmsView->setHeaderHidden(true);
    m_algorithmsView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_algorithmsView->setContextMenuPolicy(Qt::CustomContextMenu);

    m_tabs = new QTabWidget;
    m_tabs->setTabPosition(QTabWidget::South);
    m_tabs->setDocumentMode(true);
    // Text only: both tabs fit the bar's initial width.
    m_tabs->addTab(m_filesView, QStringLiteral("Files"));
    m_tabs->addTab(m_algorithmsView, QStringLiteral("Algorithms"));
    setWidget(m_tabs);

    connect(m_filesView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { takeSelectionFromView(); });
    connect(m_filesView, &QTreeView::collapsed, this,
            [this](const QModelIndex& index) { collapsedOrExpanded(index, false); });
    connect(m_filesView, &QTreeView::expanded, this,
            [this](const QModelIndex& index) { collapsedOrExpanded(index, true); });
    connect(m_filesModel, &QStandardItemModel::itemChanged, this, [this](QStandardItem* node) { renamed(node); });
    connect(m_filesView, &QTreeView::doubleClicked, this, [this](const QModelIndex& index) {
        ProjectItem* item = itemOf(index);
        if (item && item->isSource())
            emit sourceActivated(item);
    });
    connect(m_filesView, &QTreeView::customContextMenuRequested, this, [this](const QPoint& at) {
        const QModelIndex index = m_filesView->indexAt(at);
        if (index.isValid() && !m_filesView->selectionModel()->isSelected(index))
            m_filesView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        if (m_filesMenu)
            m_filesMenu->exec(m_filesView->viewport()->mapToGlobal(at));
    });
    connect(m_algorithmsView, &QTreeWidget::itemSelectionChanged, this, [this] { emit selectionChanged(); });
    connect(m_algorithmsView, &QTreeWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        if (QTreeWidgetItem* item = m_algorithmsView->itemAt(at); item && !item->isSelected()) {
            m_algorithmsView->clearSelection();
            item->setSelected(true);
        }
        if (m_algorithmsMenu)
            m_algorithmsMenu->exec(m_algorithmsView->viewport()->mapToGlobal(at));
    });
}

QSize WorkspaceBar::sizeHint() const
{
    return {170, 150};
}

std::optional<TreeTarget> WorkspaceBar::dropTarget(const QPoint& at) const
{
    if (!m_tree)
        return std::nullopt;
    const QModelIndex index = m_filesView->indexAt(at);
    if (!index.isValid() || index.data(kRootRole).toBool())
        return TreeTarget::topLevel();
    return m_tree->targetFor(itemOf(index));
}

bool WorkspaceBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != m_filesView->viewport())
        return QDockWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDropEvent*>(event);
        const bool files = drag->mimeData()->hasUrls() && dropTarget(drag->position().toPoint());
        files ? drag->acceptProposedAction() : drag->ignore();
        return true;
    }
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const std::optional<TreeTarget> target = dropTarget(drop->position().toPoint());
        std::vector<std::filesystem::path> files;
        for (const QUrl& url : drop->mimeData()->urls())
            if (url.isLocalFile())
                files.push_back(stdPath(url.toLocalFile()));
        if (!target || files.empty()) {
            drop->ignore();
            return true;
        }
        drop->acceptProposedAction();
        emit filesDropped(*target, files);
        return true;
    }
    default: return QDockWidget::eventFilter(watched, event);
    }
}

void WorkspaceBar::setProject(WorkspaceTree* tree, const ProjectDocument* document, const QString& projectName,
                              const std::vector<AlgoRegEntry>* algorithms)
{
    m_tree = tree;
    m_document = tree ? document : nullptr;
    m_projectName = projectName;
    m_algorithms = tree ? algorithms : nullptr;
    m_rootSelected = false;
    refreshFiles();
    refreshAlgorithms();
}

void WorkspaceBar::follow(Project* project)
{
    m_following = project ? project->changed.subscribe([this](const ProjectChange& change) {
        if (change.kind == ProjectChange::Kind::Tree)
            refreshFiles();
        else if (change.kind == ProjectChange::Kind::Algorithms)
            refreshAlgorithms();
    })
                          : Subscription();
}

ProjectItem* WorkspaceBar::itemOf(const QModelIndex& index)
{
    return index.isValid() ? reinterpret_cast<ProjectItem*>(index.data(kItemRole).value<quintptr>()) : nullptr;
}

void WorkspaceBar::addChildren(QStandardItem* parent, const std::vector<ProjectItem*>& items)
{
    for (ProjectItem* item : items) {
        auto* node = new QStandardItem;
        node->setData(quintptr(item), kItemRole);
        if (item->isGroup()) {
            node->setText(qtText(item->name()));
            node->setIcon(m_folderIcon);
            node->setEditable(true);
        } else {
            // A source shows its file name; its path in the project is the tip.
            node->setText(qtText(item->id().empty() ? item->name() : item->id()));
            node->setToolTip(qtText(item->name()));
            node->setIcon(m_fileIcon);
            node->setEditable(false);
        }
        parent->appendRow(node);
        addChildren(node, item->children());
    }
}

void WorkspaceBar::refreshFiles()
{
    m_syncing = true;
    m_filesModel->clear();
    if (m_tree && m_document) {
        m_tree->selection().prune();
        auto* root = new QStandardItem(m_folderIcon, m_projectName);
        root->setData(quintptr(0), kItemRole);
        root->setData(true, kRootRole);
        root->setEditable(false);
        // The tree is built before the model holds it, so the view takes it in once.
        addChildren(root, m_document->topLevelFiles());
        m_filesModel->appendRow(root);
        m_filesView->expand(root->index());
        restoreView(root);
    }
    m_syncing = false;
    giveSelectionToView();
}

void WorkspaceBar::restoreView(QStandardItem* root)
{
    forEachNode(root, [&](QStandardItem* node) {
        ProjectItem* item = itemOf(node->index());
        if (item && item->isGroup() && m_tree->selection().isExpanded(item))
            m_filesView->expand(node->index());
    });
}

void WorkspaceBar::giveSelectionToView()
{
    m_syncing = true;
    QItemSelection selection;
    QModelIndex current;
    if (QStandardItem* root = m_filesModel->item(0)) {
        if (m_rootSelected)
            selection.select(root->index(), root->index());
        const ProjectItem* focus = m_tree ? m_tree->selection().focus() : nullptr;
        forEachNode(root, [&](QStandardItem* node) {
            ProjectItem* item = itemOf(node->index());
            if (item && m_tree->selection().isSelected(item))
                selection.select(node->index(), node->index());
            if (item && item == focus)
                current = node->index();
        });
        if (!current.isValid() && m_rootSelected)
            current = root->index();
    }
    m_filesView->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (current.isValid())
        m_filesView->selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    m_syncing = false;
    emit selectionChanged();
}

void WorkspaceBar::takeSelectionFromView()
{
    if (m_syncing || !m_tree)
        return;
    const QModelIndex current = m_filesView->selectionModel()->currentIndex();
    std::vector<ProjectItem*> items;
    ProjectItem* currentItem = nullptr;
    m_rootSelected = false;
    for (const QModelIndex& index : m_filesView->selectionModel()->selectedIndexes()) {
        if (index.data(kRootRole).toBool()) {
            m_rootSelected = true;
            continue;
        }
        if (ProjectItem* item = itemOf(index)) {
            if (index == current)
                currentItem = item;
            else
                items.push_back(item);
        }
    }
    // The node clicked last becomes the selection's focus and anchor, so a
    // later Shift-click extends from it.
    if (currentItem)
        items.push_back(currentItem);
    m_tree->selection().selectOnly(items);
    emit selectionChanged();
}

void WorkspaceBar::collapsedOrExpanded(const QModelIndex& index, bool expanded)
{
    if (m_syncing || !m_tree)
        return;
    if (index.data(kRootRole).toBool()) {
        // The root hides everything when collapsed: nothing hidden stays selected.
        if (!expanded)
            m_tree->selection().clear();
    } else if (ProjectItem* item = itemOf(index)) {
        m_tree->selection().setExpanded(item, expanded);
    }
    giveSelectionToView();
}

void WorkspaceBar::renamed(QStandardItem* node)
{
    if (m_syncing || !m_tree)
        return;
    ProjectItem* item = itemOf(node->index());
    if (!item || !item->isGroup())
        return;
    const std::string newName = node->text().toStdString();
    // The rename refreshes the trees; not from inside the model's own signal.
    QTimer::singleShot(0, this, [this, item, newName] {
        if (!m_tree || !m_document)
            return;
        const std::vector<ProjectItem*> live = filesTreeOrder(*m_document);
        if (std::find(live.begin(), live.end(), item) == live.end())
            return;
        CommandOutcome outcome = CommandOutcome::NothingToDo;
        const auto rename = [&] { outcome = m_tree->renameFolder(item, newName); };
        if (m_undo)
            m_undo->record(tr("Rename Folder"), rename);
        else
            rename();
        if (outcome != CommandOutcome::Done)
            refreshFiles(); // a refused name goes back to the folder's own
    });
}

std::optional<TreeTarget> WorkspaceBar::target() const
{
    if (!m_tree)
        return std::nullopt;
    const QModelIndex current = m_filesView->selectionModel()->currentIndex();
    if (m_rootSelected && current.data(kRootRole).toBool())
        return TreeTarget::topLevel();
    if (auto found = m_tree->targetFor(nullptr))
        return found;
    if (m_rootSelected)
        return TreeTarget::topLevel();
    return std::nullopt;
}

bool WorkspaceBar::rootSelected() const
{
    return m_rootSelected;
}

std::string WorkspaceBar::selectedAlgorithm() const
{
    const QList<QTreeWidgetItem*> selected = m_algorithmsView->selectedItems();
    // The root is not selectable: every selected node is an algorithm.
    return selected.size() == 1 ? selected.front()->text(0).toStdString() : std::string();
}

void WorkspaceBar::refreshAlgorithms()
{
    m_algorithmsView->clear();
    if (!m_algorithms)
        return;
    auto* root = new QTreeWidgetItem(m_algorithmsView, {QStringLiteral("Algorithms")});
    root->setIcon(0, m_folderIcon);
    root->setFlags(root->flags() & ~Qt::ItemIsSelectable);
    for (const AlgoRegEntry& entry : *m_algorithms) {
        auto* node = new QTreeWidgetItem(root, {qtText(entry.name)});
        node->setToolTip(0, qtText(entry.path));
        node->setIcon(0, m_fileIcon);
    }
    root->setExpanded(true);
}

void WorkspaceBar::selectItems(const std::vector<ProjectItem*>& items, bool root)
{
    if (!m_tree)
        return;
    m_rootSelected = root;
    m_tree->selection().selectOnly(items);
    giveSelectionToView();
}

} // namespace kestrelon
