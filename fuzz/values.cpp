// Any text as a value in each form: refused, or bytes whose text gives them again.
#include "eeprom/BinHexTextBoxConverters.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace corvane;
    const std::string text(data, data + size);
    for (const auto& converter : Converters()) {
        if (!converter->IsValid(text))
            continue;
        const ByteString bytes = converter->ToBytes(text);
        const bool zero = bytes == ByteString{0}; // shows as nothing in binary
        if (!zero && converter->ToBytes(converter->FromBytes(bytes)) != bytes)
            __builtin_trap();
    }
    if (const auto bytes = CodePage1252::fromText(text))
        if (CodePage1252::toText(*bytes) != text)
            __builtin_trap();
    static_cast<void>(WithControls(WithVisibleControls(text)));
    return 0;
}
