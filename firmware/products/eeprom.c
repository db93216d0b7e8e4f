/* An EEPROM product: its variables can be edited, read and programmed, and that is all it does.
 * Beside it you would write what your own device does with them. */
#include "board.h"
#include "corvane_memory.h"

void cv_on_data(uint8_t channel, const uint8_t* data, uint8_t count) {
    (void)cv_memory_data(channel, data, count);
}

void cv_on_session(void) {
    cv_memory_session();
}

int main(void) {
    board_begin();
    cv_memory_begin();
    cv_begin(255, 1, 1, 0);
    for (;;)
        (void)board_work();
}
