#include "app/qt_user_port.h"

#include "app/dialogs/progress_dialog.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

namespace {

QString qtText(std::string_view text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

QString captionOr(std::string_view caption)
{
    return qtText(caption.empty() ? kProgramCaption : caption);
}

} // namespace

// The batch's "Check" question: Replace, Skip, Skip All or Stop.
Answer QtUserPort::askCheck(std::string_view text, std::string_view caption)
{
    QMessageBox box(QMessageBox::Question, captionOr(caption.empty() ? std::string_view("Check") : caption),
                    qtText(text), QMessageBox::NoButton, m_parent);
    QPushButton* replace = box.addButton(QStringLiteral("Replace"), QMessageBox::YesRole);
    QPushButton* skip = box.addButton(QStringLiteral("Skip"), QMessageBox::NoRole);
    QPushButton* skipAll = box.addButton(QStringLiteral("Skip All"), QMessageBox::NoRole);
    QPushButton* stop = box.addButton(QStringLiteral("Stop"), QMessageBox::RejectRole);
    box.setEscapeButton(stop);
    box.exec();
    if (box.clickedButton() == replace)
        return Answer::Yes;
    if (box.clickedButton() == skip)
        return Answer::No;
    if (box.clickedButton() == skipAll)
        return Answer::SkipAll;
    return Answer::Cancel;
}

QtUserPort::QtUserPort(QWidget* parent)
    : m_parent(parent)
{}

QtUserPort::~QtUserPort() = default;

void QtUserPort::showMessage(std::string_view text)
{
    QMessageBox box(QMessageBox::Information, captionOr({}), qtText(text), QMessageBox::Ok, m_parent);
    box.exec();
}

Answer QtUserPort::ask(std::string_view text, Buttons buttons, std::string_view caption)
{
    QMessageBox::StandardButtons shown;
    QMessageBox::StandardButton escape = QMessageBox::Cancel;
    switch (buttons) {
    case Buttons::YesNo:
        shown = QMessageBox::Yes | QMessageBox::No;
        escape = QMessageBox::No;
        break;
    case Buttons::YesNoCancel: shown = QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel; break;
    case Buttons::OkCancel: shown = QMessageBox::Ok | QMessageBox::Cancel; break;
    case Buttons::ReplaceSkipSkipAllStop: return askCheck(text, caption);
    }
    QMessageBox box(QMessageBox::Question, captionOr(caption), qtText(text), shown, m_parent);
    box.setEscapeButton(escape);
    switch (box.exec()) {
    case QMessageBox::Yes: return Answer::Yes;
    case QMessageBox::No: return Answer::No;
    case QMessageBox::Ok: return Answer::Ok;
    default:
        // Closing the box counts as its escape answer.
        return buttons == Buttons::YesNo ? Answer::No : Answer::Cancel;
    }
}

Answer QtUserPort::askAboutFiles(std::string_view heading, const std::vector<std::string>& names,
                                 std::string_view question)
{
    QDialog dialog(m_parent);
    dialog.setWindowTitle(captionOr({}));
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(new QLabel(qtText(heading), &dialog));
    auto* list = new QPlainTextEdit(&dialog);
    list->setReadOnly(true);
    QStringList lines;
    for (const std::string& name : names)
        lines << QString::fromStdString(name);
    list->setPlainText(lines.join(QLatin1Char('\n')));
    layout->addWidget(list);
    layout->addWidget(new QLabel(qtText(question), &dialog));
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Yes | QDialogButtonBox::No, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    return dialog.exec() == QDialog::Accepted ? Answer::Yes : Answer::No;
}

ProgressDialog& QtUserPort::progress()
{
    if (!m_progress)
        m_progress = std::make_unique<ProgressDialog>(m_parent);
    return *m_progress;
}

void QtUserPort::beginProgress(std::string_view title)
{
    progress().begin(title);
}

void QtUserPort::setProgressRange(int low, int high)
{
    progress().setRange(low, high);
}

void QtUserPort::setProgressPosition(int position)
{
    progress().setPosition(position);
}

void QtUserPort::setProgressText(std::string_view text)
{
    progress().setText(text);
}

void QtUserPort::endProgress()
{
    if (m_progress)
        m_progress->end();
}

bool QtUserPort::stopRequested()
{
    return m_progress && m_progress->stopRequested();
}

} // namespace kestrelon
