// SPDX-License-Identifier: MIT
#include "host/window/picture_rules.h"

#include <QSize>
#include <cstdint>

namespace quellar::host::window {

namespace {

// A picture is unpacked as a whole before it can be made smaller, or at least in all its width and for all its time.
constexpr std::int64_t kMostPixels = std::int64_t{64} << 20U;

}  // namespace

std::optional<std::string> whyNoPicture(const QImageReader& reader) {
  // The contents tell the format, whatever the name says.
  const QByteArray format = reader.format();
  if (format != "png" && format != "jpeg") return "is no PNG or JPEG picture";
  const QSize size = reader.size();
  if (size.isEmpty()) return "is no picture: it does not say how large it is";
  if (std::int64_t{size.width()} * size.height() > kMostPixels) {
    return "has more than 64 megapixels (" + std::to_string(size.width()) + " x " + std::to_string(size.height()) + ")";
  }
  return std::nullopt;
}

}  // namespace quellar::host::window
