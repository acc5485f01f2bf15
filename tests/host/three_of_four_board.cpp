// A board player that lacks one of its four functions (the device check):
// the host must treat it as not loaded and never call through it.
#include "kestrelon/board_plugin.h"

#include <cstdlib>

extern "C" {

KESTRELON_EXPORT int32_t UART_ScanPorts(uint8_t, uint8_t* version, uint32_t)
{
    *version = 0x30;
    return 1;
}

KESTRELON_EXPORT void UART_Play(uint32_t, const kestrelon_board_play_list*, uint32_t, uint32_t, kestrelon_board_status)
{
    std::abort(); // a host that plays through a half plug-in dies here
}

KESTRELON_EXPORT void UART_Stop(void) {}
}
