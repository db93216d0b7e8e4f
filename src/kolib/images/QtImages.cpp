#include "kolib/images/QtImages.h"

#include <QBuffer>
#include <QFile>
#include <QImageReader>

#include <algorithm>
#include <cstring>

namespace corvane {

namespace {

constexpr int AllocationLimit = 80;        // MB, a little above the largest picture
constexpr int ChosenAllocationLimit = 512; // MB, for a picture that is going to be scaled down
constexpr int LargestChosen = 32767;       // pixels in a direction
constexpr qsizetype LongestText = qsizetype{100} * 1024 * 1024;
constexpr auto Format = QImage::Format_ARGB32;

/// Whether the bytes go as far as their format says; the readers make do with less.
bool isWhole(const QByteArray& bytes, const QByteArray& format) {
    constexpr qsizetype tail = 64; // bytes in which the end mark must stand
    const QByteArray end = bytes.right(tail);
    if (format == "png")
        return end.contains("IEND");
    if (format == "jpeg" || format == "jpg")
        return end.contains("\xFF\xD9");
    if (format == "gif")
        return end.contains(';');
    const auto byte = [&bytes](qsizetype i) { return static_cast<unsigned char>(bytes[i]); };
    return bytes.size() > 5 &&
           byte(2) + byte(3) * 0x100LL + byte(4) * 0x10000LL + byte(5) * 0x1000000LL <=
               bytes.size();
}

/// Reads what a device holds, once its header has promised a size that is not too large.
QImage readFrom(QImageReader& reader) {
    const QSize size = reader.scaledSize().isValid() ? reader.scaledSize() : reader.size();
    if (size.isValid() && (size.width() > KOImages::MaxSize || size.height() > KOImages::MaxSize))
        return {};
    reader.setAutoTransform(true);
    const QImage image = reader.read();
    if (image.width() > KOImages::MaxSize || image.height() > KOImages::MaxSize)
        return {};
    return image.convertToFormat(Format);
}

constexpr int scaled(int value, int by) {
    return (value * by + 127) / 255;
}

/// Light added to what is there: never darker, never above full.
constexpr int lit(int ground, int light) {
    return ground + scaled(255 - ground, light);
}

QRgb over(QRgb front, QRgb back) {
    const int alpha = qAlpha(front);
    const auto part = [alpha](int a, int b) { return scaled(a, alpha) + scaled(b, 255 - alpha); };
    return qRgb(part(qRed(front), qRed(back)), part(qGreen(front), qGreen(back)),
                part(qBlue(front), qBlue(back)));
}

} // namespace

std::unique_ptr<KOImages> MakeImages() {
    return std::make_unique<QtImages>();
}

QtImages::QtImages() {
    QImageReader::setAllocationLimit(AllocationLimit);
}

bool QtImages::LoadImage(const std::string& text) {
    current_ = {};
    if (text.empty())
        return true;
    constexpr std::size_t base64Unit = 4; // characters; the text is padded
    if (static_cast<qsizetype>(text.size()) > LongestText || text.size() % base64Unit != 0)
        return false;
    const auto decoded = QByteArray::fromBase64Encoding(
        QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())),
        QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return false;
    QBuffer buffer;
    buffer.setData(*decoded);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    if (isWhole(*decoded, "png"))
        current_ = readFrom(reader);
    return !current_.isNull();
}

std::string QtImages::SaveImage() const {
    return QByteArray::fromStdString(SavePng()).toBase64().toStdString();
}

std::string QtImages::SavePng() const {
    if (current_.isNull())
        return {};
    QBuffer buffer;
    current_.convertToFormat(QImage::Format_RGBA8888).save(&buffer, "png");
    return buffer.data().toStdString();
}

void QtImages::SetImage(const Picture& picture) {
    current_ = picture.empty() ? QImage() : QImage(picture.width, picture.height, Format);
    for (int y = 0; y < current_.height(); ++y)
        std::memcpy(current_.scanLine(y),
                    picture.pixels.data() + static_cast<std::ptrdiff_t>(y) * picture.width,
                    static_cast<std::size_t>(picture.width) * sizeof(std::uint32_t));
}

