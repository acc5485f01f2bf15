#include "settings/settings_store.h"

#include "common/paths.h"
#include "common/platform.h"

#include <QSettings>
#include <QString>
#include <QVariant>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <optional>

namespace kestrelon {

namespace names = settings_names;

namespace {

std::unique_ptr<QSettings> openSettings(const std::filesystem::path& configFolder)
{
    if (configFolder.empty())
        return std::make_unique<QSettings>(QStringLiteral("Corvane"), QStringLiteral("Kestrelon"));
    const std::filesystem::path file = programConfigFolder(configFolder) / "Kestrelon.conf";
    return std::make_unique<QSettings>(QString::fromStdString(utf8FromPath(file)), QSettings::IniFormat);
}

QString keyOf(std::string_view section, std::string_view name)
{
    return QString::fromUtf8(section.data(), static_cast<qsizetype>(section.size())) + QLatin1Char('/') +
           QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()));
}

QString qText(const std::string& text)
{
    return QString::fromStdString(text);
}

// Readers keep what they hold when the value is missing or is not of its type.
void readInt(const QSettings& settings, std::string_view section, std::string_view name, int& value)
{
    const QVariant stored = settings.value(keyOf(section, name));
    bool ok = false;
    const int number = stored.toInt(&ok);
    if (stored.isValid() && ok)
        value = number;
}

// A colour is a 32-bit value; the registry may give it back signed.
void readColor(const QSettings& settings, std::string_view name, std::uint32_t& value)
{
    const QVariant stored = settings.value(keyOf(names::kColorSection, name));
    bool ok = false;
    const qlonglong number = stored.toLongLong(&ok);
    if (stored.isValid() && ok && number >= INT32_MIN && number <= UINT32_MAX)
        value = static_cast<std::uint32_t>(number);
}

std::optional<std::string> readText(const QSettings& settings, std::string_view section, std::string_view name)
{
    const QVariant stored = settings.value(keyOf(section, name));
    // An ini file edited by hand may hold a text with a comma that is not
    // quoted; QSettings reads that as a list of texts.
    if (stored.typeId() == QMetaType::QStringList)
        return stored.toStringList().join(QStringLiteral(", ")).toStdString();
    if (!stored.isValid() || !stored.canConvert<QString>())
        return std::nullopt;
    return stored.toString().toStdString();
}

void readText(const QSettings& settings, std::string_view section, std::string_view name, std::string& value)
{
    if (std::optional<std::string> text = readText(settings, section, name))
        value = std::move(*text);
}

std::string recentKey(std::size_t number)
{
    return std::string(names::kRecentKeyPrefix) + std::to_string(number);
}

} // namespace

std::string formatColumnScale(float scale)
{
    char buffer[64];
    const auto result =
        std::to_chars(buffer, buffer + sizeof buffer, static_cast<double>(scale), std::chars_format::fixed, 6);
    if (result.ec != std::errc())
        return "1.000000"; // only a huge or non-finite scale gets here
    return std::string(buffer, result.ptr);
}

float parseColumnScale(std::string_view text)
{
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t'))
        text.remove_suffix(1);
    float scale = 0.0f;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), scale);
    if (text.empty() || result.ec != std::errc() || result.ptr != text.data() + text.size() || !std::isfinite(scale) ||
        scale <= 0.0f)
        return 1.0f;
    return scale;
}

bool SettingsStore::load(const std::filesystem::path& configFolder)
{
    const std::unique_ptr<QSettings> settings = openSettings(configFolder);
    if (settings->status() != QSettings::NoError)
        return false;

    SettingsStore loaded = *this;
    for (const WaveColorSlot& slot : kWaveColorSlots)
        readColor(*settings, slot.name, loaded.colors.*slot.member);
    readInt(*settings, names::kPlayModeSection, names::kPlayMode, loaded.playMode);
    readInt(*settings, names::kListSection, names::kSortOrder, loaded.sortOrder);
    readInt(*settings, names::kListSection, names::kSortIndex, loaded.sortIndex);
    readInt(*settings, names::kListSection, names::kHiddenQualityColumns, loaded.hiddenQualityColumns);
    loaded.columnScale = parseColumnScale(readText(*settings, names::kListSection, names::kMultiple).value_or(""));
    readInt(*settings, names::kAutoSection, names::kDecode, loaded.autoDecode);
    readInt(*settings, names::kCodecSection, names::kJobs, loaded.codecJobs);
    readText(*settings, names::kLastSection, names::kBodyName, loaded.lastBodyName);
    readText(*settings, names::kLastSection, names::kAlgName, loaded.lastAlgName);
    readText(*settings, names::kLastSection, names::kBitRate, loaded.lastBitRate);
    readInt(*settings, names::kLastSection, names::kApplyAllFiles, loaded.applyAllFiles);
    readText(*settings, names::kLastSection, names::kProjectPath, loaded.lastProjectPath);
    readText(*settings, names::kLastSection, names::kFilePath, loaded.lastFilePath);
    readText(*settings, names::kLastSection, names::kExternalEditor, loaded.externalEditor);
    readText(*settings, names::kWindowSection, names::kGeometry, loaded.windowGeometry);
    readText(*settings, names::kWindowSection, names::kLayout, loaded.windowLayout);
    for (int port = 0; port < kBoardPorts; ++port)
        readText(*settings, names::kBoardSection, std::string(names::kBoardPortPrefix) + std::to_string(port),
                 loaded.boardPorts[std::size_t(port)]);

    // The list is one value: when any entry is stored, the stored entries
    // replace the list, empty ones left out.
    std::vector<std::string> recent;
    bool anyRecent = false;
    for (std::size_t number = 1; number <= kMaxRecentProjects; ++number) {
        std::optional<std::string> path = readText(*settings, names::kRecentSection, recentKey(number));
        anyRecent = anyRecent || path.has_value();
        if (path && !path->empty())
            recent.push_back(std::move(*path));
    }
    if (anyRecent)
        loaded.recentProjects = std::move(recent);

    if (settings->status() != QSettings::NoError)
        return false;
    *this = std::move(loaded);
    return true;
}

