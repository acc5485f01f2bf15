#include "export/firmware_export.h"

#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "common/version.h"

#include <cctype>
#include <cstdio>
#include <set>

namespace kestrelon {

namespace fs = std::filesystem;

namespace {

constexpr std::uint32_t kMaxAlignment = 65536;
constexpr int kBytesPerLine = 12;

std::string upper(std::string_view text)
{
    std::string result(text);
    for (char& c : result)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return result;
}

// A C identifier from any text: letters, digits and '_' stay, anything else
// becomes '_'.
std::string identifierPart(std::string_view text)
{
    std::string result;
    for (unsigned char c : text)
        result += std::isalnum(c) && c < 0x80 ? static_cast<char>(std::tolower(c)) : '_';
    return result;
}

// Text safe inside a C comment: printable ASCII, and never a comment's end.
std::string commentText(std::string_view text)
{
    std::string result;
    for (unsigned char c : text)
        result += c >= 0x20 && c < 0x7F ? static_cast<char>(c) : '?';
    for (std::size_t at = result.find("*/"); at != std::string::npos; at = result.find("*/", at))
        result.replace(at, 2, "* /");
    return result;
}

unsigned long numberOr0(const std::string& text)
{
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos)
        return 0;
    return std::stoul(text);
}

std::uintmax_t dataBytesOf(const std::vector<ExportedFile>& files)
{
    std::uintmax_t total = 0;
    for (const ExportedFile& file : files)
        total += file.bytes.size();
    return total;
}

std::string settingsComment(const ExportedFile& file)
{
    return commentText(file.exportName) + ": " + commentText(file.algoName) + " at " + commentText(file.bitRate) +
           " bit/s for " + commentText(file.bodyName) + ", " + std::to_string(file.sampleRate) + " Hz, " +
           std::to_string(file.bytes.size()) + " bytes";
}

void putNumber(std::string& out, std::size_t at, std::uint32_t value, int size, bool bigEndian)
{
    for (int i = 0; i < size; ++i) {
        const int shift = 8 * (bigEndian ? size - 1 - i : i);
        out[at + static_cast<std::size_t>(i)] = static_cast<char>((value >> shift) & 0xFF);
    }
}

std::uintmax_t alignUp(std::uintmax_t value, std::uint32_t alignment)
{
    return (value + alignment - 1) / alignment * alignment;
}

} // namespace

std::optional<FirmwareFormat> firmwareFormatNamed(std::string_view name)
{
    if (name == "raw")
        return FirmwareFormat::Raw;
    if (name == "c")
        return FirmwareFormat::C;
    if (name == "image")
        return FirmwareFormat::Image;
    return std::nullopt;
}

std::string firmwareOptionsError(const FirmwareOptions& options)
{
    if (options.baseName.empty() || identifierPart(options.baseName) != options.baseName ||
        std::isdigit(static_cast<unsigned char>(options.baseName.front())))
        return "the base name must be a C identifier in lower case: " + options.baseName;
    if (options.alignment == 0 || options.alignment > kMaxAlignment || (options.alignment & (options.alignment - 1)))
        return "the alignment must be a power of two from 1 to 65536";
    return {};
}

std::vector<std::string> firmwareIdentifiers(const std::vector<ExportedFile>& files, std::string_view baseName)
{
    std::vector<std::string> names;
    std::set<std::string> taken; // upper case: the enum's names must differ too
    for (const ExportedFile& file : files) {
        const std::string stem = std::string(baseName) + "_" + identifierPart(fileStem(file.exportName));
        std::string name = stem;
        for (int n = 2; taken.count(upper(name)); ++n)
            name = stem + "_" + std::to_string(n);
        taken.insert(upper(name));
        names.push_back(name);
    }
    return names;
}

std::string firmwareCHeader(const std::vector<ExportedFile>& files, const FirmwareOptions& options)
{
    const std::string base = options.baseName;
    const std::string macro = upper(base);
    const std::vector<std::string> names = firmwareIdentifiers(files, base);
    std::string out;
    out += "/* " + base + ".h: speech data exported by Kestrelon " + std::string(kProgramVersion) + ", " +
           std::to_string(files.size()) + " item(s), " + std::to_string(dataBytesOf(files)) +
           " bytes. Made by the export: edit the project, not this file. */\n";
    out += "#ifndef " + macro + "_H\n#define " + macro + "_H\n\n#include <stdint.h>\n\n";
    out += "/* Where the arrays are placed: define it, e.g. as a section attribute, before\n"
           " * this header is included or on the compiler's command line. */\n";
    out += "#ifndef " + macro + "_STORAGE\n#define " + macro + "_STORAGE\n#endif\n\n";
    out += "/* The items, in export order. */\nenum " + base + "_item {\n";
    for (std::size_t i = 0; i < files.size(); ++i)
        out += "    " + upper(names[i]) + " = " + std::to_string(i) + ", /* " + settingsComment(files[i]) + " */\n";
    out += "    " + macro + "_COUNT = " + std::to_string(files.size()) + "\n};\n\n";
    for (std::size_t i = 0; i < files.size(); ++i)
        out += "#define " + upper(names[i]) + "_LENGTH " + std::to_string(files[i].bytes.size()) + "u\n";
    out += "#define " + macro + "_TOTAL_BYTES " + std::to_string(dataBytesOf(files)) + "u\n\n";
    out += "struct " + base +
           "_entry {\n    const uint8_t *data;\n    uint32_t length;\n"
           "    uint32_t sample_rate; /* Hz */\n    uint32_t bit_rate;    /* bit/s */\n};\n\n";
    out += "/* One entry per item, indexed by enum " + base + "_item. */\n";
    out += "extern const struct " + base + "_entry " + base + "_table[" + macro + "_COUNT];\n\n";
    out += "#endif /* " + macro + "_H */\n";
    return out;
}

