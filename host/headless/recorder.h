// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/headless/json.h"
#include "host/headless/virtual_queue.h"
#include "platform/list_controller.h"
#include "platform/navigation_controller.h"
#include "platform/notification_center.h"
#include "platform/ports.h"

namespace quellar::host::headless {

/// The fields of a dialog, as the screen and the "dialog" event show them.
[[nodiscard]] Json dialogFields(const platform::Dialog& dialog);
/// {"title", "style"}, or null.
[[nodiscard]] Json barButton(const std::optional<platform::BarButtonItem>& item);

/// Turns all that happens into events, in the order in which it happens, and hands each on.
class Recorder : public platform::NavigationObserver, public platform::ListObserver {
 public:
  using Sink = std::function<void(const Json&)>;
  Recorder(const VirtualQueue& queue, Sink sink) : queue_(queue), sink_(std::move(sink)) {}

  void wrote(std::string_view domain, std::string_view key, const std::optional<platform::Value>& value);
  void synchronized(std::string_view domain);
  void posted(std::string_view centre, std::string_view name, const Json& object,
              const std::optional<platform::Dictionary>& userInfo, bool immediately, std::string_view through);
  /// A post in the process; the platform's own keyboard notifications are none.
  void postedInProcess(const platform::Notification& notification);

  void pushed(platform::ViewController& controller) override;
  void popped(platform::ViewController& controller, bool animated) override;
  void barChanged(platform::ViewController& controller, platform::BarSide side,
                  const std::optional<platform::BarButtonItem>& item) override;
  void titleViewFades(platform::ViewController& controller, double to, std::chrono::nanoseconds duration) override;
  void dialogShown(const platform::Dialog& dialog) override;
  void dialogDismissed() override;
  /// Typing is no event; the screen tells the text.
  void dialogTextChanged(const std::string& /*text*/) override {}
  void keyboardChanged(bool visible) override;

  void rowsInserted(platform::PSListController& page, std::string_view afterSpecifierID, std::size_t at,
                    std::size_t count, bool animated) override;
  void rowsRemoved(platform::PSListController& page, std::size_t at, const platform::Specifiers& rows,
                   bool animated) override;
  void rowReloaded(platform::PSListController& page, platform::PSSpecifier& row) override;
  void specifiersReloaded(platform::PSListController& page) override;
  void pageReloaded(platform::PSListController& page) override;
  void valuesChanged(platform::PSListController& page) override;

 private:
  void tell(Json event);

  const VirtualQueue& queue_;
  Sink sink_;
};

/// A store that records what is set and synchronised.
class RecordingPreferences : public platform::Preferences {
 public:
  RecordingPreferences(platform::Preferences& store, Recorder& recorder) : store_(store), recorder_(recorder) {}

  std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  [[nodiscard]] bool wasRead(std::string_view domain) const override { return store_.wasRead(domain); }
  void appSynchronize(std::string_view domain) override;

 private:
  platform::Preferences& store_;
  Recorder& recorder_;
};

/// A Darwin centre that records and hands on to another one, where there is one.
class RecordingDarwinCenter : public platform::DarwinCenter {
 public:
  RecordingDarwinCenter(platform::DarwinCenter* next, Recorder& recorder) : next_(next), recorder_(recorder) {}

  void postNotification(std::string_view name, bool deliverImmediately) override;
  void notifyPost(std::string_view name) override;

 private:
  platform::DarwinCenter* next_;
  Recorder& recorder_;
};

/// A distributed centre that records and hands on to another one, where there is one.
class RecordingDistributedCenter : public platform::DistributedCenter {
 public:
  RecordingDistributedCenter(platform::DistributedCenter* next, Recorder& recorder)
      : next_(next), recorder_(recorder) {}

  void postNotification(std::string_view name, const std::optional<std::string>& object,
                        const std::optional<platform::Dictionary>& userInfo, bool deliverImmediately) override;

 private:
  platform::DistributedCenter* next_;
  Recorder& recorder_;
};

}  // namespace quellar::host::headless
