// SPDX-License-Identifier: MIT
#include "pages/powerdown_colours/sibling_colors.h"

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

namespace {

constexpr std::string_view kImport = "handleImportingGlint2Colors:";
constexpr std::string_view kSiblingFile = "/private/var/mobile/Library/Preferences/com.vantorick.glint2.plist";

}  // namespace

std::optional<platform::Action> ToggleColorsPage::actionForSelector(std::string_view selector) {
  if (selector != kImport) return KVQuellarListController::actionForSelector(selector);
  return platform::Action{std::string(kImport), [this](platform::PSSpecifier&) { handleImportingGlint2Colors(); }};
}

void ToggleColorsPage::handleImportingGlint2Colors() {
  const auto list = platform().files.propertyListWithContentsOfFile(kSiblingFile);
  if (const auto* colors = list ? list->as<platform::Dictionary>() : nullptr) {
    for (const auto& [key, value] : *colors) setUserDefault(key, value);
  }
  saveColors(frame::darwin(frame::kSettings));
}

std::vector<frame::Row> importRows() {
  return {frame::Group{.title = "Import Colors From"},
          frame::Button{.label = "Glint 2", .action = std::string(kImport), .icon = {"qlrGlint2Icon.png"}}};
}

}  // namespace quellar::pages
