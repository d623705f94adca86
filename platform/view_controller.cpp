// SPDX-License-Identifier: MIT
#include "platform/view_controller.h"

#include "platform/navigation_controller.h"
#include "platform/platform.h"

namespace quellar::platform {

ViewController::ViewController(Platform& platform, std::string className)
    : platform_(platform), className_(std::move(className)) {}

void NavigationItem::setLeftBarButtonItem(std::optional<BarButtonItem> item) {
  left_ = std::move(item);
  tell(BarSide::left, left_);
}

void NavigationItem::setRightBarButtonItem(std::optional<BarButtonItem> item) {
  right_ = std::move(item);
  tell(BarSide::right, right_);
}

void NavigationItem::setBackBarButtonItem(std::optional<BarButtonItem> item) {
  back_ = std::move(item);
  tell(BarSide::back, back_);
}

void NavigationItem::tell(BarSide side, const std::optional<BarButtonItem>& item) {
  if (auto* observer = owner_.platform().navigation.observer()) observer->barChanged(owner_, side, item);
}

void NavigationItem::animateTitleViewAlpha(double to, std::chrono::nanoseconds duration) {
  if (!titleView_) return;
  titleView_->alpha = to;
  if (auto* observer = owner_.platform().navigation.observer()) observer->titleViewFades(owner_, to, duration);
}

}  // namespace quellar::platform
