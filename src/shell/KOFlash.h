#pragma once

#include "kolib/KODevice.h"

#include <string>

namespace corvane {

/// "KO" and 7 hexadecimal digits in capitals, made up anew at each call.
[[nodiscard]] std::string NewSerialNumber();

/// Writes the strings of a link, with a new serial number, into the open device. They show after
/// the next plugging.
[[nodiscard]] bool ProgramLinkDevice(KODevice& device);

} // namespace corvane
