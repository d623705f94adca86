// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/value.h"

namespace quellar::platform {

class PSSpecifier;

/// A notification inside the process.
struct Notification {
  /// Nothing, a string, or the row that the notification is about.
  using Object = std::variant<std::monostate, std::string, std::shared_ptr<PSSpecifier>>;

  std::string name;
  Object object;
  std::optional<Dictionary> userInfo;
};

/// The default notification centre of the process. Observers are held weakly: one that is gone receives nothing.
class NotificationCenter {
 public:
  using Handler = std::function<void(const Notification&)>;

  /// Calls `handler` for every post of `name`, whatever its object, as long as `observer` lives.
  void addObserver(const std::weak_ptr<const void>& observer, std::string_view name, Handler handler);
  /// Ends all observations of `observer`.
  void removeObserver(const std::weak_ptr<const void>& observer);
  /// Calls the handlers for the notification's name in the order in which they were added. Handlers may add and remove
  /// observers; one that is added meanwhile is not called for this post, one that is removed is not called any more.
  void postNotification(const Notification& notification);

  /// Is told of every post before its observers; for a host that records.
  void setTap(Handler tap) { tap_ = std::move(tap); }

 private:
  struct Observation {
    std::weak_ptr<const void> observer;
    std::string name;
    Handler handler;
  };
  std::vector<std::shared_ptr<Observation>> observations_;
  Handler tap_;
};

inline constexpr std::string_view UIKeyboardWillShowNotification = "UIKeyboardWillShowNotification";
inline constexpr std::string_view UIKeyboardWillHideNotification = "UIKeyboardWillHideNotification";

}  // namespace quellar::platform
