// Any bytes as a picture's text: refused, or a picture that goes there and back.
#include "kolib/images/QtImages.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    corvane::QtImages images;
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (!images.LoadImage(bytes.toBase64().toStdString()))
        return 0;
    const corvane::Picture picture = images.GetImage();
    if (!images.LoadImage(images.SaveImage()) || images.GetImage() != picture)
        std::abort();
    return 0;
}
