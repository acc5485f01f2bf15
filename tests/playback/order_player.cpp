/* A player that plays nothing and keeps a log of how the host makes and
 * destroys its objects, to check that every sound gets a fresh player and the
 * previous one goes first. */
#include "kestrelon/player_plugin.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

char g_log[512];
int g_made;

struct order_player {
    kestrelon_player base;
    int number;
};

void note(const char* what, int number)
{
    char line[32];
    std::snprintf(line, sizeof line, "%s%d ", what, number);
    std::strncat(g_log, line, sizeof g_log - std::strlen(g_log) - 1);
}

int32_t open_file(kestrelon_player* self, const char* path, int32_t, int32_t, int32_t)
{
    note(std::strstr(path, "missing") ? "refuse" : "open", reinterpret_cast<order_player*>(self)->number);
    return std::strstr(path, "missing") ? 1 : 0;
}

void play(kestrelon_player* self, int32_t, int32_t, kestrelon_play_notify notify, void* context, float)
{
    note("play", reinterpret_cast<order_player*>(self)->number);
    notify(context, KESTRELON_PLAY_POSITION, 10);
}

const kestrelon_player_vtable vtable = {nullptr, open_file, nullptr, play,    nullptr, nullptr, nullptr,
                                        nullptr, nullptr,   nullptr, nullptr, nullptr, nullptr, nullptr};

} // namespace

extern "C" {

KESTRELON_EXPORT void SetPlayDllClassObject(kestrelon_player** player)
{
    auto* made = static_cast<order_player*>(std::calloc(1, sizeof(order_player)));
    made->base.vtable = &vtable;
    made->base.abi_version = KESTRELON_PLUGIN_ABI_VERSION;
    made->number = ++g_made;
    note("make", made->number);
    *player = &made->base;
}

KESTRELON_EXPORT void DelPlayDllClassObject(kestrelon_player** player)
{
    note("destroy", reinterpret_cast<order_player*>(*player)->number);
    std::free(*player);
    *player = nullptr;
}

KESTRELON_EXPORT const char* order_player_log(void)
{
    return g_log;
}

} // extern "C"
