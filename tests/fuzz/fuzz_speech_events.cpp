// Speech event files: what is read is sorted, at most 256 events, and comes
// back the same after it is written and read again.
#include "fuzz_file.h"
#include "wave/speech_events.h"

#include <algorithm>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace kestrelon;
    const auto path = fuzz::inputFile(data, size, "a.evt");
    SpeechEventList events;
    std::string label;
    if (!readSpeechEvents(path, events, label, fuzz::quietPort()))
        return 0;
    const auto before = [](const SpeechEvent& a, const SpeechEvent& b) { return a.samples < b.samples; };
    if (events.size() > std::size_t(kMaxReadSpeechEvents) || !std::is_sorted(events.begin(), events.end(), before))
        std::abort();
    SpeechEventList again;
    std::string labelAgain;
    if (!writeSpeechEvents(path, events, true, label) ||
        !readSpeechEvents(path, again, labelAgain, fuzz::quietPort()) || again.size() != events.size())
        std::abort();
    for (std::size_t i = 0; i < events.size(); ++i)
        if (again[i].samples != events[i].samples || again[i].id != events[i].id)
            std::abort();
    return 0;
}
