// SPDX-License-Identifier: MIT
#include "frame/list_controller.h"

#include <algorithm>

#include "frame/localizer.h"
#include "frame/names.h"
#include "platform/navigation_controller.h"

namespace quellar::frame {

using platform::BarButtonItem;
using platform::BarButtonItemStyle;
using platform::Dictionary;
using platform::PSCellType;
using platform::PSSpecifier;
using platform::Specifiers;

namespace {

template <typename... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};

}  // namespace

KVQuellarListController::KVQuellarListController(platform::Platform& platform, const Page& page)
    : PSListController(platform, page.className), page_(page) {
  loadUserDefaults();
  createDynamicSpecs();
}

void KVQuellarListController::loadUserDefaults() {
  userDefaults_.clear();
  if (colorsKey().empty()) return;
  auto stored = platform().preferences.copyAppValue(colorsKey(), kSettingsDomain);
  wasRead_ = platform().preferences.wasRead(kSettingsDomain);
  if (auto* dictionary = stored ? stored->as<Dictionary>() : nullptr) userDefaults_ = std::move(*dictionary);
}

void KVQuellarListController::reloadUserDefaults() {
  loadUserDefaults();
  createDynamicSpecs();
  reloadSpecifiers();
}

void KVQuellarListController::readIfUnread() {
  if (wasRead_) return;
  auto former = std::move(userDefaults_);
  loadUserDefaults();
  if (wasRead_) {
    createDynamicSpecs();
    reloadSpecifiers();
  } else {
    userDefaults_ = std::move(former);
  }
}

void KVQuellarListController::takeOver(const std::string& key) {
  const auto stored = platform().preferences.copyAppValue(colorsKey(), kSettingsDomain);
  const auto* dictionary = stored ? stored->as<Dictionary>() : nullptr;
  if (const Value* value = dictionary ? platform::find(*dictionary, key) : nullptr) setUserDefault(key, *value);
}

void KVQuellarListController::setUserDefault(const std::string& key, const std::optional<Value>& value) {
  if (value) {
    userDefaults_.insert_or_assign(key, *value);
  } else {
    userDefaults_.erase(key);
  }
}

const Specifiers& KVQuellarListController::dynamicSpecs(std::string_view name) const {
  static const Specifiers kNone;
  const auto block = std::ranges::find(blocks_, name, [](const Block& each) { return each.description->name; });
  return block == blocks_.end() ? kNone : block->rows;
}

std::string KVQuellarListController::localizedText(std::string_view english) const {
  return KVQuellarLocalizer::sharedLocalizer(platform()).localizedStringForKey(english);
}

template <Route usual>
std::string KVQuellarListController::text(const RoutedText<usual>& text) const {
  if (text.english.empty()) return {};
  switch (text.route) {
    case Route::localizer:
      return localizedText(text.english);
    case Route::bundle:
      return platform().bundles.localizedString(kBundlePath, text.english, "", std::nullopt);
    case Route::asWritten:
      return text.english;
  }
  return text.english;
}

PSSpecifier::Pointer KVQuellarListController::makeValueRow(const Localized& label, const std::string& key,
                                                           PSCellType kind, std::string detail) {
  auto row = PSSpecifier::preferenceSpecifierNamed(
      text(label), this, [this](const auto& value, auto& specifier) { setPreferenceValue(value, specifier); },
      [this](auto& specifier) { return readPreferenceValue(specifier); }, std::move(detail), kind);
  row->setProperty("key", Value(key));
  return row;
}

PSSpecifier::Pointer KVQuellarListController::makeButton(const Localized& label, const std::string& selector) {
  auto row = PSSpecifier::preferenceSpecifierNamed(text(label), this, {}, {}, "", PSCellType::PSButtonCell);
  if (selector.empty()) return row;
  // The action is looked up at the tap: rows are made before a page of a derived class is complete.
  row->setAction({selector, [this, selector](PSSpecifier& tapped) {
                    if (const auto action = actionForSelector(selector)) action->run(tapped);
                  }});
  return row;
}

