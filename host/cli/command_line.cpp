// SPDX-License-Identifier: MIT
#include "host/cli/command_line.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string_view>
#include <utility>

namespace quellar::host::cli {

namespace {

struct Usage {
  std::string_view command;
  /// What follows the command.
  std::string_view arguments;
};

constexpr std::array kUsages = {
    Usage{"pages", " [--json]"},
    Usage{"rows", " PAGE [--json]"},
    Usage{"get", " PAGE KEY"},
    Usage{"set", " PAGE KEY VALUE"},
    Usage{"watch", " [--json] [--exec NAME=COMMAND]..."},
    Usage{"schema", " [--json | --markdown]"},
    Usage{"session", " [--idiom phone|pad|none] [--lang LANG] [--scale N] [--width POINTS] [--bus]"},
};

constexpr std::string_view kDeviceRoot = "--device-root";

std::string usageOf(std::string_view command) {
  const auto* const usage = std::ranges::find(kUsages, command, &Usage::command);
  if (usage != kUsages.end()) return "quellar " + std::string(command) + std::string(usage->arguments);
  std::string names;
  for (const Usage& each : kUsages) names += (names.empty() ? "" : "|") + std::string(each.command);
  return "quellar [--device-root DIR] " + names;
}

/// The places of the arguments that are no options, the command's name first.
std::vector<std::size_t> positionals(const std::vector<std::string>& arguments) {
  std::vector<std::size_t> places;
  for (std::size_t at = 0; at < arguments.size(); ++at) {
    if (arguments[at] == "--") break;
    if (arguments[at] == kDeviceRoot) {
      ++at;
    } else if (!arguments[at].starts_with('-') || arguments[at] == "-") {
      places.push_back(at);
    }
  }
  return places;
}

/// What a row is set to is taken as it stands, also where it looks like an option: it goes to the end then, behind
/// "--".
void protectValue(std::vector<std::string>& arguments) {
  const auto places = positionals(arguments);
  if (places.size() < 3 || arguments[places[0]] != "set") return;
  std::size_t at = places[2] + 1;
  while (at < arguments.size()) {
    if (arguments[at] == kDeviceRoot) {
      at += 2;
    } else if (arguments[at].starts_with(std::string(kDeviceRoot) + "=")) {
      ++at;
    } else {
      break;
    }
  }
  const bool isMark = at + 1 < arguments.size() && arguments[at] == "--";
  if (at >= arguments.size() || isMark || !arguments[at].starts_with('-')) return;
  std::string value = std::move(arguments[at]);
  arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(at));
  arguments.emplace_back("--");
  arguments.push_back(std::move(value));
}

Hook hookOf(const std::string& text) {
  const auto equals = text.find('=');
  if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
    throw UsageError("--exec takes NAME=COMMAND, not \"" + text + "\"; usage: " + usageOf("watch"));
  }
  return {text.substr(0, equals), text.substr(equals + 1)};
}

std::string checkPositive(const std::string& text) {
  double number = 0;
  const bool fits = CLI::detail::lexical_cast(text, number) && number > 0 && number <= 100000;
  return fits ? std::string() : "\"" + text + "\" is no number above 0 and up to 100000";
}

}  // namespace

