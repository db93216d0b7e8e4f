#include "board.h"

#include "corvane_memory.h"

#include <avr/eeprom.h>
#include <avr/interrupt.h>
#include <avr/io.h>
#include <util/atomic.h>

#if F_CPU != 16000000UL
#error "The clock must have 16 MHz: 250 000 baud, milliseconds and pulses are counted out of it."
#endif

enum { BAUD_DIVISOR = 3 };               /* 16 MHz / (16 * 250 000) - 1 */
enum { RING = 64 };                      /* 2.5 ms of bytes; a power of two */
enum { COUNTS_A_MICROSECOND = 2 };       /* of timer 1 */
enum { SHORTEST = 500, LONGEST = 2500 }; /* pulses, in microseconds */
enum { SILENCE = 100 };                  /* ms without a pulse */

static volatile uint8_t ring[RING];
static volatile uint8_t ring_end;
static uint8_t ring_begin;
static volatile uint8_t milliseconds;
static volatile uint16_t pulse; /* in counts of timer 1 */
static volatile uint8_t silence;

void board_begin(void) {
    /* The link: 8 data bits, no parity, one stop bit. */
    UBRR0 = BAUD_DIVISOR;
    UCSR0C = (1 << UCSZ01) | (1 << UCSZ00);
    UCSR0B = (1 << RXCIE0) | (1 << RXEN0) | (1 << TXEN0);
    PORTD |= 1 << PORTD0; /* RXD rests high while no link is plugged in */
    /* A millisecond: timer 2, 250 counts of 4 microseconds. */
    TCCR2A = 1 << WGM21;
    TCCR2B = 1 << CS22;
    OCR2A = 249;
    TIMSK2 = 1 << OCIE2A;
    /* The pulse: timer 1 counts half microseconds, and keeps when the pin ICP1 changed. */
    PORTB |= 1 << PORTB0;
    TCCR1B = (1 << ICNC1) | (1 << ICES1) | (1 << CS11);
    TIMSK1 = 1 << ICIE1;
    sei();
}

ISR(USART_RX_vect) {
    ring[ring_end] = UDR0;
    ring_end = (uint8_t)((ring_end + 1) % RING);
}

ISR(TIMER2_COMPA_vect) {
    ++milliseconds;
    if (silence < SILENCE)
        ++silence;
}

ISR(TIMER1_CAPT_vect) {
    static uint16_t begin;
    const uint16_t now = ICR1;
    const bool rose = TCCR1B & (1 << ICES1);
    TCCR1B ^= 1 << ICES1;
    TIFR1 = 1 << ICF1; /* the change of the edge may have set it */
    if (rose) {
        begin = now;
        return;
    }
    const uint16_t length = (uint16_t)(now - begin);
    if (length < SHORTEST * COUNTS_A_MICROSECOND || length > LONGEST * COUNTS_A_MICROSECOND)
        return;
    pulse = length;
    silence = 0;
}

uint16_t board_pulse(void) {
    uint16_t counts;
    ATOMIC_BLOCK(ATOMIC_RESTORESTATE) {
        counts = pulse;
    }
    return silence >= SILENCE ? BOARD_NO_SIGNAL : counts / COUNTS_A_MICROSECOND;
}

uint8_t board_work(void) {
    uint8_t passed;
    ATOMIC_BLOCK(ATOMIC_RESTORESTATE) {
        passed = milliseconds;
        milliseconds = 0;
    }
    while (ring_begin != ring_end) {
        cv_take(ring[ring_begin]);
        ring_begin = (uint8_t)((ring_begin + 1) % RING);
    }
    if (passed > 0)
        cv_pass(passed);
    if (UCSR0A & (1 << UDRE0)) {
        const int byte = cv_give();
        if (byte >= 0)
            UDR0 = (uint8_t)byte;
    }
    cv_memory_work();
    return passed;
}

bool cv_memory_ready(void) {
    return eeprom_is_ready();
}

/* Addresses past the end come round again. */
static uint8_t* cell(uint16_t address) {
    return (uint8_t*)(address & E2END);
}

uint8_t cv_memory_read(uint16_t address) {
    return eeprom_read_byte(cell(address));
}

void cv_memory_write(uint16_t address, uint8_t byte) {
    eeprom_write_byte(cell(address), byte);
}
