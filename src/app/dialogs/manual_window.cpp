#include "app/dialogs/manual_window.h"

#include "app/file_chooser.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace kestrelon {

ManualWindow::ManualWindow(const std::filesystem::path& index, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_browser(new QTextBrowser(this))
{
    setWindowTitle(tr("Kestrelon user manual"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_browser->setSearchPaths({qtPath(index.parent_path())});
    // Links out of the manual (a web address) open in the person's browser.
    m_browser->setOpenExternalLinks(true);
    m_browser->setSource(QUrl::fromLocalFile(qtPath(index)));

    auto* back = new QPushButton(tr("&Back"), this);
    auto* contents = new QPushButton(tr("&Contents"), this);
    connect(back, &QPushButton::clicked, m_browser, &QTextBrowser::backward);
    connect(m_browser, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    connect(contents, &QPushButton::clicked, m_browser, &QTextBrowser::home);
    back->setEnabled(false);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(back);
    buttons->addWidget(contents);
    buttons->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_browser, 1);
    resize(820, 700);
}

} // namespace kestrelon
