#include "app/dialogs/progress_dialog.h"
#include "app/qt_user_port.h"
#include "app_support.h"

#include "common/messages.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>

#include <gtest/gtest.h>

namespace kestrelon {
namespace {

struct Seen {
    QString caption;
    QString text;
    QStringList buttons;
};

// Answers the next message box with the button whose text is `press`.
void answerBox(Seen& seen, const QString& press)
{
    test::whenModal<QMessageBox>([&seen, press](QMessageBox* box) {
        seen.caption = box->windowTitle();
        seen.text = box->text();
        for (QAbstractButton* button : box->buttons())
            seen.buttons << button->text().remove(QLatin1Char('&'));
        for (QAbstractButton* button : box->buttons())
            if (button->text().remove(QLatin1Char('&')) == press) {
                button->click();
                return;
            }
        ADD_FAILURE() << "no button " << press.toStdString();
        box->close();
    });
}

TEST(QtUserPort, QuestionsShowTheTextTheCaptionAndTheButtonsAsked)
{
    QtUserPort port;
    Seen seen;

    answerBox(seen, QStringLiteral("No"));
    EXPECT_EQ(port.ask(msg::kDeleteSelectedItems, Buttons::YesNo), Answer::No);
    EXPECT_EQ(seen.caption, QStringLiteral("Kestrelon"));
    EXPECT_EQ(seen.text, QString::fromUtf8(msg::kDeleteSelectedItems.data()));
    EXPECT_EQ(seen.buttons.size(), 2);

    // The missing-file question carries its own caption and OK/Cancel.
    seen = {};
    answerBox(seen, QStringLiteral("OK"));
    EXPECT_EQ(port.ask("Project file :\nFiles\\a.wav", Buttons::OkCancel, msg::kLoseFileCaption), Answer::Ok);
    EXPECT_EQ(seen.caption, QStringLiteral("LoseFile"));
    EXPECT_TRUE(seen.buttons.contains(QStringLiteral("Cancel")));

    seen = {};
    answerBox(seen, QStringLiteral("Skip All"));
    EXPECT_EQ(port.ask("x already existed!\nDo you want to replace it?", Buttons::ReplaceSkipSkipAllStop),
              Answer::SkipAll);
    EXPECT_EQ(seen.buttons.size(), 4);

    seen = {};
    answerBox(seen, QStringLiteral("OK"));
    port.showMessage("Not found help file \"/opt/manual/index.html\" !");
    EXPECT_EQ(seen.text, QStringLiteral("Not found help file \"/opt/manual/index.html\" !"));
}

TEST(QtUserPort, StopOnTheProgressWindowIsSeenByTheBatch)
{
    QtUserPort port;
    EXPECT_FALSE(port.stopRequested()) << "no batch yet";
    port.beginProgress("Encoding");
    ASSERT_NE(port.progressDialog(), nullptr);
    port.progressDialog()->stopButton()->click();
    EXPECT_TRUE(port.stopRequested());
    port.endProgress();
}

TEST(FileFilters, TheProgramsFiltersInQtsForm)
{
    EXPECT_EQ(qtFileFilter(kProjectFilter), QStringLiteral("Kestrelon Project (*.ptp)"));
    EXPECT_EQ(qtFileFilter("Sounds|*.wav;*.aif|All|*.*||"), QStringLiteral("Sounds (*.wav *.aif);;All (*.*)"));
}

} // namespace
} // namespace kestrelon
