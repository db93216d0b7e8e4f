/* A virtual link NAME with the library behind it, compiled for this computer: small with a fourth
 * argument. Usage: firmware-link NAME DEVICE-MAJOR DEVICE-MINOR [small] */
#define _GNU_SOURCE
#include "link.h"
#include "witness.h"

#include <stdlib.h>
#include <time.h>

static const struct witness* firmware = &witness_whole;
static uint8_t device[2];

static void bytes(const uint8_t* from, size_t count) {
    for (size_t i = 0; i < count; ++i)
        firmware->take(from[i]);
}

static void power(void) {
    firmware->begin(device[0], device[1]);
}

static long milliseconds(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

int main(int argc, char** argv) {
    if (argc < 4)
        return 2;
    if (argc > 4)
        firmware = &witness_small;
    device[0] = (uint8_t)atoi(argv[2]);
    device[1] = (uint8_t)atoi(argv[3]);
    for (int i = 0; i < WITNESS_CELLS; ++i)
        firmware->cells[i] = 255;
    power();
    if (link_plug_in(argv[1], (struct link_product){bytes, power}) != 0)
        return 1;
    for (long last = milliseconds();;) {
        uint8_t given[512];
        size_t count = 0;
        link_serve(500);
        for (; last < milliseconds(); ++last)
            firmware->pass(1);
        firmware->work();
        for (int byte; count < sizeof given && (byte = firmware->give()) >= 0;)
            given[count++] = (uint8_t)byte;
        link_send(given, count);
    }
}
