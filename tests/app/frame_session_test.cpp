// A person's session with the workbench, driven through the frame's commands:
// a new project, folders and real wave files, the Files tree as it shows them,
// closing the window and opening the project again.
#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/new_project_dialog.h"
#include "app/main_window.h"
#include "app/views/main_view.h"
#include "app/workspace_bar.h"
#include "app_support.h"

#include "common/messages.h"
#include "project/workspace_tree.h"
#include "support/files.h"

#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QStandardItemModel>
#include <QTreeView>
#include <QUrl>

#include <gtest/gtest.h>

namespace kestrelon {
namespace {

namespace fs = std::filesystem;

const fs::path kWaves = "/usr/share/codec2/wav";

// The Files tree model as text: one line per node, indented by depth.
void dumpNode(const QStandardItem* node, int depth, std::vector<std::string>& out)
{
    out.push_back(std::string(std::size_t(depth) * 2, ' ') + node->text().toStdString());
    for (int row = 0; row < node->rowCount(); ++row)
        dumpNode(node->child(row), depth + 1, out);
}

std::vector<std::string> filesTree(const MainWindow& frame)
{
    std::vector<std::string> out;
    const QStandardItemModel* model = frame.workspaceBar()->filesModel();
    for (int row = 0; row < model->rowCount(); ++row)
        dumpNode(model->item(row), 0, out);
    return out;
}

ProjectItem* itemWithId(MainWindow& frame, const std::string& id)
{
    const auto found = frame.workspaceTree()->itemsWithId(id);
    return found.size() == 1 ? found.front() : nullptr;
}

class FrameSession : public test::FrameFixture {
protected:
    void SetUp() override
    {
        for (const char* name : {"hts1a.wav", "hts2a.wav", "cross.wav"})
            if (!fs::exists(kWaves / name))
                GTEST_SKIP() << "the codec2 sample waves are not installed";
    }

