#include "app/dialogs/dll_setting_dialog.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <system_error>

namespace kestrelon {

namespace {

// Deletes `file` when it is there. False only when it is there and stays.
bool removeIfPresent(const std::filesystem::path& file, UserPort& port)
{
    std::error_code error;
    if (!std::filesystem::exists(file, error))
        return true;
    if (std::filesystem::remove(file, error) && !error)
        return true;
    port.showMessage(std::string(msg::kCanNotDeletePrefix) + utf8FromPath(file) +
                     std::string(msg::kCanNotDeleteFileSuffix));
    return false;
}

} // namespace

DllSettingDialog::DllSettingDialog(std::vector<AlgoRegEntry>& registry, std::filesystem::path projectFolder,
                                   std::string& editorPath, UserPort& port, QWidget* parent)
    : QDialog(parent)
    , m_registry(registry)
    , m_projectFolder(std::move(projectFolder))
    , m_editorPath(editorPath)
    , m_port(port)
    , m_algorithms(new QComboBox(this))
    , m_remove(new QPushButton(tr("Remove"), this))
    , m_editor(new QLineEdit(QString::fromStdString(editorPath), this))
    , m_browse(new QPushButton(tr("..."), this))
{
    setWindowTitle(tr("DLL Setting"));
    m_algorithms->setMinimumWidth(240);
    m_editor->setMinimumWidth(240);
    m_browse->setFixedWidth(m_browse->fontMetrics().horizontalAdvance(QStringLiteral("....")) + 24);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    auto* grid = new QGridLayout;
    grid->addWidget(new QLabel(tr("Algorithms DLL:"), this), 0, 0);
    grid->addWidget(m_algorithms, 0, 1);
    grid->addWidget(m_remove, 0, 2);
    grid->addWidget(new QLabel(tr("External Editor:"), this), 1, 0);
    grid->addWidget(m_editor, 1, 1);
    grid->addWidget(m_browse, 1, 2, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addWidget(buttons);

    connect(m_remove, &QPushButton::clicked, this, [this] { removeCurrentAlgorithm(); });
    connect(m_browse, &QPushButton::clicked, this, &DllSettingDialog::browseEditor);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    fillAlgorithms();
}

void DllSettingDialog::fillAlgorithms()
{
    m_algorithms->clear();
    for (const AlgoRegEntry& entry : m_registry)
        m_algorithms->addItem(QString::fromStdString(entry.name));
    m_remove->setEnabled(!m_projectFolder.empty() && m_algorithms->count() > 0);
}

bool DllSettingDialog::removeCurrentAlgorithm()
{
    const int index = m_algorithms->currentIndex();
    if (m_projectFolder.empty() || index < 0 || static_cast<std::size_t>(index) >= m_registry.size())
        return false;
    const std::string name = m_registry[static_cast<std::size_t>(index)].name;
    const std::string question =
        std::string(msg::kRemoveAlgorithmPrefix) + name + std::string(msg::kRemoveAlgorithmSuffix);
    if (m_port.ask(question, Buttons::YesNo) != Answer::Yes)
        return false;

    // The library first: when it will not go, the entry stays and so do the
    // folder and the registry in step.
    const std::filesystem::path library = algorithmLibraryPath(m_projectFolder, name);
    if (!removeIfPresent(library, m_port))
        return false;
    std::filesystem::path companion = library;
    companion.replace_extension(".bdy");
    removeIfPresent(companion, m_port); // a stale ".bdy" alone is harmless

    m_registry.erase(m_registry.begin() + index);
    if (!saveAlgorithmRegistry(m_projectFolder, m_registry))
        m_port.showMessage(utf8FromPath(algorithmRegistryPath(m_projectFolder)) +
                           std::string(msg::kRegistryNotWritten));
    fillAlgorithms();
    emit algorithmRemoved(QString::fromStdString(name));
    return true;
}

QString DllSettingDialog::editorFilter()
{
#ifdef _WIN32
    return QStringLiteral("External Editor (*.exe)");
#else
    return QStringLiteral("External Editor (*)");
#endif
}

bool DllSettingDialog::acceptableEditor(const QString& path, UserPort& port)
{
    if (path.trimmed().isEmpty())
        return true;
    const QFileInfo info(path);
    if (!info.exists() || !info.isFile()) {
        port.showMessage(msg::kExternalEditorNotExisted);
        return false;
    }
    if (!info.isExecutable()) {
        port.showMessage(path.toStdString() + std::string(msg::kEditorNotExecutable));
        return false;
    }
    return true;
}

void DllSettingDialog::browseEditor()
{
    const QString start = m_editor->text().isEmpty() ? QString() : QFileInfo(m_editor->text()).absolutePath();
    const QString chosen = QFileDialog::getOpenFileName(this, tr("External Editor"), start, editorFilter());
    if (chosen.isEmpty() || !acceptableEditor(chosen, m_port))
        return;
    m_editor->setText(QDir::toNativeSeparators(chosen));
}

void DllSettingDialog::accept()
{
    const QString path = m_editor->text().trimmed();
    if (!acceptableEditor(path, m_port))
        return; // the dialog stays open with the text to correct
    m_editorPath = path.toStdString();
    QDialog::accept();
}

} // namespace kestrelon
