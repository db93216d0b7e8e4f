#include "witness.h"

#define CV_API static
#include "../../firmware/src/corvane_memory.c"
#include "../../firmware/src/corvane_wire.c"

#include <string.h>

static uint8_t cells[WITNESS_CELLS];
static unsigned delivered, written;
static unsigned busy; /* ms that a write takes yet */

bool cv_memory_ready(void) {
    return busy == 0;
}

uint8_t cv_memory_read(uint16_t address) {
    return cells[address % WITNESS_CELLS];
}

void cv_memory_write(uint16_t address, uint8_t byte) {
    cells[address % WITNESS_CELLS] = byte;
    busy = 4;
    ++written;
}

void cv_on_session(void) {
    cv_memory_session();
}

void cv_on_data(uint8_t channel, const uint8_t* data, uint8_t count) {
    if (cv_memory_data(channel, data, count))
        return;
    ++delivered;
    if (channel != 200 || !cv_free())
        return;
    if (CV_ANSWER_MAX > 0)
        memcpy(cv_answer(), data, count);
    (void)cv_send(72, count); /* which refuses what it has no room for */
}

static void begin(uint8_t device_major, uint8_t device_minor) {
    delivered = written = busy = 0;
    cv_memory_begin();
    cv_begin(device_major, device_minor, 3, 7);
}

static void pass(uint8_t milliseconds) {
    cv_pass(milliseconds);
    busy = busy > milliseconds ? busy - milliseconds : 0;
}

#ifdef CV_SMALL
#define WITNESS witness_small
#else
#define WITNESS witness_whole
#endif

const struct witness WITNESS = {begin,         cv_take, cv_give,    pass,     cv_memory_work,
                                cv_in_session, cells,   &delivered, &written, CV_RECEIVE_MAX};
