/* FailingCodec: a codec plug-in for the host's tests, written in plain C so
 * that it exercises the C contract exactly as a C compiler lays it out.
 *
 * It behaves as a trivial codec (the encoded file is a 48-byte header followed
 * by the wave file's bytes; decoding gives the bytes back) unless the
 * environment variable KESTRELON_FAILING_CODEC, read at every call, tells it
 * to misbehave. Its value is a list of items separated by ";":
 *
 *   null-object            GetDllClassObject stores no object
 *   wrong-abi              the object claims ABI version 99
 *   null-vtable            the object has no table
 *   null-slots=N,N,...     the object's table leaves these slots empty
 *   param<N>=CODE          set_parameter with id N returns CODE
 *   <operation>=CODE       the operation returns CODE; operations: encode,
 *                          decode, check, begin-step, info, ranges, version,
 *                          description, extension, tag, event-file, temp-info
 *   error-text=TEXT        what get_error_text answers (nothing when absent)
 *   crash[=NAME]           encode (of a wave whose path holds NAME, when given)
 *                          and decode crash the process
 *   hang[=NAME]            they never return, and never ask to stop
 *   garbage                encode and decode succeed and write 7 bytes of nothing
 *
 * CODE is decimal or 0x-prefixed hex. Every call is appended as one line, its
 * name and arguments separated by tabs, to the file named by
 * KESTRELON_FAILING_CODEC_LOG, so tests can check which calls came in which
 * order.
 */
#include "kestrelon/codec_plugin.h"

#include "failing_codec_io.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define FC_MODE_VARIABLE "KESTRELON_FAILING_CODEC"
#define FC_POOL_SIZE 32
#define FC_TEXT_SIZE 512

typedef struct failing_codec {
    kestrelon_codec base; /* first: the host sees only this */
    kestrelon_codec_vtable table;
    int in_use;
    const kestrelon_host_window* main_window;
    uint32_t step_message;
    char last_error[FC_TEXT_SIZE];
} failing_codec;

/* Objects come from a static pool rather than the heap: the host's reload
 * shortcut abandons objects on purpose, and leak checkers should not take the
 * test codec's abandoned objects for the host's leaks. */
static failing_codec g_pool[FC_POOL_SIZE];

/* Finds the item `key` (a bare word, or "key=value") in the mode; copies the
 * value, possibly empty, into `value`. Returns 1 when found. */
static int find_item(const char* key, char* value, size_t size)
{
    const char* mode = getenv(FC_MODE_VARIABLE);
    const size_t key_length = strlen(key);
    const char* p = mode;
    if (value && size) value[0] = '\0';
    while (p && *p) {
        const char* end = strchr(p, ';');
        const size_t length = end ? (size_t)(end - p) : strlen(p);
        if (length >= key_length && strncmp(p, key, key_length) == 0 &&
            (length == key_length || p[key_length] == '=')) {
            if (value && size && length > key_length) {
                size_t value_length = length - key_length - 1;
                if (value_length >= size) value_length = size - 1;
                memcpy(value, p + key_length + 1, value_length);
                value[value_length] = '\0';
            }
            return 1;
        }
        p = end ? end + 1 : NULL;
    }
    return 0;
}

/* The code the mode sets for `key`, or `otherwise`. */
static kestrelon_result mode_code(const char* key, kestrelon_result otherwise)
{
    char value[64];
    if (!find_item(key, value, sizeof value)) return otherwise;
    return (kestrelon_result)strtoul(value, NULL, 0);
}

static void put(const kestrelon_string_sink* sink, const char* text)
{
    if (sink && sink->write) sink->write(sink->context, text, strlen(text));
}

static failing_codec* self_of(kestrelon_codec* c)
{
    return (failing_codec*)c; /* base is the first member */
}

static void log_number(const char* op, long long number, const char* arg)
{
    char text[32];
    snprintf(text, sizeof text, "%lld", number);
    fc_log(op, text, arg);
}

static int window_ok(const kestrelon_host_window* w)
{
    return w && w->struct_size >= sizeof(kestrelon_host_window);
}

/* Crashes or hangs when the mode says so for a call on `path`. */
static void misbehave(const char* path)
{
    char name[FC_TEXT_SIZE];
    if (find_item("crash", name, sizeof name) && (!name[0] || (path && strstr(path, name)))) raise(SIGSEGV);
    if (find_item("hang", name, sizeof name) && (!name[0] || (path && strstr(path, name))))
        for (;;) sleep(1);
}

