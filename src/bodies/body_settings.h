#pragma once
// The body settings file "KestrelonBodySetting.dat" in the program folder: the
// player plug-ins, the board's baud rate and every body with its algorithms.
// Read once at start-up; only the current volumes are ever written back.
#include "bodies/body_info.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon {

class UserPort;

inline constexpr std::string_view kBodySettingsFileName = "KestrelonBodySetting.dat";

// Bodies and entries that name the same section each get a copy of its data,
// so a small file could describe billions of records. A file describing more
// than this many (bodies + algorithm entries + bit rates) is refused.
inline constexpr std::size_t kMaxBodySettingsRecords = 1'000'000;

class BodySettings {
public:
    // Reads the file. Fails when the file cannot be read, when BODY/COUNT is
    // missing, malformed ("Invalid data!" through `port`) or 0, or when the
    // file describes more than kMaxBodySettingsRecords records ("Invalid
    // data!"); the settings are then empty. Bodies and algorithm entries with incomplete data are
    // kept with what could be read. Player plug-in names are taken relative to
    // `programFolder`.
    bool load(const std::filesystem::path& path, const std::filesystem::path& programFolder, UserPort& port);
    // The reader's error text when the file exists but could not be read.
    const std::string& lastError() const { return m_lastError; }

    // Rewrites CURRENT_VOL of every body in the file at `path`; every other
    // byte of the file stays as it is.
    bool saveCurrentVolumes(const std::filesystem::path& path) const;

    const std::filesystem::path& pcPlayDll() const { return m_pcPlayDll; }
    const std::filesystem::path& boardPlayDll() const { return m_boardPlayDll; }
    int baudRate() const { return m_baudRate; }

    const std::vector<BodyInfo>& bodies() const { return m_bodies; }
    std::vector<BodyInfo>& bodies() { return m_bodies; }
    // The first body of that name (exact text), or null.
    const BodyInfo* findBody(std::string_view name) const;
    BodyInfo* findBody(std::string_view name);

private:
    std::filesystem::path m_pcPlayDll;
    std::filesystem::path m_boardPlayDll;
    int m_baudRate = 0;
    std::vector<BodyInfo> m_bodies;
    std::string m_lastError;
};

} // namespace kestrelon
