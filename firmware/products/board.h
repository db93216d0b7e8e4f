/* What the three products need of an ATmega328P at 16 MHz: the link's UART, a clock, the EEPROM (by
 * the hooks of corvane_memory.h), and the pulse of a transmitter's channel. */
#ifndef BOARD_H
#define BOARD_H

#include <stdbool.h>
#include <stdint.h>

/* Call it first. */
void board_begin(void);

/* Carries bytes and time between the link and the wire, and goes on with the EEPROM. Call it again
 * and again; gives the milliseconds that have passed since the last call. */
uint8_t board_work(void);

/* The last pulse in microseconds; BOARD_NO_SIGNAL if none came for a tenth of a second, and 0 while
 * that is not known yet, after the power has come. */
#define BOARD_NO_SIGNAL 0xFFFFU
uint16_t board_pulse(void);

#endif
