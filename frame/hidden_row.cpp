// SPDX-License-Identifier: MIT
#include "frame/hidden_row.h"

#include <algorithm>
#include <utility>

#include "frame/page_walk.h"

namespace quellar::frame {

using platform::PSSpecifier;
using platform::Specifiers;

namespace {

PSSpecifier::Pointer rowWithKey(const Specifiers& rows, std::string_view key) {
  const auto found = std::ranges::find_if(rows, [&](const auto& row) { return keyOf(*row) == key; });
  return found == rows.end() ? nullptr : *found;
}

bool lists(KVQuellarListController& page, const Dependent& block) {
  return std::ranges::any_of(page.dynamicSpecs(block.name),
                             [&](const auto& row) { return page.indexOfSpecifier(*row).has_value(); });
}

class HiddenRows {
 public:
  explicit HiddenRows(KVQuellarListController& page) : page_(page) {}

  std::optional<FoundRow> find(std::string_view key) {
    if (auto row = rowWithKey(page_.specifiers(), key)) return FoundRow{.row = std::move(row)};
    std::vector<std::vector<const Dependent*>> places;
    walkRows(page_.page(), {page_.platform(), page_.userDefaults()}, [&](const RowPlace& place) {
      if (!place.blocks.empty() && place.key() == key) places.push_back(place.blocks);
    });
    std::optional<FoundRow> found;
    for (const auto& blocks : places) {
      auto row = rowWithKey(page_.dynamicSpecs(blocks.back()->name), key);
      if (!row || (found && !found->isUnreachable)) continue;
      auto steps = stepsTo(blocks);
      found =
          FoundRow{.row = std::move(row), .steps = steps.value_or(std::vector<StepToRow>()), .isUnreachable = !steps};
    }
    return found;
  }

 private:
  // Nothing where some block of them can't be shown.
  std::optional<std::vector<StepToRow>> stepsTo(const std::vector<const Dependent*>& blocks) {
    std::vector<StepToRow> steps;
    for (const Dependent* block : blocks) {
      if (lists(page_, *block)) continue;
      // A block whose own row stands in it would lead here again.
      if (std::ranges::find(onTheWay_, block) != onTheWay_.end()) return std::nullopt;
      onTheWay_.push_back(block);
      const auto controlling = find(block->shownBy);
      onTheWay_.pop_back();
      if (!controlling || controlling->isUnreachable) return std::nullopt;
      const bool isListed = controlling->steps.empty();
      for (const StepToRow& step : controlling->steps) {
        if (std::ranges::find(steps, step.block, &StepToRow::block) == steps.end()) steps.push_back(step);
      }
      steps.push_back({.row = controlling->row, .block = block, .again = isListed && page_.isOn(*block)});
    }
    return steps;
  }

  KVQuellarListController& page_;
  std::vector<const Dependent*> onTheWay_;
};

}  // namespace

bool StepToRow::needsOpenPage() const {
  return block->onlyInserted || !block->listedAs.empty();
}

std::optional<FoundRow> findRow(KVQuellarListController& page, std::string_view key) {
  return HiddenRows(page).find(key);
}

std::string otherPageThatShows(const PageRegistry& pages, const KVQuellarListController& page, std::string_view key) {
  const std::string& defaultsKey = page.page().defaultsKey;
  for (const auto& entry : pages.entries()) {
    if (defaultsKey.empty() || entry.page->defaultsKey != defaultsKey || &*entry.page == &page.page()) continue;
    const auto other = std::dynamic_pointer_cast<KVQuellarListController>(pages.makeViewController(entry));
    const auto found = other ? findRow(*other, key) : std::nullopt;
    if (found && !found->isUnreachable) return entry.name;
  }
  return "";
}

}  // namespace quellar::frame
