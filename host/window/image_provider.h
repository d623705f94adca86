// SPDX-License-Identifier: MIT
#pragma once

#include <QQuickImageProvider>
#include <functional>
#include <optional>
#include <string>

#include "platform/ports.h"

namespace quellar::host::window {

/// Reads the bytes of an image's file that suits a screen of so many pixels a point; nothing where there is none.
using ImageReader = std::function<std::optional<std::string>(const platform::Image& image, double scale)>;

/// The images of the platform ("image://platform/...", see imageAddress), whole or as a mask in one colour. An image
/// that can't be read, or is no PNG or JPEG picture, is empty.
class PlatformImageProvider final : public QQuickImageProvider {
 public:
  /// Takes the pixels a point of the screen.
  PlatformImageProvider(ImageReader read, double scale)
      : QQuickImageProvider(Image), read_(std::move(read)), scale_(scale) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  ImageReader read_;
  double scale_;
};

/// The swatches of colour rows as their cells draw them: "image://swatch/<rrggbb>", at the size that is asked for.
class SwatchProvider final : public QQuickImageProvider {
 public:
  SwatchProvider() : QQuickImageProvider(Image) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

/// The small signs of the window itself, drawn at the size that is asked for: "image://glyph/<name>/<rrggbb>" with the
/// names "chevron" (at the end of a link), "back", and "checks" (the ground under what can be seen through; of two
/// squares by two).
class GlyphProvider final : public QQuickImageProvider {
 public:
  GlyphProvider() : QQuickImageProvider(Image) {}

  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace quellar::host::window
