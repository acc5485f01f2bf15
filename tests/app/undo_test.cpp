// Undo and Redo in the workbench: every edit of the tree and the list taken
// back and made again through the frame's own commands, compared by the bytes
// the project file would hold, with the files those edits moved.
#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/property_dialog.h"
#include "app/main_window.h"
#include "app/views/main_view.h"
#include "app/workspace_bar.h"
#include "app_support.h"
#include "view_fixture.h"

#include "common/messages.h"
#include "project/workspace_tree.h"
#include "support/files.h"

#include <QCoreApplication>
#include <QLineEdit>
#include <QStandardItemModel>
#include <QTableView>

#include <gtest/gtest.h>

namespace kestrelon {
namespace {

namespace fs = std::filesystem;
using test::readBytes;
using test::writeBytes;

const fs::path kWaves = "/usr/share/codec2/wav";

class UndoTest : public test::FrameFixture {
protected:
    void SetUp() override
    {
        for (const char* name : {"hts1a.wav", "hts2a.wav", "cross.wav"})
            if (!fs::exists(kWaves / name))
                GTEST_SKIP() << "the codec2 sample waves are not installed";
    }

    void TearDown() override
    {
        if (m_frame->session().isOpen() && m_frame->session().document().isModified())
            m_port.queue(Answer::No);
        m_frame->runCommand(cmd::kCloseProject);
    }

    void open(const std::vector<test::Row>& rows)
    {
        fs::create_directories(m_project / "Files");
        for (const test::Row& row : rows)
            fs::copy_file(kWaves / row.source, m_project / "Files" / row.source, fs::copy_options::overwrite_existing);
        writeBytes(m_project / "Demo.ptp", test::projectText(rows));
        ASSERT_TRUE(m_frame->openProject(m_project / "Demo.ptp"));
    }

    std::string text() const { return m_frame->session().document().serialize(); }
    bool canUndo() const { return m_frame->action(cmd::kUndo)->isEnabled(); }
    bool canRedo() const { return m_frame->action(cmd::kRedo)->isEnabled(); }

    // Runs `edit`, which must change the project as the step `name`; then
    // takes it back and makes it again, each to the same bytes.
    void step(const QString& name, const std::function<void()>& edit)
    {
        SCOPED_TRACE(name.toStdString());
        const std::string before = text();
        edit();
        const std::string after = text();
        ASSERT_NE(after, before) << "the edit changed nothing";
        m_frame->updateCommands();
        ASSERT_TRUE(canUndo());
        EXPECT_EQ(m_frame->action(cmd::kUndo)->text(), QStringLiteral("&Undo ") + name);
        m_frame->runCommand(cmd::kUndo);
        EXPECT_EQ(text(), before);
        EXPECT_TRUE(canRedo());
        EXPECT_EQ(m_frame->action(cmd::kRedo)->text(), QStringLiteral("&Redo ") + name);
        m_frame->runCommand(cmd::kRedo);
        EXPECT_EQ(text(), after);
        EXPECT_FALSE(canRedo());
    }

    ProjectItem* item(const std::string& id) const
    {
        const auto found = m_frame->workspaceTree()->itemsWithId(id);
        return found.size() == 1 ? found.front() : nullptr;
    }

    void select(std::vector<ProjectItem*> items) { m_frame->workspaceBar()->selectItems(items); }

    void selectRows(std::initializer_list<int> rows)
    {
        QTableView* table = m_frame->mainView()->table();
        table->selectionModel()->clearSelection();
        for (const int row : rows)
            table->selectionModel()->select(table->model()->index(row, 0),
                                            QItemSelectionModel::Select | QItemSelectionModel::Rows);
        table->selectionModel()->setCurrentIndex(table->model()->index(*rows.begin(), 0),
                                                 QItemSelectionModel::NoUpdate);
    }

