// SPDX-License-Identifier: MIT
#include "host/linux/property_list_rules.h"

#include <cmath>
#include <string>

#include "host/linux/utf8.h"

namespace quellar::host::linux {

void checkPropertyListSize(std::size_t bytes) {
  if (bytes > kMaxPropertyListBytes) {
    throw PropertyListError("larger than " + std::to_string(kMaxPropertyListBytes >> 20) + " MiB");
  }
}

void checkPropertyListText(std::string_view text) {
  if (!isUtf8(text)) throw PropertyListError("text is not UTF-8");
  if (text.find('\0') != std::string_view::npos) throw PropertyListError("text holds a null character");
}

void checkPropertyListNumber(double number) {
  if (!std::isfinite(number)) throw PropertyListError("a number is not finite");
}

void checkPropertyListDepth(int depth) {
  if (depth > kMaxPropertyListDepth) {
    throw PropertyListError("deeper than " + std::to_string(kMaxPropertyListDepth) + " levels");
  }
}

}  // namespace quellar::host::linux