void KVQuellarListController::addIcon(PSSpecifier& row, const Icon& icon) const {
  std::optional<platform::Image> image;
  if (!icon.file.empty()) {
    image = platform().files.imageWithContentsOfFile(
        icon.file.starts_with('/') ? icon.file : std::string(kBundlePath) + "/images/" + icon.file);
  } else if (!icon.name.empty()) {
    image = platform().files.imageNamed(icon.name, icon.bundlePath);
  }
  if (!image) return;
  image->flatColor = icon.flatColor;
  row.setProperty("iconImage", std::move(*image));
}

void KVQuellarListController::makeRow(const Row& row, Specifiers& list) {
  const Overloaded make{
      [&](const Group& group) {
        auto made = PSSpecifier::groupSpecifierWithName(text(group.title));
        if (group.footer) made->setProperty("footerText", Value(text(*group.footer)));
        list.push_back(std::move(made));
      },
      [&](const Link& link) {
        auto made = PSSpecifier::preferenceSpecifierNamed(text(link.label), this, {}, {}, link.opens,
                                                          PSCellType::PSLinkListCell);
        addIcon(*made, link.icon);
        list.push_back(std::move(made));
      },
      [&](const Switch& toggle) {
        PSSpecifier::Pointer made;
        if (toggle.defaults.empty()) {
          made = makeValueRow(toggle.label, toggle.key, PSCellType::PSSwitchCell);
        } else {
          made = PSSpecifier::preferenceSpecifierNamed(
              text(toggle.label), this,
              [this](const auto& value, auto& specifier) { PSListController::setPreferenceValue(value, specifier); },
              [this](auto& specifier) { return PSListController::readPreferenceValue(specifier); }, "",
              PSCellType::PSSwitchCell);
          made->setProperty("key", Value(toggle.key));
          made->setProperty("defaults", Value(toggle.defaults));
        }
        if (toggle.byDefault) made->setProperty("default", *toggle.byDefault);
        if (toggle.enabled) made->setProperty("enabled", Value(*toggle.enabled));
        for (const auto& [name, value] : toggle.properties) made->setProperty(name, value);
        addIcon(*made, toggle.icon);
        list.push_back(std::move(made));
      },
      [&](const TextEntry& entry) {
        auto made = makeValueRow(entry.label, entry.key, PSCellType::PSEditTextCell);
        if (!entry.placeholder.empty()) made->setProperty("placeholder", Value(entry.placeholder));
        list.push_back(std::move(made));
      },
      [&](const Slider& slider) {
        auto made = makeValueRow(slider.label, slider.key, PSCellType::PSSliderCell);
        made->setProperty("default", slider.byDefault);
        made->setProperty("min", slider.minimum);
        made->setProperty("max", slider.maximum);
        made->setProperty("showValue", Value(true));
        if (slider.typedEntry) made->setProperty("cellClass", platform::Class{"KVQuellarSliderCell"});
        list.push_back(std::move(made));
      },
      [&](const Stepper& stepper) {
        Localized label = stepper.label;
        if (stepper.units) {
          const Value* stored = platform::find(userDefaults_, stepper.key);
          const std::int64_t count = stored ? stored->integerValue() : 0;
          label = asWritten(std::to_string(count) + " " + (count > 1 ? stepper.units->many : stepper.units->one));
        }
        auto made = makeValueRow(label, stepper.key, PSCellType::PSStaticTextCell);
        made->setProperty("enabled", Value(true));
        made->setProperty("cellClass", platform::Class{"KVQuellarStepperCell"});
        made->setProperty("default", Value(stepper.byDefault));
        made->setProperty("defaultsKey", Value(page_.defaultsKey));
        made->setProperty("updatesLabelValue", Value(stepper.updatesLabelValue));
        made->setProperty("requestsNotification", Value(stepper.requestsNotification));
        if (stepper.minimum) made->setProperty("minimumValue", Value(*stepper.minimum));
        if (stepper.maximum) made->setProperty("maximumValue", Value(*stepper.maximum));
        addIcon(*made, stepper.icon);
        list.push_back(std::move(made));
      },
      [&](const Segment& segment) {
        auto made = makeValueRow(segment.label, segment.key, PSCellType::PSSegmentCell);
        made->setProperty("default", segment.byDefault);
        made->setValues(segment.choices.values, segment.choices.titles, segment.choices.shortTitles);
        list.push_back(std::move(made));
      },
      [&](const Picker& picker) {
        auto made = makeValueRow(picker.label, picker.key, PSCellType::PSLinkListCell, "KVQuellarListItemsController");
        made->setValues(picker.choices.values, picker.choices.titles, picker.choices.shortTitles);
        list.push_back(std::move(made));
      },
      [&](const ColorRow& color) {
        auto made = makeButton(color.label, "");
        made->setAction({color.action, [this](PSSpecifier& tapped) { setColorForSpecifier(tapped); }});
        made->setProperty("cellClass", platform::Class{"KVQuellarColorPreviewTableCell"});
        made->setProperty("colorKey", Value(color.colorKey));
        made->setProperty("defaultColor", Value(color.defaultColor));
        made->setProperty("defaultsKey", Value(colorsKey()));
        addIcon(*made, color.icon);
        list.push_back(std::move(made));
      },
      [&](const Button& button) {
        auto made = makeButton(button.label, button.action);
        addIcon(*made, button.icon);
        list.push_back(std::move(made));
      },
      [&](const RowFile& file) {
        auto rows =
            file.localized ? specifiersForPlistName(file.name) : loadSpecifiersFromPlistName(file.name, kBundlePath);
        if (file.firstRowOnly && rows.size() > 1) rows.resize(1);
        std::ranges::move(rows, std::back_inserter(list));
      },
      [&](const Computed& computed) {
        for (const Row& each : computed.rows({platform(), userDefaults_})) makeRow(each, list);
      },
      // A block that depends on a row of this one has rows of its own.
      [](const Dependent&) {},
  };
  std::visit(make, row.row);
}

