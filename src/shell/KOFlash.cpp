#include "shell/KOFlash.h"

#include "base/Product.h"

#include <random>

namespace corvane {

std::string NewSerialNumber() {
    static std::mt19937 random(std::random_device{}());
    std::uniform_int_distribution<std::size_t> digit(0, 15);
    std::string number = "KO";
    for (int i = 0; i < 7; ++i)
        number += "0123456789ABCDEF"[digit(random)];
    return number;
}

bool ProgramLinkDevice(KODevice& device) {
    return device.ProgramDevice({ProgramName, MakerName, "KO", NewSerialNumber()});
}

} // namespace corvane
