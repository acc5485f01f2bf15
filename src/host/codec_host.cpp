#include "host/codec_host.h"

#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"
#include "host/host_windows.h"

#include <charconv>
#include <system_error>
#include <utility>

namespace kestrelon {

namespace {

void appendToString(void* context, const char* utf8, size_t length)
{
    if (utf8 != nullptr && length != 0)
        static_cast<std::string*>(context)->append(utf8, length);
}

// "%x": lower-case hex without prefix.
std::string hexText(std::uint64_t value)
{
    char buffer[32];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value, 16).ptr;
    return std::string(buffer, end);
}

void makeCurrentFolder(const std::filesystem::path& folder)
{
    // A folder that cannot be entered leaves the current folder as it is: the
    // load that follows names its library by absolute path either way.
    std::error_code ignored;
    std::filesystem::current_path(folder, ignored);
}

} // namespace

CodecFamily codecFamilyOf(std::string_view algorithmName)
{
    if (startsWithNoCase(algorithmName, "V480"))
        return CodecFamily::V480;
    if (startsWithNoCase(algorithmName, "V530"))
        return CodecFamily::V530;
    if (startsWithNoCase(algorithmName, "V720"))
        return CodecFamily::V720;
    return CodecFamily::Other;
}

std::string_view fixedBitRateOf(CodecFamily family)
{
    switch (family) {
    case CodecFamily::V530: return "5.3K";
    case CodecFamily::V720: return "7.2K";
    default: return {};
    }
}

std::string normalizeNamePart(std::string part)
{
    // Kept exactly as the program has always done it: it looks at everything
    // but the first character, not at the last one.
    const std::string_view tail = part.empty() ? std::string_view() : std::string_view(part).substr(1);
    if (!equalsNoCase(tail, "_"))
        part += '_';
    return part;
}

CodecHost::CodecHost(std::filesystem::path programFolder, UserPort& port, MainHostWindow& mainWindow)
    : m_programFolder(std::move(programFolder))
    , m_port(port)
    , m_mainWindow(mainWindow)
{}

CodecHost::~CodecHost()
{
    releaseAlgorithm();
}

bool CodecHost::loadAlgorithm(const std::filesystem::path& projectFolder, std::string_view libraryName,
                              std::string_view bitRate)
{
    // Joined as text: a name that looks absolute must not replace the project.
    return loadAlgorithmPath(joinModel(projectFolder, "Algos\\" + std::string(libraryName)), bitRate);
}

bool CodecHost::loadAlgorithmPath(const std::filesystem::path& givenPath, std::string_view bitRate)
{
    // Taken as absolute before the current folder moves, so a relative path
    // still names the file the caller meant; the body file path handed to the
    // codec is a full path too.
    std::error_code ec;
    std::filesystem::path path = std::filesystem::absolute(givenPath, ec);
    if (ec)
        path = givenPath;
    const std::string pathText = utf8FromPath(path);

    // A codec still loaded is dropped without destroying its object: the
    // object is abandoned together with the code it would need to destroy it.
    if (m_library.isLoaded()) {
        m_library.unload();
        m_codec = nullptr;
        m_lastExport = nullptr;
    }

    // The codec finds its own companion files in its folder.
    makeCurrentFolder(path.parent_path());
    if (!m_library.load(path)) {
        m_port.showMessage(pathText + std::string(msg::kLoadedUnsuccessful));
        return false;
    }

    m_lastExport = m_library.symbol(KESTRELON_CODEC_CREATE_SYMBOL);
    if (m_lastExport == nullptr) {
        m_port.showMessage(pathText + std::string(msg::kNotACorrectAlgorithm));
        releaseAlgorithm();
        return false;
    }
    reinterpret_cast<kestrelon_codec_factory>(m_lastExport)(&m_codec);
    if (m_codec == nullptr)
        return false; // stays loaded until the next load or release

    // An object built against another contract (or none) is not called at
    // all; it is handed back to its library to be destroyed.
    if (m_codec->vtable == nullptr || m_codec->abi_version != KESTRELON_PLUGIN_ABI_VERSION) {
        m_port.showMessage(pathText + std::string(msg::kNotACorrectAlgorithm));
        releaseAlgorithm();
        return false;
    }

    // The body file is checked before the codec is told anything.
    std::filesystem::path bodyPath = path;
    bodyPath.replace_extension(".bdy");
    const std::string bodyText = utf8FromPath(bodyPath);
    if (!std::filesystem::exists(bodyPath, ec)) {
        m_port.showMessage(std::string(msg::kBodyFileOfPrefix) + bodyText + std::string(msg::kBodyFileMissingSuffix));
        releaseAlgorithm();
        return false;
    }
    if (!setParameter(KESTRELON_PARAM_BODY_FILE, bodyText)) {
        releaseAlgorithm();
        return false;
    }

    if (!bitRate.empty()) {
        const std::string_view fixed = fixedBitRateOf(codecFamilyOf(utf8FromPath(path.stem())));
        if (!setParameter(KESTRELON_PARAM_BIT_RATE, std::string(fixed.empty() ? bitRate : fixed))) {
            releaseAlgorithm();
            return false;
        }
    }

    const auto windowAddress = reinterpret_cast<uintptr_t>(m_mainWindow.window());
    if (!setParameter(KESTRELON_PARAM_MAIN_WINDOW, hexText(windowAddress)) ||
        !setParameter(KESTRELON_PARAM_STEP_MESSAGE, hexText(KESTRELON_STEP_MESSAGE))) {
        releaseAlgorithm();
        return false;
    }
    return true;
}

