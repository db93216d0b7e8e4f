/* An ATmega328P with the program ELF, emulated, behind the virtual link NAME: chip ELF NAME. It
 * runs at the speed of a real one or slower. What the emulator makes easier than it is, is done
 * here: the UART loses a byte that comes while two wait to be read, bytes take their time on the
 * wire both ways, and a cell of the EEPROM takes 3.4 ms to be written. Takes lines at its input:
 *   pulse N     the receiver's pulse has N microseconds, or there is none (0)
 *   faults L D  so many of 1000 bytes are lost and damaged, each way
 *   outputs     gives the share of the last 98 ms for which each output was on, in 255ths:
 *               PC0 to PC5, PD5, PD6
 *   report      gives: bytes that the UART lost, accesses to the EEPROM while it was busy, cycles
 * from a question to its answer at most */
#define _GNU_SOURCE
#include "link.h"

#include <avr_ioport.h>
#include <avr_uart.h>
#include <fcntl.h>
#include <signal.h>
#include <sim_avr.h>
#include <sim_elf.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { HERTZ = 16000000, BAUD = 250000, BYTE = HERTZ / BAUD * 10 };
enum { CELL = HERTZ / 10000 * 34, FRAME = HERTZ / 50, WINDOW = 12 * 255 * 512 };
enum { EECR = 0x3F, EEMPE = 1 << 2, EEPE = 1 << 1, EERE = 1 << 0 };
enum { U2X = 1 << 1, OUTPUTS = 8, QUEUE = 1 << 16 };

static avr_t* avr;
static avr_uart_t* uart;

/* The wire, and the UART's two bytes that wait to be read and one that waits to be sent. */
static uint8_t queue[QUEUE];
static unsigned queue_begin, queue_end;
static bool arriving;
static uint8_t fifo[2];
static int in_fifo;
static int waiting = -1, shifted = -1;
static uint8_t given[QUEUE];
static size_t in_given;

static FILE* answers;
static int lost, damaged; /* of 1000 */
static unsigned overruns, busy_accesses;
static avr_cycle_count_t worst, asked;
static bool chip_speaks;
static unsigned length_in; /* of the frame that arrives */
static uint8_t type_in;

static avr_cycle_count_t cell_until;
static bool armed;
static unsigned pulse;
static bool pulse_high;

static struct {
    bool on;
    avr_cycle_count_t since, sum;
} outputs[OUTPUTS];

static bool happens(int of_1000) {
    return of_1000 > 0 && rand() % 1000 < of_1000;
}

/* A byte that is not lost, perhaps damaged. */
static bool passes(uint8_t* byte) {
    if (happens(damaged))
        *byte = (uint8_t)(*byte ^ (1 + rand() % 255));
    return !happens(lost);
}

static avr_cycle_count_t arrived(avr_t* chip, avr_cycle_count_t when, void* nothing) {
    (void)chip, (void)nothing;
    const uint8_t byte = queue[queue_begin++ % QUEUE];
    if (!avr_regbit_get(avr, uart->rxen))
        in_fifo = 0;
    else if (in_fifo == 2)
        ++overruns;
    else
        fifo[in_fifo++] = byte;
    if (in_fifo > 0)
        avr_raise_interrupt(avr, &uart->rxc);
    /* Only what must be answered, with nothing else on its way, tells how quick the chip is. */
    if (byte == 0) {
        if (length_in > 0 && (type_in == 1 || type_in == 3) && !chip_speaks && lost + damaged == 0)
            asked = when;
        length_in = 0;
    } else if (++length_in == 2) {
        type_in = byte;
    }
    arriving = queue_begin != queue_end;
    return arriving ? when + BYTE : 0;
}

static void from_computer(const uint8_t* bytes, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        uint8_t byte = bytes[i];
        if (passes(&byte))
            queue[queue_end++ % QUEUE] = byte;
    }
    if (!arriving && queue_begin != queue_end) {
        arriving = true;
        avr_cycle_timer_register(avr, BYTE, arrived, NULL);
    }
}

/* The flag, too, which the emulator leaves to the UART. */
static void clear(avr_int_vector_t* vector) {
    avr_clear_interrupt(avr, vector);
    avr_regbit_clear(avr, vector->raised);
}

static uint8_t read_data(avr_t* chip, avr_io_addr_t address, void* nothing) {
    (void)chip, (void)nothing;
    clear(&uart->rxc);
    if (in_fifo > 0) {
        avr->data[address] = fifo[0];
        fifo[0] = fifo[1];
        if (--in_fifo > 0)
            avr_raise_interrupt(avr, &uart->rxc);
    }
    return avr->data[address];
}

