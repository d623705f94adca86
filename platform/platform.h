// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <mutex>
#include <string_view>
#include <typeindex>
#include <unordered_map>

#include "platform/notification_center.h"
#include "platform/ports.h"

namespace quellar::platform {

class NavigationController;
class PSSpecifier;
class PSTableCell;
class ViewController;
struct Rect;

/// Classes looked up by name at run time.
class Classes {
 public:
  virtual ~Classes() = default;

  /// A new page of a class; nullptr where there is no such class.
  [[nodiscard]] virtual std::shared_ptr<ViewController> makeViewController(std::string_view className) = 0;
  /// A new cell of a class for a row; nullptr where there is no such class.
  [[nodiscard]] virtual std::shared_ptr<PSTableCell> makeCell(std::string_view className, PSSpecifier& specifier,
                                                              const Rect& frame) = 0;
};

/// Objects of which a process has one, each made on first use, once whatever the number of threads that ask.
class SharedInstances {
 public:
  template <typename T, typename... Arguments>
  T& instance(Arguments&&... arguments) {
    const std::lock_guard guard(mutex_);
    std::shared_ptr<void>& slot = instances_[std::type_index(typeid(T))];
    if (!slot) slot = std::make_shared<T>(std::forward<Arguments>(arguments)...);
    return *static_cast<T*>(slot.get());
  }

 private:
  std::mutex mutex_;
  std::unordered_map<std::type_index, std::shared_ptr<void>> instances_;
};

/// All that the panel asks of its system. A page is made with it and keeps the reference.
struct Platform {
  Preferences& preferences;
  DarwinCenter& darwin;
  DistributedCenter& distributed;
  NotificationCenter& notifications;
  MainQueue& mainQueue;
  Device& device;
  Files& files;
  Bundles& bundles;
  Applications& applications;
  Classes& classes;
  NavigationController& navigation;
  SharedInstances& shared;
};

}  // namespace quellar::platform
