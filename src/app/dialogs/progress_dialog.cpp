#include "app/dialogs/progress_dialog.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

namespace {
QString qText(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
} // namespace

ProgressDialog::ProgressDialog(QWidget* parent)
    : QDialog(parent)
    , m_item(new QLabel(this))
    , m_text(new QLabel(this))
    , m_bar(new QProgressBar(this))
    , m_stop(new QPushButton(tr("Stop"), this))
{
    setWindowModality(Qt::ApplicationModal);
    setMinimumWidth(420);
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_text->setMinimumWidth(380);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_stop);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_item);
    layout->addWidget(m_text);
    layout->addWidget(m_bar);
    layout->addLayout(buttons);

    connect(m_stop, &QPushButton::clicked, this, &ProgressDialog::requestStop);
}

void ProgressDialog::begin(std::string_view title)
{
    m_stopRequested = false;
    m_running = true;
    setWindowTitle(qText(title));
    m_text->clear();
    m_bar->setRange(0, 100);
    m_bar->setValue(0);
    m_stop->setEnabled(true);
    if (!m_since.isValid())
        m_since.start();
    pump();
}

void ProgressDialog::showWhenLong()
{
    if (isVisible() || !m_since.isValid() || m_since.elapsed() < kShowAfterMs)
        return;
    if (parentWidget()) {
        // Centred on the window that started the work.
        adjustSize();
        const QRect outer = parentWidget()->window()->frameGeometry();
        move(outer.center() - rect().center());
    }
    show();
    raise();
}

void ProgressDialog::startBatch()
{
    clearStop();
    m_inBatch = true;
    m_since.invalidate();
    m_item->clear();
}

void ProgressDialog::finishBatch()
{
    m_inBatch = false;
    m_since.invalidate();
    m_item->clear();
    hide();
}

void ProgressDialog::setBatchItem(std::string_view text)
{
    m_item->setText(qText(text));
    pump();
}

void ProgressDialog::setRange(int low, int high)
{
    m_bar->setRange(low, high < low ? low : high);
    pump();
}

void ProgressDialog::setPosition(int position)
{
    m_bar->setValue(position);
    pump();
}

void ProgressDialog::setText(std::string_view text)
{
    m_text->setText(qText(text));
    pump();
}

void ProgressDialog::end()
{
    m_running = false;
    // In a batch the window waits for the next row; alone, the run is over.
    if (!m_inBatch) {
        m_since.invalidate();
        hide();
    }
}

void ProgressDialog::requestStop()
{
    if (!m_running)
        return;
    m_stopRequested = true;
    m_stop->setEnabled(false); // the row under way finishes first
}

void ProgressDialog::reject()
{
    if (m_running)
        requestStop();
    else
        QDialog::reject();
}

void ProgressDialog::closeEvent(QCloseEvent* event)
{
    if (m_running) {
        requestStop();
        event->ignore();
        return;
    }
    QDialog::closeEvent(event);
}

void ProgressDialog::pump()
{
    // Only while the window is up: a batch that pumps before begin() could
    // otherwise run a queued command of the frame in the middle of a row.
    if (!m_running)
        return;
    showWhenLong();
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
}

} // namespace kestrelon
