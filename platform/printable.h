// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace quellar::platform {

/// A text from outside as it is safe to print: one line, in which a terminal acts on no character. Control characters
/// (C0, U+007F, C1) and the marks that change the direction of the text are written \uXXXX, bytes that are no UTF-8
/// \xXX.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace quellar::platform