Picture QtImages::GetImage() const {
    Picture picture{current_.width(), current_.height(), {}};
    picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    for (int y = 0; y < picture.height; ++y)
        std::memcpy(picture.pixels.data() + static_cast<std::ptrdiff_t>(y) * picture.width,
                    current_.constScanLine(y),
                    static_cast<std::size_t>(picture.width) * sizeof(std::uint32_t));
    return picture;
}

void QtImages::GetImageSizes(int& width, int& height) const {
    width = current_.width();
    height = current_.height();
}

void QtImages::CacheImage(const std::string& name) {
    named_[QString::fromStdString(name)] = current_;
}

void QtImages::UncacheImage(const std::string& name) {
    current_ = named_.value(QString::fromStdString(name));
}

void QtImages::ColorizeImage(int r, int g, int b) {
    for (int y = 0; y < current_.height(); ++y) {
        // NOLINTNEXTLINE(*-reinterpret-cast): the pixels of a row are of this type
        auto* row = reinterpret_cast<QRgb*>(current_.scanLine(y));
        for (int x = 0; x < current_.width(); ++x)
            row[x] = qRgba(scaled(qRed(row[x]), r), scaled(qGreen(row[x]), g),
                           scaled(qBlue(row[x]), b), qAlpha(row[x]));
    }
}

void QtImages::MakeTransparentImage(const std::string& backgroundName, int x, int y, int r, int g,
                                    int b) {
    const QImage background = named_.value(QString::fromStdString(backgroundName));
    const QRgb ground = qRgb(r, g, b);
    for (int row = 0; row < current_.height(); ++row) {
        // NOLINTNEXTLINE(*-reinterpret-cast): the pixels of a row are of this type
        auto* lights = reinterpret_cast<QRgb*>(current_.scanLine(row));
        const bool inside = row + y >= 0 && row + y < background.height();
        // NOLINTNEXTLINE(*-reinterpret-cast)
        const auto* behind =
            inside ? reinterpret_cast<const QRgb*>(background.constScanLine(row + y)) : nullptr;
        for (int column = 0; column < current_.width(); ++column) {
            const int at = column + x;
            const QRgb back = behind != nullptr && at >= 0 && at < background.width()
                                  ? over(behind[at], ground)
                                  : ground;
            const QRgb light = lights[column];
            const int alpha = qAlpha(light);
            lights[column] = qRgb(lit(qRed(back), scaled(qRed(light), alpha)),
                                  lit(qGreen(back), scaled(qGreen(light), alpha)),
                                  lit(qBlue(back), scaled(qBlue(light), alpha)));
        }
    }
}

void QtImages::MakeLensImage(int r, int g, int b) {
    constexpr int darkest = 200; // of 255, so that the ground still shows
    for (int y = 0; y < current_.height(); ++y) {
        // NOLINTNEXTLINE(*-reinterpret-cast): the pixels of a row are of this type
        auto* row = reinterpret_cast<QRgb*>(current_.scanLine(y));
        for (int x = 0; x < current_.width(); ++x) {
            const int left = 255 - scaled(qAlpha(row[x]), darkest);
            row[x] = qRgb(scaled(r, left), scaled(g, left), scaled(b, left));
        }
    }
}

std::optional<Picture> QtImages::DecodeFile(const std::string& path) {
    QFile file(QString::fromStdString(path));
    if (!file.open(QIODevice::ReadOnly) || file.size() > LongestText)
        return std::nullopt;
    QBuffer buffer;
    buffer.setData(file.readAll());
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    static const QList<QByteArray> known{"bmp", "gif", "jpeg", "jpg", "png"};
    if (!known.contains(reader.format()) || !isWhole(buffer.data(), reader.format()))
        return std::nullopt;
    // What a person chooses is made to fit; what a document holds has to.
    const QSize size = reader.size();
    if (size.width() > LargestChosen || size.height() > LargestChosen)
        return std::nullopt;
    if (size.width() > MaxSize || size.height() > MaxSize)
        reader.setScaledSize(
            size.scaled(MaxSize, MaxSize, Qt::KeepAspectRatio).expandedTo(QSize(1, 1)));
    QImageReader::setAllocationLimit(ChosenAllocationLimit);
    const QImage image = readFrom(reader);
    QImageReader::setAllocationLimit(AllocationLimit);
    if (image.isNull())
        return std::nullopt;
    const QImage kept = std::exchange(current_, image);
    Picture picture = GetImage();
    current_ = kept;
    return picture;
}

} // namespace corvane