void KVQuellarListController::createDynamicSpecs() {
  blocks_.clear();
  createDynamicSpecs(page_.rows);
}

void KVQuellarListController::createDynamicSpecs(const std::vector<Row>& rows) {
  for (const Row& row : rows) {
    const auto* dependent = std::get_if<Dependent>(&row.row);
    if (!dependent) continue;
    Block& block = blocks_.emplace_back(Block{dependent, {}});
    for (const Row& each : dependent->rows) makeRow(each, block.rows);
    createDynamicSpecs(dependent->rows);
  }
}

Specifiers KVQuellarListController::makeSpecifiers() {
  Specifiers list;
  appendRows(page_.rows, list);
  return list;
}

void KVQuellarListController::appendRows(const std::vector<Row>& rows, Specifiers& list) {
  for (const Row& row : rows) {
    if (const auto* dependent = std::get_if<Dependent>(&row.row)) {
      if (!dependent->onlyInserted && isOn(*dependent)) appendBlock(*dependent, list);
    } else {
      makeRow(row, list);
    }
  }
}

bool KVQuellarListController::isOn(std::string_view key) const {
  const Value* value = platform::find(userDefaults_, key);
  return value && value->boolValue();
}

bool KVQuellarListController::isOn(const Dependent& dependent) const {
  if (!dependent.shownAt) return isOn(dependent.shownBy);
  const Value* value = platform::find(userDefaults_, dependent.shownBy);
  return value && value->integerValue() == *dependent.shownAt;
}

const std::string& KVQuellarListController::insertionPoint(const Dependent& dependent) const {
  if (dependent.alternative && isOn(dependent.alternative->whileOn)) return dependent.alternative->after;
  return dependent.after.empty() ? dependent.shownBy : dependent.after;
}

void KVQuellarListController::appendBlock(const Dependent& dependent, Specifiers& list) {
  std::ranges::copy(dynamicSpecs(dependent.listedAs.empty() ? dependent.name : dependent.listedAs),
                    std::back_inserter(list));
  for (const Row& row : dependent.rows) {
    const auto* nested = std::get_if<Dependent>(&row.row);
    if (!nested || nested->onlyInserted || !isOn(*nested)) continue;
    Specifiers block;
    appendBlock(*nested, block);
    const auto anchor = std::ranges::find(list, std::optional(insertionPoint(*nested)),
                                          [](const auto& each) { return each->identifier(); });
    list.insert(anchor == list.end() ? anchor : std::next(anchor), block.begin(), block.end());
  }
}

