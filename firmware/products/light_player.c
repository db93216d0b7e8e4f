#include "light_player.h"

/* Where the image has what. */
enum {
    TRIP_POINTS = 0,
    TOP_BEGINS = 6, /* seven, with the end of the program */
    BOTTOM_BEGINS = 13,
    BANDS = 19,
    PROGRAM = 25,
    WITHOUT_SIGNAL = 239,
    TURN_OFF_POINTS = 245,
    SHORTEST_PULSE = 251,
    LONGEST_PULSE = 253
};
enum { PROGRAM_LENGTH = WITHOUT_SIGNAL - PROGRAM };
enum { FOLLOWS = 251, FOLLOWS_FROM_TRIP_POINT = 252 };
enum { FULL_LEVEL = 255, MIDDLE = 127 };
enum { MS_A_HUNDREDTH = 10 };

typedef enum { NONE, TOP, BOTTOM, OFF } track;

typedef struct {
    uint16_t left; /* ms of the block that plays; 0 while nothing does */
    uint8_t at;    /* its offset in the program */
    uint8_t track; /* a track */
} state;

static const uint8_t* image;
static state states[LIGHT_CHANNELS];
static uint8_t level;
static bool signal_there;

static uint8_t begin_of(uint8_t channel) {
    return image[(states[channel].track == TOP ? TOP_BEGINS : BOTTOM_BEGINS) + channel];
}

static uint8_t end_of(uint8_t channel) {
    return states[channel].track == TOP ? image[BOTTOM_BEGINS + channel]
                                        : image[TOP_BEGINS + channel + 1];
}

/* Bytes of the block at an offset; 0 if there is none before the end of the track. */
static uint8_t length_of(uint8_t at, uint8_t end) {
    uint8_t second;
    if (at + 1 >= end || at + 1 >= PROGRAM_LENGTH)
        return 0;
    second = image[PROGRAM + at + 1];
    if (second != FOLLOWS && second != FOLLOWS_FROM_TRIP_POINT)
        return 2;
    return at + 3 < PROGRAM_LENGTH ? 4 : 0;
}

/* Plays the block at its offset, or the next one that takes time, if any of the track does. */
static void play_from(uint8_t channel) {
    state* s = &states[channel];
    const uint8_t begin = begin_of(channel);
    const uint8_t end = end_of(channel);
    bool again = false;
    s->left = 0;
    for (;;) {
        const uint8_t length = length_of(s->at, end);
        if (length == 0) {
            if (again)
                return; /* all of it was looked at */
            again = true;
            s->at = begin;
        } else if (image[PROGRAM + s->at] == 0) {
            s->at = (uint8_t)(s->at + length);
        } else {
            s->left = (uint16_t)(image[PROGRAM + s->at] * MS_A_HUNDREDTH);
            return;
        }
    }
}

static void change(uint8_t channel, track to) {
    state* s = &states[channel];
    if (s->track == to)
        return;
    s->track = (uint8_t)to;
    s->left = 0;
    if (to == OFF)
        return;
    s->at = begin_of(channel);
    play_from(channel);
}

/* Which track a channel plays at this level; a track that plays holds on within the band. */
static track wanted(uint8_t channel) {
    const int trip_point = image[TRIP_POINTS + channel];
    const int band = image[BANDS + channel];
    const track playing = (track)states[channel].track;
    const bool off = level < image[TURN_OFF_POINTS + channel];
    if (!signal_there)
        return image[WITHOUT_SIGNAL + channel] == 1 ? TOP : BOTTOM;
    if (playing == TOP && level >= trip_point - band)
        return TOP;
    if (off)
        return OFF;
    if (playing == BOTTOM && level < trip_point + band)
        return BOTTOM;
    return level < trip_point ? BOTTOM : TOP;
}

static void choose(void) {
    uint8_t channel;
    for (channel = 0; channel < LIGHT_CHANNELS; ++channel)
        change(channel, wanted(channel));
}

void light_player_begin(const uint8_t* bytes) {
    uint8_t channel;
    image = bytes;
    for (channel = 0; channel < LIGHT_CHANNELS; ++channel) {
        states[channel].track = NONE;
        states[channel].left = 0;
    }
    level = MIDDLE;
}

static uint16_t number_at(uint8_t offset) {
    return (uint16_t)(image[offset] | (uint16_t)(image[offset + 1] << 8));
}

uint16_t light_player_shortest(void) {
    return number_at(SHORTEST_PULSE);
}

uint16_t light_player_longest(void) {
    return number_at(LONGEST_PULSE);
}

void light_player_stick(uint8_t new_level) {
    level = new_level;
    signal_there = true;
    choose();
}

void light_player_no_signal(void) {
    signal_there = false;
    choose();
}

void light_player_pass(uint16_t milliseconds) {
    uint8_t channel;
    for (channel = 0; channel < LIGHT_CHANNELS; ++channel) {
        state* s = &states[channel];
        uint16_t rest = milliseconds;
        while (s->left > 0 && rest >= s->left) {
            rest = (uint16_t)(rest - s->left);
            s->at = (uint8_t)(s->at + length_of(s->at, end_of(channel)));
            play_from(channel);
        }
        if (s->left > 0)
            s->left = (uint16_t)(s->left - rest);
    }
}

/* The way from one current to another, in whole mA towards the first. */
static uint8_t between(uint8_t low, uint8_t high, uint8_t part, uint8_t whole) {
    if (high >= low)
        return (uint8_t)(low + (uint16_t)((uint16_t)(high - low) * part) / whole);
    return (uint8_t)(low - (uint16_t)((uint16_t)(low - high) * part) / whole);
}

uint8_t light_player_current(uint8_t channel) {
    const state* s = &states[channel];
    const uint8_t* block = image + PROGRAM + s->at;
    const uint8_t trip_point = image[TRIP_POINTS + channel];
    const uint8_t lowest = s->track == TOP ? trip_point : 0;
    const uint8_t highest = s->track == TOP ? FULL_LEVEL : trip_point;
    if (s->left == 0)
        return 0;
    if (block[1] == FOLLOWS)
        return between(block[3], block[2], level, FULL_LEVEL);
    if (block[1] != FOLLOWS_FROM_TRIP_POINT)
        return block[1];
    if (lowest == highest || level < lowest || level > highest)
        return 0;
    return between(block[3], block[2], (uint8_t)(level - lowest), (uint8_t)(highest - lowest));
}
