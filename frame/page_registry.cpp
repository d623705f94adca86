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

}  // namespace

void PageRegistry::addClass(std::string className,
                            std::function<std::shared_ptr<platform::ViewController>(platform::Platform&)> make) {
  classes_.insert_or_assign(std::move(className), std::move(make));
}

void PageRegistry::addCell(std::string className, MakeCell make) {
  cells_.insert_or_assign(std::move(className), std::move(make));
}

const PageRegistry::Entry* PageRegistry::find(std::string_view classOrName) const {
  const auto found = std::ranges::find_if(entries_, [&](const Entry& entry) {
    return entry.page->className == classOrName || folded(entry.name) == folded(classOrName);
  });
  return found == entries_.end() ? nullptr : &*found;
}

std::shared_ptr<platform::ViewController> PageRegistry::makeViewController(std::string_view className) {
  const auto page = std::ranges::find(entries_, className,
                                      [](const Entry& entry) { return std::string_view(entry.page->className); });
  if (page != entries_.end()) {
    auto controller = page->make(*platform_);
    controller->setTitle(page->name);
    return controller;
  }
  const auto other = classes_.find(className);
  return other == classes_.end() ? nullptr : other->second(*platform_);
}

std::shared_ptr<platform::PSTableCell> PageRegistry::makeCell(std::string_view className,
                                                              platform::PSSpecifier& specifier,
                                                              const platform::Rect& frame) {
  const auto cell = cells_.find(className);
  return cell == cells_.end() ? nullptr : cell->second(*platform_, specifier, frame);
}

}  // namespace quellar::frame
