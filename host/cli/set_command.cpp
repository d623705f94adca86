// SPDX-License-Identifier: MIT
#include <poll.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>

#include "cells/stepper_cell.h"
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

void change(platform::PSListController& page, PSSpecifier& row, const SetCommand& command,
            platform::NavigationController& navigation) {
  switch (row.cell()->control()) {
    case Control::toggle:
      page.userSetsValue(row, switchValue(command));
      return;
    case Control::picker:
    case Control::segment: {
      const std::size_t choice = choiceOf(row, command);
      // A tap on the selected segment is none.
      if (row.cell()->control() == Control::segment && headless::showsChoice(row, choice)) return;
      page.userSetsValue(row, row.values()[choice]);
      return;
    }
    case Control::slider:
    case Control::typedSlider: {
      const auto& slider = headless::sliderCell(row);
      const auto number = numberOf(command.value);
      if (!number || *number < slider.minimum() || *number > slider.maximum()) {
        refuse(command, range(slider.minimum(), slider.maximum()));
      }
      page.userMovesSlider(row, *number);
      return;
    }
    case Control::stepper: {
      auto& cell = dynamic_cast<KVQuellarStepperCell&>(*row.cell());
      const auto& stepper = cell.stepper();
      const auto number = numberOf(command.value);
      const double steps = number ? (*number - stepper.minimum) / stepper.step : 0.5;
      const bool isReached = std::abs(steps - std::round(steps)) < 1e-9;
      if (!number || *number < stepper.minimum || *number > stepper.maximum || !isReached) {
        refuse(command, range(stepper.minimum, stepper.maximum) + " in steps of " + dump(stepper.step));
      }
      cell.moveTo(*number);
      return;
    }
    case Control::text:
      if (!linux::isUtf8(command.value))
        throw UsageError("the value for " + shownKey(command.key) + " is no UTF-8 text");
      page.userSetsValue(row, command.value);
      return;
    case Control::color: {
      page.userTapsRow(*page.indexOfSpecifier(row));
      const auto& dialog = navigation.dialog();
      if (!dialog || !dialog->color) throw Failure(shownKey(command.key) + ": the page shows no color dialog for it");
      navigation.completeColorDialog(colorOf(command, dialog->color->showAlpha));
      return;
    }
    case Control::group:
    case Control::link:
    case Control::pickerItem:
    case Control::button:
    case Control::staticText:
      throw UsageError(shownKey(command.key) + " belongs to a row that has no control for it");
  }
}

void setValue(const SetCommand& command, PanelHost& host, linux::Services& services) {
  const auto page = host.makePage(host.entryNamed(command.page));
  const auto found = rowOfKey(*page, command.key);
  if (found.isUnreachable || !found.steps.empty())
    throw UsageError(whyHidden(found, dynamic_cast<frame::KVQuellarListController&>(*page), host));
  if (!found.row->enabled()) throw UsageError("the row of " + shownKey(command.key) + " is disabled on this device");
  // The page is not shown, but it observes what its rows post, and the row has its control.
  page->loadView();
  page->reloadSpecifier(*found.row);

  auto& loop = host.loop();
  const int watch = loop.watch(services.bus.descriptor(), POLLIN, [&](short) { services.bus.process(); });
  change(*page, *found.row, command, host.navigation());
  loop.runUntilIdle();
  loop.unwatch(watch);
  services.bus.flush(kBusFlushLimit);
}

}  // namespace

void setValue(const SetCommand& command, linux::Services& services) {
  // The bus answers while the page is made.
  services.bus.connect();
  try {
    PanelHost host(services, PanelHost::Detail::Bare);
    setValue(command, host, services);
  } catch (const UsageError&) {
    // Nothing was written. The value may be a title in the user's language, and so may be what the message names.
    PanelHost host(services, PanelHost::Detail::Full);
    setValue(command, host, services);
  }
}

}  // namespace quellar::host::cli
