// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace quellar::host::linux {

/// Whether bytes begin as a binary property list does.
[[nodiscard]] bool isBinaryPropertyList(std::string_view bytes);

/// Checks a binary property list ("bplist00") before libplist reads it, which recurses as deep as a file tells it to,
/// unfolds shared objects without bound and takes text and numbers as they come. Throws PropertyListError.
///
/// The format: an 8-byte magic; objects, each a marker byte (type in the high half, size or count in the low half)
/// and its bytes; a table with each object's offset; a 32-byte trailer that says how wide offsets and references are,
/// how many objects there are, which is the top one and where the table begins. All numbers are big-endian.
void checkBinaryPropertyList(std::string_view bytes);

}  // namespace quellar::host::linux
