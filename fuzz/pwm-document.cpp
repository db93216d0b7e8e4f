// Any bytes as a PWM program.
#include "FuzzedDocument.h"
#include "pwm/QuillonProgram.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return corvane::FuzzDocument<corvane::QuillonProgram>("Quillon\t3\t2\t0\t1\n", data, size);
}
