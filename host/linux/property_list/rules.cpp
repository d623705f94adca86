// SPDX-License-Identifier: MIT
#include "host/linux/property_list/rules.h"

#include <cmath>
#include <string>

#include "host/linux/property_list/encoding.h"
#include "host/linux/utf8.h"

namespace quellar::host::linux {

void checkPropertyListSize(std::size_t bytes) {
  if (bytes > kMaxPropertyListBytes) {
    throw PropertyListError("larger than " + std::to_string(kMaxPropertyListBytes >> 20) + " MiB");
  }
}

void checkPropertyListText(std::string_view text) {
  if (!isAscii(text) && !isUtf8(text)) throw PropertyListError("text is not UTF-8");
  if (text.find('\0') != std::string_view::npos) throw PropertyListError("text holds a null character");
}

void checkPropertyListUtf16(std::string_view units, std::endian order) {
  const std::size_t high = order == std::endian::big ? 0 : 1;
  bool highBefore = false;
  for (std::size_t index = 0; index + 1 < units.size(); index += 2) {
    const unsigned unit = static_cast<unsigned>(static_cast<std::uint8_t>(units[index + high])) << 8 |
                          static_cast<std::uint8_t>(units[index + 1 - high]);
    const bool isLow = unit >= 0xDC00 && unit <= 0xDFFF;
    if (isLow != highBefore) throw PropertyListError("text holds half of a surrogate pair");
    if (unit == 0) throw PropertyListError("text holds a null character");
    highBefore = unit >= 0xD800 && unit <= 0xDBFF;
  }
  if (highBefore) throw PropertyListError("text holds half of a surrogate pair");
}

void checkPropertyListNumber(double number) {
  if (!std::isfinite(number)) throw PropertyListError("a number is not finite");
}

void checkPropertyListDepth(int depth) {
  if (depth > kMaxPropertyListDepth) {
    throw PropertyListError("deeper than " + std::to_string(kMaxPropertyListDepth) + " levels");
  }
}

void checkPropertyListExtent(const PropertyListExtent& extent) {
  if (extent.values > kMaxPropertyListValues) throw PropertyListError("holds too many values");
  if (extent.content > kMaxPropertyListContent) {
    throw PropertyListError("holds more than " + std::to_string(kMaxPropertyListContent >> 20) +
                            " MiB of text and data");
  }
}

}  // namespace quellar::host::linux