    fs::path m_project = m_dir / "Demo";
};

TEST_F(UndoTest, EveryTreeEditGoesBackAndForthToTheSameProjectBytes)
{
    open({{"hts1a.wav"}});
    const std::string opened = text();
    m_frame->updateCommands();
    EXPECT_FALSE(canUndo());

    step(QStringLiteral("Add Folder"), [&] {
        test::whenModal<AddFolderDialog>([](AddFolderDialog* dialog) {
            dialog->nameEdit()->setText(QStringLiteral("Greetings"));
            dialog->accept();
        });
        m_frame->runCommand(cmd::kAddFolder);
    });

    // The copy Add Files made leaves Files with the undo and comes back with the redo.
    select({item("Greetings")});
    step(QStringLiteral("Add Files"), [&] {
        m_chooser.waves.push_back({kWaves / "cross.wav", kWaves / "hts2a.wav"});
        m_frame->runCommand(cmd::kAddFiles);
    });
    const fs::path copy = m_project / "Files" / "cross.wav";
    EXPECT_TRUE(fs::exists(copy));
    m_frame->runCommand(cmd::kUndo);
    EXPECT_FALSE(fs::exists(copy));
    m_frame->runCommand(cmd::kRedo);
    EXPECT_EQ(readBytes(copy), readBytes(kWaves / "cross.wav"));

    step(QStringLiteral("Rename Folder"), [&] {
        const auto found =
            m_frame->workspaceBar()->filesModel()->findItems(QStringLiteral("Greetings"), Qt::MatchRecursive);
        ASSERT_EQ(found.size(), 1);
        found.front()->setText(QStringLiteral("Welcome"));
        QCoreApplication::processEvents(); // the rename runs once the model's signal is over
    });
    ASSERT_NE(item("Welcome"), nullptr);

    step(QStringLiteral("Delete Files"), [&] {
        select({item("cross.wav")});
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kDeleteFiles);
    });
    step(QStringLiteral("Delete Folder"), [&] {
        select({item("Welcome")});
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kDeleteFolder);
    });
    step(QStringLiteral("Delete All"), [&] {
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kDeleteAll);
    });
    const std::string emptied = text();

    // A question answered No changes nothing and leaves no step.
    m_port.queue(Answer::No);
    m_frame->runCommand(cmd::kUndo);
    select({item("hts1a.wav")});
    m_frame->runCommand(cmd::kDeleteFiles);
    m_frame->updateCommands();
    EXPECT_EQ(m_frame->action(cmd::kUndo)->text(), QStringLiteral("&Undo Delete Folder"));

    // All the way back, and forward again.
    while (canUndo())
        m_frame->runCommand(cmd::kUndo);
    EXPECT_EQ(text(), opened);
    EXPECT_FALSE(fs::exists(copy));
    while (canRedo())
        m_frame->runCommand(cmd::kRedo);
    EXPECT_EQ(text(), emptied);
    EXPECT_TRUE(fs::exists(copy));
    EXPECT_TRUE(m_frame->isWindowModified());
}

TEST_F(UndoTest, ListEditsComeBackWithTheWorkingFilesTheyTook)
{
    open({{"hts1a.wav", "KS-1", "ImaAdpcm", "32000", "12050", "48044", "SAF1.tmp", "SAF1.wav", ""},
          {"hts1a.wav", "KS-1", "MuLaw", "64000", "24050", "", "SAF2.tmp", "", ""},
          {"hts2a.wav", "KS-1", "MuLaw", "64000", "", "", "", "", ""}});
    const fs::path temp = m_project / "Temp";
    writeBytes(temp / "SAF1.tmp", "encoded");
    writeBytes(temp / "SAF1.wav", "decoded");
    writeBytes(temp / "evt" / "SAF2.evt", "events");

    selectRows({0});
    step(QStringLiteral("Clear"), [&] {
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kClear);
    });
    EXPECT_FALSE(fs::exists(temp / "SAF1.tmp"));
    m_frame->runCommand(cmd::kUndo);
    EXPECT_EQ(readBytes(temp / "SAF1.tmp"), "encoded");
    EXPECT_EQ(readBytes(temp / "SAF1.wav"), "decoded");
    m_frame->runCommand(cmd::kRedo);

    selectRows({1});
    step(QStringLiteral("Property"), [&] {
        test::whenModal<PropertyDialog>([](PropertyDialog* dialog) {
            dialog->exportNameEdit()->setText(QStringLiteral("hello.bin"));
            dialog->accept();
        });
        m_frame->runCommand(cmd::kRowProperty);
    });
    selectRows({2});
    step(QStringLiteral("Delete"), [&] {
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kDeleteRows);
    });
    step(QStringLiteral("Delete All"), [&] {
        m_port.queue(Answer::Yes);
        m_frame->runCommand(cmd::kDeleteAllRows);
    });
    EXPECT_FALSE(fs::exists(temp / "evt" / "SAF2.evt"));
    m_frame->runCommand(cmd::kUndo);
    EXPECT_EQ(readBytes(temp / "evt" / "SAF2.evt"), "events");
    EXPECT_EQ(m_frame->mainView()->table()->model()->rowCount(), 2);

    // A change the history does not know of (here made behind its back) is
    // never overwritten: the undo says why it cannot go back, and the history goes.
    m_frame->session().document().files().front()->records().front().renameEncode = "other.bin";
    const std::string changed = text();
    m_frame->runCommand(cmd::kUndo);
    EXPECT_EQ(m_port.texts().back(), msg::kUndoProjectChanged);
    EXPECT_EQ(text(), changed);
    EXPECT_FALSE(canUndo());
    EXPECT_FALSE(canRedo());

    // Save deletes what the project let go of: nothing to go back to after it.
    selectRows({0});
    m_port.queue(Answer::Yes);
    m_frame->runCommand(cmd::kDeleteRows);
    m_frame->updateCommands();
    EXPECT_TRUE(canUndo());
    m_frame->runCommand(cmd::kSaveProject);
    EXPECT_FALSE(canUndo());
}

} // namespace
} // namespace kestrelon
