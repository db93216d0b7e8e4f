/* A virtual link for programs that hold a firmware behind it. */
#ifndef LINK_H
#define LINK_H

#include <stddef.h>
#include <stdint.h>

struct link_product {
    void (*bytes)(const uint8_t* bytes, size_t count); /* have come from the computer */
    void (*power)(void);                               /* is to be taken away and given back */
};

/* Plugs the link NAME in, in the folder $CORVANE_BENCH_DIR. 0, or -1 with a message. */
int link_plug_in(const char* name, struct link_product product);
/* Deals with what computers want, and waits for it this long at most. */
void link_serve(long microseconds);
/* To the computer that has the link open, if one has. */
void link_send(const uint8_t* bytes, size_t count);
/* Takes the socket away. */
void link_unplug(void);

#endif
