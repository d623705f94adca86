// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <vector>

#include "host/window/options.h"

namespace quellar::host::window {

/// Draws every page into PNG files, at the size of a phone and in a wide window: with its blocks closed and open, with
/// a text being typed, and each dialog; rows in all their states; and a few pages from right to left, in a longer
/// language and with large texts. The values are those of the device root, and so is the wallpaper, where it has one;
/// none is changed. Takes the options,
/// and the folder, which is made where it is missing. Returns the files in the order in which they were written; throws
/// std::runtime_error, with the file and the cause, where one can't be written.
std::vector<std::filesystem::path> writePictures(const Options& options, const std::filesystem::path& folder);

/// Pixels a point of the pictures where the options do not say.
inline constexpr double kPictureScale = 2;

}  // namespace quellar::host::window
