#pragma once
// The file and folder choosers the frame's commands open. An interface, so
// that the frame's command handlers can be driven by a script in tests; the
// workbench uses QtFileChooser.
#include <QString>

#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

class QWidget;

namespace kestrelon {

// The choosers' filters, written as the program has always written them:
// description, "|", patterns, ending in "||".
inline constexpr std::string_view kProjectFilter = "Kestrelon Project (*.ptp)|*.ptp||";
inline constexpr std::string_view kWaveFilter = "Audio Files (*.wav)|*.wav||";
inline constexpr std::string_view kChooseDirectoryCaption = "Choose Directory";

// "Description|patterns|...||" as Qt's filter list: "Description (patterns)"
// entries joined by ";;", patterns separated by blanks. A description that
// already names its patterns in parentheses is kept as it is.
QString qtFileFilter(std::string_view filter);

class FileChooser {
public:
    virtual ~FileChooser() = default;
    // A project file to open; none when the person cancels.
    virtual std::optional<std::filesystem::path> projectToOpen(const std::filesystem::path& startFolder) = 0;
    // The name to save the project under.
    virtual std::optional<std::filesystem::path> projectToSave(const std::filesystem::path& startFolder) = 0;
    // Wave files to add, in the chooser's order; empty when cancelled.
    virtual std::vector<std::filesystem::path> waveFiles(const std::filesystem::path& startFolder) = 0;
    // A folder ("Choose Directory").
    virtual std::optional<std::filesystem::path> folder(const std::filesystem::path& startFolder) = 0;
};

class QtFileChooser : public FileChooser {
public:
    explicit QtFileChooser(QWidget* parent)
        : m_parent(parent)
    {}

    std::optional<std::filesystem::path> projectToOpen(const std::filesystem::path& startFolder) override;
    std::optional<std::filesystem::path> projectToSave(const std::filesystem::path& startFolder) override;
    std::vector<std::filesystem::path> waveFiles(const std::filesystem::path& startFolder) override;
    std::optional<std::filesystem::path> folder(const std::filesystem::path& startFolder) override;

private:
    QWidget* m_parent;
};

// Path conversions at the Qt boundary (UTF-8 on every platform).
QString qtPath(const std::filesystem::path& path);
std::filesystem::path stdPath(const QString& path);

} // namespace kestrelon
