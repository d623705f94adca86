// SPDX-License-Identifier: MIT
#include "monkey.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <stdexcept>

#include "cells/backdrop_picker.h"
#include "cells/stepper_cell.h"
#include "frame/list_controller.h"

namespace quellar::tests {

using frame::KVQuellarListController;
using host::headless::Json;
using host::headless::toJson;
using platform::Array;
using platform::Control;
using platform::DialogKind;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;

namespace {

constexpr const char* kSettings = "com.vantorick.quellar2";

/// Blocks whose rows need not be those of a page that is made anew with the same dictionary.
struct StayingBlock {
  std::string_view page;
  std::string_view block;
  std::string_view reason;
};
constexpr std::array<StayingBlock, 3> kStayingBlocks = {{
    {"KVQuellarForceTouchListController", "customColorSpec",
     "it is shown by a switch of a block; where that block goes, the colour stays until its own switch is used"},
    {"KVQuellarStatusBarCarrierListController", "customNoServiceSpec",
     "the page opens with it under the switch of the searching text too; only a use of that switch changes the two"},
    {"KVQuellarStatusBarCarrierListController", "customSearchingSpec", "the other one of the two"},
}};

const Array kSwitches = {Dictionary{{"identifier", "com.example.wifi"}, {"title", "Wi-Fi"}, {"glyph", "/wifi.png"}},
                         Dictionary{{"identifier", "airplane"}}};
const Dictionary kSiblingColors = {{"airdrop", "#123456"}, {"wifi", "#abcdef"}, {"more", 1}};

/// The keys of a page, and the keys that its blocks are shown by.
void collectKeys(const std::vector<frame::Row>& rows, std::set<std::string>& keys) {
  for (const frame::Row& row : rows) {
    std::visit(
        [&](const auto& each) {
          if constexpr (requires { each.key; }) keys.insert(each.key);
          if constexpr (requires { each.colorKey; }) keys.insert(each.colorKey);
          if constexpr (requires { each.shownBy; }) {
            keys.insert(each.shownBy);
            collectKeys(each.rows, keys);
          }
        },
        row.row);
  }
}

bool showsSeveralBlocks(const frame::Page& page, const std::string& key) {
  return std::ranges::count_if(page.rows, [&](const frame::Row& row) {
           const auto* block = std::get_if<frame::Dependent>(&row.row);
           return block && block->shownBy == key;
         }) > 1;
}

/// What a row is found again by on a page that was made anew.
std::string nameOf(const PSSpecifier& row) {
  return std::string(cellTypeName(row.cellType())) + " " + row.name() + " " + row.identifier().value_or("") + " " +
         row.stringForKey("colorKey");
}

/// Whether two rows are made alike.
bool areAlike(const PSSpecifier& left, const PSSpecifier& right) {
  return left.name() == right.name() && left.cellType() == right.cellType() &&
         left.properties() == right.properties() && left.values() == right.values() &&
         left.titles() == right.titles() && left.shortTitles() == right.shortTitles() &&
         left.detailControllerClass() == right.detailControllerClass() &&
         static_cast<bool>(left.setter()) == static_cast<bool>(right.setter()) &&
         (left.action() ? left.action()->selector : "") == (right.action() ? right.action()->selector : "");
}

std::string listOf(const Specifiers& rows) {
  std::string text;
  for (const auto& row : rows) text += "\n    " + nameOf(*row);
  return text;
}

/// The place of the choice that a segment row shows: that of the stored number, else of the default.
std::optional<std::size_t> shownChoice(const PSSpecifier& row, const Dictionary& copy) {
  const Value* stored = platform::find(copy, row.stringForKey("key"));
  const Value* shown = stored && stored->isNumber() && !stored->is<bool>() ? stored : row.valueForKey("default");
  const auto same = [&](const Value& choice) { return choice.doubleValue() == shown->doubleValue(); };
  const auto found = std::ranges::find_if(row.values(), same);
  if (found == row.values().end()) return std::nullopt;
  return static_cast<std::size_t>(found - row.values().begin());
}

}  // namespace

BundleOfSources::BundleOfSources()
    : root_(folder_.path(), {std::filesystem::path(QUELLAR_RESOURCES)}), resources_(root_, {"en"}) {}

std::string BundleOfSources::localizedString(std::string_view bundlePath, std::string_view key, std::string_view value,
                                             const std::optional<std::string>& table) {
  return resources_.localizedString(bundlePath, key, value, table);
}

std::optional<Array> BundleOfSources::rowFileItems(std::string_view bundlePath, std::string_view name) {
  const auto found = rowFiles_.find(name);
  if (found != rowFiles_.end()) return found->second;
  auto items = resources_.rowFileItems(bundlePath, name);
  if (!items) throw std::logic_error("no row file " + std::string(name) + " in " QUELLAR_RESOURCES);
  return rowFiles_.emplace(name, std::move(items)).first->second;
}

void BundleOfSources::reportRowFile(std::string_view name, std::string_view problem) {
  throw std::logic_error("the row file " + std::string(name) + " has a fault: " + std::string(problem));
}

Monkey::Monkey(std::uint64_t seed) : random_(seed) {
  files_.existing = {"/usr/lib/libflipcontrolcenter.dylib"};
  files_.propertyLists["/Library/Switches/switches.plist"] = kSwitches;
  files_.propertyLists["/var/mobile/Library/Accounts/twitter.plist"] = Array{"anna", "bernd"};
  files_.propertyLists["/private/var/mobile/Library/Preferences/com.vantorick.glint2.plist"] = kSiblingColors;
  applications_.installed = {{"org.example.Camera.desktop", "Camera"},
                             {"org.example.Maps.desktop", "Maps"},
                             {"org.example.Notes.desktop", "Notes"}};
  const host::headless::DeviceOptions device{.idiom = oneIn(2) ? 1 : 0};
  session_ = std::make_unique<host::headless::Session>(
      device,
      host::headless::Services{
          .preferences = preferences_, .files = files_, .bundles = bundles_, .applications = applications_},
      [this](std::string_view line) { lines_.emplace_back(line); });
  mirror_ = std::make_unique<host::headless::HeadlessHost>(
      device,
      host::headless::Services{
          .preferences = mirrorPreferences_, .files = files_, .bundles = bundles_, .applications = applications_},
      [](const Json&) {});
}

std::size_t Monkey::below(std::size_t count) {
  demand(count > 0, "there is something to choose from");
  return static_cast<std::size_t>(random_() % count);
}

std::string Monkey::anyText() {
  static const std::array<std::string, 12> texts = {
      "",           "a", "Gr\u00fc\u00dfe \U0001F600", "it's \"quoted\" \\", "12", "-3.5", "%@ %s", "1e3", "  ",
      "line\nline", ".", std::string(300, 'x')};
  return anyOf(texts);
}

Value Monkey::anyValue() {
  static const std::array<Value, 14> values = {true,
                                               false,
                                               0,
                                               1,
                                               2,
                                               -7,
                                               0.5,
                                               1e300,
                                               "",
                                               "#ff00ff",
                                               "text",
                                               Array{1, "a"},
                                               Dictionary{{"a", 1}},
                                               platform::Data{{0, 1, 2}}};
  return anyOf(values);
}

void Monkey::fail(const std::string& what) const {
  throw std::logic_error("action " + std::to_string(actions_) + " (" + action_ + "): " + what);
}

void Monkey::demand(bool holds, const std::string& what) const {
  if (!holds) fail(what);
}

void Monkey::feed(const Json& command, bool succeeds) {
  feedLine(dump(command), command["do"], succeeds);
}

void Monkey::feedLine(const std::string& line, const std::string& name, bool succeeds) {
  action_ += line + " ";
  ++commands_[succeeds ? name : "refused"];
  session_->feed(line);
  const std::string& closing = lines_.back();
  demand(closing.starts_with(R"({"ok":true)") == succeeds,
         succeeds ? "it is refused: " + closing : "it is not refused");
}

PanelModel::Page& Monkey::pageOf(const platform::ViewController& controller) {
  const auto found = std::ranges::find_if(
      model_.stack, [&](const PanelModel::Page& page) { return page.controller.lock().get() == &controller; });
  demand(found != model_.stack.end(), controller.className() + " is on the stack");
  return *found;
}

void Monkey::expectCommit() {
  auto* page = session_->host().topList();
  if (page && page->editedSpecifier()) model_.writes(top(), *page->editedSpecifier(), Value(page->editingText()));
}

void Monkey::act() {
  ++actions_;
  action_.clear();
  lines_.clear();
  auto& navigation = session_->host().navigation();
  if (oneIn(20)) {
    tryWhatCannotBeDone();
  } else if (oneIn(20)) {
    wait();
  } else if (oneIn(30)) {
    changeStoreFromOutside();
  } else if (navigation.dialog()) {
    actOnDialog();
  } else if (!navigation.topViewController()) {
    actWithoutPage();
  } else {
    actOnPage();
  }
  followStack();
  check();
}

void Monkey::actWithoutPage() {
  // Most of the time from the start page, where the links are; each page can be opened by its name, too.
  const auto& entries = session_->host().registry().entries();
  feed({{"do", "open"}, {"page", oneIn(4) ? anyOf(entries).name : entries.front().name}});
}

void Monkey::actOnPage() {
  if (oneIn(model_.stack.back().description ? 15 : 3)) return goBack();
  if (oneIn(30)) return pressBar();
  if (auto* page = session_->host().topList()) return actOnList(*page);
  actOnBackdrops();
}

void Monkey::actOnList(ListPage& page) {
  if (page.editedSpecifier()) {
    if (oneIn(3)) {
      const std::string text = anyText();
      feed({{"do", "type"}, {"text", text}});
      demand(page.editingText() == text, "the text is the one that was typed");
      return;
    }
    if (oneIn(3)) {
      expectCommit();
      return feed({{"do", "return"}});
    }
  } else if (oneIn(40)) {
    return reloadPage(page);
  } else if (oneIn(40)) {
    return notifyFromOutside();
  }
  // Most rows are groups, links and switches; what they lead to and show is to be used as often.
  std::size_t index = below(page.specifiers().size());
  for (int more = 0; more < 4; ++more) {
    const Control control = page.specifiers()[index]->cell()->control();
    const bool usual = control == Control::group || control == Control::link || control == Control::toggle;
    if (!usual || oneIn(control == Control::group ? 8 : 3)) break;
    index = below(page.specifiers().size());
  }
  useRow(page, index);
}

void Monkey::useRow(ListPage& page, std::size_t index) {
  const auto row = page.specifiers()[index];
  const bool enabled = row->enabled();
  const auto on = [&](const char* command) { return Json::object({{"do", command}, {"row", index}}); };
  Json command;
  switch (row->cell()->control()) {
    case Control::toggle: {
      // On more often than off: most of what there is to find is shown by a switch.
      bool value = !oneIn(4);
      const Value* stored = platform::find(top().copy, row->stringForKey("key"));
      // Of two blocks after one row only the upper one stands right after it: set on while it is on, as no touch does,
      // the switch lists both again.
      if (stored && stored->boolValue() && showsSeveralBlocks(*top().description, row->stringForKey("key"))) {
        value = false;
      }
      if (enabled) {
        expectCommit();
        model_.writes(top(), *row, value);
      }
      command = on("set");
      command["value"] = value;
      return feed(command, enabled);
    }
    case Control::segment: {
      const std::size_t place = below(row->values().size());
      // A tap on the segment that is selected does nothing.
      if (shownChoice(*row, top().copy) != place) {
        expectCommit();
        model_.writes(top(), *row, row->values()[place]);
      }
      command = on("set");
      command["value"] = toJson(row->values()[place]);
      return feed(command);
    }
    case Control::picker: {
      if (oneIn(2) || row->values().empty()) {
        expectCommit();
        return feed(on("tap"));
      }
      // Of two choices of one value, the first one is written.
      const Value& value = anyOf(row->values());
      expectCommit();
      model_.writes(top(), *row, value);
      command = on("set");
      command["value"] = toJson(value);
      return feed(command);
    }
    case Control::slider:
    case Control::typedSlider:
      return slide(row, index);
    case Control::stepper:
      return step(row, index);
    case Control::text: {
      const std::string text = anyText();
      if (oneIn(4)) {
        expectCommit();
        model_.writes(top(), *row, Value(text));
        command = on("set");
        command["value"] = text;
        return feed(command);
      }
      if (page.editedSpecifier() != row.get()) expectCommit();
      command = on("edit");
      command["text"] = text;
      feed(command);
      demand(page.editedSpecifier() == row.get() && page.editingText() == text, "the row is edited");
      return;
    }
    case Control::link:
      expectCommit();
      return feed(on("tap"));
    case Control::color:
      expectCommit();
      feed(on("tap"));
      asked_ = row;
      return;
    case Control::button:
      return pressButton(row, index);
    case Control::pickerItem:
      return chooseItem(page, index);
    case Control::group:
    case Control::staticText:
      return feed(on("tap"), false);
  }
}

void Monkey::chooseItem(ListPage& page, std::size_t index) {
  const PSSpecifier& picker = *page.specifier();
  model_.writes(pageOf(*picker.target()), picker, picker.values()[index - 1]);
  feed({{"do", "tap"}, {"row", index}});
  demand(page.showsCheckmark(index), "the choice that was tapped has the check mark");
}

void Monkey::slide(const PSSpecifier::Pointer& row, std::size_t index) {
  const double minimum = row->valueForKey("min")->doubleValue();
  const double maximum = row->valueForKey("max")->doubleValue();
  if (row->cell()->control() == Control::typedSlider && oneIn(2)) {
    expectCommit();
    feed({{"do", "popup"}, {"row", index}});
    asked_ = row;
    return;
  }
  const bool drag = oneIn(2);
  // A drag may end beyond the bounds.
  const double part = drag ? static_cast<double>(below(25)) / 16 - 0.25 : static_cast<double>(below(17)) / 16;
  const double value = minimum + (maximum - minimum) * part;
  expectCommit();
  model_.writes(top(), *row, std::clamp(value, minimum, maximum));
  feed({{"do", drag ? "drag" : "set"}, {"row", index}, {"value", std::min(value, drag ? value : maximum)}});
}

void Monkey::step(const PSSpecifier::Pointer& row, std::size_t index) {
  // A press may build the row anew, with a cell that has read the dictionary again; so one press where it does.
  const bool rebuilds = row->valueForKey("requestsNotification")->boolValue();
  const int presses = rebuilds ? 1 : static_cast<int>(below(3)) + 1;
  const int direction = oneIn(2) ? 1 : -1;
  const auto bound = [&](const char* key, double fallback) {
    const Value* value = row->valueForKey(key);
    return value ? value->doubleValue() : fallback;
  };
  const auto& cell = dynamic_cast<const cells::KVQuellarStepperCell&>(*row->cell());
  const Dictionary copy = *cell.userDefaults();
  double value = cell.stepper().value;
  expectCommit();
  for (int press = 0; press < presses; ++press) {
    const double next = std::clamp(value + direction, bound("minimumValue", 0), bound("maximumValue", 100));
    if (next == value) break;
    value = next;
    model_.steps(*row, copy, value);
  }
  feed({{"do", "step"}, {"row", index}, {"by", direction * presses}});
}

void Monkey::pressButton(const PSSpecifier::Pointer& row, std::size_t index) {
  const std::string selector = row->action() ? row->action()->selector : "";
  expectCommit();
  if (selector.empty()) {
    model_.choosesAccount(top(), row->name());
  } else if (selector == "handleImportingGlint2Colors:") {
    model_.imports(top(), kSiblingColors);
  } else {
    demand(selector == "presentBlurPickerForBackground", "no button has another action: " + selector);
  }
  feed({{"do", "tap"}, {"row", index}});
}

void Monkey::actOnBackdrops() {
  const auto& styles = cells::KVQuellarBackdropPickerCollectionView::backdropStyles();
  const std::int64_t style = std::stoll(std::string(anyOf(styles)));
  model_.choosesStyle(style);
  feed({{"do", "style"}, {"style", style}});
}

void Monkey::actOnDialog() {
  switch (session_->host().navigation().dialog()->kind) {
    case DialogKind::color:
      return answerColorDialog();
    case DialogKind::sheet: {
      const auto& buttons = session_->host().navigation().dialog()->buttons;
      const std::size_t place = below(buttons.size());
      if (place == 1) model_.respring();
      return feed({{"do", "press"}, {"button", buttons[place].title}});
    }
    case DialogKind::alert:
      return answerAlert();
  }
}

void Monkey::answerColorDialog() {
  if (oneIn(3)) return feed({{"do", "press"}, {"button", "Cancel"}});
  std::array<char, 16> hex{};
  std::snprintf(hex.data(), hex.size(), "#%06x", static_cast<unsigned>(below(0x1000000)));
  const auto quarters = below(5);
  std::string stored = hex.data();
  const PanelModel::Page& page = pageOf(*asked_->target());
  if (page.description->colors.showAlpha && quarters < 4) {
    static constexpr std::array<const char*, 4> kAlphas = {":0.00", ":0.25", ":0.50", ":0.75"};
    stored += kAlphas.at(quarters);
  }
  model_.picks(pageOf(*asked_->target()), asked_->stringForKey("colorKey"), stored);
  feed({{"do", "pick"}, {"color", hex.data()}, {"alpha", static_cast<double>(quarters) / 4}});
}

void Monkey::answerAlert() {
  const auto& dialog = *session_->host().navigation().dialog();
  if (!dialog.text) return feed({{"do", "press"}, {"button", "OK"}});
  if (oneIn(2)) {
    const float minimum = static_cast<float>(asked_->valueForKey("min")->doubleValue());
    const float maximum = static_cast<float>(asked_->valueForKey("max")->doubleValue());
    const double number = minimum + (maximum - minimum) * (static_cast<double>(below(13)) / 10 - 0.1);
    return feed({{"do", "type"}, {"text", oneIn(4) ? anyText() : host::headless::dump(Json(number))}});
  }
  if (!dialog.accessory.empty() && oneIn(4)) {
    return feed({{"do", "accessory"}, {"button", anyOf(dialog.accessory).title}});
  }
  if (oneIn(4)) return feed({{"do", "press"}, {"button", "Cancel"}});
  const float number = std::strtof(dialog.text->c_str(), nullptr);
  const bool fits = number >= static_cast<float>(asked_->valueForKey("min")->doubleValue()) &&
                    number <= static_cast<float>(asked_->valueForKey("max")->doubleValue());
  if (fits) model_.typesNumber(*asked_, static_cast<double>(number));
  feed({{"do", "press"}, {"button", "Enter"}});
  const auto& after = session_->host().navigation().dialog();
  demand(fits ? !after : after && after->title == "Error", "a number beyond the bounds is refused, and no other");
}

void Monkey::pressBar() {
  const auto item = session_->host().navigation().topViewController()->navigationItem().rightBarButtonItem();
  if (item) expectCommit();
  feed({{"do", "bar"}, {"side", "right"}}, item.has_value());
}

void Monkey::goBack() {
  expectCommit();
  feed({{"do", "back"}});
}

void Monkey::wait() {
  static constexpr std::array<int, 10> kMilliseconds = {0, 1, 50, 99, 100, 101, 200, 250, 500, 60000};
  const int milliseconds = anyOf(kMilliseconds);
  model_.advance(std::chrono::milliseconds(milliseconds));
  feed({{"do", "advance"}, {"seconds", milliseconds / 1000.0}});
}

void Monkey::tryWhatCannotBeDone() {
  static const std::vector<std::string> lines = {
      "",
      "set",
      "[]",
      R"({"do":"fly"})",
      R"({"do":"open","page":"nowhere"})",
      R"({"do":"set","row":100000,"value":true})",
      R"({"do":"set","row":0,"value":{}})",
      R"({"do":"tap","row":"no such row"})",
      R"({"do":"edit","row":0,"text":"\u0000"})",
      R"({"do":"drag","row":-1,"value":0})",
      R"({"do":"step","row":0,"by":0})",
      R"({"do":"popup","row":{"label":"no such label"}})",
      R"({"do":"accessory","button":"no such button"})",
      R"({"do":"press","button":"no such button"})",
      R"({"do":"pick","color":"red"})",
      R"({"do":"style","style":7})",
      R"({"do":"bar","side":"left"})",
      R"({"do":"advance","seconds":-1})",
  };
  feedLine(anyOf(lines), "", false);
}

void Monkey::changeStoreFromOutside() {
  const frame::Page& page = *anyOf(session_->host().registry().entries()).page;
  if (page.defaultsKey.empty()) return;
  std::set<std::string> keys = {"a key of nobody's"};
  collectKeys(page.rows, keys);
  Dictionary& domain = preferences_.domains[kSettings];
  Value& stored = domain[page.defaultsKey];
  if (oneIn(20)) {
    stored = anyValue();
  } else if (oneIn(20)) {
    domain.erase(page.defaultsKey);
  } else {
    if (!stored.is<Dictionary>()) stored = Dictionary{};
    const std::vector<std::string> choices(keys.begin(), keys.end());
    stored.as<Dictionary>()->insert_or_assign(anyOf(choices), oneIn(2) ? Value(oneIn(2)) : anyValue());
  }
  model_.store[kSettings] = domain;
  action_ = "the store is changed from outside: " + page.defaultsKey;
  ++commands_["outside change"];
}

void Monkey::notifyFromOutside() {
  auto& notifications = session_->host().platform().notifications;
  ++commands_["outside notification"];
  if (oneIn(2)) {
    action_ = "somebody posts that a stepper was pressed";
    model_.hearsOfStepper("no key of ours");
    notifications.postNotification({"stepperValueChanged", "no key of ours", std::nullopt});
  } else {
    action_ = "somebody posts that the keyboard comes and goes";
    notifications.postNotification({std::string(platform::UIKeyboardWillShowNotification), {}, std::nullopt});
    notifications.postNotification({std::string(platform::UIKeyboardWillHideNotification), {}, std::nullopt});
  }
}

void Monkey::reloadPage(ListPage& page) {
  action_ = "the page is drawn anew";
  ++commands_["reload"];
  if (oneIn(2)) {
    page.reload();
  } else {
    page.reloadSpecifiers();
  }
}

void Monkey::followStack() {
  const auto& stack = session_->host().navigation().viewControllers();
  std::vector<std::weak_ptr<platform::ViewController>> left;
  while (model_.stack.size() > stack.size()) {
    left.push_back(top().controller);
    model_.stack.pop_back();
  }
  for (std::size_t place = model_.stack.size(); place < stack.size(); ++place) {
    const auto* entry = session_->host().registry().find(stack[place]->className());
    model_.push(stack[place], entry ? &*entry->page : nullptr);
    ++pages_[stack[place]->className()];
  }
  for (const auto& page : left) demand(page.expired(), "a page that was left is gone");
}

void Monkey::check() {
  const auto expected = model_.take();
  std::vector<std::string> told;
  for (std::string& line : lines_) {
    if (line.starts_with(R"({"event":"write")") || line.starts_with(R"({"event":"synchronize")") ||
        line.starts_with(R"({"event":"post")")) {
      told.push_back(std::move(line));
    }
  }
  eventCount_ += told.size();
  if (told != expected) {
    std::string text = "it should write and post";
    for (const auto& line : expected) text += "\n    " + line;
    text += "\n  and not";
    for (const auto& line : told) text += "\n    " + line;
    fail(text);
  }

  demand(preferences_.domains == model_.store, "the store holds what was written");
  auto& host = session_->host();
  const auto& stack = host.navigation().viewControllers();
  for (std::size_t place = 0; place < stack.size(); ++place) {
    const PanelModel::Page& page = model_.stack[place];
    demand(page.controller.lock() == stack[place], "the stack is the one that was walked");
    const auto* controller = dynamic_cast<const KVQuellarListController*>(stack[place].get());
    if (!controller || !page.description) continue;
    demand(controller->userDefaults() == page.copy,
           "the page's copy of its dictionary: " + dump(toJson(Value(controller->userDefaults()))) + ", not " +
               dump(toJson(Value(page.copy))));
  }
  auto* list = host.topList();
  const bool typing =
      (list && list->editedSpecifier()) || (host.navigation().dialog() && host.navigation().dialog()->text);
  demand(host.navigation().keyboardVisible() == typing, "the keyboard is there for a text alone");
  if (list) checkRows(*list);
}

void Monkey::checkRows(ListPage& page) {
  for (const auto& row : page.specifiers()) {
    demand(row->cell() && &row->cell()->specifier() == row.get(), "each row has its cell");
  }
  const PanelModel::Page& model = pageOf(page);
  if (!model.description) {
    demand(page.specifiers().size() == page.specifier()->values().size() + 1, "each choice is listed");
    return;
  }
  // The page anew, from a store that holds the copy that this one works on.
  mirrorPreferences_.domains[kSettings] = {{model.colorsKey(), Value(model.copy)}};
  const auto made = mirror_->registry().find(page.className())->make(mirror_->platform());
  auto& fresh = dynamic_cast<KVQuellarListController&>(*made);
  Specifiers rows = page.specifiers();
  Specifiers freshRows = fresh.specifiers();
  for (const StayingBlock& staying : kStayingBlocks) {
    if (staying.page != page.className()) continue;
    std::set<std::string> names;
    for (const auto& row : fresh.dynamicSpecs(staying.block)) names.insert(nameOf(*row));
    const auto stays = [&](const auto& row) { return names.contains(nameOf(*row)); };
    std::erase_if(rows, stays);
    std::erase_if(freshRows, stays);
  }
  const bool alike =
      std::ranges::equal(rows, freshRows, [](const auto& left, const auto& right) { return areAlike(*left, *right); });
  demand(alike,
         "the rows are those of the page made anew:" + (alike ? "" : listOf(rows) + "\n  /" + listOf(freshRows)));

  // What a row reads, it reads from the copy.
  if (model.description->defaultsKey.empty() || model.description->defaultsKey != model.colorsKey()) return;
  for (const auto& row : rows) {
    if (!row->getter() || !row->stringForKey("defaults").empty()) continue;
    const Value* stored = platform::find(model.copy, row->stringForKey("key"));
    demand(row->getter()(*row) == (stored ? std::optional(*stored) : std::nullopt),
           "a row reads what is stored: " + nameOf(*row));
  }
}

}  // namespace quellar::tests
