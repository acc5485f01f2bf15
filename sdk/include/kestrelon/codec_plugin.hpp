// C++ helper for writing a Kestrelon codec plug-in: derive from
// kestrelon::sdk::Codec, override what the codec does, and name the class once
// with KESTRELON_CODEC_PLUGIN(MyCodec). The helper fills the C table, turns
// strings and host windows into C++ types, and keeps exceptions from crossing
// into the host (an escaping exception becomes error 0x8001 with its text).
#pragma once

#include "kestrelon/codec_plugin.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

namespace kestrelon::sdk {

// A host window handed to the plug-in; every call is a no-op when the host
// gave none or left the callback unset.
class HostWindow {
public:
    HostWindow(const kestrelon_host_window* window = nullptr) : m_window(window) {}

    // The main window arrives as a parameter holding its address in hex.
    static HostWindow fromParameter(std::string_view hex)
    {
        const std::string text(hex);
        const unsigned long long address = std::strtoull(text.c_str(), nullptr, 16);
        return HostWindow(reinterpret_cast<const kestrelon_host_window*>(static_cast<uintptr_t>(address)));
    }

    void setRange(int32_t low, int32_t high) const
    {
        if (m_window && m_window->set_range) m_window->set_range(m_window->context, low, high);
    }
    void setPosition(int32_t position) const
    {
        if (m_window && m_window->set_position) m_window->set_position(m_window->context, position);
    }
    void setText(const std::string& text) const
    {
        if (m_window && m_window->set_text) m_window->set_text(m_window->context, text.c_str());
    }
    void post(uint32_t message) const
    {
        if (m_window && m_window->post_message) m_window->post_message(m_window->context, message, 0, 0);
    }
    // True once the person asked the running operation to stop.
    bool shouldStop() const { return kestrelon_should_stop(m_window) != 0; }

private:
    const kestrelon_host_window* m_window;
};

// Result codes, as 16-bit values.
enum Result : uint16_t {
    Ok = KESTRELON_RESULT_OK,
    Failed = KESTRELON_RESULT_FAILED,
    ErrorWithText = 0x8001, // the text comes from errorText()
    Stopped = KESTRELON_RESULT_STOPPED, // the host asked to stop; nothing was written
};

class Codec : public kestrelon_codec {
public:
    Codec() : kestrelon_codec{&s_table, KESTRELON_PLUGIN_ABI_VERSION} {}
    virtual ~Codec() = default;
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    virtual uint16_t encode(const std::string& wavePath, const std::string& outputPath, HostWindow progressBar,
                            HostWindow progressText) = 0;
    virtual uint16_t decode(const std::string& encodedPath, const std::string& wavePath, HostWindow progressBar,
                            HostWindow progressText) = 0;
    virtual uint16_t checkAlgorithm() { return Ok; }
    virtual uint16_t encodeStep(int32_t& /*work*/) { return Ok; }
    virtual uint16_t beginStep(int32_t /*value*/) { return Ok; }
    virtual uint16_t getInfo(kestrelon_codec_info& info) = 0;
    virtual uint16_t getRanges(kestrelon_range& sampleRates, kestrelon_range& bitRates) = 0;
    virtual uint32_t version() const = 0; // major << 16 | minor
    virtual int32_t fileValue(const std::string& /*path*/) { return 0; }
    virtual std::string errorText(uint16_t code) { return code == ErrorWithText ? m_lastError : std::string(); }
    virtual std::string outputExtension() = 0;
    virtual std::string outputTag() { return {}; }
    virtual std::string description() = 0;
    // Keeps parameters 0 to 3; override to refuse a bit rate.
    virtual uint16_t setParameter(int32_t id, const std::string& value)
    {
        switch (id) {
        case KESTRELON_PARAM_BODY_FILE: m_bodyFile = value; return Ok;
        case KESTRELON_PARAM_MAIN_WINDOW: m_mainWindow = HostWindow::fromParameter(value); return Ok;
        case KESTRELON_PARAM_STEP_MESSAGE: m_stepMessage = uint32_t(std::strtoul(value.c_str(), nullptr, 16)); return Ok;
        case KESTRELON_PARAM_BIT_RATE: m_bitRate = value; return Ok;
        default: return Failed;
        }
    }
    virtual uint16_t tempFileInfo(int32_t& value) { value = 0; return Ok; }
    virtual uint16_t setEventFile(const std::string& path) { m_eventFile = path; return Ok; }

protected:
    const std::string& bodyFile() const { return m_bodyFile; }
    const std::string& bitRate() const { return m_bitRate; }
    const std::string& eventFile() const { return m_eventFile; }
    // Tells the main window that one step of work is done.
    void stepDone() const { m_mainWindow.post(m_stepMessage); }
    // Returns ErrorWithText; the host then shows `text`.
    uint16_t fail(std::string text)
    {
        m_lastError = std::move(text);
        return ErrorWithText;
    }

private:
    static Codec* self(kestrelon_codec* c) { return static_cast<Codec*>(c); }
    static std::string str(const char* s) { return s ? std::string(s) : std::string(); }
    static void put(const kestrelon_string_sink* sink, const std::string& text)
    {
        if (sink && sink->write) sink->write(sink->context, text.data(), text.size());
    }
    template <typename F>
    static kestrelon_result guarded(kestrelon_codec* c, F&& f)
    {
        try {
            return f(self(c));
        } catch (const std::exception& e) {
            return self(c)->fail(e.what());
        } catch (...) {
            return self(c)->fail("unexpected failure");
        }
    }