std::string firmwareCSource(const std::vector<ExportedFile>& files, const FirmwareOptions& options)
{
    const std::string base = options.baseName;
    const std::string macro = upper(base);
    const std::vector<std::string> names = firmwareIdentifiers(files, base);
    std::string out = "/* " + base + ".c: speech data exported by Kestrelon " + std::string(kProgramVersion) +
                      ". Made by the export: edit the project, not this file. */\n#include \"" + base + ".h\"\n";
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string& bytes = files[i].bytes;
        out += "\n/* " + settingsComment(files[i]) + " */\n";
        // C has no empty arrays: an empty item keeps one byte that its length leaves out.
        out += "static " + macro + "_STORAGE const uint8_t " + names[i] + "[" +
               (bytes.empty() ? std::string("1") : upper(names[i]) + "_LENGTH") + "] = {";
        if (bytes.empty())
            out += "0";
        for (std::size_t at = 0; at < bytes.size(); ++at) {
            char hex[8];
            std::snprintf(hex, sizeof hex, "0x%02x", static_cast<unsigned char>(bytes[at]));
            out += at % kBytesPerLine == 0 ? "\n    " : " ";
            out += hex;
            if (at + 1 < bytes.size())
                out += ",";
        }
        out += bytes.empty() ? "};\n" : "\n};\n";
    }
    out += "\nconst struct " + base + "_entry " + base + "_table[" + macro + "_COUNT] = {\n";
    for (std::size_t i = 0; i < files.size(); ++i)
        out += "    {" + names[i] + ", " + upper(names[i]) + "_LENGTH, " + std::to_string(files[i].sampleRate) + "u, " +
               std::to_string(numberOr0(files[i].bitRate)) + "u},\n";
    if (files.empty())
        out += "    {0, 0, 0, 0}\n"; // an array of zero entries is not C either
    out += "};\n";
    return out;
}

std::string firmwareImage(const std::vector<ExportedFile>& files, bool headersKept, const FirmwareOptions& options)
{
    std::vector<std::uintmax_t> lengths;
    for (const ExportedFile& file : files)
        lengths.push_back(file.bytes.size());
    const std::vector<std::uintmax_t> offsets = firmwareImageLayout(lengths, options.alignment);
    std::string image(static_cast<std::size_t>(offsets.back()), static_cast<char>(options.padByte));
    image.replace(0, kFirmwareImageMagic.size(), kFirmwareImageMagic);
    const bool big = options.bigEndian;
    putNumber(image, 4, 1, 2, big);
    putNumber(image, 6, headersKept ? 1 : 0, 2, big);
    putNumber(image, 8, static_cast<std::uint32_t>(files.size()), 4, big);
    putNumber(image, 12, options.alignment, 4, big);
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::size_t entry = kFirmwareImageHeaderSize + kFirmwareImageEntrySize * i;
        putNumber(image, entry, static_cast<std::uint32_t>(offsets[i]), 4, big);
        putNumber(image, entry + 4, static_cast<std::uint32_t>(files[i].bytes.size()), 4, big);
        putNumber(image, entry + 8, files[i].sampleRate, 4, big);
        putNumber(image, entry + 12, static_cast<std::uint32_t>(numberOr0(files[i].bitRate)), 4, big);
        image.replace(static_cast<std::size_t>(offsets[i]), files[i].bytes.size(), files[i].bytes);
    }
    return image;
}

std::vector<std::uintmax_t> firmwareImageLayout(const std::vector<std::uintmax_t>& lengths, std::uint32_t alignment)
{
    std::vector<std::uintmax_t> offsets;
    std::uintmax_t end = kFirmwareImageHeaderSize + kFirmwareImageEntrySize * lengths.size();
    for (const std::uintmax_t length : lengths) {
        offsets.push_back(alignUp(end, alignment));
        end = offsets.back() + length;
    }
    offsets.push_back(end);
    return offsets;
}

FirmwareOutcome writeFirmwareFiles(const fs::path& folder, const std::vector<ExportedFile>& files, bool headersKept,
                                   const FirmwareOptions& options, UserPort& port)
{
    FirmwareOutcome outcome;
    outcome.dataBytes = dataBytesOf(files);
    std::vector<std::pair<fs::path, std::string>> contents;
    switch (options.format) {
    case FirmwareFormat::Raw: outcome.totalBytes = outcome.dataBytes; return outcome;
    case FirmwareFormat::C:
        contents.emplace_back(folder / pathFromUtf8(options.baseName + ".h"), firmwareCHeader(files, options));
        contents.emplace_back(folder / pathFromUtf8(options.baseName + ".c"), firmwareCSource(files, options));
        break;
    case FirmwareFormat::Image:
        contents.emplace_back(folder / pathFromUtf8(options.baseName + ".bin"),
                              firmwareImage(files, headersKept, options));
        break;
    }
    for (const auto& [path, bytes] : contents) {
        const std::string name = utf8FromPath(path.filename());
        if (entryExists(path) &&
            port.ask(std::string(msg::kTheExportFilePrefix) + name + std::string(msg::kReplaceItSuffix),
                     Buttons::YesNo) != Answer::Yes) {
            outcome.ok = false;
            outcome.error = name + " was kept: the export did not replace it";
            return outcome;
        }
        if (!writeFileAtomically(path, bytes)) {
            outcome.ok = false;
            outcome.error = utf8FromPath(path) + " could not be written";
            return outcome;
        }
        outcome.written.push_back(path);
        outcome.totalBytes += bytes.size();
    }
    return outcome;
}

} // namespace kestrelon
