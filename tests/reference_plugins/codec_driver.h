#pragma once
// Drives a codec plug-in through its C contract alone, as a host would: loads
// the library from the program's Algorithms folder, creates the object,
// passes strings in and collects what comes out, and records what the codec
// does to the progress bar and the main window.
#include "common/dynamic_library.h"
#include "common/paths.h"
#include "kestrelon/codec_plugin.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace kestrelon::test {

inline const std::filesystem::path kCodecDir = KESTRELON_CODEC_DIR;

// What a codec did to one host window.
struct WindowLog {
    std::vector<std::pair<int, int>> ranges;
    std::vector<int> positions;
    std::vector<uint32_t> messages;

    kestrelon_host_window window()
    {
        kestrelon_host_window w{};
        w.struct_size = sizeof(w);
        w.context = this;
        w.set_range = [](void* c, int32_t low, int32_t high) {
            static_cast<WindowLog*>(c)->ranges.push_back({low, high});
        };
        w.set_position = [](void* c, int32_t p) { static_cast<WindowLog*>(c)->positions.push_back(p); };
        w.post_message = [](void* c, uint32_t m, uintptr_t, intptr_t) {
            static_cast<WindowLog*>(c)->messages.push_back(m);
        };
        return w;
    }
};

class CodecDriver {
public:
    explicit CodecDriver(const std::string& name)
        : m_name(name)
    {
        m_mainWindow = m_mainLog.window();
        const std::filesystem::path path = kCodecDir / libraryFileName(name);
        if (!m_library.load(path)) {
            ADD_FAILURE() << m_library.errorText();
            return;
        }
        const auto create = m_library.function<kestrelon_codec_factory>(KESTRELON_CODEC_CREATE_SYMBOL);
        if (!create) {
            ADD_FAILURE() << name << " has no " << KESTRELON_CODEC_CREATE_SYMBOL;
            return;
        }
        create(&m_codec);
        EXPECT_NE(m_codec, nullptr);
        if (m_codec) {
            EXPECT_EQ(m_codec->abi_version, KESTRELON_PLUGIN_ABI_VERSION);
            m_table = m_codec->vtable;
        }
    }
    ~CodecDriver()
    {
        if (m_codec)
            m_library.function<kestrelon_codec_factory>(KESTRELON_CODEC_DESTROY_SYMBOL)(&m_codec);
    }
    CodecDriver(const CodecDriver&) = delete;
    CodecDriver& operator=(const CodecDriver&) = delete;

    bool ready() const { return m_table != nullptr; }
    std::filesystem::path bodyFile() const { return kCodecDir / (m_name + ".bdy"); }

    uint32_t set(int32_t id, const std::string& value) { return m_table->set_parameter(m_codec, id, value.c_str()); }

    // Parameters 0 to 3 in the host's order; the first failing code, or 0.
    uint32_t configure(const std::string& bitRate, const std::filesystem::path& body = {})
    {
        char address[32];
        std::snprintf(address, sizeof address, "%llx",
                      static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(&m_mainWindow)));
        const std::pair<int32_t, std::string> parameters[] = {
            {KESTRELON_PARAM_BODY_FILE, utf8FromPath(body.empty() ? bodyFile() : body)},
            {KESTRELON_PARAM_BIT_RATE, bitRate},
            {KESTRELON_PARAM_MAIN_WINDOW, address},
            {KESTRELON_PARAM_STEP_MESSAGE, "403"},
        };
        for (const auto& [id, value] : parameters)
            if (const uint32_t code = set(id, value))
                return code;
        return 0;
    }

    uint32_t checkAlgorithm() { return m_table->check_algorithm(m_codec); }

    uint32_t setEventFile(const std::filesystem::path& path)
    {
        return m_table->set_event_file(m_codec, utf8FromPath(path).c_str());
    }

    uint32_t encode(const std::filesystem::path& wave, const std::filesystem::path& out)
    {
        const kestrelon_host_window bar = m_barLog.window();
        return m_table->encode(m_codec, utf8FromPath(wave).c_str(), utf8FromPath(out).c_str(), &bar, nullptr);
    }
    uint32_t decode(const std::filesystem::path& encoded, const std::filesystem::path& wave)
    {
        const kestrelon_host_window bar = m_barLog.window();
        return m_table->decode(m_codec, utf8FromPath(encoded).c_str(), utf8FromPath(wave).c_str(), &bar, nullptr);
    }

    std::string errorText(uint32_t code)
    {
        return text([&](auto sink) { m_table->get_error_text(m_codec, uint16_t(code), sink); });
    }
    std::string extension()
    {
        return text([&](auto sink) { m_table->get_output_extension(m_codec, sink); });
    }
    std::string tag()
    {
        return text([&](auto sink) { m_table->get_output_tag(m_codec, sink); });
    }
    std::string description()
    {
        return text([&](auto sink) { m_table->get_description(m_codec, sink); });
    }

    kestrelon_codec_info info()
    {
        kestrelon_codec_info out{};
        out.struct_size = sizeof out;
        EXPECT_EQ(m_table->get_info(m_codec, &out), 0u);
        return out;
    }
    std::pair<kestrelon_range, kestrelon_range> ranges()
    {
        kestrelon_range first{}, second{};
        EXPECT_EQ(m_table->get_ranges(m_codec, &first, &second), 0u);
        return {first, second};
    }
    uint32_t version()
    {
        uint32_t out = 0;
        EXPECT_EQ(m_table->get_version(m_codec, &out), 0u);
        return out;
    }
    int32_t fileValue(const std::filesystem::path& path)
    {
        return m_table->get_file_value(m_codec, utf8FromPath(path).c_str());
    }

    WindowLog& bar() { return m_barLog; }
    WindowLog& mainWindow() { return m_mainLog; }

private:
    template <typename Call>
    static std::string text(Call call)
    {
        std::string out;
        const kestrelon_string_sink sink{
            &out, [](void* c, const char* s, size_t n) { static_cast<std::string*>(c)->append(s, n); }};
        call(&sink);
        return out;
    }

    std::string m_name;
    DynamicLibrary m_library;
    kestrelon_codec* m_codec = nullptr;
    const kestrelon_codec_vtable* m_table = nullptr;
    WindowLog m_barLog;
    WindowLog m_mainLog;
    kestrelon_host_window m_mainWindow{};
};

} // namespace kestrelon::test
