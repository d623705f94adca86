// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QString>
#include <optional>
#include <string>

#include "platform/ports.h"

namespace quellar::host::window {

/// What an image address names: an image of the platform, and the colour that it is drawn in as a mask, if any.
struct NamedImage {
  std::string path;
  QColor mask;
};

/// The address ("image://platform/...") under which the view loads an image of the platform.
[[nodiscard]] QString imageAddress(const platform::Image& image);

/// What an address without its "image://platform/" names; nothing where it is none.
[[nodiscard]] std::optional<NamedImage> namedImage(const QString& address);

}  // namespace quellar::host::window