static avr_cycle_count_t sent(avr_t* chip, avr_cycle_count_t when, void* nothing);

static void shift(uint8_t byte) {
    shifted = byte;
    avr_cycle_timer_register(avr, BYTE, sent, NULL);
    if (!chip_speaks && asked > 0) {
        if (avr->cycle - asked > worst)
            worst = avr->cycle - asked;
        asked = 0;
    }
    chip_speaks = true;
}

static avr_cycle_count_t sent(avr_t* chip, avr_cycle_count_t when, void* nothing) {
    (void)chip, (void)when, (void)nothing;
    uint8_t byte = (uint8_t)shifted;
    shifted = -1;
    chip_speaks = byte != 0;
    if (passes(&byte))
        given[in_given++ % QUEUE] = byte;
    if (waiting >= 0) {
        shift((uint8_t)waiting);
        waiting = -1;
        avr_raise_interrupt(avr, &uart->udrc);
    }
    return 0;
}

static void write_data(avr_t* chip, avr_io_addr_t address, uint8_t byte, void* nothing) {
    (void)chip, (void)address, (void)nothing;
    static bool looked;
    if (!looked) {
        const int divisor = (avr->data[uart->r_ucsra] & U2X) != 0 ? 8 : 16;
        const int baud = HERTZ / divisor / (avr->data[uart->ubrrl.reg] + 1);
        looked = true;
        if (baud != BAUD) {
            fprintf(stderr, "the chip has %d baud\n", baud);
            exit(1);
        }
    }
    clear(&uart->udrc);
    if (shifted >= 0) {
        waiting = byte;
        return;
    }
    shift(byte);
    avr_raise_interrupt(avr, &uart->udrc);
}

static void write_control(avr_t* chip, avr_io_addr_t address, uint8_t value, void* nothing) {
    (void)chip, (void)nothing;
    avr->data[address] = value;
    if (in_fifo > 0)
        avr_raise_interrupt(avr, &uart->rxc);
    if (waiting < 0)
        avr_raise_interrupt(avr, &uart->udrc);
}

static void write_status(avr_t* chip, avr_io_addr_t address, uint8_t value, void* nothing) {
    (void)chip, (void)nothing;
    avr->data[address] = (uint8_t)((avr->data[address] & ~3) | (value & 3));
}

static avr_cycle_count_t cell_written(avr_t* chip, avr_cycle_count_t when, void* nothing) {
    (void)chip, (void)when, (void)nothing;
    avr->data[EECR] = (uint8_t)(avr->data[EECR] & ~EEPE);
    return 0;
}

/* Comes behind the emulator's own, which has taken the byte over at once. */
static void write_eeprom_control(avr_t* chip, avr_io_addr_t address, uint8_t value, void* nothing) {
    (void)chip, (void)nothing;
    const bool busy = avr->cycle < cell_until;
    if (busy && (value & (EERE | EEMPE)) != 0)
        ++busy_accesses;
    if (armed && (value & EEPE) != 0 && !busy) {
        cell_until = avr->cycle + CELL;
        avr_cycle_timer_register(avr, CELL, cell_written, NULL);
    }
    armed = (value & EEMPE) != 0;
    if (avr->cycle < cell_until)
        avr->data[address] |= EEPE;
}

static avr_cycle_count_t pulse_edge(avr_t* chip, avr_cycle_count_t when, void* nothing) {
    (void)chip, (void)nothing;
    static avr_cycle_count_t length;
    pulse_high = !pulse_high && pulse > 0;
    avr_raise_irq(avr_io_getirq(avr, AVR_IOCTL_IOPORT_GETIRQ('B'), 0), pulse_high);
    if (!pulse_high)
        return when + FRAME - length;
    length = (avr_cycle_count_t)pulse * (HERTZ / 1000000);
    return when + length;
}

static void count_output(int i) {
    if (outputs[i].on)
        outputs[i].sum += avr->cycle - outputs[i].since;
    outputs[i].since = avr->cycle;
}

static void output_changed(avr_irq_t* irq, uint32_t value, void* which) {
    (void)irq;
    const int i = (int)(intptr_t)which;
    count_output(i);
    outputs[i].on = value != 0;
}

