// An EEPROM product: the board's EEPROM as variables that Corvane edits, reads and programs.
// Pins 0 and 1 lead to the link; use no other serial port program while Corvane does.
#include <EEPROM.h>
#include <corvane_memory.h>

void setup() {
  Serial.begin(250000);
  cv_memory_begin();
  cv_begin(255, 1, 1, 0);  // an EEPROM product, with your firmware's version 1.0
}

void loop() {
  static unsigned long before = millis();
  const unsigned long passed = millis() - before;
  before += passed;
  cv_pass(passed > 255 ? 255 : static_cast<uint8_t>(passed));
  while (Serial.available() > 0)
    cv_take(static_cast<uint8_t>(Serial.read()));
  while (Serial.availableForWrite() > 0) {
    const int byte = cv_give();
    if (byte < 0)
      break;
    Serial.write(static_cast<uint8_t>(byte));
  }
  cv_memory_work();
  // Here is room for what your product does with its variables: EEPROM.read(16) is the one at 16.
}

void cv_on_data(uint8_t channel, const uint8_t *data, uint8_t count) {
  cv_memory_data(channel, data, count);
}

void cv_on_session() {
  cv_memory_session();
}

bool cv_memory_ready() {
#ifdef __AVR__
  return eeprom_is_ready();
#else
  return true;
#endif
}

// Addresses past the end come round again.
uint8_t cv_memory_read(uint16_t address) {
  return EEPROM.read(address % EEPROM.length());
}

void cv_memory_write(uint16_t address, uint8_t byte) {
  EEPROM.write(address % EEPROM.length(), byte);
}