    void addWaves(std::vector<fs::path> waves)
    {
        m_chooser.waves.push_back(std::move(waves));
        m_frame->runCommand(cmd::kAddFiles);
    }
};

TEST_F(FrameSession, NewProjectFoldersAndWavesShowInTheFilesTree)
{
    test::whenModal<NewProjectDialog>([&](NewProjectDialog* dialog) {
        dialog->nameEdit()->setText(QStringLiteral("Demo"));
        dialog->pathEdit()->setText(qtPath(m_dir.path()));
        dialog->accept();
    });
    m_frame->runCommand(cmd::kNewProject);
    ASSERT_TRUE(m_frame->session().isOpen());
    const fs::path project = m_dir / "Demo" / "Demo.ptp";
    EXPECT_EQ(filesTree(*m_frame), std::vector<std::string>{"Demo"});
    // The title carries the unsaved-changes mark where Qt shows it.
    EXPECT_EQ(m_frame->windowTitle(), QStringLiteral("Demo.ptp[*] - Kestrelon"));
    const bool modifiedWhenNew = m_frame->session().document().isModified();
    EXPECT_EQ(m_frame->isWindowModified(), modifiedWhenNew);

    // A new project starts with its root chosen: adding works at once.
    m_frame->updateCommands();
    EXPECT_TRUE(m_frame->workspaceBar()->rootSelected());
    EXPECT_TRUE(m_frame->action(cmd::kAddFiles)->isEnabled());
    // With nothing selected there is nowhere to add to; the root stands for the top level.
    m_frame->workspaceBar()->selectItems({});
    EXPECT_FALSE(m_frame->action(cmd::kAddFiles)->isEnabled());
    m_frame->workspaceBar()->selectItems({}, /*root=*/true);
    EXPECT_TRUE(m_frame->action(cmd::kAddFiles)->isEnabled());
    test::whenModal<AddFolderDialog>([](AddFolderDialog* dialog) {
        dialog->nameEdit()->setText(QStringLiteral("Greetings"));
        dialog->accept();
    });
    m_frame->runCommand(cmd::kAddFolder);
    addWaves({kWaves / "cross.wav"});

    ASSERT_NE(itemWithId(*m_frame, "Greetings"), nullptr);
    m_frame->workspaceBar()->selectItems({itemWithId(*m_frame, "Greetings")});
    addWaves({kWaves / "hts1a.wav", kWaves / "hts2a.wav"});

    const std::vector<std::string> tree{"Demo", "  Greetings", "    hts1a.wav", "    hts2a.wav", "  cross.wav"};
    EXPECT_EQ(filesTree(*m_frame), tree);
    EXPECT_TRUE(m_frame->isWindowModified());

    // Clicks in the view reach the selection: two files picked with the
    // view's own multi-select.
    QTreeView* view = m_frame->workspaceBar()->filesView();
    const QModelIndex folderIndex = m_frame->workspaceBar()->filesModel()->item(0)->child(0)->index();
    view->selectionModel()->select(folderIndex.model()->index(0, 0, folderIndex), QItemSelectionModel::ClearAndSelect);
    view->selectionModel()->select(folderIndex.model()->index(1, 0, folderIndex), QItemSelectionModel::Select);
    EXPECT_EQ(m_frame->selectedSources().size(), 2u);
    EXPECT_TRUE(m_frame->action(cmd::kDeleteFiles)->isEnabled());
    EXPECT_FALSE(m_frame->action(cmd::kDeleteFolder)->isEnabled());

    // Closing the window asks to save first: Cancel keeps the window and the
    // project as they are; Yes saves and closes.
    m_port.queue(Answer::Cancel);
    EXPECT_FALSE(m_frame->close());
    EXPECT_EQ(m_port.texts().back(), msg::kSaveBeforeClose);
    EXPECT_TRUE(m_frame->session().document().isModified());
    EXPECT_EQ(filesTree(*m_frame), tree);
    m_port.queue(Answer::Yes);
    EXPECT_TRUE(m_frame->close());
    EXPECT_FALSE(m_frame->session().isOpen());
    EXPECT_EQ(filesTree(*m_frame), std::vector<std::string>{});
    EXPECT_EQ(m_frame->windowTitle(), QStringLiteral("Kestrelon"));

    // Open again: the tree comes back as it was saved.
    m_chooser.projects.push_back(project);
    m_frame->runCommand(cmd::kOpenProject);
    ASSERT_TRUE(m_frame->session().isOpen());
    EXPECT_EQ(filesTree(*m_frame), tree);
    // It is the first entry of the recent list now, and choosing that entry
    // while it is open says so.
    EXPECT_EQ(m_frame->recentProjects().entries().front(), project.string());
    m_frame->updateCommands();
    m_frame->runCommand(cmd::kRecentFirst);
    EXPECT_EQ(m_port.texts().back(), msg::kProjectIsOpen);

    // With no project open the view says how to begin and offers the recent
    // projects; a click on one opens it.
    m_frame->runCommand(cmd::kCloseProject);
    QLabel* start = m_frame->mainView()->startPage();
    EXPECT_TRUE(start->isVisibleTo(m_frame->mainView()));
    EXPECT_TRUE(start->text().contains(QStringLiteral("href=\"new\"")));
    EXPECT_TRUE(start->text().contains(qtPath(project)));
    emit start->linkActivated(QStringLiteral("recent:0"));
    ASSERT_TRUE(m_frame->session().isOpen());
    EXPECT_FALSE(start->isVisibleTo(m_frame->mainView()));
    EXPECT_EQ(filesTree(*m_frame), tree);
}

// The frame comes back at the size the user left it, with the Workspace
// closed when it was closed.
TEST_F(FrameSession, TheWindowsSizeAndDocksComeBackAtTheNextStart)
{
    m_frame->show();
    m_frame->resize(820, 610);
    m_frame->action(cmd::kWorkspace)->trigger(); // the menu entry, unticked: hides it
    QCoreApplication::processEvents();
    ASSERT_TRUE(m_frame->workspaceBar()->isHidden());
    EXPECT_TRUE(m_frame->close());
    m_frame.reset();

    FrameOptions options;
    options.programFolder = m_dir / "program";
    options.configFolder = m_dir / "config";
    options.port = &m_port;
    options.chooser = &m_chooser;
    m_frame = std::make_unique<MainWindow>(options);
    EXPECT_EQ(m_frame->size(), QSize(820, 610));
    EXPECT_TRUE(m_frame->workspaceBar()->isHidden());
    EXPECT_FALSE(m_frame->action(cmd::kWorkspace)->isChecked());

    // With the Workspace back, the frame still goes down to 800 pixels.
    m_frame->show();
    m_frame->action(cmd::kWorkspace)->trigger();
    m_frame->resize(800, 600);
    QCoreApplication::processEvents();
    EXPECT_FALSE(m_frame->workspaceBar()->isHidden());
    EXPECT_EQ(m_frame->width(), 800);
    EXPECT_TRUE(m_port.texts().empty());
}

// Files dragged from a file manager: dropped on a folder they go into it,
// below the nodes they go to the top level, and each passes the checks of
// Add Files.
TEST_F(FrameSession, WaveFilesDroppedOnTheTreeAreAddedWhereTheyFall)
{
    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Drop"));
    test::whenModal<AddFolderDialog>([](AddFolderDialog* dialog) {
        dialog->nameEdit()->setText(QStringLiteral("Greetings"));
        dialog->accept();
    });
    m_frame->runCommand(cmd::kAddFolder);
    m_frame->show();
    QTreeView* view = m_frame->workspaceBar()->filesView();
    view->expandAll();
    QCoreApplication::processEvents();

    const fs::path notes = m_dir / "notes.wav";
    test::writeBytes(notes, "words, not sound");
    const auto drop = [&](const QPoint& at, const std::vector<fs::path>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const fs::path& file : files)
            urls << QUrl::fromLocalFile(qtPath(file));
        data.setUrls(urls);
        QDragEnterEvent enter(at, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view->viewport(), &enter);
        QDropEvent dropped(QPointF(at), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view->viewport(), &dropped);
        return enter.isAccepted() && dropped.isAccepted();
    };
    const QModelIndex greetings = m_frame->workspaceBar()->filesModel()->item(0)->child(0)->index();
    EXPECT_TRUE(drop(view->visualRect(greetings).center(), {kWaves / "hts1a.wav", notes}));
    EXPECT_TRUE(drop(QPoint(5, view->viewport()->height() - 5), {kWaves / "cross.wav"}));

