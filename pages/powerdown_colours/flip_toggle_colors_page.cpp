// SPDX-License-Identifier: MIT
#include "pages/powerdown_colours/flip_toggle_colors_page.h"

#include "frame/names.h"
#include "platform/platform.h"

namespace quellar::pages {

using namespace frame;

namespace {

constexpr std::string_view kSwitches = "/Library/Switches/switches.plist";

const std::string* text(const platform::Dictionary& dictionary, std::string_view key) {
  const Value* value = platform::find(dictionary, key);
  return value ? value->as<std::string>() : nullptr;
}

/// A colour row for each switch of the device's registry, in its order, with the switch's glyph in black. An entry
/// without an identifier is no switch; one without a title is named by its identifier.
std::vector<Row> switches(const Surroundings& surroundings) {
  std::vector<Row> rows;
  const auto list = surroundings.platform.files.propertyListWithContentsOfFile(kSwitches);
  const auto* entries = list ? list->as<platform::Array>() : nullptr;
  if (!entries) return rows;
  for (const Value& entry : *entries) {
    const auto* fields = entry.as<platform::Dictionary>();
    const auto* identifier = fields ? text(*fields, "identifier") : nullptr;
    if (!identifier) continue;
    const auto* title = text(*fields, "title");
    const auto* glyph = text(*fields, "glyph");
    rows.emplace_back(ColorRow{.label = asWritten(title ? *title : *identifier),
                               .colorKey = *identifier,
                               .defaultColor = "#000000",
                               .action = "setColorForFlipswitchSpecifier:",
                               .icon = {.file = glyph ? *glyph : "", .flatColor = "#000000"}});
  }
  return rows;
}

}  // namespace

const Page& KVQuellarFCCGlintListController::page() {
  static const Page page{
      .className = "KVQuellarFCCGlintListController",
      .defaultsKey = "ControlCenter_Defaults",
      .posts = {darwin(kSettings)},
      .colors = {.defaultsKey = "ToggleColoring_Defaults",
                 .fallback = "#000000",
                 .showAlpha = true,
                 .post = notifyPost(kSettings),
                 .postsBeforeRedraw = {darwin(kTogglesUpdate)},
                 .redraw = Colors::Redraw::specifiers},
      .rows = rows({{Group{}, Switch{.label = "Use Custom Colors", .key = "usesCustomCCToggleColors"},
                     Group{.title = "Custom Colors"}, Computed{switches}},
                    importRows()})};
  return page;
}

KVQuellarFCCGlintListController::KVQuellarFCCGlintListController(platform::Platform& platform)
    : ToggleColorsPage(platform, page()) {
  auto stored = platform.preferences.copyAppValue(page().defaultsKey, kSettingsDomain);
  if (auto* dictionary = stored ? stored->as<platform::Dictionary>() : nullptr) ccDefaults_ = std::move(*dictionary);
}

void KVQuellarFCCGlintListController::loadView() {
  ToggleColorsPage::loadView();
  setTitle(localizedText("Available Switches"));
}

void KVQuellarFCCGlintListController::setPreferenceValue(const std::optional<Value>& value,
                                                         platform::PSSpecifier& specifier) {
  const std::string key = specifier.stringForKey("key");
  if (value) {
    ccDefaults_.insert_or_assign(key, *value);
  } else {
    ccDefaults_.erase(key);
  }
  store();
  platform().darwin.postNotification(kSettings, true);
}

std::optional<Value> KVQuellarFCCGlintListController::readPreferenceValue(platform::PSSpecifier& specifier) {
  const Value* value = platform::find(ccDefaults_, specifier.stringForKey("key"));
  return value ? std::optional(*value) : std::nullopt;
}

}  // namespace quellar::pages
