/* Kestrelon PC player plug-in contract.
 *
 * The PC player is a shared library in the program folder, named by the body
 * settings file. It exports
 *
 *     void SetPlayDllClassObject(kestrelon_player** player);   stores a new player
 *     void DelPlayDllClassObject(kestrelon_player** player);   destroys it, nulls *player
 *
 * The host makes a fresh player for every sound it plays and destroys the
 * previous one first.
 */
#ifndef KESTRELON_PLAYER_PLUGIN_H
#define KESTRELON_PLAYER_PLUGIN_H

#include "kestrelon/plugin_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Events of the play notification. */
#define KESTRELON_PLAY_POSITION 1u /* value: the sample being played */
#define KESTRELON_PLAY_ENDED 2u /* value: 0 */

/* Called by the player while it plays, possibly from its own audio thread:
 * the host only records the state and never calls back into the player from
 * inside it. */
typedef void (*kestrelon_play_notify)(void* host_context, uint32_t event, int32_t value);

typedef struct kestrelon_player kestrelon_player;

typedef struct kestrelon_player_vtable {
    /* 0 */ kestrelon_reserved_slot reserved0;
    /* 1: opens a WAV file; the host passes three zeros after the path.
     * 0 = success, anything else = failure. */
    int32_t (*open_file)(kestrelon_player* self, const char* wave_path, int32_t reserved_a, int32_t reserved_b,
                         int32_t reserved_c);
    /* 2 */ kestrelon_reserved_slot reserved2;
    /* 3: starts playing; the host passes 0, 255, its notification and 0.1. The
     * player keeps `notify` and `host_context` until it is destroyed. */
    void (*play)(kestrelon_player* self, int32_t start, int32_t level, kestrelon_play_notify notify, void* host_context,
                 float interval_seconds);
    /* 4 */ void (*stop)(kestrelon_player* self);
    /* 5: pauses, or resumes a paused sound. */
    void (*pause)(kestrelon_player* self);
    /* 6: non-zero while a sound plays (paused counts as playing). */
    int32_t (*is_playing)(kestrelon_player* self);
    /* 7..12 */ kestrelon_reserved_slot reserved7;
    kestrelon_reserved_slot reserved8;
    kestrelon_reserved_slot reserved9;
    kestrelon_reserved_slot reserved10;
    kestrelon_reserved_slot reserved11;
    kestrelon_reserved_slot reserved12;
    /* 13: prepares playing for a waveform view (position reports start at once). */
    void (*begin_view_play)(kestrelon_player* self);
} kestrelon_player_vtable;

struct kestrelon_player {
    const kestrelon_player_vtable* vtable;
    uint32_t abi_version; /* KESTRELON_PLUGIN_ABI_VERSION */
};

typedef void (*kestrelon_player_factory)(kestrelon_player** player);

#define KESTRELON_PLAYER_CREATE_SYMBOL "SetPlayDllClassObject"
#define KESTRELON_PLAYER_DESTROY_SYMBOL "DelPlayDllClassObject"

#ifdef __cplusplus
static_assert(offsetof(kestrelon_player_vtable, open_file) == 1 * sizeof(kestrelon_reserved_slot), "slot 1");
static_assert(offsetof(kestrelon_player_vtable, play) == 3 * sizeof(kestrelon_reserved_slot), "slot 3");
static_assert(offsetof(kestrelon_player_vtable, stop) == 4 * sizeof(kestrelon_reserved_slot), "slot 4");
static_assert(offsetof(kestrelon_player_vtable, begin_view_play) == 13 * sizeof(kestrelon_reserved_slot), "slot 13");
#else
_Static_assert(offsetof(kestrelon_player_vtable, open_file) == 1 * sizeof(kestrelon_reserved_slot), "slot 1");
_Static_assert(offsetof(kestrelon_player_vtable, play) == 3 * sizeof(kestrelon_reserved_slot), "slot 3");
_Static_assert(offsetof(kestrelon_player_vtable, stop) == 4 * sizeof(kestrelon_reserved_slot), "slot 4");
_Static_assert(offsetof(kestrelon_player_vtable, begin_view_play) == 13 * sizeof(kestrelon_reserved_slot), "slot 13");
#endif

#ifdef __cplusplus
}
#endif

#endif
