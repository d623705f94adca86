// SPDX-License-Identifier: MIT
#include "frame/page_registry.h"

#include <algorithm>

namespace quellar::frame {

namespace {

// "Status Bar", "status-bar" and "STATUS BAR" are one name.
std::string folded(std::string_view name) {
  std::string result;
  for (const char each : name) {
    const bool upper = each >= 'A' && each <= 'Z';
    const char lower = upper ? static_cast<char>(each - 'A' + 'a') : each;
    result += each == '-' ? ' ' : lower;
  }
  return result;
}

std::string_view classNameOf(const PageRegistry::Entry& entry) {
  return entry.page->className;
}

}  // namespace

void PageRegistry::addClass(std::string className,
                            std::function<std::shared_ptr<platform::ViewController>(platform::Platform&)> make) {
  classes_.insert_or_assign(std::move(className), std::move(make));
}

void PageRegistry::addCell(std::string className, MakeCell make) {
  cells_.insert_or_assign(std::move(className), std::move(make));
}

const PageRegistry::Entry* PageRegistry::find(std::string_view classOrName) const {
  // Names first: what is found by its name needs no page's description.
  auto found = std::ranges::find(entries_, folded(classOrName), [](const Entry& entry) { return folded(entry.name); });
  if (found == entries_.end()) found = std::ranges::find(entries_, classOrName, classNameOf);
  return found == entries_.end() ? nullptr : &*found;
}

std::shared_ptr<platform::ViewController> PageRegistry::makeViewController(std::string_view className) {
  const auto page = std::ranges::find(entries_, className, classNameOf);
  if (page != entries_.end()) return makeViewController(*page);
  const auto other = classes_.find(className);
  return other == classes_.end() ? nullptr : other->second(*platform_);
}

std::shared_ptr<platform::ViewController> PageRegistry::makeViewController(const Entry& entry) const {
  auto controller = entry.make(*platform_);
  controller->setTitle(entry.name);
  return controller;
}

std::shared_ptr<platform::PSTableCell> PageRegistry::makeCell(std::string_view className,
                                                              platform::PSSpecifier& specifier,
                                                              const platform::Rect& frame) {
  const auto cell = cells_.find(className);
  return cell == cells_.end() ? nullptr : cell->second(*platform_, specifier, frame);
}

}  // namespace quellar::frame