static kestrelon_result fc_encode_slot(kestrelon_codec* c, const char* wave_path, const char* output_path,
                                       const kestrelon_host_window* bar, const kestrelon_host_window* text)
{
    failing_codec* self = self_of(c);
    kestrelon_result result;
    fc_log("encode", wave_path, output_path);
    result = mode_code("encode", KESTRELON_RESULT_OK);
    if (result != KESTRELON_RESULT_OK) return result;
    misbehave(wave_path);

    if (window_ok(text) && text->set_text) text->set_text(text->context, "FailingCodec encoding");
    if (window_ok(bar) && bar->set_range) bar->set_range(bar->context, 0, 100);
    if (find_item("garbage", NULL, 0)) { /* a lying codec: success, and 7 bytes that are no encoding */
        FILE* out = fopen(output_path, "wb");
        if (out) {
            fwrite("garbage", 1, 7, out);
            fclose(out);
        }
        return KESTRELON_RESULT_OK;
    }
    if (fc_encode(wave_path, output_path) != 0) {
        snprintf(self->last_error, sizeof self->last_error, "FailingCodec cannot encode %s", wave_path);
        return 0x8001u;
    }
    if (window_ok(bar) && bar->set_position) bar->set_position(bar->context, 100);
    if (window_ok(self->main_window) && self->main_window->post_message)
        self->main_window->post_message(self->main_window->context, self->step_message, 0, 0);
    return KESTRELON_RESULT_OK;
}

static kestrelon_result fc_decode_slot(kestrelon_codec* c, const char* encoded_path, const char* wave_path,
                                       const kestrelon_host_window* bar, const kestrelon_host_window* text)
{
    failing_codec* self = self_of(c);
    kestrelon_result result;
    int status;
    fc_log("decode", encoded_path, wave_path);
    result = mode_code("decode", KESTRELON_RESULT_OK);
    if (result != KESTRELON_RESULT_OK) return result;
    misbehave(NULL);

    if (window_ok(text) && text->set_text) text->set_text(text->context, "FailingCodec decoding");
    if (find_item("garbage", NULL, 0)) { /* success, and no wave */
        FILE* out = fopen(wave_path, "wb");
        if (out) {
            fwrite("garbage", 1, 7, out);
            fclose(out);
        }
        return KESTRELON_RESULT_OK;
    }
    status = fc_decode(encoded_path, wave_path);
    if (status != 0) {
        snprintf(self->last_error, sizeof self->last_error, "%s %s", encoded_path,
                 status == 2 ? "is not a FailingCodec file" : "cannot be decoded");
        return 0x8001u;
    }
    if (window_ok(bar) && bar->set_position) bar->set_position(bar->context, 100);
    return KESTRELON_RESULT_OK;
}

static kestrelon_result fc_check(kestrelon_codec* c)
{
    fc_log("check_algorithm", NULL, NULL);
    return mode_code("check", KESTRELON_RESULT_OK);
}

static kestrelon_result fc_encode_step(kestrelon_codec* c, int32_t* work)
{
    fc_log("encode_step", NULL, NULL);
    if (work) *work += 1;
    return KESTRELON_RESULT_OK;
}

static kestrelon_result fc_begin_step(kestrelon_codec* c, int32_t value)
{
    log_number("begin_step", value, NULL);
    return mode_code("begin-step", KESTRELON_RESULT_OK);
}

static kestrelon_result fc_get_info(kestrelon_codec* c, kestrelon_codec_info* info)
{
    fc_log("get_info", NULL, NULL);
    if (!info || info->struct_size < sizeof(kestrelon_codec_info)) return KESTRELON_RESULT_FAILED;
    info->sample_rate = 8000;
    info->resolution_bits = 16;
    info->channels = 1;
    return mode_code("info", KESTRELON_RESULT_OK);
}

static kestrelon_result fc_get_ranges(kestrelon_codec* c, kestrelon_range* first, kestrelon_range* second)
{
    fc_log("get_ranges", NULL, NULL);
    if (!first || !second) return KESTRELON_RESULT_FAILED;
    first->low = 8000;
    first->high = 8000;
    second->low = 16000;
    second->high = 32000;
    return mode_code("ranges", KESTRELON_RESULT_OK);
}

static kestrelon_result fc_get_version(kestrelon_codec* c, uint32_t* version)
{
    fc_log("get_version", NULL, NULL);
    if (!version) return KESTRELON_RESULT_FAILED;
    *version = 1u << 16 | 0u;
    return mode_code("version", KESTRELON_RESULT_OK);
}

static int32_t fc_get_file_value(kestrelon_codec* c, const char* path)
{
    fc_log("get_file_value", path, NULL);
    return fc_encoded_length(path);
}

static void fc_get_error_text(kestrelon_codec* c, uint16_t code, const kestrelon_string_sink* text)
{
    char value[FC_TEXT_SIZE];
    log_number("get_error_text", code, NULL);
    if (find_item("error-text", value, sizeof value))
        put(text, value);
    else
        put(text, self_of(c)->last_error);
}

