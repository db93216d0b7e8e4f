#include "kolib/KOImages.h"

namespace corvane {

namespace {

/// Where there is no toolkit: every picture is one that can't be read.
class NoImages final : public KOImages {
  public:
    void ResetImage() override {}
    bool LoadImage(const std::string& text) override { return text.empty(); }
    [[nodiscard]] std::string SaveImage() const override { return {}; }
    [[nodiscard]] std::string SavePng() const override { return {}; }
    void SetImage(const Picture&) override {}
    [[nodiscard]] Picture GetImage() const override { return {}; }
    void GetImageSizes(int& width, int& height) const override { width = height = 0; }
    void CacheImage(const std::string&) override {}
    void UncacheImage(const std::string&) override {}
    void ColorizeImage(int, int, int) override {}
    void MakeTransparentImage(const std::string&, int, int, int, int, int) override {}
    void MakeLensImage(int, int, int) override {}
    [[nodiscard]] std::optional<Picture> DecodeFile(const std::string&) override { return {}; }
};

} // namespace

std::unique_ptr<KOImages> MakeImages() {
    return std::make_unique<NoImages>();
}

} // namespace corvane
