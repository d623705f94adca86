// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string_view>

#include "platform/value.h"

namespace quellar::tests::fuzz {

/// A property list as libplist reads it; nothing where it reads none. For bytes that our own reader takes: the library
/// recurses as deep as a file tells it to, and unfolds shared objects without bound.
[[nodiscard]] std::optional<platform::Value> readWithLibplist(std::string_view bytes);

}  // namespace quellar::tests::fuzz
