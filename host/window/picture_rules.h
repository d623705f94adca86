// SPDX-License-Identifier: MIT
#pragma once

#include <QImageReader>
#include <optional>
#include <string>

namespace quellar::host::window {

/// Why the picture of a reader is not to be unpacked ("is no PNG or JPEG picture"); nothing where it may be. Anybody
/// may have made it: other formats have more to them than pixels, and a small file may hold more pixels than fit in
/// memory.
[[nodiscard]] std::optional<std::string> whyNoPicture(const QImageReader& reader);

}  // namespace quellar::host::window
