#include "corvane_wire.h"

enum { DATA = 1, ACK = 2, HELLO = 3, ECHO = 4 };
enum { IDENTIFICATION_CHANNEL = 0, LEFT_CHANNEL = 126, LEAVE_CHANNEL = 127 };
enum { IDENTIFICATION_LENGTH = 5 };
enum { HEAD = 3, TAIL = 2 }; /* of a body: type, number, channel; and the CRC */
enum { SENDINGS = 6, REPEAT_AFTER = 50 /* ms */ };
enum { FULL_RUN = 255 }; /* the code of a run that no zero follows */

typedef enum { FROM_ANSWER, FROM_IDENTITY, FROM_STREAM } source;

/* What is being received: the body without its COBS. The last two bytes might be the CRC, so each
 * byte counts as content once two more have come. */
static struct {
    uint16_t length; /* bytes of the body so far */
    uint16_t crc;    /* of the content so far */
    uint8_t code;    /* of the run that is being received */
    uint8_t left;    /* bytes of it still to come */
    uint8_t head[HEAD];
    uint8_t tail[TAIL];
    bool sound; /* no frame yet is too long */
} in;

static uint8_t received[CV_RECEIVE_MAX]; /* data from below, what is kept at the top */
static uint8_t room;                     /* where that begins */

static struct {
    uint8_t identity[4];
    bool session;
    bool leaving;
    bool accepted_any;
    uint8_t accepted; /* number of the last DATA that was */
    uint8_t next;     /* number of the next DATA */
    bool owes_echo;
    bool owes_ack;
    uint8_t echo;
    uint8_t ack;
} side;

/* The one packet that is not acknowledged yet. */
static struct {
    uint8_t (*byte_at)(uint8_t index);
    bool busy;
    bool due; /* is to be sent, again or at first */
    uint8_t number;
    uint8_t channel;
    uint8_t count;
    uint8_t from; /* a source */
    uint8_t sendings;
    uint8_t waited; /* ms since the end of the last sending */
} packet;

/* The frame whose bytes are being given: body and COBS are worked out on the way. */
static struct {
    uint16_t length; /* of the body */
    uint16_t at;     /* the next byte to be given */
    uint16_t seen;   /* bytes that the runs so far reach over */
    uint16_t crc;    /* of those */
    uint8_t type;    /* 0 for one that was broken off */
    uint8_t number;
    uint8_t left; /* bytes of this run still to be given */
    bool giving;
    bool more; /* another run follows */
} out;

#if CV_ANSWER_MAX > 0
static uint8_t answer[CV_ANSWER_MAX];
#endif

static uint16_t crc_of(uint16_t crc, uint8_t byte) {
    uint8_t x = (uint8_t)((crc >> 8) ^ byte);
    x = (uint8_t)(x ^ (x >> 4));
    return (uint16_t)((uint16_t)(crc << 8) ^ (uint16_t)((uint16_t)x << 12) ^
                      (uint16_t)((uint16_t)x << 5) ^ x);
}

static void next_frame(void) {
    in.length = 0;
    in.crc = 0xFFFF;
    in.code = FULL_RUN; /* no zero before the first run */
    in.left = 0;
    in.sound = true;
}

void cv_begin(uint8_t device_major, uint8_t device_minor, uint8_t firmware_major,
              uint8_t firmware_minor) {
    side.session = side.leaving = side.owes_echo = side.owes_ack = false;
    packet.busy = packet.due = false;
    out.giving = false;
    side.identity[0] = device_major;
    side.identity[1] = device_minor;
    side.identity[2] = firmware_major;
    side.identity[3] = firmware_minor;
    room = CV_RECEIVE_MAX;
    next_frame();
}

bool cv_in_session(void) {
    return side.session;
}

bool cv_free(void) {
    return side.session && !side.leaving && !packet.busy;
}

/* A frame that is half given becomes one that nobody takes: its end comes too early. */
static void break_off(void) {
    out.type = 0;
    out.left = 0;
    out.more = false;
}

static void start(uint8_t channel, uint8_t count, source from) {
    packet.busy = true;
    packet.due = true;
    packet.number = side.next++;
    packet.channel = channel;
    packet.count = count;
    packet.from = (uint8_t)from;
    packet.sendings = 0;
    packet.waited = 0;
}

/* The packet is acknowledged or given up. */
static void settled(void) {
    packet.busy = false;
    packet.due = false;
    if (!side.leaving)
        return;
    if (packet.channel == LEFT_CHANNEL)
        side.session = side.leaving = false;
    else
        start(LEFT_CHANNEL, 0, FROM_ANSWER);
}

bool cv_send(uint8_t channel, uint8_t count) {
#if CV_ANSWER_MAX < 255
    if (count > CV_ANSWER_MAX)
        return false;
#endif
    if (!cv_free())
        return false;
    start(channel, count, FROM_ANSWER);
    return true;
}

bool cv_stream(uint8_t channel, uint8_t count, uint8_t (*byte_at)(uint8_t index)) {
    if (!cv_free())
        return false;
    packet.byte_at = byte_at;
    start(channel, count, FROM_STREAM);
    return true;
}

uint8_t* cv_answer(void) {
#if CV_ANSWER_MAX > 0
    return answer;
#else
    return 0;
#endif
}

/* Also where the two overlap. */
static void move_up(uint8_t* to, const uint8_t* from, uint8_t count) {
    while (count-- > 0)
        to[count] = from[count];
}

const uint8_t* cv_keep(const uint8_t* bytes, uint8_t count) {
    room = (uint8_t)(room - count);
    move_up(received + room, bytes, count);
    return received + room;
}

