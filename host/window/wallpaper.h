// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <functional>
#include <string>

#include "host/linux/device_root.h"

namespace quellar::host::window {

/// Is told, in one line that names the file, why a wallpaper could not be used; maybe on another thread.
using WallpaperReport = std::function<void(const std::string& message)>;

/// Draws what stands for the wallpaper where there is none, at a size in pixels.
using WallpaperStandIn = std::function<QImage(QSize pixels)>;

/// The lock screen's wallpaper, scaled to fill a size in pixels and cut to it from the middle; where the device root
/// has none, or none that can be used, what stands for it: grey, unless another thing is given. It is read from the
/// platform's bitmap file, else from a PNG or JPEG picture of the same name.
///
/// It is made smaller while it is read: the memory that this takes does not grow with the wallpaper, and neither does
/// the time for a bitmap. A picture of more than 64 megapixels is refused. May be called from any thread.
[[nodiscard]] QImage wallpaperFilling(const linux::DeviceRoot& root, QSize pixels, const WallpaperReport& report,
                                      const WallpaperStandIn& standIn = {});

/// What stands for the wallpaper where there is none.
inline constexpr QRgb kNoWallpaper = 0xff808080;

}  // namespace quellar::host::window