Specifiers KVQuellarListController::specifiersForPlistName(std::string_view name) {
  return KVQuellarLocalizer::sharedLocalizer(platform())
      .localizedSpecifiersForSpecifiers(loadSpecifiersFromPlistName(name, kBundlePath));
}

void KVQuellarListController::setPreferenceValue(const std::optional<Value>& value, PSSpecifier& specifier) {
  if (page_.defaultsKey.empty()) return PSListController::setPreferenceValue(value, specifier);
  // A reload on the way takes the row off the list; its posts still read it.
  const auto row = specifier.shared_from_this();
  const std::string key = specifier.stringForKey("key");
  const bool on = value && value->boolValue();
  readIfUnread();
  for (const std::string& foreign : page_.takesOver) takeOver(foreign);
  setUserDefault(key, value);
  const bool cleared = clearOtherKeys(key, on);
  const bool rebuilt = !page_.rebuiltBy.empty() && key == page_.rebuiltBy;
  if (rebuilt) reloadSpecifiers();
  store();
  // The new cells are first drawn once the handler is done: one that keeps its own copy of the dictionary has this
  // write in it.
  if (rebuilt) layOutAnew(specifiers());
  post(Moment::afterWrite, value, specifier);
  if (cleared) reloadSpecifiers();
  post(Moment::afterReload, value, specifier);
  updateSpecifiersWithValue(on, key);
  post(Moment::afterBlocks, value, specifier);
}

std::optional<Value> KVQuellarListController::readPreferenceValue(PSSpecifier& specifier) {
  if (page_.defaultsKey.empty()) return PSListController::readPreferenceValue(specifier);
  const Value* value = platform::find(userDefaults_, specifier.stringForKey("key"));
  return value ? std::optional(*value) : std::nullopt;
}

bool KVQuellarListController::clearOtherKeys(const std::string& key, bool value) {
  bool cleared = false;
  for (const Clearing& clearing : page_.clearings) {
    if (clearing.whenOn != key || !value) continue;
    for (const std::string& other : clearing.keys) setUserDefault(other, Value(false));
    cleared = true;
  }
  return cleared;
}

void KVQuellarListController::store() {
  platform().preferences.setAppValue(page_.defaultsKey, Value(userDefaults_), kSettingsDomain);
}

namespace {

void sendNow(platform::Platform& platform, const Post& post, const std::optional<Dictionary>& userInfo) {
  switch (post.centre) {
    case Centre::darwin:
      platform.darwin.postNotification(post.name, true);
      break;
    case Centre::notifyPost:
      platform.darwin.notifyPost(post.name);
      break;
    case Centre::distributed:
      platform.distributed.postNotification(post.name, post.object, userInfo, true);
      break;
    case Centre::process:
      platform.notifications.postNotification({post.name, {}, userInfo});
      break;
  }
}

bool names(const std::vector<std::string>& keys, const std::string& key) {
  return std::ranges::find(keys, key) != keys.end();
}

}  // namespace

void KVQuellarListController::send(const Post& post) {
  sendNow(platform(), post, std::nullopt);
}

void KVQuellarListController::post(Moment moment, const std::optional<Value>& value, const PSSpecifier& specifier) {
  for (const Post& each : page_.posts) {
    if (each.moment == moment) post(each, value, specifier);
  }
}

void KVQuellarListController::post(const Post& post, const std::optional<Value>& value, const PSSpecifier& specifier) {
  const std::string key = specifier.stringForKey("key");
  if (!post.forKeys.empty() && !names(post.forKeys, key)) return;
  if (names(post.exceptKeys, key)) return;
  if (!post.forRowsWith.empty() && !specifier.propertyForKey(post.forRowsWith)) return;

  std::optional<Dictionary> userInfo;
  for (const auto& [name, payload] : post.userInfo) {
    if (!userInfo) userInfo.emplace();
    userInfo->insert_or_assign(
        name, std::visit(Overloaded{
                             [](const Value& fixed) { return fixed; },
                             [&](const RowProperty& property) { return *specifier.valueForKey(property.name); },
                             [&](const WrittenBoolean&) { return Value(value && value->boolValue()); },
                         },
                         payload));
  }
  if (post.delay.count() == 0) {
    sendNow(platform(), post, userInfo);
  } else {
    // What is posted later is posted even if the page is gone by then; it needs the platform only.
    platform().mainQueue.after(post.delay, [&platform = platform(), post, userInfo = std::move(userInfo)] {
      sendNow(platform, post, userInfo);
    });
  }
}

