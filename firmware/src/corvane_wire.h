/* The wire between a Corvane link and a product: frames, acknowledgement and sessions, as
 * docs/wire.md tells them. It allocates nothing, needs no library, and knows no hardware and no
 * interrupts: the firmware carries each byte here and back, and says how much time has passed.
 * There is one wire a board, so all of it is static. No function may be called from an interrupt.
 */
#ifndef CORVANE_WIRE_H
#define CORVANE_WIRE_H

#include <stdbool.h>
#include <stdint.h>

/* Limits, chosen when compiling, in bytes of data in a packet. What is longer than the first is not
 * taken and not acknowledged; answers that are longer than the second can be streamed. With
 * CV_SMALL the packets of today's programs fit, and answers are streamed. */
#ifdef CV_SMALL
#define CV_RECEIVE_MAX 64
#define CV_ANSWER_MAX 0
#endif
#ifndef CV_RECEIVE_MAX
#define CV_RECEIVE_MAX 255 /* 1 to 255 */
#endif
#ifndef CV_ANSWER_MAX
#define CV_ANSWER_MAX 255 /* 0 to 255 */
#endif

/* Where the sources are made part of another one, this may be `static`. */
#ifndef CV_API
#define CV_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* The power has come. The four numbers are what the product says of itself. */
CV_API void cv_begin(uint8_t device_major, uint8_t device_minor, uint8_t firmware_major,
                     uint8_t firmware_minor);

/* A byte has come from the link. Calls what the firmware provides, see below. */
CV_API void cv_take(uint8_t byte);

/* The next byte for the link, or -1 if there is none now. Ask whenever one can be sent. */
CV_API int cv_give(void);

/* So many milliseconds have passed since the last call. */
CV_API void cv_pass(uint8_t milliseconds);

/* Whether a computer is there. Outside a session nothing can be sent. */
CV_API bool cv_in_session(void);

/* Whether a packet can be sent now: in a session, and the one before is acknowledged or given up
 * (which takes 300 ms at most). */
CV_API bool cv_free(void);

/* Where to build an answer of up to CV_ANSWER_MAX bytes in place, while the wire is free. */
CV_API uint8_t* cv_answer(void);

/* Sends the first `count` bytes of what was built there. False, and nothing happens, if the wire is
 * not free or they are more than it holds. */
CV_API bool cv_send(uint8_t channel, uint8_t count);

/* Sends `count` bytes without a place to build them in: each is asked for, at every sending anew,
 * more than once and out of order. They must stay the same until the wire is free again. */
CV_API bool cv_stream(uint8_t channel, uint8_t count, uint8_t (*byte_at)(uint8_t index));

/* Keeps bytes of the packet that is being handed over, which else are gone when `cv_on_data`
 * returns. Until they are let go, packets must be shorter by as much. */
CV_API const uint8_t* cv_keep(const uint8_t* bytes, uint8_t count);

/* Lets the `count` bytes go that were kept first. What was kept later moves up by as much. */
CV_API void cv_let_go(uint8_t count);

/* Provided by the firmware: a packet has come in the session. The bytes are there until it returns;
 * nothing need be answered before that. */
CV_API void cv_on_data(uint8_t channel, const uint8_t* data, uint8_t count);

/* Provided by the firmware: a session begins. What was asked before must not be answered. */
CV_API void cv_on_session(void);

#ifdef __cplusplus
}
#endif

#endif
