// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include "panel_on_file.h"
#include "suite.h"

namespace quellar::benches {

namespace {

using platform::PSCellType;
using platform::PSSpecifier;
using platform::Specifiers;

/// The same row as the list machinery makes it, without a page that looks up its texts and images.
PSSpecifier::Pointer bareCopy(const PSSpecifier& row) {
  auto copy = row.cellType() == PSCellType::PSGroupCell
                  ? PSSpecifier::groupSpecifierWithName(row.name())
                  : PSSpecifier::preferenceSpecifierNamed(row.name(), row.target(), row.setter(), row.getter(),
                                                          row.detailControllerClass(), row.cellType());
  for (const auto& [key, property] : row.properties()) copy->setProperty(key, property);
  return copy;
}

/// A page, with what it lives in.
struct Original {
  std::shared_ptr<PanelOnFile> panel;
  std::shared_ptr<platform::PSListController> page;

  explicit Original(const Place& place) : panel(std::make_shared<PanelOnFile>(place)), page(panel->makePage()) {}
};

}  // namespace

void addPageRows(Suite& suite) {
  const Place place = places().front();
  const std::string bare = "status bar page: the same rows, bare";

  suite.add({.name = "status bar page: make the page and its rows", .floors = {bare}}, {}, [place] {
    return [panel = std::make_shared<PanelOnFile>(place)] {
      const Stopwatch stopwatch;
      const auto page = panel->makePage();
      benchmark::DoNotOptimize(page->specifiers().data());
      return stopwatch.elapsed();
    };
  });

  suite.add({.name = bare, .floors = {}}, {}, [place] {
    return [original = Original(place)] {
      const Stopwatch stopwatch;
      Specifiers rows;
      for (const auto& row : original.page->specifiers()) rows.push_back(bareCopy(*row));
      benchmark::DoNotOptimize(rows.data());
      return stopwatch.elapsed();
    };
  });
}

}  // namespace quellar::benches
