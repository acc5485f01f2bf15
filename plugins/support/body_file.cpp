#include "support/body_file.h"

#include "common/file_io.h"
#include "common/ini_document.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/recording_port.h"

#include <optional>

namespace kestrelon::support {

namespace {

constexpr std::string_view kSection = "CODEC";

class BodyReader {
public:
    BodyReader(const std::filesystem::path& path, std::string& error)
        : m_name(utf8FromPath(path.filename()))
        , m_error(error)
        , m_port([](std::string_view, Buttons, std::string_view) { return Answer::Cancel; })
    {}

    // A positive integer; anything else (missing, malformed, zero, negative)
    // fails naming the key.
    std::optional<int> positive(const IniDocument& doc, const std::string& key)
    {
        m_port.clear();
        const std::optional<int> value = doc.getInt(kSection, key, 0, m_port);
        if (!value || *value <= 0) {
            bad(key);
            return std::nullopt;
        }
        return value;
    }

    bool bad(const std::string& key)
    {
        m_error = m_name + std::string(msg::kCodecBodyBadValue) + key + std::string(msg::kCodecSuffix);
        return false;
    }

    bool unreadable()
    {
        m_error = m_name + std::string(msg::kCodecBodyUnreadable);
        return false;
    }

private:
    std::string m_name;
    std::string& m_error;
    // The ini reader reports malformed numbers through a port; here they only
    // make the value missing, and the codec's own text says which key.
    RecordingPort m_port;
};

} // namespace

bool readCodecBody(const std::filesystem::path& path, CodecBody& body, std::string& error)
{
    body = {};
    error.clear();
    BodyReader reader(path, error);
    const ReadResult read = readFile(path, kMaxBodyFileBytes);
    if (read.status != ReadStatus::Ok)
        return reader.unreadable();
    IniDocument doc;
    doc.parse(read.bytes);

    CodecBody result;
    result.name = doc.getString(kSection, "NAME");
    if (result.name.empty())
        return reader.bad("NAME");
    const std::optional<int> low = reader.positive(doc, "SAMPLERATE_MIN");
    if (!low)
        return false;
    const std::optional<int> high = reader.positive(doc, "SAMPLERATE_MAX");
    if (!high)
        return false;
    if (*high < *low)
        return reader.bad("SAMPLERATE_MAX");
    result.sampleRateMin = *low;
    result.sampleRateMax = *high;

    const std::optional<int> count = reader.positive(doc, "BITRATECOUNT");
    if (!count || *count > kMaxBodyBitRates)
        return count ? reader.bad("BITRATECOUNT") : false;
    for (int k = 0; k < *count; ++k) {
        const std::string bitRateKey = "BITRATE" + std::to_string(k);
        BodyOffer offer;
        offer.bitRate = doc.getString(kSection, bitRateKey);
        if (offer.bitRate.empty())
            return reader.bad(bitRateKey);
        const std::optional<int> rate = reader.positive(doc, "WORKRATE" + std::to_string(k));
        if (!rate)
            return false;
        offer.workingRate = *rate;
        result.offers.push_back(std::move(offer));
    }
    body = std::move(result);
    return true;
}

} // namespace kestrelon::support
