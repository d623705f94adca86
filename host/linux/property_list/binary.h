// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/linux/property_list/objects.h"

// Files in the binary form ("bplist00"): an 8-byte magic; the objects; a table with each object's offset; a 32-byte
// trailer that says how wide offsets and references are, how many objects there are, which is the top one and where the
// table begins. All numbers are big-endian.

namespace quellar::host::linux {

/// Whether bytes begin as a binary property list does.
[[nodiscard]] bool isBinaryPropertyList(std::string_view bytes);

/// Reads a file in a time that grows with its size. Throws PropertyListError where it is damaged or breaks a limit.
[[nodiscard]] PropertyListObjects readBinaryPropertyList(std::string_view bytes);

/// The file of a property list.
[[nodiscard]] std::string binaryPropertyList(const PropertyListObjects& list);

/// The file with a dictionary at its top, whose values are the tops of these property lists, in their order. Throws
/// PropertyListError where they unfold to more than one file may.
[[nodiscard]] std::string binaryPropertyList(
    const std::vector<std::pair<std::string_view, const PropertyListObjects*>>& entries);

}  // namespace quellar::host::linux