    static kestrelon_result encodeThunk(kestrelon_codec* c, const char* in, const char* out,
                                        const kestrelon_host_window* bar, const kestrelon_host_window* text)
    {
        return guarded(c, [&](Codec* s) { return s->encode(str(in), str(out), bar, text); });
    }
    static kestrelon_result decodeThunk(kestrelon_codec* c, const char* in, const char* out,
                                        const kestrelon_host_window* bar, const kestrelon_host_window* text)
    {
        return guarded(c, [&](Codec* s) { return s->decode(str(in), str(out), bar, text); });
    }
    static kestrelon_result checkThunk(kestrelon_codec* c)
    {
        return guarded(c, [](Codec* s) { return s->checkAlgorithm(); });
    }
    static kestrelon_result encodeStepThunk(kestrelon_codec* c, int32_t* work)
    {
        return guarded(c, [&](Codec* s) {
            int32_t value = work ? *work : 0;
            const uint16_t r = s->encodeStep(value);
            if (work) *work = value;
            return r;
        });
    }
    static kestrelon_result beginStepThunk(kestrelon_codec* c, int32_t value)
    {
        return guarded(c, [&](Codec* s) { return s->beginStep(value); });
    }
    static kestrelon_result infoThunk(kestrelon_codec* c, kestrelon_codec_info* info)
    {
        return guarded(c, [&](Codec* s) { return info ? s->getInfo(*info) : uint16_t(Failed); });
    }
    static kestrelon_result rangesThunk(kestrelon_codec* c, kestrelon_range* first, kestrelon_range* second)
    {
        return guarded(c, [&](Codec* s) { return first && second ? s->getRanges(*first, *second) : uint16_t(Failed); });
    }
    static kestrelon_result versionThunk(kestrelon_codec* c, uint32_t* version)
    {
        return guarded(c, [&](Codec* s) {
            if (!version) return uint16_t(Failed);
            *version = s->version();
            return uint16_t(Ok);
        });
    }
    static int32_t fileValueThunk(kestrelon_codec* c, const char* path)
    {
        try {
            return self(c)->fileValue(str(path));
        } catch (...) {
            return 0;
        }
    }
    static void errorTextThunk(kestrelon_codec* c, uint16_t code, const kestrelon_string_sink* sink)
    {
        try {
            put(sink, self(c)->errorText(code));
        } catch (...) {
        }
    }
    static kestrelon_result extensionThunk(kestrelon_codec* c, const kestrelon_string_sink* sink)
    {
        return guarded(c, [&](Codec* s) { put(sink, s->outputExtension()); return uint16_t(Ok); });
    }
    static kestrelon_result tagThunk(kestrelon_codec* c, const kestrelon_string_sink* sink)
    {
        return guarded(c, [&](Codec* s) { put(sink, s->outputTag()); return uint16_t(Ok); });
    }
    static kestrelon_result descriptionThunk(kestrelon_codec* c, const kestrelon_string_sink* sink)
    {
        return guarded(c, [&](Codec* s) { put(sink, s->description()); return uint16_t(Ok); });
    }
    static kestrelon_result parameterThunk(kestrelon_codec* c, int32_t id, const char* value)
    {
        return guarded(c, [&](Codec* s) { return s->setParameter(id, str(value)); });
    }
    static kestrelon_result tempFileInfoThunk(kestrelon_codec* c, int32_t* value)
    {
        return guarded(c, [&](Codec* s) {
            int32_t v = 0;
            const uint16_t r = s->tempFileInfo(v);
            if (value) *value = v;
            return r;
        });
    }
    static kestrelon_result eventFileThunk(kestrelon_codec* c, const char* path)
    {
        return guarded(c, [&](Codec* s) { return s->setEventFile(str(path)); });
    }

    static const kestrelon_codec_vtable s_table;

    std::string m_bodyFile;
    std::string m_bitRate;
    std::string m_eventFile;
    std::string m_lastError;
    HostWindow m_mainWindow;
    uint32_t m_stepMessage = KESTRELON_STEP_MESSAGE;
};

inline const kestrelon_codec_vtable Codec::s_table = {
    nullptr,           Codec::encodeThunk,    Codec::decodeThunk,      Codec::checkThunk,
    Codec::encodeStepThunk, Codec::beginStepThunk, Codec::infoThunk,   Codec::rangesThunk,
    Codec::versionThunk,    nullptr,          Codec::fileValueThunk,   Codec::errorTextThunk,
    Codec::extensionThunk,  Codec::tagThunk,  nullptr,                 Codec::descriptionThunk,
    nullptr,           Codec::parameterThunk, Codec::tempFileInfoThunk, Codec::eventFileThunk,
};

} // namespace kestrelon::sdk

// Defines the two exports of a codec plug-in for the class `CodecClass`.
#define KESTRELON_CODEC_PLUGIN(CodecClass)                                                                     \
    extern "C" KESTRELON_EXPORT void GetDllClassObject(kestrelon_codec** object)                               \
    {                                                                                                          \
        if (!object) return;                                                                                   \
        try {                                                                                                  \
            *object = new CodecClass();                                                                        \
        } catch (...) {                                                                                        \
            *object = nullptr;                                                                                 \
        }                                                                                                      \
    }                                                                                                          \
    extern "C" KESTRELON_EXPORT void DelDllClassObject(kestrelon_codec** object)                               \
    {                                                                                                          \
        if (!object || !*object) return;                                                                       \
        delete static_cast<kestrelon::sdk::Codec*>(*object);                                                   \
        *object = nullptr;                                                                                     \
    }
