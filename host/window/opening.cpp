// SPDX-License-Identifier: MIT
#include "host/window/opening.h"

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <vector>

#include "frame/page_walk.h"
#include "frame/row_value.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

using frame::Dependent;
using frame::PageRegistry;
using frame::Row;
using platform::PSListController;
using platform::Specifiers;

namespace {

// The classes that lead from one page to another, both included; only the first one where no links do.
std::vector<std::string> chainOfLinks(platform::Platform& platform, const PageRegistry& pages, const std::string& from,
                                      const std::string& to, frame::RowFiles rowFiles) {
  // Which links a device has does not depend on what is stored.
  const platform::Dictionary nothingStored;
  std::map<std::string, std::string> cameFrom{{from, ""}};
  std::deque<std::string> waiting{from};
  while (!waiting.empty() && !cameFrom.contains(to)) {
    const std::string each = waiting.front();
    waiting.pop_front();
    const auto* entry = pages.find(each);
    if (!entry) continue;
    frame::walkRows(
        *entry->page, {platform, nothingStored},
        [&](const frame::RowPlace& place) {
          const std::string link = place.opens();
          if (!link.empty() && cameFrom.emplace(link, each).second) waiting.push_back(link);
        },
        rowFiles);
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
  // Row files are read only for a page that no description leads to: they may have every application in them.
  auto chain = chainOfLinks(platform, pages, first, page.page->className, frame::RowFiles::leftOut);
  if (chain.back() != page.page->className) {
    chain = chainOfLinks(platform, pages, first, page.page->className, frame::RowFiles::read);
  }
  for (const std::string& className : chain) {
    const auto& stack = platform.navigation.viewControllers();
    if (stack.size() != 1 || className != first || stack.front()->className() != first) push(platform, className);
  }
  if (chain.back() != page.page->className) push(platform, page.page->className);
}

std::variant<frame::FoundRow, std::string> rowToOpen(platform::Platform& platform, const PageRegistry& pages,
                                                     std::string_view key) {
  auto& page = dynamic_cast<frame::KVQuellarListController&>(*platform.navigation.topViewController());
  const std::string onPage = "on the page \"" + page.title() + "\"";
  const std::string named = "\"" + std::string(key) + "\"";
  if (const auto found = frame::findRow(page, key)) {
    if (!found->isUnreachable) return *found;
    const std::string other = frame::otherPageThatShows(pages, page, key);
    return "nothing " + onPage + " shows the row " + named +
           (other.empty() ? "" : "; it is on the page \"" + other + "\"");
  }
  const auto& foreign = page.page().foreignKeys;
  if (const auto picked = std::ranges::find(foreign, key, &frame::ForeignKey::key); picked != foreign.end()) {
    return "no row shows " + named + "; it is picked under \"" + picked->label + "\" " + onPage;
  }
  return "the page \"" + page.title() + "\" has no row " + named + "; `quellar schema` lists them";
}

}  // namespace quellar::host::window