bool SettingsStore::save(const std::filesystem::path& configFolder) const
{
    std::unique_ptr<QSettings> settings = openSettings(configFolder);
    for (const WaveColorSlot& slot : kWaveColorSlots)
        settings->setValue(keyOf(names::kColorSection, slot.name), static_cast<uint>(colors.*slot.member));
    settings->setValue(keyOf(names::kPlayModeSection, names::kPlayMode), playMode);
    settings->setValue(keyOf(names::kListSection, names::kSortOrder), sortOrder);
    settings->setValue(keyOf(names::kListSection, names::kSortIndex), sortIndex);
    settings->setValue(keyOf(names::kListSection, names::kHiddenQualityColumns), hiddenQualityColumns);
    settings->setValue(keyOf(names::kListSection, names::kMultiple), qText(formatColumnScale(columnScale)));
    settings->setValue(keyOf(names::kAutoSection, names::kDecode), autoDecode);
    settings->setValue(keyOf(names::kCodecSection, names::kJobs), codecJobs);
    settings->setValue(keyOf(names::kLastSection, names::kBodyName), qText(lastBodyName));
    settings->setValue(keyOf(names::kLastSection, names::kAlgName), qText(lastAlgName));
    settings->setValue(keyOf(names::kLastSection, names::kBitRate), qText(lastBitRate));
    settings->setValue(keyOf(names::kLastSection, names::kApplyAllFiles), applyAllFiles);
    settings->setValue(keyOf(names::kLastSection, names::kProjectPath), qText(lastProjectPath));
    settings->setValue(keyOf(names::kLastSection, names::kFilePath), qText(lastFilePath));
    settings->setValue(keyOf(names::kLastSection, names::kExternalEditor), qText(externalEditor));
    settings->setValue(keyOf(names::kWindowSection, names::kGeometry), qText(windowGeometry));
    settings->setValue(keyOf(names::kWindowSection, names::kLayout), qText(windowLayout));
    for (int port = 0; port < kBoardPorts; ++port) {
        const QString key = keyOf(names::kBoardSection, std::string(names::kBoardPortPrefix) + std::to_string(port));
        if (boardPorts[std::size_t(port)].empty())
            settings->remove(key);
        else
            settings->setValue(key, qText(boardPorts[std::size_t(port)]));
    }

    // Entries beyond the list's current length must not survive from an
    // earlier, longer list.
    for (std::size_t number = 1; number <= kMaxRecentProjects; ++number) {
        const QString key = keyOf(names::kRecentSection, recentKey(number));
        if (number <= recentProjects.size())
            settings->setValue(key, qText(recentProjects[number - 1]));
        else
            settings->remove(key);
    }

    settings->sync();
    if (settings->status() == QSettings::NoError)
        return true;
    // A file found damaged when it was read keeps that error on the object
    // even after a write that replaced it: only reading it again tells.
    if (settings->status() != QSettings::FormatError)
        return false;
    settings.reset();
    const std::unique_ptr<QSettings> written = openSettings(configFolder);
    return written->status() == QSettings::NoError &&
           written->value(keyOf(names::kListSection, names::kSortIndex)).toInt() == sortIndex;
}

void exportBoardPorts(const SettingsStore& settings)
{
    for (int port = 0; port < kBoardPorts; ++port) {
        const std::string& device = settings.boardPorts[std::size_t(port)];
        const QByteArray name = "KESTRELON_BOARD_PORT" + QByteArray::number(port);
        if (!device.empty() && qEnvironmentVariableIsEmpty(name.constData()))
            qputenv(name.constData(), QByteArray::fromStdString(device));
    }
}

} // namespace kestrelon
