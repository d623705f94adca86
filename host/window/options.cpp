// SPDX-License-Identifier: MIT
#include "host/window/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <map>

#include "pages/registry.h"

namespace quellar::host::window {

namespace {

std::string pageNames(const frame::PageRegistry& pages) {
  std::string names;
  for (const auto& entry : pages.entries()) names += (names.empty() ? "\"" : ", \"") + entry.name + "\"";
  return names;
}

int tellWrongOptions(std::string message) {
  std::ranges::replace(message, '\n', ' ');
  std::cerr << "quellar-settings: " << message << std::endl;
  return 2;
}

}  // namespace

std::variant<Options, int> parseOptions(int argc, char** argv) {
  Options options;
  std::string page;
  CLI::App app("The window of the Quellar settings panel.", "quellar-settings");
  app.set_version_flag("--version", "quellar-settings " QUELLAR_VERSION);
  app.add_option("--device-root", options.deviceRoot, "Folder that stands for the device's file system")
      ->type_name("DIR");
  app.add_option("--page", page, "Open at a page, and at a row of it")->type_name("PAGE[/KEY]");
  app.add_option("--idiom", options.idiom, "The device to act as (phone unless said)")
      ->transform(CLI::CheckedTransformer(std::map<std::string, Idiom>{{"phone", Idiom::phone}, {"pad", Idiom::pad}})
                      .description("phone|pad"));
  app.add_option("--lang", options.language, "Language of the texts")->type_name("LANG");
  app.add_option("--pictures", options.pictures, "Write pictures of all pages into a folder and end")->type_name("DIR");
  app.add_option("--scale", options.scale, "Pixels a point")->check(CLI::Range(0.5, 4.0))->type_name("N");
  app.add_option("--text-size", options.textSize, "Size of texts in percent")
      ->check(CLI::Range(85, 200))
      ->type_name("85..200");
  app.add_flag("--reduced-motion", options.reducedMotion, "Change pages and rows at once");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& success) {
    return app.exit(success);
  } catch (const CLI::ParseError& error) {
    return tellWrongOptions(error.what());
  }

  if (app.count("--page") > 0) {
    const auto slash = page.find('/');
    options.page = page.substr(0, slash);
    if (slash != std::string::npos) options.key = page.substr(slash + 1);
    frame::PageRegistry pages;
    pages::registerPages(pages);
    if (!pages.find(*options.page)) {
      return tellWrongOptions("there is no page \"" + *options.page + "\"; the pages are " + pageNames(pages));
    }
  }
  return options;
}

}  // namespace quellar::host::window
