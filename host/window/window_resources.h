// SPDX-License-Identifier: MIT
#pragma once

#include <QString>
#include <functional>
#include <string_view>

#include "host/window/backdrop_provider.h"
#include "host/window/elsewhere_watch.h"
#include "host/window/image_provider.h"

namespace quellar::host::window {

/// Turns an English text of the window itself into the user's language.
using TextFinder = std::function<QString(std::string_view english)>;

/// What the window draws with that does not come from its pages.
struct WindowResources {
  ImageReader readImage;
  TextFinder text;
  WallpaperFinder wallpaper;
  /// Writes at once what could not be written.
  std::function<void()> retryWrites;
  ElsewhereWatch* elsewhere = nullptr;
};

}  // namespace quellar::host::window
