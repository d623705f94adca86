// SPDX-License-Identifier: MIT
#include "host/window/opening.h"

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "frame/row_value.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

using frame::Computed;
using frame::Dependent;
using frame::Link;
using frame::PageRegistry;
using frame::Row;
using platform::PSListController;
using platform::Specifiers;

namespace {

void collectLinks(platform::Platform& platform, const std::vector<Row>& rows, std::vector<std::string>& classes) {
  for (const Row& row : rows) {
    if (const auto* link = std::get_if<Link>(&row.row)) classes.push_back(link->opens);
    if (const auto* block = std::get_if<Dependent>(&row.row)) collectLinks(platform, block->rows, classes);
    // Which links a device has does not depend on what is stored.
    if (const auto* computed = std::get_if<Computed>(&row.row)) {
      const platform::Dictionary nothingStored;
      collectLinks(platform, computed->rows({platform, nothingStored}), classes);
    }
  }
}

// The classes that lead from one page to another, both included; only the first one where no links do.
std::vector<std::string> chainOfLinks(platform::Platform& platform, const PageRegistry& pages, const std::string& from,
                                      const std::string& to) {
  std::map<std::string, std::string> cameFrom{{from, ""}};
  std::deque<std::string> waiting{from};
  while (!waiting.empty() && !cameFrom.contains(to)) {
    const std::string each = waiting.front();
    waiting.pop_front();
    const auto* entry = pages.find(each);
    if (!entry) continue;
    std::vector<std::string> links;
    collectLinks(platform, entry->page->rows, links);
    for (const std::string& link : links) {
      if (cameFrom.emplace(link, each).second) waiting.push_back(link);
    }
  }
  std::vector<std::string> chain;
  if (!cameFrom.contains(to)) return {from};
  for (std::string each = to; !each.empty(); each = cameFrom[each]) chain.push_back(each);
  std::ranges::reverse(chain);
  return chain;
}

std::shared_ptr<PSListController> topList(platform::Platform& platform) {
  return std::dynamic_pointer_cast<PSListController>(platform.navigation.topViewController());
}

void push(platform::Platform& platform, const std::string& className) {
  if (const auto page = topList(platform)) {
    const Specifiers& rows = page->specifiers();
    const auto link =
        std::ranges::find(rows, className, [](const auto& row) -> const auto& { return row->detailControllerClass(); });
    if (link != rows.end()) {
      page->userTapsRow(static_cast<std::size_t>(link - rows.begin()));
      return;
    }
  }
  if (auto page = platform.classes.makeViewController(className)) platform.navigation.pushViewController(page);
}

// The key of the switch that shows the row of a key; nothing where no block has such a row.
std::optional<std::string> switchThatShows(const std::vector<Row>& rows, std::string_view key,
                                           const std::string& shownBy) {
  for (const Row& row : rows) {
    const auto* toggle = std::get_if<frame::Switch>(&row.row);
    const auto* text = std::get_if<frame::TextEntry>(&row.row);
    if (!shownBy.empty() && ((toggle && toggle->key == key) || (text && text->key == key))) return shownBy;
    if (const auto* block = std::get_if<Dependent>(&row.row)) {
      if (auto found = switchThatShows(block->rows, key, block->shownBy)) return found;
    }
  }
  return std::nullopt;
}

// The blocks that a page opens with, from the outermost inwards.
void collectBlocks(const std::vector<Row>& rows, std::vector<const Dependent*>& blocks) {
  for (const Row& row : rows) {
    const auto* block = std::get_if<Dependent>(&row.row);
    if (!block) continue;
    if (!block->onlyInserted) blocks.push_back(block);
    collectBlocks(block->rows, blocks);
  }
}

}  // namespace

std::vector<std::string> keysThatShowBlocks(const frame::Page& page) {
  std::vector<const Dependent*> blocks;
  collectBlocks(page.rows, blocks);
  std::vector<std::string> keys;
  for (const Dependent* block : blocks) keys.push_back(block->shownBy);
  return keys;
}

void showBlocks(PSListController& page, bool shown) {
  const auto* described = dynamic_cast<const frame::KVQuellarListController*>(&page);
  if (!described) return;
  std::vector<const Dependent*> blocks;
  collectBlocks(described->page().rows, blocks);
  // What lies within a block is reached while the block is shown.
  if (!shown) std::ranges::reverse(blocks);
  for (const Dependent* block : blocks) {
    const auto row = page.specifierForID(block->shownBy);
    if (!row) continue;
    if (!block->shownAt) {
      const auto now = frame::shownValue(*row);
      if (shown != (now && now->boolValue())) page.userSetsValue(*row, platform::Value(shown));
    } else if (const auto* other = shown ? nullptr : row->valueForKey("default")) {
      page.userSetsValue(*row, *other);
    } else if (shown) {
      page.userSetsValue(*row, platform::Value(*block->shownAt));
    }
  }
}

void openPage(platform::Platform& platform, PageRegistry& pages, const PageRegistry::Entry& page) {
  const std::string& first = pages.entries().front().page->className;
  const auto chain = chainOfLinks(platform, pages, first, page.page->className);
  for (const std::string& className : chain) {
    const auto& stack = platform.navigation.viewControllers();
    if (stack.size() != 1 || className != first || stack.front()->className() != first) push(platform, className);
  }
  if (chain.back() != page.page->className) push(platform, page.page->className);
}

void reopenPage(platform::Platform& platform) {
  const auto page = platform.navigation.topViewController();
  if (!page) return;
  platform.navigation.popViewController(false);
  push(platform, page->className());
}

std::optional<std::string> rowShownFor(platform::Platform& platform, std::string_view key) {
  const auto page = std::dynamic_pointer_cast<frame::KVQuellarListController>(topList(platform));
  std::optional<std::string> shown(key);
  // A switch may itself be in a block that is not shown.
  while (page && shown && !page->specifierForID(*shown)) {
    shown = switchThatShows(page->page().rows, *shown, "");
  }
  return page ? shown : std::nullopt;
}

}  // namespace quellar::host::window
