// ini_memory: what an ini document costs in memory, and how fast it reads.
//
// Two texts of the program's own forms are built in memory, with CR LF line
// ends and SECTIONS numbered sections each (300000 by default):
// - a play list: "SelectedItems" with Count, then "ItemN" sections with the
//   five keys of a play item (FileName, BodyName, AlgoName, BitRate, ItemID),
//   about 37 MB;
// - a speech event file: the label, "SPEECH_EVNTS" with Count, then "EVENTn"
//   sections with Samples, ID and (every other one) Description: short lines,
//   about 17 MB.
//
// Each text is parsed in this process; the heap the document holds is the
// change in glibc's mallinfo2() (arena bytes in use plus mmap'd blocks) from
// before parse to after it, and again after a look-up pass, which builds the
// section index. Both are printed as bytes held per byte of text. The look-up
// pass reads every key of every numbered section as the file's reader does.
// Times are the best of RUNS runs. Usage: ini_memory [SECTIONS] [RUNS].
#include "common/ini_document.h"
#include "common/recording_port.h"

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

using namespace kestrelon;

namespace {

std::string playListText(int items)
{
    std::string text = "[SelectedItems]\r\nCount=" + std::to_string(items) + "\r\n";
    static const char* const bodies[] = {"KS-1 Voice", "KS-2 Music", "KS-4 Dual"};
    static const char* const algorithms[] = {"ImaAdpcm", "Codec2", "Pcm8"};
    for (int i = 0; i < items; ++i) {
        const std::string n = std::to_string(i);
        text += "[Item" + n + "]\r\n";
        text += "FileName=Files\\Greetings\\phrase_" + n + ".wav\r\n";
        text += std::string("BodyName=") + bodies[i % 3] + "\r\n";
        text += std::string("AlgoName=") + algorithms[i % 3] + "\r\n";
        text += "BitRate=" + std::to_string(8000 * (1 + i % 4)) + "\r\n";
        text += "ItemID=" + n + "\r\n";
    }
    return text;
}

// A speech event file: a label, the count, then "EVENTn" sections with a
// position, an identifier and (for every other event) a description.
std::string speechEventText(int events)
{
    std::string text =
        "[TAG_LABEL]\r\nLabelName=Default Label\r\n[SPEECH_EVNTS]\r\nCount=" + std::to_string(events) + "\r\n";
    for (int i = 0; i < events; ++i) {
        const std::string n = std::to_string(i);
        text += "[EVENT" + n + "]\r\n";
        text += "Samples=" + std::to_string(160LL * i + 17) + "\r\n";
        text += "ID=" + std::to_string(i % 256) + "\r\n";
        if (i % 2 == 0)
            text += "Description=word " + n + "\r\n";
    }
    return text;
}

long long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks + info.hblkhd);
}

double millisecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Measure {
    double parseMs = 1e300;
    double lookupMs = 1e300;
    long long afterParse = 0;
    long long afterLookup = 0;
    long long checksum = 0;
    bool ok = true;
};

// Parses `text` RUNS times into a fresh document; `lookups` reads it as the
// file's reader does and returns a checksum of what it read.
template <typename Lookups>
Measure measure(const std::string& text, int runs, Lookups lookups)
{
    Measure m;
    for (int run = 0; run < runs; ++run) {
        malloc_trim(0);
        const long long before = heapInUse();
        auto doc = std::make_unique<IniDocument>();
        auto start = std::chrono::steady_clock::now();
        doc->parse(text);
        m.parseMs = std::min(m.parseMs, millisecondsSince(start));
        m.afterParse = heapInUse() - before;

        start = std::chrono::steady_clock::now();
        const long long sum = lookups(*doc);
        m.lookupMs = std::min(m.lookupMs, millisecondsSince(start));
        m.afterLookup = heapInUse() - before;
        if (run > 0 && sum != m.checksum)
            m.ok = false;
        m.checksum = sum;
    }
    return m;
}

void report(const char* name, const std::string& text, int sections, const Measure& m)
{
    const double bytes = static_cast<double>(text.size());
    std::printf("%-13s %8d %8.1f %10.2f %10.2f %9.1f %9.1f %9.2f  %lld\n", name, sections, bytes / 1e6,
                m.afterParse / bytes, m.afterLookup / bytes, m.parseMs, m.lookupMs, m.lookupMs * 1e3 / sections,
                m.checksum);
}

} // namespace

int main(int argc, char** argv)
{
    const int items = argc > 1 ? std::atoi(argv[1]) : 300000;
    const int runs = argc > 2 ? std::atoi(argv[2]) : 3;
    if (items <= 0 || items > 10000000 || runs <= 0) {
        std::fprintf(stderr, "usage: ini_memory [SECTIONS] [RUNS]\n");
        return 2;
    }
    RecordingPort port([](std::string_view, Buttons, std::string_view) { return Answer::No; });

    const std::string playList = playListText(items);
    const Measure list = measure(playList, runs, [&](const IniDocument& doc) {
        const int count = doc.getInt("SelectedItems", "Count", 0, port).value_or(0);
        long long sum = 0;
        for (const int n : doc.numberedSections("Item", count)) {
            const std::string section = "Item" + std::to_string(n);
            sum += static_cast<long long>(doc.getString(section, "FileName").size());
            sum += static_cast<long long>(doc.getString(section, "BodyName").size());
            sum += static_cast<long long>(doc.getString(section, "AlgoName").size());
            sum += static_cast<long long>(doc.getString(section, "BitRate").size());
            sum += doc.getInt(section, "ItemID", 0, port).value_or(0);
        }
        return sum;
    });

    const std::string events = speechEventText(items);
    const Measure evt = measure(events, runs, [&](const IniDocument& doc) {
        const int count = doc.getInt("SPEECH_EVNTS", "Count", 0, port).value_or(0);
        long long sum = static_cast<long long>(doc.getString("TAG_LABEL", "LabelName").size());
        for (int n = 0; n < count; ++n) {
            const std::string section = "EVENT" + std::to_string(n);
            sum += doc.getInt(section, "Samples", 1, port).value_or(0);
            sum += doc.getInt(section, "ID", 1, port).value_or(0);
            sum += static_cast<long long>(doc.getString(section, "Description").size());
        }
        return sum;
    });

    std::printf("ini_memory: best of %d runs; heap is bytes held per byte of text\n", runs);
    std::printf("%-13s %8s %8s %10s %10s %9s %9s %9s  %s\n", "file", "sections", "MB", "heap parse", "heap index",
                "parse ms", "look ms", "us/sect", "checksum");
    report("play list", playList, items, list);
    report("speech events", events, items, evt);
    if (!list.ok || !evt.ok) {
        std::fprintf(stderr, "ini_memory: runs read different values\n");
        return 1;
    }
    return 0;
}
