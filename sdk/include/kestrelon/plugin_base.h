/* Kestrelon plug-in SDK: what every plug-in kind shares.
 *
 * The contract is plain C so that a plug-in can be built with any compiler:
 * exported functions with fixed names, objects whose first member points to a
 * table of function pointers, the object passed as the first argument. Strings
 * going in are UTF-8 `const char*`, valid for the call only. Strings coming out
 * are written into a sink the host provides, so no allocator crosses the
 * boundary. Nothing may throw across it.
 */
#ifndef KESTRELON_PLUGIN_BASE_H
#define KESTRELON_PLUGIN_BASE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define KESTRELON_EXPORT __declspec(dllexport)
#else
#define KESTRELON_EXPORT __attribute__((visibility("default")))
#endif

/* Raised when a table gains slots or a struct changes shape. A plug-in puts
 * the version it was built against into its object; the host refuses objects
 * of a version it does not know. */
#define KESTRELON_PLUGIN_ABI_VERSION 1u
/* Additions that keep every slot and field where it was. Minor 1: a host
 * window may carry should_stop (see below). */
#define KESTRELON_PLUGIN_ABI_MINOR 1u

/* A slot the host never calls. It stays in the table so later slots keep their
 * offsets; plug-ins leave it null. */
typedef void (*kestrelon_reserved_slot)(void);

/* Text out of a plug-in: call `write` zero or more times; the host appends the
 * pieces. Only valid during the call that received it. */
typedef struct kestrelon_string_sink {
    void* context;
    void (*write)(void* context, const char* utf8, size_t length);
} kestrelon_string_sink;

/* A window of the host, seen by a plug-in: a progress bar, a progress text
 * line or the main window. Every callback may be null; call only those that
 * are set. Call them on the thread that called into the plug-in. */
typedef struct kestrelon_host_window {
    uint32_t struct_size; /* sizeof(kestrelon_host_window) as the host built it */
    void* context;
    void (*set_range)(void* context, int32_t low, int32_t high);
    void (*set_position)(void* context, int32_t position);
    void (*set_text)(void* context, const char* utf8);
    /* Posts a notification to the window, e.g. the progress message whose
     * number the host gives a codec as parameter 2. */
    void (*post_message)(void* context, uint32_t message, uintptr_t wparam, intptr_t lparam);
    /* Minor 1: non-zero once the person asked the running encode or decode to
     * stop. A codec asks it between blocks of frames and, when told, stops,
     * writes nothing and returns KESTRELON_RESULT_STOPPED. Present only when
     * struct_size covers it: use kestrelon_should_stop(). */
    int32_t (*should_stop)(void* context);
} kestrelon_host_window;

/* Whether the host asked to stop; 0 for a host that cannot be asked. */
static inline int32_t kestrelon_should_stop(const kestrelon_host_window* window)
{
    return window &&
           window->struct_size >= offsetof(kestrelon_host_window, should_stop) + sizeof(window->should_stop) &&
           window->should_stop && window->should_stop(window->context);
}

#ifdef __cplusplus
}
#endif

#endif
