/* The light controller of device type 1.2: plays the image in its EEPROM on six outputs, PC0 to
 * PC5, by the pulse at ICP1 (PB0). An output is on for so much of the time as its current is of 250
 * mA, 122 times a second. */
#include "board.h"
#include "corvane_memory.h"
#include "light_player.h"
#include "stick.h"

#include <avr/interrupt.h>
#include <avr/io.h>
#include <util/atomic.h>

enum { FULL_CURRENT = 250 };
enum { OUTPUTS = (1 << LIGHT_CHANNELS) - 1 };
enum { BITS = 8 };

static uint8_t image[LIGHT_IMAGE];
static volatile uint8_t planes[BITS]; /* which outputs are on for 1, 2, 4 ... 128 units */

void cv_on_data(uint8_t channel, const uint8_t* data, uint8_t count) {
    (void)cv_memory_data(channel, data, count);
}

void cv_on_session(void) {
    cv_memory_session();
}

/* One bit of all outputs at a time, for as long as the bit counts: units of 32 microseconds. */
ISR(TIMER0_COMPA_vect) {
    static uint8_t bit;
    PORTC = planes[bit];
    OCR0A = (uint8_t)((2U << bit) - 1);
    bit = (uint8_t)((bit + 1) % BITS);
}

static void outputs_begin(void) {
    DDRC = OUTPUTS;
    /* Counts of 16 microseconds: the next one is as long as OCR0A says. */
    TCCR0A = 1 << WGM01;
    TCCR0B = 1 << CS02;
    OCR0A = 1;
    TIMSK0 = 1 << OCIE0A;
}

static void show(void) {
    uint8_t next[BITS] = {0};
    uint8_t channel, bit;
    for (channel = 0; channel < LIGHT_CHANNELS; ++channel) {
        const uint8_t current = light_player_current(channel);
        const uint16_t share = (uint16_t)((current * 255U + FULL_CURRENT / 2) / FULL_CURRENT);
        for (bit = 0; bit < BITS; ++bit)
            if (share > 255 || (share & (1U << bit)))
                next[bit] = (uint8_t)(next[bit] | (1U << channel));
    }
    ATOMIC_BLOCK(ATOMIC_RESTORESTATE) {
        for (bit = 0; bit < BITS; ++bit)
            planes[bit] = next[bit];
    }
}

int main(void) {
    uint8_t i;
    board_begin();
    for (i = 0; i < LIGHT_IMAGE; ++i)
        image[i] = cv_memory_read(i);
    outputs_begin();
    cv_memory_begin();
    cv_begin(1, 2, 1, 0);
    light_player_begin(image);
    for (;;) {
        const uint8_t passed = board_work();
        uint16_t pulse;
        if (passed == 0)
            continue;
        light_player_pass(passed);
        pulse = board_pulse();
        if (pulse == BOARD_NO_SIGNAL)
            light_player_no_signal();
        else if (pulse > 0)
            light_player_stick(
                stick_level_below(pulse, light_player_shortest(), light_player_longest()));
        show();
    }
}
