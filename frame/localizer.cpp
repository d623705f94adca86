// SPDX-License-Identifier: MIT
#include "frame/localizer.h"

#include "frame/names.h"

namespace quellar::frame {

using platform::Specifiers;
using platform::Value;

KVQuellarLocalizer& KVQuellarLocalizer::sharedLocalizer(platform::Platform& platform) {
  return platform.shared.instance<KVQuellarLocalizer>(platform.bundles);
}

std::string_view KVQuellarLocalizer::localizationBundle() const {
  return kBundlePath;
}

std::string KVQuellarLocalizer::localizedStringForKey(std::string_view key,
                                                      const std::optional<std::string>& table) const {
  return bundles_.localizedString(localizationBundle(), key, "", table);
}

const Specifiers& KVQuellarLocalizer::localizedSpecifiersForSpecifiers(const Specifiers& rows,
                                                                       const std::optional<std::string>& table) const {
  for (const auto& row : rows) {
    if (!row->name().empty() && !row->systemTexts().name) row->setName(localizedStringForKey(row->name(), table));
    if (const auto* footer = row->property<std::string>("footerText")) {
      row->setProperty("footerText", Value(localizedStringForKey(*footer, table)));
    }
    if (row->systemTexts().titles) continue;
    for (std::string& title : row->titles()) title = localizedStringForKey(title, table);
    for (std::string& title : row->shortTitles()) title = localizedStringForKey(title, table);
  }
  return rows;
}

void KVQuellarLocalizer::loadLocalizedSpecifiersForSpecifiers(const Specifiers& rows, Specifiers& intoArray) const {
  intoArray = localizedSpecifiersForSpecifiers(rows);
}

}  // namespace quellar::frame