/* A text slot: logged, its result taken from the mode, its text given on success. */
static kestrelon_result text_slot(const char* slot, const char* mode_key, const kestrelon_string_sink* sink,
                                  const char* text)
{
    kestrelon_result result;
    fc_log(slot, NULL, NULL);
    result = mode_code(mode_key, KESTRELON_RESULT_OK);
    if (result == KESTRELON_RESULT_OK) put(sink, text);
    return result;
}

static kestrelon_result fc_get_output_extension(kestrelon_codec* c, const kestrelon_string_sink* text)
{
    (void)c;
    return text_slot("get_output_extension", "extension", text, "fcd");
}

static kestrelon_result fc_get_output_tag(kestrelon_codec* c, const kestrelon_string_sink* text)
{
    (void)c;
    return text_slot("get_output_tag", "tag", text, "FC");
}

static kestrelon_result fc_get_description(kestrelon_codec* c, const kestrelon_string_sink* text)
{
    (void)c;
    return text_slot("get_description", "description", text, "Failing test codec");
}

static kestrelon_result fc_set_parameter(kestrelon_codec* c, int32_t id, const char* value)
{
    failing_codec* self = self_of(c);
    char key[32];
    kestrelon_result result;
    log_number("set_parameter", id, value ? value : "(null)");
    snprintf(key, sizeof key, "param%d", (int)id);
    result = mode_code(key, KESTRELON_RESULT_OK);
    if (result != KESTRELON_RESULT_OK || !value) return result;
    if (id == KESTRELON_PARAM_MAIN_WINDOW)
        self->main_window = (const kestrelon_host_window*)(uintptr_t)strtoull(value, NULL, 16);
    else if (id == KESTRELON_PARAM_STEP_MESSAGE)
        self->step_message = (uint32_t)strtoul(value, NULL, 16);
    return KESTRELON_RESULT_OK;
}

static kestrelon_result fc_get_temp_file_info(kestrelon_codec* c, int32_t* value)
{
    fc_log("get_temp_file_info", NULL, NULL);
    if (value) *value = 0;
    return mode_code("temp-info", KESTRELON_RESULT_OK);
}

static kestrelon_result fc_set_event_file(kestrelon_codec* c, const char* path)
{
    fc_log("set_event_file", path, NULL);
    return mode_code("event-file", KESTRELON_RESULT_OK);
}

static const kestrelon_codec_vtable g_table = {
    NULL,
    fc_encode_slot,
    fc_decode_slot,
    fc_check,
    fc_encode_step,
    fc_begin_step,
    fc_get_info,
    fc_get_ranges,
    fc_get_version,
    NULL,
    fc_get_file_value,
    fc_get_error_text,
    fc_get_output_extension,
    fc_get_output_tag,
    NULL,
    fc_get_description,
    NULL,
    fc_set_parameter,
    fc_get_temp_file_info,
    fc_set_event_file,
};

/* Empties the slots listed in "null-slots=N,N,..." by their position. */
static void null_slots(kestrelon_codec_vtable* table)
{
    char value[128];
    char* p;
    if (!find_item("null-slots", value, sizeof value)) return;
    p = value;
    while (*p) {
        char* end;
        const unsigned long slot = strtoul(p, &end, 10);
        if (end == p) break;
        if (slot < sizeof(kestrelon_codec_vtable) / sizeof(kestrelon_reserved_slot))
            memset((char*)table + slot * sizeof(kestrelon_reserved_slot), 0, sizeof(kestrelon_reserved_slot));
        p = *end ? end + 1 : end;
    }
}

KESTRELON_EXPORT void GetDllClassObject(kestrelon_codec** object)
{
    failing_codec* codec = NULL;
    int i;
    fc_log("create", NULL, NULL);
    if (!object) return;
    *object = NULL;
    if (find_item("null-object", NULL, 0)) return;
    for (i = 0; i < FC_POOL_SIZE && !codec; ++i)
        if (!g_pool[i].in_use) codec = &g_pool[i];
    if (!codec) return;

    memset(codec, 0, sizeof *codec);
    codec->in_use = 1;
    codec->table = g_table;
    null_slots(&codec->table);
    codec->step_message = KESTRELON_STEP_MESSAGE;
    codec->base.vtable = find_item("null-vtable", NULL, 0) ? NULL : &codec->table;
    codec->base.abi_version = find_item("wrong-abi", NULL, 0) ? 99u : KESTRELON_PLUGIN_ABI_VERSION;
    *object = &codec->base;
}

KESTRELON_EXPORT void DelDllClassObject(kestrelon_codec** object)
{
    fc_log("destroy", NULL, NULL);
    if (!object || !*object) return;
    self_of(*object)->in_use = 0;
    *object = NULL;
}
