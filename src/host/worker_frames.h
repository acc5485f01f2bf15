#pragma once
// The frames kestrelon-codec-worker and its host exchange over a pair of
// pipes (docs/codec-worker.md): a type byte, the payload's length as four
// little-endian bytes, then the payload. Strings travel as UTF-8; several
// strings in one payload are separated by a NUL byte.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrelon::worker {

// What the host asks. Each is answered by exactly one Answer frame, before
// which the worker may send any number of report frames.
enum class Ask : char {
    Load = 'L', // library path, bit rate
    EventFile = 'E', // path ("" for none)
    Encode = 'C', // wave path, output path
    Decode = 'D', // encoded path, wave path
    Extension = 'X', // -
    Tag = 'G', // -
    Release = 'R', // -
    Stop = 'S', // the answer to a StopQuestion: "1" to stop, "0" to go on
};

// What the worker reports.
enum class Report : char {
    Range = 'N', // low, high (decimal)
    Position = 'P', // position (decimal)
    Text = 'T', // progress text
    Step = 'W', // the codec posted its step message
    Message = 'M', // a message for the person
    StopQuestion = 'Q', // the codec asks whether to stop; the worker waits for Stop
    Answer = 'A', // "1" or "0", then (Extension, Tag) the text
};

struct Frame {
    char type = 0;
    std::string payload;
};

std::string encodeFrame(char type, std::string_view payload);
std::string joinFields(const std::vector<std::string>& fields);
std::vector<std::string> splitFields(std::string_view payload);

// Whole frames from a byte stream that arrives in pieces.
class FrameReader {
public:
    void feed(std::string_view bytes) { m_buffer.append(bytes); }
    // The next whole frame, or none yet.
    std::optional<Frame> next();

private:
    std::string m_buffer;
};

// Blocking writes and reads on a file descriptor; false when the other end is gone.
bool writeAll(int fd, std::string_view bytes);
bool writeFrame(int fd, char type, std::string_view payload);

} // namespace kestrelon::worker
