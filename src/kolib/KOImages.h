#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// A picture as rows of pixels from the top, each 0xAARRGGBB.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;

    [[nodiscard]] bool empty() const { return pixels.empty(); }
    bool operator==(const Picture&) const = default;
};

/// Works on one current image, and keeps others under names. As text an image is the base64 of a
/// PNG file, and the empty one the empty text.
class KOImages {
  public:
    static constexpr int MaxSize = 4096; ///< Pixels in a direction; larger pictures are refused.

    virtual ~KOImages() = default;

    /// The current image becomes empty.
    virtual void ResetImage() = 0;
    /// False, and an empty image, if the text is no picture.
    virtual bool LoadImage(const std::string& text) = 0;
    [[nodiscard]] virtual std::string SaveImage() const = 0;
    /// The bytes of the PNG file; empty for the empty image.
    [[nodiscard]] virtual std::string SavePng() const = 0;
    virtual void SetImage(const Picture& picture) = 0;
    [[nodiscard]] virtual Picture GetImage() const = 0;
    /// In pixels, 0 for the empty image.
    virtual void GetImageSizes(int& width, int& height) const = 0;
    virtual void CacheImage(const std::string& name) = 0;
    /// The named image becomes the current one; the empty one if there is none.
    virtual void UncacheImage(const std::string& name) = 0;
    /// Gives the current image the tint of a colour: white becomes the colour, black stays.
    virtual void ColorizeImage(int r, int g, int b) = 0;
    /// Lays the current image as light over the part of the named background that lies behind it,
    /// `x` and `y` from the background's corner; over the colour where there is no background.
    virtual void MakeTransparentImage(const std::string& backgroundName, int x, int y, int r, int g,
                                      int b) = 0;
    /// Makes the current image what an unlit lens of its shape is on a ground of one colour: darker
    /// where it is more opaque.
    virtual void MakeLensImage(int r, int g, int b) = 0;
    /// Reads a BMP, GIF, JPEG or PNG file; nothing if it is none or damaged. A larger picture than
    /// `MaxSize` comes scaled down.
    [[nodiscard]] virtual std::optional<Picture> DecodeFile(const std::string& path) = 0;
};

/// Those that the program was linked with: the toolkit's, or without one those that read nothing.
[[nodiscard]] std::unique_ptr<KOImages> MakeImages();

} // namespace corvane
