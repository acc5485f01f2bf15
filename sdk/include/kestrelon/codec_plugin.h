/* Kestrelon codec plug-in contract.
 *
 * A codec plug-in is a shared library (.so, .dll, .dylib) kept in a
 * project's Algos folder beside a body file of the same base name with the
 * extension ".bdy", which the codec reads itself. It exports
 *
 *     void GetDllClassObject(kestrelon_codec** object);   stores a new codec
 *     void DelDllClassObject(kestrelon_codec** object);   destroys it, nulls *object
 *
 * The host creates one codec at a time, configures it with numbered string
 * parameters, runs one operation at a time on its user-interface thread, and
 * destroys it through DelDllClassObject only.
 *
 * Results are 16-bit codes carried in 32 bits:
 *   0                  success
 *   5                  failure the codec reported itself; the host shows nothing
 *   1 .. 0x7FFF        failure; the host shows nothing
 *   0x8000 and above   error with a text: the host asks get_error_text and shows
 *                      it (the code in hex when the text is empty); 0x8005 is a
 *                      failure the host never shows
 */
#ifndef KESTRELON_CODEC_PLUGIN_H
#define KESTRELON_CODEC_PLUGIN_H

#include "kestrelon/plugin_base.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t kestrelon_result;

#define KESTRELON_RESULT_OK 0u
#define KESTRELON_RESULT_FAILED 5u
#define KESTRELON_RESULT_ERROR 0x8000u
#define KESTRELON_RESULT_SILENT_ERROR 0x8005u
/* The operation stopped because the host asked (kestrelon_should_stop): told
 * as the silent failure, so a host of any minor version shows nothing. */
#define KESTRELON_RESULT_STOPPED KESTRELON_RESULT_SILENT_ERROR

/* Parameter ids of set_parameter, and what the host passes. */
#define KESTRELON_PARAM_BODY_FILE 0 /* full path of the codec's ".bdy" file */
#define KESTRELON_PARAM_MAIN_WINDOW 1 /* address of the main window's kestrelon_host_window, in hex */
#define KESTRELON_PARAM_STEP_MESSAGE 2 /* the progress message number, in hex ("403") */
#define KESTRELON_PARAM_BIT_RATE 3 /* the chosen bit rate as shown to the user */

#define KESTRELON_STEP_MESSAGE 0x403u

typedef struct kestrelon_codec_info {
    uint32_t struct_size; /* set by the host before the call */
    int32_t sample_rate; /* Hz the codec works at */
    int32_t resolution_bits; /* bits per sample of what it decodes to */
    int32_t channels;
} kestrelon_codec_info;

typedef struct kestrelon_range {
    int32_t low;
    int32_t high;
} kestrelon_range;

typedef struct kestrelon_codec kestrelon_codec;

/* The table's slot order is the contract: slot n lies at n pointers from the
 * start. Unless a slot says otherwise, it is called on the host's
 * user-interface thread, the codec keeps no pointer it was given beyond the
 * call, and string arguments are owned by the host. */
