// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

namespace quellar::host::window {

/// A landscape of the evening, for pictures of a device that has no wallpaper of its own: with light and dark, pale and
/// strong colours, soft and sharp edges, so that each backdrop style shows what it does. Takes a size in pixels.
[[nodiscard]] QImage sampleWallpaper(QSize pixels);

}  // namespace quellar::host::window