void cv_let_go(uint8_t count) {
    move_up(received + room + count, received + room, (uint8_t)(CV_RECEIVE_MAX - room - count));
    room = (uint8_t)(room + count);
}

static void hello(uint8_t value) {
    break_off();
    side.session = true;
    side.leaving = false;
    side.accepted_any = false;
    side.next = 0;
    side.owes_ack = false;
    side.owes_echo = true;
    side.echo = value;
    start(IDENTIFICATION_CHANNEL, IDENTIFICATION_LENGTH, FROM_IDENTITY);
    cv_on_session();
}

static void acknowledged(uint8_t number) {
    if (!packet.busy || packet.number != number || packet.sendings == 0)
        return;
    if (out.giving && out.type == DATA)
        break_off(); /* a repeat, which nobody needs any more */
    settled();
}

static void data(uint8_t number, uint8_t channel, uint8_t count) {
    if (!side.session)
        return;
    side.owes_ack = true;
    side.ack = number;
    if (side.accepted_any && side.accepted == number)
        return;
    side.accepted_any = true;
    side.accepted = number;
    if (side.leaving)
        return;
    if (channel != LEAVE_CHANNEL) {
        cv_on_data(channel, received, count);
        return;
    }
    side.leaving = true;
    if (!packet.busy)
        start(LEFT_CHANNEL, 0, FROM_ANSWER);
}

static void frame(void) {
    const uint16_t content = (uint16_t)(in.length - TAIL);
    if (in.length < TAIL + 2 || in.crc != (uint16_t)(in.tail[0] | (uint16_t)(in.tail[1] << 8)))
        return;
    if (in.head[0] == DATA && content >= HEAD)
        data(in.head[1], in.head[2], (uint8_t)(content - HEAD));
    else if (in.head[0] == ACK && content == 2)
        acknowledged(in.head[1]);
    else if (in.head[0] == HELLO && content == 2)
        hello(in.head[1]);
}

static void collect(uint8_t byte) {
    if (in.length >= TAIL) {
        const uint8_t content = in.tail[0];
        const uint16_t place = (uint16_t)(in.length - TAIL);
        if (place < HEAD)
            in.head[place] = content;
        else if (place - HEAD < room)
            received[place - HEAD] = content;
        else
            in.sound = false;
        in.crc = crc_of(in.crc, content);
    }
    in.tail[0] = in.tail[1];
    in.tail[1] = byte;
    if (in.sound)
        ++in.length;
}

void cv_take(uint8_t byte) {
    if (byte == 0) {
        if (in.sound && in.left == 0)
            frame();
        next_frame();
    } else if (in.left == 0) {
        if (in.code != FULL_RUN)
            collect(0);
        in.code = byte;
        in.left = (uint8_t)(byte - 1);
    } else {
        collect(byte);
        --in.left;
    }
}

static bool choose(void) {
    if (side.owes_echo) {
        side.owes_echo = false;
        out.type = ECHO;
        out.number = side.echo;
    } else if (side.owes_ack) {
        side.owes_ack = false;
        out.type = ACK;
        out.number = side.ack;
    } else if (packet.due) {
        out.type = DATA;
        out.number = packet.number;
        ++packet.sendings;
    } else {
        return false;
    }
    out.length = (uint16_t)(out.type == DATA ? HEAD + packet.count + TAIL : 2 + TAIL);
    out.at = out.seen = 0;
    out.crc = 0xFFFF;
    out.left = 0;
    out.giving = out.more = true;
    return true;
}

static uint8_t data_at(uint8_t index) {
    if (packet.from == FROM_STREAM)
        return packet.byte_at(index);
    if (packet.from == FROM_IDENTITY)
        return index < 4 ? side.identity[index]
                         : (uint8_t)(side.identity[0] + side.identity[1] + side.identity[2] +
                                     side.identity[3]);
#if CV_ANSWER_MAX > 0
    return answer[index];
#else
    return 0;
#endif
}

static uint8_t body_at(uint16_t place) {
    if (place == 0)
        return out.type;
    if (place == 1)
        return out.number;
    if (place + 2 == out.length)
        return (uint8_t)out.crc;
    if (place + 1 == out.length)
        return (uint8_t)(out.crc >> 8);
    return place == 2 ? packet.channel : data_at((uint8_t)(place - HEAD));
}

/* The next run: up to a zero, which it takes the place of, or 254 bytes, or the end. Its code. */
static uint8_t run(void) {
    uint8_t length = 0;
    out.at = out.seen;
    out.more = false;
    while (out.seen < out.length && !out.more) {
        if (length == FULL_RUN - 1) {
            out.more = true;
            break;
        }
        const uint8_t byte = body_at(out.seen);
        if (out.seen + TAIL < out.length)
            out.crc = crc_of(out.crc, byte);
        ++out.seen;
        if (byte == 0)
            out.more = true;
        else
            ++length;
    }
    out.left = length;
    return (uint8_t)(length + 1);
}

int cv_give(void) {
    if (!out.giving && !choose())
        return -1;
    if (out.left > 0) {
        --out.left;
        return body_at(out.at++);
    }
    if (out.more)
        return run();
    out.giving = false;
    if (out.type == DATA) {
        packet.due = false;
        packet.waited = 0;
    }
    return 0;
}

void cv_pass(uint8_t milliseconds) {
    if (!packet.busy || packet.due)
        return;
    packet.waited =
        (uint8_t)(packet.waited + milliseconds > 255 ? 255 : packet.waited + milliseconds);
    if (packet.waited <= REPEAT_AFTER)
        return;
    if (packet.sendings < SENDINGS)
        packet.due = true;
    else
        settled();
}