    EXPECT_EQ(filesTree(*m_frame), (std::vector<std::string>{"Drop", "  Greetings", "    hts1a.wav", "  cross.wav"}));
    ASSERT_FALSE(m_port.texts().empty());
    EXPECT_EQ(m_port.texts().back(), "Can not add the file \"notes.wav\"!\nnotes.wav is not a readable wave file !");
    EXPECT_FALSE(fs::exists(m_dir / "Drop" / "Files" / "notes.wav"));
    EXPECT_TRUE(m_frame->isWindowModified());
}

// Closing without saving takes away the copies this session made into Files
// that the saved project does not name, never a file the user chose where
// it lay, nor one a save has named since.
TEST_F(FrameSession, CloseWithoutSavingRemovesTheCopiesTheSessionMade)
{
    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Keep"));
    ASSERT_TRUE(m_frame->session().saveProject());
    const fs::path files = m_dir / "Keep" / "Files";
    fs::create_directories(files);
    fs::copy_file(kWaves / "hts2a.wav", files / "inplace.wav");

    addWaves({kWaves / "hts1a.wav"});
    m_frame->runCommand(cmd::kSaveProject); // hts1a.wav is the project's now
    addWaves({kWaves / "cross.wav", files / "inplace.wav"});
    EXPECT_TRUE(fs::exists(files / "cross.wav"));
    m_port.queue(Answer::No);
    m_frame->runCommand(cmd::kCloseProject);
    ASSERT_FALSE(m_frame->session().isOpen());
    EXPECT_FALSE(fs::exists(files / "cross.wav"));
    EXPECT_TRUE(fs::exists(files / "hts1a.wav"));
    EXPECT_TRUE(fs::exists(files / "inplace.wav"));
}

} // namespace
} // namespace kestrelon