void KVQuellarListController::updateSpecifiersWithValue(bool value, std::string_view key) {
  std::vector<const Block*> controlled;
  for (const Block& block : blocks_) {
    if (block.description->shownBy == key) controlled.push_back(&block);
  }
  const auto shown = [&](const Block& block) { return block.description->shownAt ? isOn(*block.description) : value; };
  for (const Block* block : controlled) {
    if (!shown(*block)) removeContiguousSpecifiers(block->rows, true);
  }
  // Blocks that go after the same row are inserted the last one first, so that they stand in the page's order.
  for (auto first = controlled.begin(); first != controlled.end();) {
    const std::string point = insertionPoint(*(*first)->description);
    const auto last = std::find_if(first, controlled.end(),
                                   [&](const Block* block) { return insertionPoint(*block->description) != point; });
    for (auto block = last; block != first;) {
      --block;
      if (shown(**block)) insertContiguousSpecifiers((*block)->rows, point, true);
    }
    first = last;
  }
}

std::optional<platform::Action> KVQuellarListController::actionForSelector(std::string_view selector) {
  using platform::Action;
  if (selector == "respring:") return Action{std::string(selector), [this](PSSpecifier&) { respring(); }};
  return PSListController::actionForSelector(selector);
}

void KVQuellarListController::setColorForSpecifier(PSSpecifier& specifier) {
  const std::string& fallback = page_.colors.fallback;
  pickColor(specifier.stringForKey("colorKey"), fallback.empty() ? specifier.stringForKey("defaultColor") : fallback);
}

void KVQuellarListController::pickColor(const std::string& key, const std::string& fallback) {
  const Value* stored = platform::find(userDefaults_, key);
  const auto* current = stored ? stored->as<std::string>() : nullptr;
  presentColorDialog(
      platform::LCPParseColorString(current ? *current : fallback, fallback), page_.colors.showAlpha,
      [this, key](const platform::Color& color) { saveHexString(hexFromColor(color, page_.colors.showAlpha), key); });
}

void KVQuellarListController::presentColorDialog(const platform::Color& start, bool showAlpha,
                                                 std::function<void(const platform::Color&)> picked) {
  platform::Dialog dialog;
  dialog.kind = platform::DialogKind::color;
  dialog.buttons = {{localizedText("Cancel"), platform::ButtonStyle::cancel, {}}};
  dialog.color = platform::ColorChoice{
      .start = start,
      .showAlpha = showAlpha,
      .completion = [picked = std::move(picked), alive = lifetime()](const platform::Color& color) {
        if (!alive.expired()) picked(color);
      }};
  platform().navigation.present(std::move(dialog));
}

void KVQuellarListController::saveHexString(const std::string& hex, const std::string& key) {
  readIfUnread();
  for (const std::string& foreign : page_.takesOver) takeOver(foreign);
  setUserDefault(key, Value(hex));
  saveColors(page_.colors.post);
}

const std::string& KVQuellarListController::colorsKey() const {
  return page_.colors.defaultsKey.empty() ? page_.defaultsKey : page_.colors.defaultsKey;
}

void KVQuellarListController::saveColors(const Post& post) {
  platform().preferences.setAppValue(colorsKey(), Value(userDefaults_), kSettingsDomain);
  send(post);
  const Colors& colors = page_.colors;
  platform().mainQueue.after(colors.delay, [this, &platform = platform(), colors, alive = lifetime()] {
    for (const Post& each : colors.postsBeforeRedraw) sendNow(platform, each, std::nullopt);
    // A page that is gone has nothing to draw, but its posts go out.
    if (!alive.expired()) redraw();
    for (const Post& each : colors.postsAfterRedraw) sendNow(platform, each, std::nullopt);
  });
}

