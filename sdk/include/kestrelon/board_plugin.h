/* Kestrelon board player plug-in contract.
 *
 * The board player is a shared library in the program folder, named by the
 * body settings file, that talks to a target board over a serial port. It
 * exports four plain functions; the host treats the library as missing unless
 * all four are there.
 */
#ifndef KESTRELON_BOARD_PLUGIN_H
#define KESTRELON_BOARD_PLUGIN_H

#include "kestrelon/plugin_base.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One sound to send: raw encoded data without its 48-byte header. */
typedef struct kestrelon_board_item {
    uint32_t struct_size;
    uint8_t port; /* serial port number */
    const uint8_t* data; /* owned by the host, valid until playing ends */
    uint32_t size;
    uint32_t sample_rate;
    int32_t volume; /* the body's current volume */
    const char* name; /* for the board's log; may be empty */
} kestrelon_board_item;

typedef struct kestrelon_board_play_list {
    uint32_t count;
    const kestrelon_board_item* items;
} kestrelon_board_play_list;

/* Board status, reported with item index -1. */
#define KESTRELON_BOARD_STARTED 1u
#define KESTRELON_BOARD_ITEM_DONE 2u
#define KESTRELON_BOARD_PAUSED 4u
#define KESTRELON_BOARD_BUSY 8u
#define KESTRELON_BOARD_NO_ACK 512u

/* Called by the plug-in, possibly from its own thread: index >= 0 reports the
 * item being played; index -1 reports `status`. Returns 1. */
typedef int32_t (*kestrelon_board_status)(int16_t item_index, uint32_t status);

/* Non-zero when a board answered on `port`; the upper four bits of *version
 * carry the board's version. */
typedef int32_t (*kestrelon_uart_scan_ports)(uint8_t port, uint8_t* version, uint32_t baud_rate);
/* 0 when the driver is ready (the opposite sense of scanning); the lower four
 * bits of *version echo the port, the upper four carry the driver version. */
typedef int32_t (*kestrelon_uart_check_ready)(uint8_t port, uint8_t* version);
/* Starts playing the list; returns at once, progress comes through `status`. */
typedef void (*kestrelon_uart_play)(uint32_t mode, const kestrelon_board_play_list* list, uint32_t volume,
                                    uint32_t flags, kestrelon_board_status status);
typedef void (*kestrelon_uart_stop)(void);
/* Optional, beyond the four: non-zero holds play between two frames, 0 lets
 * it go on. The plug-in reports KESTRELON_BOARD_PAUSED once the board holds. */
typedef void (*kestrelon_uart_pause)(int32_t pause);

#define KESTRELON_UART_PLAY_SYMBOL "UART_Play"
#define KESTRELON_UART_STOP_SYMBOL "UART_Stop"
#define KESTRELON_UART_SCAN_SYMBOL "UART_ScanPorts"
#define KESTRELON_UART_READY_SYMBOL "UART_CheckIsDeviceReady"
#define KESTRELON_UART_PAUSE_SYMBOL "UART_Pause"

#ifdef __cplusplus
}
#endif

#endif
