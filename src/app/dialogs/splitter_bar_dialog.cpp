#include "app/dialogs/splitter_bar_dialog.h"

#include "common/messages.h"
#include "common/user_port.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace kestrelon {

namespace {
bool g_splitView = false;
}

bool splitViewEnabled()
{
    return g_splitView;
}
void setSplitViewEnabled(bool enabled)
{
    g_splitView = enabled;
}

SplitterBarDialog::SplitterBarDialog(bool current, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_port(port)
{
    setWindowTitle(QStringLiteral("Show Splitter Bar"));
    m_code = new QLineEdit(this);
    m_enter = new QPushButton(QStringLiteral("Enter"), this);
    m_show = new QCheckBox(QStringLiteral("Show"), this);
    m_show->setChecked(current);
    m_show->setEnabled(false);

    auto* codeRow = new QHBoxLayout;
    codeRow->addWidget(m_code, 1);
    codeRow->addWidget(m_enter);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    // Return in the edit means "Enter", not OK.
    m_enter->setDefault(true);
    for (QAbstractButton* button : buttons->buttons())
        if (auto* push = qobject_cast<QPushButton*>(button))
            push->setAutoDefault(false);
    connect(buttons, &QDialogButtonBox::accepted, this, &SplitterBarDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SplitterBarDialog::reject);
    connect(m_enter, &QPushButton::clicked, this, &SplitterBarDialog::enter);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(codeRow);
    layout->addWidget(m_show);
    layout->addWidget(buttons);
    setMinimumWidth(280);
}

bool SplitterBarDialog::showChecked() const
{
    return m_show->isChecked();
}

void SplitterBarDialog::enter()
{
    const bool match =
        m_code->text() == QLatin1String(kSplitterAccessCode.data(), qsizetype(kSplitterAccessCode.size()));
    m_code->clear();
    if (!match) {
        m_port.showMessage(msg::kKeycodeError);
        return;
    }
    m_show->setEnabled(true);
    m_code->setEnabled(false);
    m_enter->setEnabled(false);
}

} // namespace kestrelon
