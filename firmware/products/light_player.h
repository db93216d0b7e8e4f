/* Plays the image of a light controller of device type 1.2. Knows no hardware. */
#ifndef LIGHT_PLAYER_H
#define LIGHT_PLAYER_H

#include <stdbool.h>
#include <stdint.h>

enum { LIGHT_CHANNELS = 6, LIGHT_IMAGE = 255 };

/* All is dark until it is told of a stick or that there is no signal; then it begins at the start.
 * The image of LIGHT_IMAGE bytes must stay; any bytes will do, and what leads nowhere is dark. */
void light_player_begin(const uint8_t* image);

/* The ends of the transmitter's range, in microseconds, as the image has them. */
uint16_t light_player_shortest(void);
uint16_t light_player_longest(void);

/* Where the stick is. Without a signal the level stays what it was, at first the middle. */
void light_player_stick(uint8_t level);
void light_player_no_signal(void);

/* So many milliseconds have passed. */
void light_player_pass(uint16_t milliseconds);

/* What flows through a channel, 0 to 5, now: 0 to 255 mA. */
uint8_t light_player_current(uint8_t channel);

#endif
