#include "app/dialogs/add_folder_dialog.h"
#include "app/dialogs/manual_window.h"
#include "app/dialogs/new_project_dialog.h"
#include "app/dialogs/splitter_bar_dialog.h"
#include "app/main_window.h"
#include "app/workspace_bar.h"
#include "app_support.h"

#include "common/messages.h"
#include "common/version.h"
#include "project/workspace_tree.h"
#include "settings/settings_store.h"
#include "support/files.h"
#include "wave/wave_file.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTextBrowser>

#include <gtest/gtest.h>

namespace kestrelon {
namespace {

namespace fs = std::filesystem;
using test::ScriptedChooser;
using test::ScriptedPort;
using test::TempDir;

TEST(NewProjectDialog, RefusalsKeepTheDialogOpenAndEmptyTheNameWhenAsked)
{
    TempDir dir;
    ScriptedPort port;
    ScriptedChooser chooser;
    NewProjectDialog dialog(port, chooser, dir.path());
    EXPECT_EQ(dialog.pathEdit()->text().toStdString(), dir.path().string());

    dialog.nameEdit()->setText(QStringLiteral("a|b"));
    dialog.accept();
    EXPECT_EQ(port.texts().back(), msg::kInvalidCharacters);
    EXPECT_EQ(dialog.result(), QDialog::Rejected);
    EXPECT_TRUE(dialog.nameEdit()->text().isEmpty()) << "the name box is emptied";

    dialog.nameEdit()->setText(QStringLiteral("Demo"));
    dialog.pathEdit()->setText(QStringLiteral("relative/place"));
    dialog.accept();
    EXPECT_EQ(port.texts().back(), msg::kWrongPath);
    EXPECT_EQ(dialog.nameEdit()->text(), QStringLiteral("Demo")) << "only the name checks empty the box";

    // "..." fills the location from the folder chooser.
    chooser.folders.push_back(dir.path());
    dialog.browseButton()->click();
    EXPECT_EQ(dialog.pathEdit()->text(), qtPath(dir.path()));

    const std::size_t shown = port.messages().size();
    dialog.accept();
    EXPECT_EQ(port.messages().size(), shown) << "nothing more to say";
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.projectFile(), dir / "Demo" / "Demo.ptp");
}

TEST(SplitterBarDialog, OnlyTheExactCodeUnlocksTheSwitch)
{
    ScriptedPort port;
    setSplitViewEnabled(false);
    {
        SplitterBarDialog dialog(splitViewEnabled(), port);
        dialog.show();
        // Return in the edit presses "Enter", not OK.
        QKeyEvent returnKey(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        for (const char* wrong : {"Tamberlin", "tamberlin "}) {
            dialog.codeEdit()->setText(QString::fromUtf8(wrong));
            QApplication::sendEvent(dialog.codeEdit(), &returnKey);
            EXPECT_EQ(port.texts().back(), msg::kKeycodeError) << wrong;
            EXPECT_TRUE(dialog.codeEdit()->text().isEmpty());
            EXPECT_FALSE(dialog.showBox()->isEnabled());
        }
        EXPECT_TRUE(dialog.isVisible());

        const std::size_t shown = port.messages().size();
        dialog.codeEdit()->setText(QStringLiteral("tamberlin"));
        dialog.enterButton()->click();
        EXPECT_EQ(port.messages().size(), shown);
        EXPECT_TRUE(dialog.codeEdit()->text().isEmpty());
        EXPECT_TRUE(dialog.showBox()->isEnabled());
    }

    // Through the frame's key command: Cancel after the right code leaves the
    // switch; OK stores the box.
    TempDir dir;
    MainWindow frame(FrameOptions{dir.path(), dir / "config", &port});
    for (bool ok : {false, true}) {
        test::whenModal<SplitterBarDialog>([ok](SplitterBarDialog* dialog) {
            dialog->codeEdit()->setText(QStringLiteral("tamberlin"));
            dialog->enterButton()->click();
            dialog->showBox()->setChecked(true);
            ok ? dialog->accept() : dialog->reject();
        });
        frame.runCommand(cmd::kSplitterBarKey);
        EXPECT_EQ(splitViewEnabled(), ok);
    }
    setSplitViewEnabled(false);
}

using FrameCommands = test::FrameFixture;

TEST_F(FrameCommands, ADamagedLayoutInTheSettingsIsPassedOver)
{
    const FrameOptions options{m_dir / "program", m_dir / "config", &m_port, &m_chooser};
    const QSize fresh = m_frame->size();
    m_frame.reset();
    SettingsStore settings;
    ASSERT_TRUE(settings.load(options.configFolder));
    settings.windowGeometry = "bm90IGEgZ2VvbWV0cnk="; // base64, but not a window's geometry
    settings.windowLayout = "%%%";
    ASSERT_TRUE(settings.save(options.configFolder));

    MainWindow again(options);
    again.show();
    EXPECT_EQ(again.size(), fresh);
    EXPECT_TRUE(again.workspaceBar()->isVisible());
}

TEST_F(FrameCommands, AddFolderWithAnEmptyNameAddsNothing)
{
    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Folders"));
    m_frame->workspaceBar()->selectItems({}, /*root=*/true);

    std::string offered;
    test::whenModal<AddFolderDialog>([&](AddFolderDialog* dialog) {
        offered = dialog->folderName();
        dialog->nameEdit()->clear();
        dialog->accept();
    });
    m_frame->runCommand(cmd::kAddFolder);
    EXPECT_EQ(offered, "Folder");
    EXPECT_EQ(m_port.texts(), std::vector<std::string>{std::string(msg::kFolderNameEmpty)});
    EXPECT_TRUE(m_frame->session().document().topLevelFiles().empty());
    EXPECT_FALSE(m_frame->session().document().isModified());

    // Cancel adds nothing and says nothing.
    const std::size_t shown = m_port.messages().size();
    test::whenModal<AddFolderDialog>([](AddFolderDialog* dialog) { dialog->reject(); });
    m_frame->runCommand(cmd::kAddFolder);
    EXPECT_EQ(m_port.messages().size(), shown);
    EXPECT_TRUE(m_frame->session().document().topLevelFiles().empty());
}

TEST_F(FrameCommands, HelpAndEditorSayWhatIsMissingAndTheEditorGetsOneArgument)
{
    // The message names the file looked for.
    m_frame->runCommand(cmd::kHelp);
    EXPECT_EQ(m_port.texts(),
              std::vector<std::string>{"Not found help file \"" +
                                       (m_dir / "program" / "manual" / "index.html").string() + "\" !"});

    // A project with one selected source whose name holds a blank, and an
    // editor that is not there.
    ASSERT_TRUE(m_frame->session().newProject(m_dir.path().string(), "Edit"));
    test::writeBytes(m_dir / "src" / "my a.wav", wav16Bytes(std::vector<std::int16_t>(80, 3), 8000));
    const auto added = m_frame->workspaceTree()->addFiles(TreeTarget::topLevel(), {m_dir / "src" / "my a.wav"});
    ASSERT_EQ(added.size(), 1u);
    m_frame->workspaceBar()->selectItems({added[0].item});
    m_frame->settings().externalEditor = (m_dir / "no-such-editor").string();
    m_frame->runCommand(cmd::kExternalEditor);
    EXPECT_EQ(m_port.texts().back(), msg::kExternalEditorMissing);

    // The command returns only once the editor has ended.
    const fs::path editor = m_dir / "editor.sh";
    const fs::path record = m_dir / "editor-args.txt";
    test::writeBytes(editor, "#!/bin/sh\nsleep 0.2\nprintf '%s|%s' \"$#\" \"$1\" > '" + record.string() + "'\n");
    fs::permissions(editor, fs::perms::owner_all);
    m_frame->settings().externalEditor = editor.string();
    m_frame->runCommand(cmd::kExternalEditor);
    EXPECT_EQ(test::readBytes(record), "1|" + (m_dir / "Edit" / "Files" / "my a.wav").string());
}

#ifdef KESTRELON_PROGRAM_DIR
// The manual made from docs/ beside the built program: F1 shows its first
// page, its links lead to the other pages; About names the version, the
// libraries and the program folder.
TEST(FrameHelp, F1ShowsTheManualAndAboutSaysWhatAndWhere)
{
    const test::TempDir dir;
    test::ScriptedPort port;
    test::ScriptedChooser chooser;
    const fs::path program = KESTRELON_PROGRAM_DIR;
    MainWindow frame(FrameOptions{program, dir / "config", &port, &chooser});
    frame.runCommand(cmd::kHelp);
    const auto manuals = frame.findChildren<ManualWindow*>();
    ASSERT_EQ(manuals.size(), 1u);
    QTextBrowser* page = manuals.front()->browser();
    EXPECT_TRUE(page->toPlainText().startsWith(QStringLiteral("Kestrelon user manual")));
    EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("A first project")));
    page->setSource(QUrl(QStringLiteral("quality.html")));
    EXPECT_TRUE(page->toPlainText().contains(QStringLiteral("Segmental SNR")));
    frame.runCommand(cmd::kHelp); // the same window again, not a second one
    EXPECT_EQ(frame.findChildren<ManualWindow*>().size(), 1u);

    QString about;
    test::whenModal<QMessageBox>([&](QMessageBox* box) {
        about = box->text();
        box->accept();
    });
    frame.runCommand(cmd::kAbout);
    EXPECT_TRUE(about.contains(QString::fromStdString(std::string(kProgramVersion))));
    EXPECT_TRUE(about.contains(QString::fromStdString(program.string())));
    EXPECT_TRUE(about.contains(QStringLiteral("libsndfile")));
    EXPECT_TRUE(port.texts().empty());
}
#endif

} // namespace
} // namespace kestrelon
