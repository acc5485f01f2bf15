#include "bodies/body_settings.h"

#include "common/ini_document.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

#include <map>
#include <optional>
#include <unordered_map>
#include <utility>

namespace kestrelon {

namespace {

// What an algorithm's own section adds to an entry; nothing unless every
// piece down to CONFIG was read.
struct AlgorithmData {
    std::string dllDir;
    std::string pathName;
    std::vector<std::string> bitRates;
    int config = 0;
};

std::optional<AlgorithmData> readAlgorithmSection(const IniDocument& doc, const std::string& section, UserPort& port)
{
    AlgorithmData data;
    data.dllDir = doc.getString(section, "DLLDIR");
    if (data.dllDir.empty())
        return std::nullopt;
    data.pathName = doc.getString(section, "PATHNAME");
    if (data.pathName.empty())
        return std::nullopt;
    const auto bitRateCount = doc.getInt(section, "BITRATECOUNT", 0, port);
    if (!bitRateCount || *bitRateCount == 0)
        return std::nullopt;
    // Missing BITRATE<k> slots read as empty and are skipped, so walking only
    // the slots present reads the same as walking the whole count.
    for (auto& [k, bitRate] : doc.numberedValues(section, "BITRATE", "", *bitRateCount))
        if (!bitRate.empty())
            data.bitRates.push_back(std::move(bitRate));
    // Unlike the counts, CONFIG has no meaningful default: an entry whose
    // section lacks it is not complete.
    if (!doc.value(section, "CONFIG"))
        return std::nullopt;
    const auto config = doc.getInt(section, "CONFIG", 0, port);
    if (!config)
        return std::nullopt;
    data.config = *config;
    return data;
}

// A body as its own section describes it; nothing when ALGOCOUNT is missing,
// malformed or 0, and the body then keeps only its name.
std::optional<BodyInfo> readBodySection(const IniDocument& doc, const std::string& name, UserPort& port)
{
    BodyInfo body;
    body.name = name;
    // A malformed value shows "Invalid data!" and leaves the field at 0.
    const auto take = [&](std::string_view key, int& field) {
        if (const auto value = doc.getInt(name, key, 0, port))
            field = *value;
    };
    take("BODYID", body.bodyId);
    take("SAMPLERATE_MAX", body.sampleRateMax);
    take("SAMPLERATE_MIN", body.sampleRateMin);
    take("VOLUME_MAX", body.volumeMax);
    take("VOLUME_MIN", body.volumeMin);
    take("DEFAULT_VOL", body.defaultVolume);
    take("CURRENT_VOL", body.currentVolume);
    body.confirmedVolume = body.currentVolume;

    const auto algoCount = doc.getInt(name, "ALGOCOUNT", 0, port);
    if (!algoCount || *algoCount == 0)
        return std::nullopt;
    body.algoCount = *algoCount;

    std::map<int, std::string> sections;
    for (auto& [j, section] : doc.numberedValues(name, "ALGO", "_SECTION", *algoCount))
        sections.emplace(j, std::move(section));
    for (auto& [j, algoName] : doc.numberedValues(name, "ALGO", "", *algoCount)) {
        const auto section = sections.find(j);
        if (algoName.empty() || section == sections.end() || section->second.empty())
            continue;
        BodyAlgoInfo algo;
        algo.name = std::move(algoName);
        algo.section = section->second;
        body.algorithms.push_back(std::move(algo));
    }
    return body;
}

} // namespace

bool BodySettings::load(const std::filesystem::path& path, const std::filesystem::path& programFolder, UserPort& port)
{
    *this = BodySettings{};
    IniDocument doc;
    if (!doc.load(path)) {
        m_lastError = doc.lastError();
        return false;
    }
    const auto count = doc.getInt("BODY", "COUNT", 0, port);
    if (!count || *count == 0)
        return false;

    m_pcPlayDll = joinModel(programFolder, doc.getString("BODY", "PCPLAYDLL"));
    m_boardPlayDll = joinModel(programFolder, doc.getString("BODY", "BOARDPLAYDLL"));
    if (const auto baudRate = doc.getInt("BODY", "BAUDRATE", 0, port))
        m_baudRate = *baudRate;

    // Empty or missing BODY<i> slots are skipped: walking the slots present
    // reads the same as walking COUNT, however large COUNT is.
    for (auto& [i, name] : doc.numberedValues("BODY", "BODY", "", *count)) {
        if (name.empty())
            continue;
        BodyInfo body;
        body.name = std::move(name);
        m_bodies.push_back(std::move(body));
    }

    // Look-ups ignore case, so bodies (and algorithm entries) that name the
    // same section read the same data: each section is read once, and a
    // malformed number in it is reported once.
    // Every copy is counted before it is made.
    std::size_t records = 0;
    const auto withinBudget = [&](std::size_t more) {
        records += more;
        if (records <= kMaxBodySettingsRecords)
            return true;
        port.showMessage(msg::kInvalidData);
        *this = BodySettings{};
        return false;
    };
    if (!withinBudget(m_bodies.size()))
        return false;

    std::unordered_map<std::string, std::optional<BodyInfo>> bodySections;
    for (BodyInfo& body : m_bodies) {
        auto [cached, fresh] = bodySections.try_emplace(toUpperAscii(body.name));
        if (fresh)
            cached->second = readBodySection(doc, body.name, port);
        if (cached->second) {
            if (!withinBudget(cached->second->algorithms.size()))
                return false;
            const std::string name = std::move(body.name);
            body = *cached->second;
            body.name = name;
        }
    }

    std::unordered_map<std::string, std::optional<AlgorithmData>> algorithmSections;
    for (BodyInfo& body : m_bodies) {
        for (BodyAlgoInfo& algo : body.algorithms) {
            auto [cached, fresh] = algorithmSections.try_emplace(toUpperAscii(algo.section));
            if (fresh)
                cached->second = readAlgorithmSection(doc, algo.section, port);
            if (!cached->second)
                continue;
            if (!withinBudget(cached->second->bitRates.size()))
                return false;
            algo.dllDir = cached->second->dllDir;
            algo.pathName = cached->second->pathName;
            algo.bitRates = cached->second->bitRates;
            algo.config = cached->second->config;
        }
    }
    return true;
}

bool BodySettings::saveCurrentVolumes(const std::filesystem::path& path) const
{
    IniDocument doc;
    if (!doc.load(path))
        return false;
    const std::string before = doc.serialize();
    for (const BodyInfo& body : m_bodies)
        doc.setInt(body.name, "CURRENT_VOL", body.currentVolume);
    if (doc.serialize() == before)
        return true; // nothing changed: leave the file alone
    return doc.save(path);
}

const BodyInfo* BodySettings::findBody(std::string_view name) const
{
    for (const BodyInfo& body : m_bodies)
        if (body.name == name)
            return &body;
    return nullptr;
}

BodyInfo* BodySettings::findBody(std::string_view name)
{
    return const_cast<BodyInfo*>(std::as_const(*this).findBody(name));
}

} // namespace kestrelon
