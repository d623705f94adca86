// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>

#include "host/window/backdrop_looks.h"

namespace quellar::host::window {

/// Draws a look over what lies beneath it. Takes the ground, in any format, and its pixels a point; returns an opaque
/// picture of the same size. The time that it takes depends on the size alone, not on the blur. May be called from any
/// thread.
[[nodiscard]] QImage drawBackdrop(const QImage& ground, const BackdropLook& look, double scale);

}  // namespace quellar::host::window
