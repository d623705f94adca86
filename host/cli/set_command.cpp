// SPDX-License-Identifier: MIT
#include <poll.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "cells/stepper_cell.h"
#include "frame/names.h"
#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/cli/page_rows.h"
#include "host/headless/controls.h"
#include "host/headless/json.h"
#include "host/linux/utf8.h"

namespace quellar::host::cli {

using cells::KVQuellarStepperCell;
using headless::dump;
using headless::toJson;
using platform::Color;
using platform::Control;
using platform::PSSpecifier;
using platform::Value;

namespace {

/// How long a slow bus may take for what was posted.
constexpr std::chrono::seconds kBusFlushLimit{2};

[[noreturn]] void refuse(const SetCommand& command, const std::string& takes) {
  throw UsageError("\"" + command.value + "\" is no value for " + shownKey(command.key) + "; it takes " + takes);
}

std::optional<double> numberOf(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

bool switchValue(const SetCommand& command) {
  if (command.value == "on" || command.value == "true") return true;
  if (command.value == "off" || command.value == "false") return false;
  refuse(command, "on or off");
}

bool isWrittenAs(const Value& choice, std::string_view text) {
  if (const auto* words = choice.as<std::string>()) return *words == text;
  if (const auto* flag = choice.as<bool>()) return text == (*flag ? "on" : "off") || text == (*flag ? "true" : "false");
  return choice.isNumber() && numberOf(text) == choice.doubleValue();
}

/// The place of a choice by its value, else by its title.
std::size_t choiceOf(const PSSpecifier& row, const SetCommand& command) {
  for (std::size_t place = 0; place < row.values().size(); ++place) {
    if (isWrittenAs(row.values()[place], command.value)) return place;
  }
  for (std::size_t place = 0; place < row.values().size(); ++place) {
    if (place < row.titles().size() && row.titles()[place] == command.value) return place;
  }
  std::string choices;
  for (std::size_t place = 0; place < row.values().size(); ++place) {
    choices += (choices.empty() ? "" : ", ") + dump(toJson(row.values()[place]));
    if (place < row.titles().size()) choices += " (" + row.titles()[place] + ")";
  }
  refuse(command, choices.empty() ? "nothing" : choices);
}

std::string range(double minimum, double maximum) {
  return "a number from " + dump(minimum) + " to " + dump(maximum);
}

/// A colour is six hexadecimal digits; an alpha may follow where the dialog has a slider for it.
Color colorOf(const SetCommand& command, bool showAlpha) {
  const auto color = platform::colorFromString(command.value);
  if (!color || (!showAlpha && command.value.find(':') != std::string::npos)) {
    refuse(command, showAlpha ? "#rrggbb or #rrggbb:alpha" : "#rrggbb");
  }
  return *color;
}

using Change = std::function<void()>;

/// What carries out the command on a row. Refuses a value that the row's control can't give.
Change changeOf(platform::PSListController& page, PSSpecifier& row, const SetCommand& command,
                platform::NavigationController& navigation) {
  switch (row.cell()->control()) {
    case Control::toggle:
      return [&, value = switchValue(command)] { page.userSetsValue(row, value); };
    case Control::picker:
    case Control::segment: {
      const std::size_t choice = choiceOf(row, command);
      // A tap on the selected segment is none.
      if (row.cell()->control() == Control::segment && headless::showsChoice(row, choice)) return [] {};
      return [&, choice] { page.userSetsValue(row, row.values()[choice]); };
    }
    case Control::slider:
    case Control::typedSlider: {
      const auto& slider = headless::sliderCell(row);
      const auto number = numberOf(command.value);
      if (!number || *number < slider.minimum() || *number > slider.maximum()) {
        refuse(command, range(slider.minimum(), slider.maximum()));
      }
      return [&, number] { page.userMovesSlider(row, *number); };
    }
    case Control::stepper: {
      auto& cell = dynamic_cast<KVQuellarStepperCell&>(*row.cell());
      const auto& stepper = cell.stepper();
      const auto number = numberOf(command.value);
      if (!number || *number < stepper.minimum || *number > stepper.maximum || !cell.reaches(*number)) {
        refuse(command, range(stepper.minimum, stepper.maximum) + " in steps of " + dump(stepper.step));
      }
      return [&cell, number] { cell.moveTo(*number); };
    }
    case Control::text:
      if (!linux::isUtf8(command.value))
        throw UsageError("the value for " + shownKey(command.key) + " is no UTF-8 text");
      return [&] { page.userSetsValue(row, command.value); };
    case Control::color: {
      page.userTapsRow(*page.indexOfSpecifier(row));
      const auto& dialog = navigation.dialog();
      if (!dialog || !dialog->color) throw Failure(shownKey(command.key) + ": the page shows no color dialog for it");
      return [&, color = colorOf(command, dialog->color->showAlpha)] { navigation.completeColorDialog(color); };
    }
    case Control::group:
    case Control::link:
    case Control::pickerItem:
    case Control::button:
    case Control::staticText:
      break;
  }
  throw UsageError(shownKey(command.key) + " belongs to a row that has no control for it");
}

/// A page that is ready for the command, and what carries it out.
struct PreparedChange {
  std::unique_ptr<PanelHost> host;
  std::shared_ptr<platform::PSListController> page;
  /// Whether the page keeps its values in a dictionary of the settings domain.
  bool keepsDictionary = false;
  Change carryOut;
};

/// Ends the command where something could not be read for a moment: it may have hidden the row, or be what the change
/// is to keep. Where the store can't be read at all, the write fails and the notifications go out.
void requireRead(linux::FilePreferences& preferences) {
  const auto troubles = preferences.takeTroubles();
  if (troubles.empty() || preferences.readTrouble(frame::kSettingsDomain)) return;
  throw Failure(troubles.front().file + ": " + troubles.front().cause);
}

PreparedChange prepare(const SetCommand& command, linux::Services& services, PanelHost::Detail detail) {
  PreparedChange prepared;
  prepared.host = std::make_unique<PanelHost>(services, detail);
  const auto& entry = prepared.host->entryNamed(command.page);
  prepared.keepsDictionary = !entry.page->defaultsKey.empty();
  prepared.page = prepared.host->makePage(entry);
  requireRead(services.preferences);
  const auto found = rowOfKey(*prepared.page, command.key);
  if (found.isUnreachable || !found.steps.empty()) {
    throw UsageError(whyHidden(found, dynamic_cast<frame::KVQuellarListController&>(*prepared.page), *prepared.host));
  }
  if (!found.row->enabled()) throw UsageError("the row of " + shownKey(command.key) + " is disabled on this device");
  // The page is not shown, but it observes what its rows post, and the row has its control.
  prepared.page->loadView();
  prepared.page->reloadSpecifier(*found.row);
  prepared.carryOut = changeOf(*prepared.page, *found.row, command, prepared.host->navigation());
  requireRead(services.preferences);
  return prepared;
}

void setValue(const SetCommand& command, linux::Services& services, PanelHost::Detail detail) {
  auto& preferences = services.preferences;
  std::uint64_t generation = preferences.generation(frame::kSettingsDomain);
  PreparedChange change = prepare(command, services, detail);

  auto& bus = services.bus;
  {
    // Nobody else who takes the lock writes between what the page is made from and what it writes.
    std::optional<linux::FilePreferences::Transaction> transaction;
    if (change.keepsDictionary) {
      transaction.emplace(preferences, frame::kSettingsDomain);
      while (true) {
        const std::uint64_t now = preferences.generation(frame::kSettingsDomain);
        transaction->beginAgain();
        if (now == generation) break;
        generation = now;
        change = prepare(command, services, detail);
      }
    }
    change.carryOut();
  }
  auto& loop = change.host->loop();
  const int watch = loop.watch(bus.descriptor(), POLLIN, [&bus](short) { bus.process(); });
  loop.runUntilIdle();
  loop.unwatch(watch);
  bus.flush(kBusFlushLimit);
}

}  // namespace

void setValue(const SetCommand& command, linux::Services& services) {
  // The bus answers while the page is made.
  services.bus.connect();
  try {
    setValue(command, services, PanelHost::Detail::Bare);
  } catch (const UsageError&) {
    // Nothing was written. The value may be a title in the user's language, and so may be what the message names.
    setValue(command, services, PanelHost::Detail::Full);
  }
}

}  // namespace quellar::host::cli
