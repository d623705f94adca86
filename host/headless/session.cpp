// SPDX-License-Identifier: MIT
#include "host/headless/session.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

#include "cells/backdrop_picker.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/names.h"
#include "host/headless/controls.h"
#include "host/headless/row_json.h"

namespace quellar::host::headless {

using platform::BarButtonItem;
using platform::Color;
using platform::Control;
using platform::Dialog;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Value;
using platform::ViewController;

namespace {

/// Why a command can't be run.
class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::string inQuotes(std::string_view text) {
  return dump(Json(text));
}

const Json& field(const Json& fields, const char* name) {
  const auto found = fields.find(name);
  if (found == fields.end()) throw CommandError("the field " + inQuotes(name) + " is missing");
  return *found;
}

[[noreturn]] void wrongField(const char* name, const std::string& expected) {
  throw CommandError("the field " + inQuotes(name) + " must be " + expected);
}

std::string stringField(const Json& fields, const char* name) {
  const Json& json = field(fields, name);
  if (!json.is_string()) wrongField(name, "a string");
  return json.get<std::string>();
}

// A text that a user can type; none can hold the character that ends a C string, and no store keeps it.
std::string checkedText(const Json& json, const char* name) {
  if (!json.is_string()) wrongField(name, "a string");
  auto text = json.get<std::string>();
  if (text.find('\0') != std::string::npos) wrongField(name, "a string without U+0000");
  return text;
}

double numberField(const Json& fields, const char* name) {
  const Json& json = field(fields, name);
  if (!json.is_number()) wrongField(name, "a number");
  return json.get<double>();
}

Color colorOf(const Json& fields) {
  const std::string text = stringField(fields, "color");
  const bool wellFormed = text.size() == 7 && text.front() == '#' &&
                          text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos;
  if (!wellFormed) wrongField("color", "\"#rrggbb\"");
  const auto component = [&](std::size_t at) {
    return static_cast<std::uint8_t>(std::stoul(text.substr(at, 2), nullptr, 16));
  };
  return {component(1), component(3), component(5), 1};
}

// The JSON reader takes "-0" for a signed number.
bool isNatural(const Json& json) {
  return json.is_number_unsigned() || (json.is_number_integer() && json == 0);
}

std::string listed(const std::vector<std::string>& titles) {
  std::string text;
  for (const auto& title : titles) text += (text.empty() ? "" : ", ") + inQuotes(title);
  return text.empty() ? "none" : text;
}

template <typename Button>
std::size_t buttonTitled(const std::vector<Button>& buttons, const std::string& title, const std::string& place) {
  const auto found = std::ranges::find(buttons, title, &Button::title);
  if (found != buttons.end()) return static_cast<std::size_t>(found - buttons.begin());
  std::vector<std::string> titles;
  std::ranges::transform(buttons, std::back_inserter(titles), &Button::title);
  throw CommandError("no button " + inQuotes(title) + " " + place + "; its buttons: " + listed(titles));
}

Json itemsJson(const cells::KVQuellarBackdropPickerCollectionView& previews, double width) {
  const auto size = cells::KVQuellarBackdropPickerCollectionView::sizeForItem(width);
  Json items = Json::array();
  for (std::size_t item = 0; item < previews.numberOfItems(); ++item) {
    const auto preview = previews.cellForItem(item);
    items.push_back({{"style", preview.style()}, {"label", preview.styleLabel()}, {"size", {size.width, size.height}}});
  }
  return items;
}

}  // namespace

struct Session::Command {
  std::string_view name;
  std::vector<std::string_view> fields;
  /// Whether it needs the page beneath a dialog.
  bool needsPage;
  Json (Session::*run)(const Json& fields);
};

const std::vector<Session::Command>& Session::commands() {
  static const std::vector<Command> commands{
      {"open", {"page"}, true, &Session::open},
      {"back", {}, true, &Session::back},
      {"rows", {}, true, &Session::rows},
      {"inspect", {"row"}, true, &Session::inspect},
      {"screen", {}, false, &Session::screen},
      {"set", {"row", "value"}, true, &Session::set},
      {"drag", {"row", "value"}, true, &Session::drag},
      {"step", {"row", "by"}, true, &Session::step},
      {"tap", {"row"}, true, &Session::tap},
      {"popup", {"row"}, true, &Session::popup},
      {"accessory", {"button"}, false, &Session::accessory},
      {"type", {"text"}, false, &Session::type},
      {"press", {"button"}, false, &Session::press},
      {"edit", {"row", "text"}, true, &Session::edit},
      {"return", {}, true, &Session::pressReturn},
      {"bar", {"side"}, true, &Session::bar},
      {"pick", {"color", "alpha"}, false, &Session::pick},
      {"style", {"style"}, true, &Session::style},
      {"advance", {"seconds"}, false, &Session::advance},
      {"stored", {"key", "domain"}, false, &Session::stored},
  };
  return commands;
}

Session::Session(const DeviceOptions& device, Services services, Output output, FailedWrite failedWrite)
    : output_(std::move(output)),
      failedWrite_(std::move(failedWrite)),
      host_(device, services, [this](const Json& event) { output_(dump(event)); }) {}

void Session::feed(std::string_view line) {
  Json closing = Json::object();
  try {
    const Json result = run(line);
    closing["ok"] = true;
    closing.update(result);
    const auto failed = failedWrite_ ? failedWrite_() : std::nullopt;
    if (failed) closing["warning"] = *failed;
  } catch (const CommandError& error) {
    closing["error"] = error.what();
  }
  output_(dump(closing));
}

Json Session::run(std::string_view line) {
  if (line.size() > kLongestLine) throw CommandError("the line is longer than 1 MiB");
  const auto parsed = parseJson(line);
  if (const auto* why = std::get_if<NoJson>(&parsed)) {
    throw CommandError(*why == NoJson::malformed ? std::string("the line is not JSON")
                                                 : "the line is nested deeper than " + std::to_string(kDeepestJson));
  }
  const Json& fields = std::get<Json>(parsed);
  if (!fields.is_object()) throw CommandError("the line is no JSON object");
  const std::string name = stringField(fields, "do");
  const auto command = std::ranges::find(commands(), name, &Command::name);
  if (command == commands().end()) throw CommandError("no command " + inQuotes(name));
  for (const auto& [key, json] : fields.items()) {
    if (key != "do" && std::ranges::find(command->fields, key) == command->fields.end()) {
      throw CommandError(inQuotes(name) + " has no field " + inQuotes(key));
    }
  }
  if (command->needsPage && host_.navigation().dialog()) {
    throw CommandError(inQuotes(name) + " needs the page beneath the dialog that is shown");
  }
  return (this->*command->run)(fields);
}

// ---- What commands name

PSListController& Session::topList() {
  const auto top = host_.navigation().topViewController();
  if (!top) throw CommandError("no page is open");
  auto* list = host_.topList();
  if (!list) throw CommandError(top->className() + " has no rows");
  return *list;
}

const Dialog& Session::dialog() {
  const auto& dialog = host_.navigation().dialog();
  if (!dialog) throw CommandError("no dialog is shown");
  return *dialog;
}

std::string Session::Row::described() const {
  return "row " + std::to_string(index) + " (" + inQuotes(specifier->name()) + ")";
}

Control Session::Row::control() const {
  return specifier->cell()->control();
}

Session::Row Session::rowOf(const Json& fields) {
  const Json& json = field(fields, "row");
  const auto wrong = [] { wrongField("row", R"(an index, an identifier or {"label":"...","nth":0})"); };
  std::string label;
  std::uint64_t nth = 0;
  if (json.is_object()) {
    for (const auto& [key, each] : json.items()) {
      if (key == "label" && each.is_string()) {
        label = each.get<std::string>();
      } else if (key == "nth" && isNatural(each)) {
        nth = each.get<std::uint64_t>();
      } else {
        wrong();
      }
    }
    if (!json.contains("label")) wrong();
  } else if (!json.is_string() && !json.is_number_integer()) {
    wrong();
  }

  PSListController& page = topList();
  const auto& rows = page.specifiers();
  const auto at = [&](std::size_t index) { return Row{page, index, rows[index]}; };
  if (json.is_number_integer()) {
    if (!isNatural(json) || json.get<std::uint64_t>() >= rows.size()) {
      throw CommandError("no row " + json.dump() + "; the page has " + std::to_string(rows.size()) + " rows");
    }
    return at(json.get<std::size_t>());
  }
  if (json.is_string()) {
    const auto row = page.specifierForID(json.get<std::string>());
    if (!row) throw CommandError("no row with the identifier " + dump(json));
    return at(*page.indexOfSpecifier(*row));
  }
  std::uint64_t count = 0;
  for (std::size_t index = 0; index < rows.size(); ++index) {
    if (rows[index]->name() == label && count++ == nth) return at(index);
  }
  throw CommandError("no row " + std::to_string(nth) + " with the label " + inQuotes(label) + "; there are " +
                     std::to_string(count));
}

Session::Row Session::enabledRowOf(const Json& fields) {
  Row row = rowOf(fields);
  if (!row.specifier->enabled()) throw CommandError(row.described() + " is disabled");
  return row;
}

// ---- Pages

Json Session::open(const Json& fields) {
  const std::string name = stringField(fields, "page");
  const auto* entry = host_.registry().find(name);
  if (!entry) throw CommandError("no page " + inQuotes(name));
  const ViewController* page = host_.open(entry->page->className);
  return {{"page", page->className()}, {"title", page->title()}};
}

Json Session::back(const Json& /*fields*/) {
  if (!host_.navigation().popViewController(true)) throw CommandError("no page is open");
  const auto top = host_.navigation().topViewController();
  return {{"page", top ? Json(top->className()) : Json(nullptr)}};
}

Json Session::rows(const Json& /*fields*/) {
  return {{"rows", rowsJson(topList())}};
}

Json Session::inspect(const Json& fields) {
  const Row row = rowOf(fields);
  return {{"row", rowJson(row.page, row.index)}, {"cell", cellJson(*row.specifier)}};
}

Json Session::screen(const Json& /*fields*/) {
  const auto& navigation = host_.navigation();
  Json screen = Json::object();
  screen["stack"] = Json::array();
  for (const auto& controller : navigation.viewControllers()) screen["stack"].push_back(controller->className());
  const auto top = navigation.topViewController();
  screen["page"] = top ? Json(top->className()) : Json(nullptr);
  screen["title"] = top ? Json(top->title()) : Json(nullptr);
  screen["titleView"] = nullptr;
  if (top && top->navigationItem().titleView()) {
    const auto& view = *top->navigationItem().titleView();
    screen["titleView"] = Json::object({{"image", toJson(platform::Property(view.image))}, {"alpha", view.alpha}});
  }
  screen["leftBar"] = top ? barButton(top->navigationItem().leftBarButtonItem()) : Json(nullptr);
  screen["rightBar"] = top ? barButton(top->navigationItem().rightBarButtonItem()) : Json(nullptr);
  screen["backBar"] = top ? barButton(top->navigationItem().backBarButtonItem()) : Json(nullptr);
  screen["keyboard"] = navigation.keyboardVisible();
  screen["dialog"] = navigation.dialog() ? dialogFields(*navigation.dialog()) : Json(nullptr);
  if (auto* picker = dynamic_cast<cells::KVQuellarBackdropPickerViewController*>(top.get())) {
    screen["items"] = itemsJson(picker->backdropCollectionView(), host_.platform().device.screenWidth());
  }
  return screen;
}

// ---- Rows

Json Session::set(const Json& fields) {
  const Json& value = field(fields, "value");
  const Row row = enabledRowOf(fields);
  PSSpecifier& specifier = *row.specifier;
  switch (row.control()) {
    case Control::toggle:
      if (!value.is_boolean()) throw CommandError(row.described() + " takes true or false");
      row.page.userSetsValue(specifier, value.get<bool>());
      break;
    case Control::picker:
    case Control::segment: {
      const auto chosen = value.is_primitive() ? toValue(value) : std::nullopt;
      const auto place = chosen ? specifier.indexOfValue(*chosen) : std::nullopt;
      if (!place) {
        Json choices = Json::array();
        for (const Value& choice : specifier.values()) choices.push_back(toJson(choice));
        throw CommandError(row.described() + " takes one of " + dump(choices));
      }
      // A tap on the selected segment is none.
      if (row.control() == Control::segment && showsChoice(specifier, *place)) break;
      row.page.userSetsValue(specifier, specifier.values()[*place]);
      break;
    }
    case Control::slider:
    case Control::typedSlider: {
      const auto& cell = sliderCell(specifier);
      const bool fits =
          value.is_number() && value.get<double>() >= cell.minimum() && value.get<double>() <= cell.maximum();
      if (!fits) {
        throw CommandError(row.described() + " takes a number from " + dump(cell.minimum()) + " to " +
                           dump(cell.maximum()));
      }
      row.page.userMovesSlider(specifier, value.get<double>());
      break;
    }
    case Control::text:
      row.page.userSetsValue(specifier, checkedText(value, "value"));
      break;
    case Control::group:
    case Control::link:
    case Control::pickerItem:
    case Control::stepper:
    case Control::button:
    case Control::color:
    case Control::staticText:
      throw CommandError(row.described() + " has no control that is set to a value");
  }
  return Json::object();
}

Json Session::drag(const Json& fields) {
  const double value = numberField(fields, "value");
  const Row row = enabledRowOf(fields);
  if (row.control() != Control::slider && row.control() != Control::typedSlider) {
    throw CommandError(row.described() + " is no slider");
  }
  row.page.userMovesSlider(*row.specifier, value);
  return Json::object();
}

Json Session::step(const Json& fields) {
  const Json& by = field(fields, "by");
  if (!by.is_number_integer() || by == 0) wrongField("by", "a whole number other than 0");
  const Row row = enabledRowOf(fields);
  if (row.control() != Control::stepper) throw CommandError(row.described() + " is no stepper");
  row.page.endEditing();
  const bool up = by.is_number_unsigned();
  // A press may build the rows anew; the next one is on the row that stands in this one's place then.
  const auto identifier = row.specifier->identifier();
  const auto standing = [&] {
    const bool listed = row.page.indexOfSpecifier(*row.specifier).has_value();
    return listed || !identifier ? row.specifier : row.page.specifierForID(*identifier);
  };
  auto presses = up ? by.get<std::uint64_t>() : 0 - static_cast<std::uint64_t>(by.get<std::int64_t>());
  for (; presses > 0; --presses) {
    const auto specifier = standing();
    const auto cell = specifier ? std::dynamic_pointer_cast<cells::KVQuellarStepperCell>(specifier->cell()) : nullptr;
    if (!cell) break;
    const double before = cell->stepper().value;
    cell->press(up ? 1 : -1);
    // At its bound it does nothing, however often it is pressed.
    if (cell->stepper().value == before) break;
  }
  return Json::object();
}

Json Session::tap(const Json& fields) {
  const Row row = enabledRowOf(fields);
  switch (row.control()) {
    case Control::link:
    case Control::picker:
    case Control::pickerItem:
    case Control::button:
    case Control::color:
      break;
    case Control::group:
    case Control::toggle:
    case Control::slider:
    case Control::typedSlider:
    case Control::stepper:
    case Control::text:
    case Control::segment:
    case Control::staticText:
      throw CommandError(row.described() + " is no row that is tapped");
  }
  row.page.userTapsRow(row.index);
  return Json::object();
}

Json Session::popup(const Json& fields) {
  const Row row = enabledRowOf(fields);
  // Held, because an edited text that is committed first may put another cell in its place.
  const auto cell = std::dynamic_pointer_cast<cells::KVQuellarSliderCell>(row.specifier->cell());
  if (!cell) throw CommandError(row.described() + " is no slider with typed entry");
  cell->presentPopup();
  return Json::object();
}

Json Session::edit(const Json& fields) {
  auto text = checkedText(field(fields, "text"), "text");
  const Row row = enabledRowOf(fields);
  if (row.control() != Control::text) throw CommandError(row.described() + " is no text row");
  row.page.beginEditing(*row.specifier);
  row.page.setEditingText(std::move(text));
  return Json::object();
}

Json Session::pressReturn(const Json& /*fields*/) {
  PSListController& page = topList();
  if (!page.editedSpecifier()) throw CommandError("no text row is edited");
  page.endEditing();
  return Json::object();
}

Json Session::style(const Json& fields) {
  const Json& style = field(fields, "style");
  if (!style.is_number_integer()) wrongField("style", "a whole number");
  const auto top = host_.navigation().topViewController();
  if (!top) throw CommandError("no page is open");
  auto* picker = dynamic_cast<cells::KVQuellarBackdropPickerViewController*>(top.get());
  if (!picker) throw CommandError(top->className() + " is no backdrop picker");
  auto& previews = picker->backdropCollectionView();
  for (std::size_t item = 0; item < previews.numberOfItems(); ++item) {
    if (style != previews.cellForItem(item).style()) continue;
    previews.didSelectItem(item);
    return Json::object();
  }
  throw CommandError("no preview has the style " + dump(style));
}

// ---- Dialogs, keyboard and bars

Json Session::type(const Json& fields) {
  auto text = checkedText(field(fields, "text"), "text");
  auto& navigation = host_.navigation();
  if (navigation.dialog()) {
    if (!navigation.dialog()->text) throw CommandError("the dialog that is shown has no text field");
    navigation.setDialogText(std::move(text));
  } else if (auto* page = host_.topList(); page && page->editedSpecifier()) {
    page->setEditingText(std::move(text));
  } else {
    throw CommandError("no text field has the focus");
  }
  return Json::object();
}

Json Session::press(const Json& fields) {
  const std::string title = stringField(fields, "button");
  host_.navigation().pressDialogButton(buttonTitled(dialog().buttons, title, "in the dialog that is shown"));
  return Json::object();
}

Json Session::accessory(const Json& fields) {
  const std::string title = stringField(fields, "button");
  host_.navigation().pressAccessoryButton(buttonTitled(dialog().accessory, title, "above the keyboard"));
  const auto& shown = host_.navigation().dialog();
  return {{"text", shown && shown->text ? Json(*shown->text) : Json(nullptr)}};
}

Json Session::pick(const Json& fields) {
  Color color = colorOf(fields);
  if (fields.contains("alpha")) {
    color.alpha = numberField(fields, "alpha");
    if (color.alpha < 0 || color.alpha > 1) wrongField("alpha", "a number from 0 to 1");
  }
  if (!dialog().color) throw CommandError("the dialog that is shown is no color dialog");
  // Without the slider for it there is no other alpha to pick.
  if (!dialog().color->showAlpha) color.alpha = 1;
  host_.navigation().completeColorDialog(color);
  return Json::object();
}

Json Session::bar(const Json& fields) {
  const std::string side = stringField(fields, "side");
  if (side != "left" && side != "right") wrongField("side", R"("left" or "right")");
  const auto top = host_.navigation().topViewController();
  if (!top) throw CommandError("no page is open");
  const auto& items = top->navigationItem();
  // A copy, because what it runs may replace the button.
  const std::optional<BarButtonItem> item = side == "left" ? items.leftBarButtonItem() : items.rightBarButtonItem();
  if (!item) throw CommandError(top->className() + " has no " + side + " bar button");
  if (item->run) item->run();
  return Json::object();
}

// ---- Time and store

Json Session::advance(const Json& fields) {
  const double time = numberField(fields, "seconds");
  // What is left of the clock's range, less a second for the rounding of a double near its end.
  const double left = seconds(std::chrono::nanoseconds::max() - host_.queue().now()) - 1;
  if (time < 0 || time > left) wrongField("seconds", "a number from 0 to " + dump(left));
  host_.queue().advance(std::chrono::nanoseconds(std::llround(time * 1e9)));
  return {{"time", seconds(host_.queue().now())}};
}

Json Session::stored(const Json& fields) {
  const std::string key = stringField(fields, "key");
  const std::string domain =
      fields.contains("domain") ? stringField(fields, "domain") : std::string(frame::kSettingsDomain);
  return {{"value", toJson(host_.platform().preferences.copyAppValue(key, domain))}};
}

}  // namespace quellar::host::headless
