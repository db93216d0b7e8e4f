#include "corvane_memory.h"

enum { READ_CHANNEL = 208, WRITE_CHANNEL = 209, READ_REPLY = 80, WRITE_REPLY = 81 };
enum { ADDRESS_LENGTH = 2, REQUESTS = 2 };

typedef struct {
    const uint8_t* bytes; /* to write, kept by the wire; null for a read */
    uint16_t address;
    uint8_t count;
    uint8_t done; /* bytes written */
    bool answered;
} request;

static request requests[REQUESTS];
static uint8_t waiting;       /* how many of them there are */
static uint16_t reading_from; /* while a reply is streamed */

void cv_memory_begin(void) {
    waiting = 0;
}

static void drop_first(void) {
    const uint8_t kept = requests[0].bytes ? requests[0].count : 0;
    cv_let_go(kept);
    if (--waiting == 0)
        return;
    requests[0] = requests[1];
    if (requests[0].bytes)
        requests[0].bytes += kept;
}

bool cv_memory_data(uint8_t channel, const uint8_t* data, uint8_t count) {
    request* asked = &requests[waiting];
    if (channel != READ_CHANNEL && channel != WRITE_CHANNEL)
        return false;
    if (count <= ADDRESS_LENGTH || waiting == REQUESTS)
        return true; /* not understood, or no room: no answer */
    asked->address = (uint16_t)(data[0] | (uint16_t)(data[1] << 8));
    asked->done = 0;
    asked->answered = true;
    if (channel == READ_CHANNEL) {
        asked->bytes = 0;
        asked->count = data[ADDRESS_LENGTH];
    } else {
        asked->count = (uint8_t)(count - ADDRESS_LENGTH);
        asked->bytes = cv_keep(data + ADDRESS_LENGTH, asked->count);
    }
    ++waiting;
    return true;
}

void cv_memory_session(void) {
    if (waiting == REQUESTS && !requests[1].bytes)
        --waiting;
    if (waiting > 0 && !requests[0].bytes)
        drop_first();
    requests[0].answered = requests[1].answered = false;
}

static uint8_t cell_at(uint8_t index) {
    return cv_memory_read((uint16_t)(reading_from + index));
}

void cv_memory_work(void) {
    request* first = &requests[0];
    /* What a reply is made of must not change while it may be sent again. */
    if (waiting == 0 || !cv_memory_ready() || (cv_in_session() && !cv_free()))
        return;
    if (!first->bytes) {
        reading_from = first->address;
        (void)cv_stream(READ_REPLY, first->count, cell_at);
        drop_first();
    } else if (first->done < first->count) {
        const uint16_t address = (uint16_t)(first->address + first->done);
        const uint8_t byte = first->bytes[first->done++];
        if (cv_memory_read(address) != byte)
            cv_memory_write(address, byte);
    } else {
        if (first->answered)
            (void)cv_send(WRITE_REPLY, 0);
        drop_first();
    }
}