void KVQuellarListController::redraw() {
  // A hidden block comes back with new cells: theirs may show a colour that is not stored any more.
  for (const Block& block : blocks_) {
    for (const auto& row : block.rows) {
      if (!indexOfSpecifier(*row)) row->setCell(nullptr);
    }
  }
  switch (page_.colors.redraw) {
    case Colors::Redraw::page:
      reload();
      break;
    case Colors::Redraw::specifiers:
      reloadSpecifiers();
      break;
    case Colors::Redraw::blocksAndSpecifiers:
      createDynamicSpecs();
      reloadSpecifiers();
      break;
  }
}

void KVQuellarListController::handleSavingSliderValueForChanges(const platform::Notification& notification) {
  using namespace std::chrono_literals;
  const auto* row = std::get_if<PSSpecifier::Pointer>(&notification.object);
  const Value* value = notification.userInfo ? platform::find(*notification.userInfo, "newValue") : nullptr;
  if (!row || !value) return;
  setPreferenceValue(*value, **row);
  platform().mainQueue.after(200ms, [this, row = *row, alive = lifetime()] {
    if (!alive.expired()) reloadSpecifier(*row);
  });
}

void KVQuellarListController::refreshTableCellForTimerWithKey(const platform::Notification& /*notification*/) {
  reloadUserDefaults();
  for (const Post& each : page_.stepperRefresh->posts) send(each);
}

void KVQuellarListController::loadView() {
  PSListController::loadView();
  observeNotifications();
  if (page_.respringButton) showRespringButton();
}

void KVQuellarListController::observeNotifications() {
  auto& center = platform().notifications;
  if (page_.savesTypedValues) {
    center.addObserver(lifetime(), "sliderValueChanged",
                       [this](const auto& notification) { handleSavingSliderValueForChanges(notification); });
  }
  if (page_.stepperRefresh) {
    center.addObserver(lifetime(), "stepperValueChanged",
                       [this](const auto& notification) { refreshTableCellForTimerWithKey(notification); });
  }
  if (page_.saveButton) {
    center.addObserver(lifetime(), platform::UIKeyboardWillShowNotification,
                       [this](const auto&) { keyboardWillShow(); });
    center.addObserver(lifetime(), platform::UIKeyboardWillHideNotification,
                       [this](const auto&) { keyboardWillHide(); });
  }
}

void KVQuellarListController::viewWillAppear() {
  PSListController::viewWillAppear();
  switchOnTintColor = kSwitchTint;
}

std::shared_ptr<platform::PSTableCell> KVQuellarListController::cellForRow(PSSpecifier& row) {
  auto cell = PSListController::cellForRow(row);
  cell->titleColor = kTitleColor;
  return cell;
}

void KVQuellarListController::keyboardWillShow() {
  navigationItem().setRightBarButtonItem(
      BarButtonItem{localizedText("Save"), BarButtonItemStyle::done, "Save", [this] { Save(); }});
}

void KVQuellarListController::keyboardWillHide() {
  if (page_.respringButton) {
    showRespringButton();
  } else {
    navigationItem().setRightBarButtonItem(std::nullopt);
  }
}

void KVQuellarListController::Save() {
  endEditing();
}

void KVQuellarListController::showRespringButton() {
  navigationItem().setRightBarButtonItem(
      BarButtonItem{localizedText("Respring"), BarButtonItemStyle::done, "respring:", [this] { respring(); }});
}

void KVQuellarListController::respring() {
  platform::Dialog sheet;
  sheet.kind = platform::DialogKind::sheet;
  sheet.title = localizedText("Are You Sure?");
  sheet.message = localizedText("Respring Confirmation");
  sheet.buttons = {
      {localizedText("Not Right Now"), platform::ButtonStyle::cancel, {}},
      {localizedText("Respring"), platform::ButtonStyle::destructive,
       [&darwin = platform().darwin](const std::string&) { darwin.postNotification(kRespring, false); }},
  };
  sheet.anchoredToRightBar = platform().device.userInterfaceIdiom() == 1;
  platform().navigation.present(std::move(sheet));
}

}  // namespace quellar::frame
