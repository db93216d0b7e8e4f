#include "stick.h"

static uint8_t level(uint16_t pulse, uint16_t shortest, uint16_t longest, uint16_t half) {
    if (pulse <= shortest || longest <= shortest)
        return 0;
    if (pulse >= longest)
        return FULL_LEVEL;
    return (uint8_t)(((uint32_t)(uint16_t)(pulse - shortest) * FULL_LEVEL + half) /
                     (uint16_t)(longest - shortest));
}

uint8_t stick_level_below(uint16_t pulse, uint16_t shortest, uint16_t longest) {
    return level(pulse, shortest, longest, 0);
}

uint8_t stick_level_nearest(uint16_t pulse, uint16_t shortest, uint16_t longest) {
    return level(pulse, shortest, longest, (uint16_t)((uint16_t)(longest - shortest) / 2));
}