typedef struct kestrelon_codec_vtable {
    /* 0 */ kestrelon_reserved_slot reserved0;
    /* 1: encodes the WAV file at wave_path into output_path. The codec drives
     * the progress bar and text itself; either may be null. */
    kestrelon_result (*encode)(kestrelon_codec* self, const char* wave_path, const char* output_path,
                               const kestrelon_host_window* progress_bar, const kestrelon_host_window* progress_text);
    /* 2: decodes the unpacked encoded file at encoded_path into a WAV file. */
    kestrelon_result (*decode)(kestrelon_codec* self, const char* encoded_path, const char* wave_path,
                               const kestrelon_host_window* progress_bar, const kestrelon_host_window* progress_text);
    /* 3: the codec checks that it can work (called when it is added to a project). */
    kestrelon_result (*check_algorithm)(kestrelon_codec* self);
    /* 4: one step of a step-wise encode; the host ignores the result. */
    kestrelon_result (*encode_step)(kestrelon_codec* self, int32_t* work);
    /* 5: prepares a step-wise encode. */
    kestrelon_result (*begin_step)(kestrelon_codec* self, int32_t value);
    /* 6 */ kestrelon_result (*get_info)(kestrelon_codec* self, kestrelon_codec_info* info);
    /* 7: first: the sample rates it accepts; second: the bit rates it offers, in bit/s. */
    kestrelon_result (*get_ranges)(kestrelon_codec* self, kestrelon_range* first, kestrelon_range* second);
    /* 8: major version in the high 16 bits, minor in the low 16. */
    kestrelon_result (*get_version)(kestrelon_codec* self, uint32_t* version);
    /* 9 */ kestrelon_reserved_slot reserved9;
    /* 10: a value the codec derives from an encoded file (its count of samples). */
    int32_t (*get_file_value)(kestrelon_codec* self, const char* path);
    /* 11: the text of an error code of 0x8000 and above. */
    void (*get_error_text)(kestrelon_codec* self, uint16_t code, const kestrelon_string_sink* text);
    /* 12: the extension of the files it writes, without the dot. */
    kestrelon_result (*get_output_extension)(kestrelon_codec* self, const kestrelon_string_sink* text);
    /* 13: a short tag for output names. */
    kestrelon_result (*get_output_tag)(kestrelon_codec* self, const kestrelon_string_sink* text);
    /* 14 */ kestrelon_reserved_slot reserved14;
    /* 15 */ kestrelon_result (*get_description)(kestrelon_codec* self, const kestrelon_string_sink* text);
    /* 16 */ kestrelon_reserved_slot reserved16;
    /* 17: see KESTRELON_PARAM_*; value is owned by the host. */
    kestrelon_result (*set_parameter)(kestrelon_codec* self, int32_t id, const char* value);
    /* 18 */ kestrelon_result (*get_temp_file_info)(kestrelon_codec* self, int32_t* value);
    /* 19: the speech-event file (".evt") to carry in the next encode, or "" for none. */
    kestrelon_result (*set_event_file)(kestrelon_codec* self, const char* path);
} kestrelon_codec_vtable;

struct kestrelon_codec {
    const kestrelon_codec_vtable* vtable;
    uint32_t abi_version; /* KESTRELON_PLUGIN_ABI_VERSION */
};

typedef void (*kestrelon_codec_factory)(kestrelon_codec** object);

#define KESTRELON_CODEC_CREATE_SYMBOL "GetDllClassObject"
#define KESTRELON_CODEC_DESTROY_SYMBOL "DelDllClassObject"

#define KESTRELON_SLOT_OFFSET(slot) ((slot) * sizeof(kestrelon_reserved_slot))
#ifdef __cplusplus
#define KESTRELON_STATIC_ASSERT static_assert
#else
#define KESTRELON_STATIC_ASSERT _Static_assert
#endif
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, encode) == KESTRELON_SLOT_OFFSET(1), "encode is slot 1");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, decode) == KESTRELON_SLOT_OFFSET(2), "decode is slot 2");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, check_algorithm) == KESTRELON_SLOT_OFFSET(3), "slot 3");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, encode_step) == KESTRELON_SLOT_OFFSET(4), "slot 4");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, begin_step) == KESTRELON_SLOT_OFFSET(5), "slot 5");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_info) == KESTRELON_SLOT_OFFSET(6), "slot 6");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_ranges) == KESTRELON_SLOT_OFFSET(7), "slot 7");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_version) == KESTRELON_SLOT_OFFSET(8), "slot 8");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_file_value) == KESTRELON_SLOT_OFFSET(10), "slot 10");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_error_text) == KESTRELON_SLOT_OFFSET(11), "slot 11");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_output_extension) == KESTRELON_SLOT_OFFSET(12), "slot 12");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_output_tag) == KESTRELON_SLOT_OFFSET(13), "slot 13");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_description) == KESTRELON_SLOT_OFFSET(15), "slot 15");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, set_parameter) == KESTRELON_SLOT_OFFSET(17), "slot 17");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, get_temp_file_info) == KESTRELON_SLOT_OFFSET(18), "slot 18");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec_vtable, set_event_file) == KESTRELON_SLOT_OFFSET(19), "slot 19");
KESTRELON_STATIC_ASSERT(sizeof(kestrelon_codec_vtable) == KESTRELON_SLOT_OFFSET(20), "20 slots");
KESTRELON_STATIC_ASSERT(offsetof(kestrelon_codec, vtable) == 0, "the table comes first");

#ifdef __cplusplus
}
#endif

#endif
