/* The relay: switches a relay (PD6) and an indicator (PD5) by the pulse at ICP1 (PB0), as the seven
 * bytes at the beginning of its EEPROM say. */
#include "board.h"
#include "corvane_memory.h"
#include "stick.h"

#include <avr/io.h>

enum { SHORTEST = 1200, LONGEST = 1800 }; /* of the transmitter's pulses, in microseconds */
enum { BLINK = 50 };                      /* ms */
enum { INDICATOR = 1 << PORTD5, RELAY = 1 << PORTD6 };

/* What the EEPROM holds. */
enum {
    TRIP_POINT,
    BAND,
    INDICATOR_ABOVE,
    INDICATOR_BELOW,
    RELAY_ABOVE,
    RELAY_BELOW,
    RELAY_WITHOUT_SIGNAL,
    SETTINGS
};

static uint8_t settings[SETTINGS];

void cv_on_data(uint8_t channel, const uint8_t* data, uint8_t count) {
    (void)cv_memory_data(channel, data, count);
}

void cv_on_session(void) {
    cv_memory_session();
}

static void read_settings(void) {
    uint8_t i;
    for (i = 0; i < SETTINGS && cv_memory_ready(); ++i)
        settings[i] = cv_memory_read(i);
}

static void put(uint8_t pin, bool on) {
    if (on)
        PORTD |= pin;
    else
        PORTD &= (uint8_t)~pin;
}

static void decide(uint8_t passed) {
    static bool known, above, blink;
    static uint8_t since;
    const uint16_t pulse = board_pulse();
    if (pulse == 0)
        return;
    if (pulse == BOARD_NO_SIGNAL) {
        since = (uint8_t)(since + passed);
        if (since >= BLINK) {
            since = (uint8_t)(since - BLINK);
            blink = !blink;
        }
        put(INDICATOR, blink);
        put(RELAY, settings[RELAY_WITHOUT_SIGNAL] == 1);
        return;
    }
    /* Before the first comparison there is nothing to stay at: the band counts as 0. */
    const int level = stick_level_nearest(pulse, SHORTEST, LONGEST);
    const int band = known ? settings[BAND] : 0;
    if (level < settings[TRIP_POINT] - band)
        above = false;
    else if (level >= settings[TRIP_POINT] + band)
        above = true;
    known = true;
    put(INDICATOR, settings[above ? INDICATOR_ABOVE : INDICATOR_BELOW] == 1);
    put(RELAY, settings[above ? RELAY_ABOVE : RELAY_BELOW] == 1);
}

int main(void) {
    DDRD |= INDICATOR | RELAY;
    board_begin();
    cv_memory_begin();
    cv_begin(3, 1, 1, 0);
    for (;;) {
        const uint8_t passed = board_work();
        if (passed == 0)
            continue;
        read_settings();
        decide(passed);
    }
}