CommandLine parseCommandLine(std::vector<std::string> arguments) {
  const auto places = positionals(arguments);
  const std::string command = places.empty() ? "" : arguments[places.front()];
  if (!command.empty() && std::ranges::find(kUsages, command, &Usage::command) == kUsages.end()) {
    throw UsageError("no command \"" + command + "\"; usage: " + usageOf(""));
  }
  protectValue(arguments);

  CommandLine result;
  std::string deviceRoot;
  PagesCommand pages;
  RowsCommand rows;
  GetCommand get;
  SetCommand set;
  WatchCommand watch;
  std::vector<std::string> hooks;
  bool schemaJson = false;
  bool schemaMarkdown = false;
  SessionCommand session;
  std::string idiom = "phone";
  std::string language;

  CLI::App app("Reads and changes the settings of the panel, tells what it posts, and drives it by script.", "quellar");
  app.set_version_flag("--version", "quellar " QUELLAR_VERSION);
  app.fallthrough();
  app.option_defaults()->multi_option_policy(CLI::MultiOptionPolicy::Throw);
  auto* rootOption = app.add_option(std::string(kDeviceRoot), deviceRoot,
                                    "The folder that stands for the device (else QUELLAR_DEVICE_ROOT, else "
                                    "quellar/device in the user's data folder)")
                         ->type_name("DIR");
  app.footer("PAGE is a page's class or its name (\"Status Bar\", status-bar); \"quellar pages\" lists them.");
  // Only the command that is called is described, or all of them for the help: describing them takes longer than most
  // of them run. None is returned for the others.
  const auto add = [&](std::string_view name, const char* description) -> CLI::App* {
    if (!command.empty() && command != name) return nullptr;
    auto* subcommand = app.add_subcommand(std::string(name), description);
    subcommand->footer("Usage: " + usageOf(name) + "\nBesides, --device-root DIR names the folder of the device.");
    return subcommand;
  };
  const auto addPage = [](CLI::App* subcommand, std::string& page) {
    subcommand->add_option("PAGE", page, "Class or name of a page")->required();
  };
  const auto addKey = [](CLI::App* subcommand, std::string& key) {
    subcommand->add_option("KEY", key, "Preference key of a row; of a color row its colorKey")->required();
  };

  if (auto* added = add("pages", "Lists the pages")) added->add_flag("--json", pages.json, "Prints JSON");

  if (auto* added = add("rows", "Shows the rows of a page as they are now")) {
    addPage(added, rows.page);
    added->add_flag("--json", rows.json, "Prints JSON");
  }

  if (auto* added = add("get", "Prints the value that a row shows, as JSON")) {
    addPage(added, get.page);
    addKey(added, get.key);
  }

  if (auto* added = add("set", "Changes a row as its control in the window does")) {
    addPage(added, set.page);
    addKey(added, set.key);
    added
        ->add_option("VALUE", set.value,
                     "on or off for a switch, a value or title for a picker or segment, a number for a slider or "
                     "stepper, #rrggbb for a color, any text for a text row")
        ->required();
  }

  if (auto* added = add("watch", "Prints every notification as it arrives from the session bus")) {
    added->add_flag("--json", watch.json, "Prints JSON");
    added
        ->add_option("--exec", hooks,
                     "Runs COMMAND (/bin/sh) on each notification NAME, with QUELLAR_NAME, QUELLAR_OBJECT and "
                     "QUELLAR_USERINFO set; may be given again")
        ->type_name("NAME=COMMAND")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->allow_extra_args(false);
  }

  if (auto* added = add("schema", "Lists every key of every page and what its write posts")) {
    auto* jsonFlag = added->add_flag("--json", schemaJson, "Prints JSON");
    added->add_flag("--markdown", schemaMarkdown, "Prints Markdown tables")->excludes(jsonFlag);
  }

  const CLI::Option* languageOption = nullptr;
  if (auto* added = add("session", "Drives the pages by JSON commands, one a line of standard input")) {
    added->add_option("--idiom", idiom, "The device: phone (the default), pad, or none: one that does not answer")
        ->check(CLI::IsMember({"phone", "pad", "none"}));
    languageOption = added->add_option("--lang", language, "Language (default: of the environment)")->type_name("LANG");
    added->add_option("--scale", session.device.scale, "Pixels a point of the screen (default 2)")
        ->check(checkPositive);
    added->add_option("--width", session.device.width, "Width of the screen in points (default 320)")
        ->check(checkPositive);
    added->add_flag("--bus", session.bus, "Posts also go to the session bus");
  }

  try {
    std::ranges::reverse(arguments);
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    const auto chosen = app.get_subcommands();
    result.command = PrintText{chosen.empty() ? app.help() : chosen.front()->help("quellar")};
    return result;
  } catch (const CLI::CallForVersion& version) {
    result.command = PrintText{std::string(version.what()) + "\n"};
    return result;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + "; usage: " + usageOf(command));
  }

  if (command.empty()) throw UsageError("no command; usage: " + usageOf(""));
  if (*rootOption) result.deviceRoot = deviceRoot;
  if (command == "pages") result.command = pages;
  if (command == "rows") result.command = std::move(rows);
  if (command == "get") result.command = std::move(get);
  if (command == "set") result.command = std::move(set);
  if (command == "watch") {
    for (const auto& hook : hooks) watch.hooks.push_back(hookOf(hook));
    result.command = std::move(watch);
  }
  if (command == "schema") {
    using Form = SchemaCommand::Form;
    result.command = SchemaCommand{schemaJson ? Form::Json : schemaMarkdown ? Form::Markdown : Form::Text};
  }
  if (command == "session") {
    session.device.idiom = idiom == "none" ? std::nullopt : std::optional(idiom == "pad" ? 1 : 0);
    if (languageOption && *languageOption) session.language = language;
    result.command = std::move(session);
  }
  return result;
}

}  // namespace quellar::host::cli
