#define _GNU_SOURCE
#include "link.h"

#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

enum { COMPUTERS = 8, HEAD = 3, LONGEST = 4096 };

static const char strings[] = "Corvane\0Ortaline Works\0KO\0KO0000033";

struct computer {
    int socket; /* 0 for none */
    size_t count;
    uint8_t bytes[HEAD + LONGEST];
};

static struct computer computers[COMPUTERS];
static struct computer* opened;
static struct link_product product;
static struct sockaddr_un address = {.sun_family = AF_UNIX};
static int listener;

int link_plug_in(const char* name, struct link_product behind) {
    const char* folder = getenv("CORVANE_BENCH_DIR");
    product = behind;
    snprintf(address.sun_path, sizeof address.sun_path, "%s/%s.link", folder ? folder : ".", name);
    unlink(address.sun_path);
    listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener, (const struct sockaddr*)&address, sizeof address) == 0 &&
        listen(listener, COMPUTERS) == 0)
        return 0;
    perror(address.sun_path);
    return -1;
}

void link_unplug(void) {
    unlink(address.sun_path);
}

static void close_one(struct computer* c) {
    close(c->socket);
    c->socket = 0;
    if (opened == c)
        opened = NULL;
}

static void answer(struct computer* c, char kind, const void* bytes, size_t count) {
    uint8_t message[HEAD + LONGEST];
    message[0] = (uint8_t)kind;
    message[1] = (uint8_t)(count % 256);
    message[2] = (uint8_t)(count / 256);
    memcpy(message + HEAD, bytes, count);
    if (send(c->socket, message, HEAD + count, MSG_NOSIGNAL) != (ssize_t)(HEAD + count))
        close_one(c);
}

void link_send(const uint8_t* bytes, size_t count) {
    if (opened != NULL && count > 0)
        answer(opened, 'D', bytes, count);
}

static void act(struct computer* c, char kind, const uint8_t* bytes, size_t count) {
    if (kind == 'I')
        answer(c, 'I', strings, sizeof strings);
    else if (kind == 'P')
        answer(c, 'P', "", 1); /* refused */
    else if (kind == 'O' && (opened == NULL || opened == c))
        opened = c;
    else if (kind == 'D' && opened == c)
        product.bytes(bytes, count);
    else if (kind == 'R' && opened == c)
        product.power();
    else
        close_one(c);
}

static void receive(struct computer* c) {
    const ssize_t count = recv(c->socket, c->bytes + c->count, sizeof c->bytes - c->count, 0);
    if (count <= 0) {
        close_one(c);
        return;
    }
    c->count += (size_t)count;
    while (c->socket != 0 && c->count >= HEAD) {
        const size_t length = c->bytes[1] + 256U * c->bytes[2];
        if (length > LONGEST)
            close_one(c);
        if (length > LONGEST || c->count < HEAD + length)
            return;
        act(c, (char)c->bytes[0], c->bytes + HEAD, length);
        c->count -= HEAD + length;
        memmove(c->bytes, c->bytes + HEAD + length, c->count);
    }
}

static void accept_one(void) {
    const int socket = accept4(listener, NULL, NULL, SOCK_CLOEXEC);
    for (int i = 0; i < COMPUTERS; ++i)
        if (computers[i].socket == 0) {
            computers[i].socket = socket;
            computers[i].count = 0;
            return;
        }
    close(socket);
}

void link_serve(long microseconds) {
    struct pollfd polled[COMPUTERS + 1];
    const struct timespec limit = {0, microseconds * 1000};
    for (int i = 0; i < COMPUTERS; ++i)
        polled[i] = (struct pollfd){computers[i].socket > 0 ? computers[i].socket : -1, POLLIN, 0};
    polled[COMPUTERS] = (struct pollfd){listener, POLLIN, 0};
    if (ppoll(polled, COMPUTERS + 1, &limit, NULL) <= 0)
        return;
    for (int i = 0; i < COMPUTERS; ++i)
        if (polled[i].revents != 0 && computers[i].socket != 0)
            receive(&computers[i]);
    if (polled[COMPUTERS].revents != 0)
        accept_one();
}
