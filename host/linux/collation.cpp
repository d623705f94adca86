// SPDX-License-Identifier: MIT
#include "host/linux/collation.h"

#include <dlfcn.h>
#include <unicode/ucol.h>
#include <unicode/uvernum.h>

#include <cstdint>

namespace quellar::host::linux {

namespace {

// ICU's functions have its version in their names, which its headers add to the plain name by a macro.
#define QUELLAR_TEXT_OF(name) #name
#define QUELLAR_EXPORTED_NAME(name) QUELLAR_TEXT_OF(name)

template <typename Function>
void look(void* library, const char* name, Function*& function) {
  function = reinterpret_cast<Function*>(::dlsym(library, name));
}

}  // namespace

struct Collation::Library {
  decltype(&::ucol_open) open = nullptr;
  decltype(&::ucol_close) close = nullptr;
  decltype(&::ucol_setStrength) setStrength = nullptr;
  decltype(&::ucol_strcollUTF8) compare = nullptr;
  UCollator* collator = nullptr;
};

Collation::Collation(const std::string& locale) : library_(std::make_unique<Library>()) {
  // Never unloaded: the library keeps what it has read.
  void* const loaded = ::dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_NOW | RTLD_LOCAL);
  if (!loaded) return;
  Library& icu = *library_;
  look(loaded, QUELLAR_EXPORTED_NAME(ucol_open), icu.open);
  look(loaded, QUELLAR_EXPORTED_NAME(ucol_close), icu.close);
  look(loaded, QUELLAR_EXPORTED_NAME(ucol_setStrength), icu.setStrength);
  look(loaded, QUELLAR_EXPORTED_NAME(ucol_strcollUTF8), icu.compare);
  if (!icu.open || !icu.close || !icu.setStrength || !icu.compare) return;
  UErrorCode status = U_ZERO_ERROR;
  icu.collator = icu.open(locale.c_str(), &status);
  if (U_FAILURE(status)) icu.collator = nullptr;
  // Accents count, case does not.
  if (icu.collator) icu.setStrength(icu.collator, UCOL_SECONDARY);
}

Collation::~Collation() {
  if (library_->collator) library_->close(library_->collator);
}

int Collation::compare(std::string_view left, std::string_view right) const {
  if (!library_->collator) return left.compare(right);
  UErrorCode status = U_ZERO_ERROR;
  return library_->compare(library_->collator, left.data(), static_cast<std::int32_t>(left.size()), right.data(),
                           static_cast<std::int32_t>(right.size()), &status);
}

}  // namespace quellar::host::linux
