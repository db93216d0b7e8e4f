/* The firmware kit's library compiled for this computer, with a memory behind it whose cells take
 * 4 ms each to be written. Packets on channel 200 come back on 72. */
#ifndef WITNESS_H
#define WITNESS_H

#include <stdbool.h>
#include <stdint.h>

enum { WITNESS_CELLS = 1024 };

struct witness {
    void (*begin)(uint8_t device_major, uint8_t device_minor);
    void (*take)(uint8_t byte);
    int (*give)(void);
    void (*pass)(uint8_t milliseconds);
    void (*work)(void);
    bool (*in_session)(void);
    uint8_t* cells;
    unsigned* delivered; /* packets on other channels than those of the memory */
    unsigned* written;   /* cells */
    unsigned longest;    /* data that it takes */
};

#ifdef __cplusplus
extern "C" {
#endif
extern const struct witness witness_whole, witness_small;
#ifdef __cplusplus
}
#endif

#endif
