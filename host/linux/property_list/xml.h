// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "host/linux/property_list/objects.h"

namespace quellar::host::linux {

/// Whether bytes may be the start of an XML document, in UTF-8 or UTF-16.
[[nodiscard]] bool looksLikeXml(std::string_view bytes);

/// Reads a property list in its XML form, in a time that grows with its size. The document must be well-formed. Its
/// document type may name a file, which is not read, and may declare nothing itself, so that no entity unfolds and no
/// attribute is added. Throws PropertyListError.
[[nodiscard]] PropertyListObjects readXmlPropertyList(std::string_view document);

}  // namespace quellar::host::linux
