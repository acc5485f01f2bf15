#include "app/file_chooser.h"

#include "common/paths.h"

#include <QFileDialog>
#include <QStringList>

namespace kestrelon {

QString qtPath(const std::filesystem::path& path)
{
    return QString::fromStdString(utf8FromPath(path));
}

std::filesystem::path stdPath(const QString& path)
{
    return pathFromUtf8(path.toStdString());
}

QString qtFileFilter(std::string_view filter)
{
    const QStringList parts = QString::fromUtf8(filter.data(), qsizetype(filter.size())).split(QLatin1Char('|'));
    QStringList entries;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        const QString description = parts[i].trimmed();
        if (description.isEmpty())
            break; // the closing "||"
        const QString patterns = parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts).join(QLatin1Char(' '));
        if (description.contains(QLatin1Char('(') + patterns + QLatin1Char(')')) || patterns.isEmpty())
            entries << description;
        else
            entries << description + QStringLiteral(" (") + patterns + QLatin1Char(')');
    }
    return entries.join(QStringLiteral(";;"));
}

std::optional<std::filesystem::path> QtFileChooser::projectToOpen(const std::filesystem::path& startFolder)
{
    const QString chosen = QFileDialog::getOpenFileName(m_parent, QStringLiteral("Open"), qtPath(startFolder),
                                                        qtFileFilter(kProjectFilter));
    if (chosen.isEmpty())
        return std::nullopt;
    return stdPath(chosen);
}

std::optional<std::filesystem::path> QtFileChooser::projectToSave(const std::filesystem::path& startFolder)
{
    const QString chosen = QFileDialog::getSaveFileName(m_parent, QStringLiteral("Save As"), qtPath(startFolder),
                                                        qtFileFilter(kProjectFilter));
    if (chosen.isEmpty())
        return std::nullopt;
    return stdPath(chosen);
}

std::vector<std::filesystem::path> QtFileChooser::waveFiles(const std::filesystem::path& startFolder)
{
    std::vector<std::filesystem::path> out;
    for (const QString& file : QFileDialog::getOpenFileNames(m_parent, QStringLiteral("Open"), qtPath(startFolder),
                                                             qtFileFilter(kWaveFilter)))
        out.push_back(stdPath(file));
    return out;
}

std::optional<std::filesystem::path> QtFileChooser::folder(const std::filesystem::path& startFolder)
{
    const QString chosen = QFileDialog::getExistingDirectory(
        m_parent, QString::fromUtf8(kChooseDirectoryCaption.data(), qsizetype(kChooseDirectoryCaption.size())),
        qtPath(startFolder));
    if (chosen.isEmpty())
        return std::nullopt;
    return stdPath(chosen);
}

} // namespace kestrelon
