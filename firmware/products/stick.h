/* How a pulse becomes a level. */
#ifndef STICK_H
#define STICK_H

#include <stdint.h>

enum { FULL_LEVEL = 255 };

/* Rounded down, as the light controllers do it; times in microseconds, the shortest pulse being
 * shorter than the longest. Pulses beyond them count as the ends. */
uint8_t stick_level_below(uint16_t pulse, uint16_t shortest, uint16_t longest);

/* Rounded to the nearest, half a level upwards, as the relays do it. */
uint8_t stick_level_nearest(uint16_t pulse, uint16_t shortest, uint16_t longest);

#endif
