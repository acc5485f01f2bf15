// Any bytes given to the ini document: parsing, look-ups, the integer
// accessor and an edit never crash, text written once reads back to the same
// text, and an edited value reads back as written.
#include "common/ini_document.h"
#include "common/recording_port.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace kestrelon;

namespace {

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\r'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

// (section, key) pairs as a reader of the text would see them; an
// approximation is enough, it only steers the look-ups to names that exist.
std::vector<std::pair<std::string, std::string>> namesIn(std::string_view text)
{
    std::vector<std::pair<std::string, std::string>> names;
    std::string section;
    while (!text.empty() && names.size() < 64) {
        const size_t end = text.find('\n');
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.size() >= 2 && line.front() == '[' && line.back() == ']')
            section = std::string(line.substr(1, line.size() - 2));
        else if (const size_t eq = line.find('='); eq != std::string_view::npos && line.front() != ';')
            names.emplace_back(section, std::string(trimmed(line.substr(0, eq))));
    }
    return names;
}

void check(bool condition)
{
    if (!condition)
        std::abort();
}

// serialize(parse(serialize(x))) == serialize(x)
std::string stableText(const IniDocument& doc)
{
    const std::string text = doc.serialize();
    IniDocument reread;
    reread.parse(text);
    check(reread.serialize() == text);
    return text;
}

bool holdsLineBreak(std::string_view text)
{
    return text.find_first_of("\r\n") != std::string_view::npos;
}

// A key that a key line can hold and give back as written.
bool plainKey(std::string_view key)
{
    return !holdsLineBreak(key) && trimmed(key) == key && key.find('=') == std::string_view::npos &&
           (key.empty() || (key.front() != '[' && key.front() != ';'));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const auto pick = input.ConsumeIntegral<std::uint8_t>();
    const auto number = input.ConsumeIntegral<int>();
    const std::string value = input.ConsumeRandomLengthString(64);
    const std::string text = input.ConsumeRemainingBytesAsString();

    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });
    IniDocument doc;
    doc.parse(text);
    // Text with one kind of line end comes back byte for byte.
    if (text.find('\r') == std::string::npos || text.find('\n') == std::string::npos)
        check(doc.serialize() == text);
    stableText(doc);

    auto names = namesIn(text);
    for (const auto& [section, key] : names) {
        (void)doc.hasSection(section);
        (void)doc.value(section, key);
        (void)doc.getInt(section, key, -1, port);
        (void)doc.numberedValues(section, key.substr(0, key.size() / 2), {}, INT_MAX);
    }
    for (const std::string& section : doc.sectionNames())
        (void)doc.numberedSections(section.substr(0, section.size() / 2), INT_MAX);

    // Edit one key the text holds (or a new one), then check the result.
    const auto [section, key] =
        names.empty() ? std::pair<std::string, std::string>{"S", value} : names[pick % names.size()];
    doc.setString(section, key, value);
    const bool plain = !holdsLineBreak(section) && !holdsLineBreak(value) && plainKey(key);
    IniDocument reread;
    reread.parse(stableText(doc));
    if (plain) {
        check(doc.value(section, key) == std::string(trimmed(value)));
        check(reread.value(section, key) == doc.value(section, key));
    }

    doc.setInt(section, key, number);
    stableText(doc);
    if (plain) {
        const auto read = doc.getInt(section, key, 0, port);
        check(read.has_value() && *read == number);
    }
    return 0;
}
