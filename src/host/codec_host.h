#pragma once
// The holder of one codec plug-in: it loads the library, has it create its
// codec object, configures the object through the numbered string parameters,
// calls its operations and finally destroys the object and unloads the
// library. A holder has at most one codec at a time; every load first drops
// the previous one.
//
// Every user-facing failure is shown through the UserPort given at
// construction. Every call is made on the caller's thread, one at a time.
#include "common/dynamic_library.h"
#include "host/codec_runner.h"
#include "kestrelon/codec_plugin.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace kestrelon {

class MainHostWindow;
class UserPort;

// Codec families whose bit-rate parameter is fixed, told by the algorithm
// name (the library's base name) beginning with the family name, in any case.
enum class CodecFamily { Other, V480, V530, V720 };

CodecFamily codecFamilyOf(std::string_view algorithmName);
// The bit-rate parameter a family takes instead of the chosen one: "5.3K" for
// V530, "7.2K" for V720; empty for the others, which take the chosen rate.
std::string_view fixedBitRateOf(CodecFamily family);

// The name part the codec reports (its output tag), made ready for an output
// name: the part's last (length - 1) characters are compared with "_" without
// regard to case and, when they differ, one "_" is appended. So "" gives "_",
// "ab" gives "ab_", "abc_" gives "abc__"; only a two-character part ending
// in "_" stays as it is.
std::string normalizeNamePart(std::string part);

class CodecHost : public CodecRunner {
public:
    // `programFolder` becomes the current folder again whenever a codec is
    // released. `mainWindow` is handed to every codec as parameter 1 and must
    // outlive the host.
    CodecHost(std::filesystem::path programFolder, UserPort& port, MainHostWindow& mainWindow);
    // Releases whatever is loaded (and so restores the program folder as the
    // current folder).
    ~CodecHost() override;
    CodecHost(const CodecHost&) = delete;
    CodecHost& operator=(const CodecHost&) = delete;

    // Loads <project>/Algos/<libraryName> (the name carries the library
    // suffix) and configures it with `bitRate`, as loadAlgorithmPath.
    bool loadAlgorithm(const std::filesystem::path& projectFolder, std::string_view libraryName,
                       std::string_view bitRate);
    // Loads the codec library at `path`, creates its object and sets the body
    // file, the bit rate (when not empty), the main window and the progress
    // message. False after showing why, or silently when the library returned
    // no object (it then stays loaded until the next load or release).
    //
    // A library still loaded from before is unloaded WITHOUT destroying its
    // object first: that object is abandoned (leaked). Callers release a codec
    // when their work is done; the shortcut only bites a caller that forgets.
    bool loadAlgorithmPath(const std::filesystem::path& path, std::string_view bitRate) override;
    // Destroys the object through the library's DelDllClassObject and unloads
    // the library, if one is loaded; in every case the program folder becomes
    // the current folder again. Always true.
    bool releaseAlgorithm() override;

    // Maps a result code to success and shows the error text of codes from
    // 0x8000 up (the codec's own text, or the code in lower-case hex when the
    // text is empty). 0x8005 and codes below 0x8000 fail silently.
    bool checkResult(uint32_t code);

    bool isLoaded() const { return m_library.isLoaded(); }
    bool hasCodec() const { return m_codec != nullptr; }
    // The library's path as loaded (absolute), or empty.
    const std::filesystem::path& libraryPath() const { return m_library.path(); }
    const std::filesystem::path& programFolder() const { return m_programFolder; }
    UserPort& port() const { return m_port; }

    // The codec's operations. Each is false, without calling anything, when
    // no codec is loaded or the codec left the operation's slot empty;
    // otherwise the result code goes through checkResult.
    bool encode(const std::filesystem::path& wave, const std::filesystem::path& output,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool decode(const std::filesystem::path& encoded, const std::filesystem::path& wave,
                const kestrelon_host_window* progressBar, const kestrelon_host_window* progressText) override;
    bool checkAlgorithm();
    // One step of a step-wise encode; the codec's result is not looked at, so
    // this is false only when the call could not be made.
    bool encodeStep(int32_t& work);
    bool beginStep(int32_t value);
    bool getInfo(kestrelon_codec_info& info);
    bool getRanges(kestrelon_range& sampleRates, kestrelon_range& bitRates);
    bool getVersion(uint32_t& version);
    // Not a result code: the value itself. False only when the call could not
    // be made.
    bool getFileValue(const std::filesystem::path& path, int32_t& value);
    bool outputExtension(std::string& extension) override;
    // The tag exactly as the codec gives it; see normalizeNamePart.
    bool outputTag(std::string& tag) override;
    bool getDescription(std::string& description);
    bool setParameter(int32_t id, const std::string& value);
    bool setEventFile(const std::filesystem::path& path) override;
    bool getTempFileInfo(int32_t& value);

private:
    // The slot's function, or null when there is no codec or the slot is empty.
    template <typename Slot>
    Slot slot(Slot kestrelon_codec_vtable::*member) const
    {
        if (m_codec == nullptr || m_codec->vtable == nullptr)
            return nullptr;
        return m_codec->vtable->*member;
    }
    bool stringResult(kestrelon_result (*kestrelon_codec_vtable::*member)(kestrelon_codec*,
                                                                          const kestrelon_string_sink*),
                      std::string& text);

    std::filesystem::path m_programFolder;
    UserPort& m_port;
    MainHostWindow& m_mainWindow;

    DynamicLibrary m_library; // the module handle
    void* m_lastExport = nullptr; // GetDllClassObject or DelDllClassObject, as last looked up
    kestrelon_codec* m_codec = nullptr; // the codec object
};

} // namespace kestrelon
