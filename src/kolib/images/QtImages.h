#pragma once

#include "kolib/KOImages.h"

#include <QHash>
#include <QImage>

namespace corvane {

/// Pictures over the toolkit's image readers.
class QtImages : public KOImages {
  public:
    QtImages();

    void ResetImage() override { current_ = {}; }
    bool LoadImage(const std::string& text) override;
    [[nodiscard]] std::string SaveImage() const override;
    [[nodiscard]] std::string SavePng() const override;
    void SetImage(const Picture& picture) override;
    [[nodiscard]] Picture GetImage() const override;
    void GetImageSizes(int& width, int& height) const override;
    void CacheImage(const std::string& name) override;
    void UncacheImage(const std::string& name) override;
    void ColorizeImage(int r, int g, int b) override;
    void MakeTransparentImage(const std::string& backgroundName, int x, int y, int r, int g,
                              int b) override;
    void MakeLensImage(int r, int g, int b) override;
    [[nodiscard]] std::optional<Picture> DecodeFile(const std::string& path) override;

  private:
    QImage current_; // ARGB, not premultiplied
    QHash<QString, QImage> named_;
};

} // namespace corvane