static avr_cycle_count_t window_over(avr_t* chip, avr_cycle_count_t when, void* nothing) {
    (void)chip, (void)when, (void)nothing;
    for (int i = 0; i < OUTPUTS; ++i) {
        count_output(i);
        fprintf(answers, "%s%d", i == 0 ? "" : " ",
                (int)((outputs[i].sum * 255 + WINDOW / 2) / WINDOW));
    }
    fprintf(answers, "\n");
    fflush(answers);
    return 0;
}

static void command(const char* line) {
    if (sscanf(line, "pulse %u", &pulse) == 1 || sscanf(line, "faults %d %d", &lost, &damaged) == 2)
        return;
    if (strncmp(line, "outputs", 7) == 0) {
        for (int i = 0; i < OUTPUTS; ++i) {
            count_output(i);
            outputs[i].sum = 0;
        }
        avr_cycle_timer_register(avr, WINDOW, window_over, NULL);
    } else {
        fprintf(answers, "%u %u %u\n", overruns, busy_accesses, (unsigned)worst);
        fflush(answers);
    }
}

/* The end of the input is the end of the program. */
static bool read_commands(void) {
    static char line[80];
    static size_t length;
    char byte;
    ssize_t count;
    while ((count = read(0, &byte, 1)) == 1) {
        if (length < sizeof line - 1 && byte != '\n')
            line[length++] = byte;
        if (byte != '\n')
            continue;
        line[length] = 0;
        length = 0;
        command(line);
    }
    return count != 0;
}

static void power(void) {
    for (unsigned i = 0x100; i <= avr->ramend; ++i)
        avr->data[i] = (uint8_t)rand(); /* as it is after the power has come */
    avr_reset(avr);
    queue_begin = queue_end = 0;
    in_fifo = 0;
    waiting = shifted = -1;
    in_given = 0;
    arriving = chip_speaks = pulse_high = armed = false;
    length_in = 0;
    asked = cell_until = 0;
    avr_cycle_timer_register(avr, FRAME, pulse_edge, NULL);
}

static void take_over_the_uart(void) {
    for (avr_io_t* io = avr->io_port; io != NULL; io = io->next)
        if (strcmp(io->kind, "uart") == 0)
            uart = (avr_uart_t*)io;
    avr->io[AVR_DATA_TO_IO(uart->r_udr)].r.c = read_data;
    avr->io[AVR_DATA_TO_IO(uart->r_udr)].w.c = write_data;
    avr->io[AVR_DATA_TO_IO(uart->r_ucsra)].r.c = NULL;
    avr->io[AVR_DATA_TO_IO(uart->r_ucsra)].w.c = write_status;
    avr->io[AVR_DATA_TO_IO(uart->r_ucsrb)].w.c = write_control;
}

static void watch_outputs(void) {
    for (int i = 0; i < OUTPUTS; ++i)
        avr_irq_register_notify(
            avr_io_getirq(avr, AVR_IOCTL_IOPORT_GETIRQ(i < 6 ? 'C' : 'D'), i < 6 ? i : i - 1),
            output_changed, (void*)(intptr_t)i);
}

static long microseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000000L + now.tv_nsec / 1000;
}

int main(int argc, char** argv) {
    elf_firmware_t firmware = {0};
    answers = fdopen(dup(1), "w");
    dup2(2, 1); /* what the emulator says */
    if (argc < 3 || elf_read_firmware(argv[1], &firmware) != 0)
        return 2;
    avr = avr_make_mcu_by_name("atmega328p");
    avr_init(avr);
    avr->log = LOG_ERROR;
    firmware.frequency = HERTZ;
    avr_load_firmware(avr, &firmware);
    avr->frequency = HERTZ;
    take_over_the_uart();
    watch_outputs();
    avr_register_io_write(avr, EECR, write_eeprom_control, NULL);
    power();
    fcntl(0, F_SETFL, O_NONBLOCK);
    if (link_plug_in(argv[2], (struct link_product){from_computer, power}) != 0)
        return 1;
    long then = microseconds();
    while (read_commands()) {
        link_serve(in_given > 0 ? 0 : 200);
        /* As much as has passed, but what it was late by is not made up for. */
        const long now = microseconds();
        const avr_cycle_count_t until =
            avr->cycle + (avr_cycle_count_t)(now - then < 5000 ? now - then : 5000) * 16;
        then = now;
        while (avr->cycle < until) {
            const int state = avr_run(avr);
            if (state == cpu_Done || state == cpu_Crashed) {
                fprintf(stderr, "the chip has crashed\n");
                return 1;
            }
        }
        link_send(given, in_given);
        in_given = 0;
    }
    link_unplug();
    return 0;
}
