/* A product's EEPROM over the wire: channels 208 and 209. One request is worked on, and one more
 * waits behind it. Cells that hold the right byte already are not written, which spares them. */
#ifndef CORVANE_MEMORY_H
#define CORVANE_MEMORY_H

#include "corvane_wire.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The power has come. */
CV_API void cv_memory_begin(void);

/* Call it from `cv_on_data`. True if the packet was one of these requests. */
CV_API bool cv_memory_data(uint8_t channel, const uint8_t* data, uint8_t count);

/* Call it from `cv_on_session`: a write goes on without its reply, and reads are forgotten. */
CV_API void cv_memory_session(void);

/* Call it again and again: each call does at most one byte. */
CV_API void cv_memory_work(void);

/* Provided by the firmware. No write is going on, so that a cell can be read or written. */
CV_API bool cv_memory_ready(void);
/* A cell, while ready. What an address outside the memory gives is the firmware's choice. */
CV_API uint8_t cv_memory_read(uint16_t address);
/* Begins to write a cell, while ready. Need not wait for the end. */
CV_API void cv_memory_write(uint16_t address, uint8_t byte);

#ifdef __cplusplus
}
#endif

#endif