bool CodecHost::releaseAlgorithm()
{
    if (m_library.isLoaded()) {
        if (m_codec != nullptr) {
            m_lastExport = m_library.symbol(KESTRELON_CODEC_DESTROY_SYMBOL);
            // Without the export the object cannot be destroyed; it is
            // abandoned rather than freed by a host that did not make it.
            if (m_lastExport != nullptr)
                reinterpret_cast<kestrelon_codec_factory>(m_lastExport)(&m_codec);
            m_codec = nullptr;
        }
        m_lastExport = nullptr;
        // Unloaded after every row rather than kept: a codec library may keep
        // process-wide state (libcodec2's random generator does), and a row's
        // bytes must not depend on the rows a worker did before it.
        m_library.unload();
    }
    makeCurrentFolder(m_programFolder);
    return true;
}

bool CodecHost::checkResult(uint32_t code)
{
    if (code == KESTRELON_RESULT_OK)
        return true;
    if (code > 0xFFFFu) {
        // Not a 16-bit code at all: a broken codec, named by what it returned.
        m_port.showMessage(hexText(code));
        return false;
    }
    if (code < KESTRELON_RESULT_ERROR || code == KESTRELON_RESULT_SILENT_ERROR)
        return false;

    std::string text;
    if (const auto errorText = slot(&kestrelon_codec_vtable::get_error_text)) {
        const kestrelon_string_sink sink{&text, &appendToString};
        errorText(m_codec, static_cast<uint16_t>(code), &sink);
    }
    m_port.showMessage(text.empty() ? hexText(code) : text);
    return false;
}

bool CodecHost::encode(const std::filesystem::path& wave, const std::filesystem::path& output,
                       const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText)
{
    const auto call = slot(&kestrelon_codec_vtable::encode);
    if (call == nullptr)
        return false;
    return checkResult(
        call(m_codec, utf8FromPath(wave).c_str(), utf8FromPath(output).c_str(), progressBar, progressText));
}

bool CodecHost::decode(const std::filesystem::path& encoded, const std::filesystem::path& wave,
                       const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText)
{
    const auto call = slot(&kestrelon_codec_vtable::decode);
    if (call == nullptr)
        return false;
    return checkResult(
        call(m_codec, utf8FromPath(encoded).c_str(), utf8FromPath(wave).c_str(), progressBar, progressText));
}

bool CodecHost::checkAlgorithm()
{
    const auto call = slot(&kestrelon_codec_vtable::check_algorithm);
    return call != nullptr && checkResult(call(m_codec));
}

bool CodecHost::encodeStep(int32_t& work)
{
    const auto call = slot(&kestrelon_codec_vtable::encode_step);
    if (call == nullptr)
        return false;
    call(m_codec, &work);
    return true;
}

bool CodecHost::beginStep(int32_t value)
{
    const auto call = slot(&kestrelon_codec_vtable::begin_step);
    return call != nullptr && checkResult(call(m_codec, value));
}

bool CodecHost::getInfo(kestrelon_codec_info& info)
{
    const auto call = slot(&kestrelon_codec_vtable::get_info);
    if (call == nullptr)
        return false;
    info = kestrelon_codec_info{};
    info.struct_size = sizeof(kestrelon_codec_info);
    return checkResult(call(m_codec, &info));
}

bool CodecHost::getRanges(kestrelon_range& sampleRates, kestrelon_range& bitRates)
{
    const auto call = slot(&kestrelon_codec_vtable::get_ranges);
    if (call == nullptr)
        return false;
    sampleRates = kestrelon_range{};
    bitRates = kestrelon_range{};
    return checkResult(call(m_codec, &sampleRates, &bitRates));
}

bool CodecHost::getVersion(uint32_t& version)
{
    const auto call = slot(&kestrelon_codec_vtable::get_version);
    if (call == nullptr)
        return false;
    version = 0;
    return checkResult(call(m_codec, &version));
}

bool CodecHost::getFileValue(const std::filesystem::path& path, int32_t& value)
{
    const auto call = slot(&kestrelon_codec_vtable::get_file_value);
    if (call == nullptr)
        return false;
    value = call(m_codec, utf8FromPath(path).c_str());
    return true;
}

bool CodecHost::stringResult(kestrelon_result (*kestrelon_codec_vtable::*member)(kestrelon_codec*,
                                                                                 const kestrelon_string_sink*),
                             std::string& text)
{
    text.clear();
    const auto call = slot(member);
    if (call == nullptr)
        return false;
    const kestrelon_string_sink sink{&text, &appendToString};
    return checkResult(call(m_codec, &sink));
}

bool CodecHost::outputExtension(std::string& extension)
{
    return stringResult(&kestrelon_codec_vtable::get_output_extension, extension);
}

bool CodecHost::outputTag(std::string& tag)
{
    return stringResult(&kestrelon_codec_vtable::get_output_tag, tag);
}

bool CodecHost::getDescription(std::string& description)
{
    return stringResult(&kestrelon_codec_vtable::get_description, description);
}

bool CodecHost::setParameter(int32_t id, const std::string& value)
{
    const auto call = slot(&kestrelon_codec_vtable::set_parameter);
    return call != nullptr && checkResult(call(m_codec, id, value.c_str()));
}

bool CodecHost::setEventFile(const std::filesystem::path& path)
{
    const auto call = slot(&kestrelon_codec_vtable::set_event_file);
    // An empty path means "no events" and goes over as "".
    return call != nullptr && checkResult(call(m_codec, utf8FromPath(path).c_str()));
}

bool CodecHost::getTempFileInfo(int32_t& value)
{
    const auto call = slot(&kestrelon_codec_vtable::get_temp_file_info);
    if (call == nullptr)
        return false;
    value = 0;
    return checkResult(call(m_codec, &value));
}

} // namespace kestrelon
