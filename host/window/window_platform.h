// SPDX-License-Identifier: MIT
#pragma once

#include <QSocketNotifier>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "frame/page_registry.h"
#include "host/linux/background_preferences.h"
#include "host/linux/services.h"
#include "host/window/elsewhere_watch.h"
#include "host/window/qt_main_queue.h"
#include "host/window/wallpaper.h"
#include "host/window/window_resources.h"
#include "platform/navigation_controller.h"
#include "platform/platform.h"

namespace quellar::host::window {

enum class Idiom { phone = 0, pad = 1 };

/// The device that the window stands for.
class WindowDevice final : public platform::Device {
 public:
  /// Takes pixels a point, and the width of the screen in points.
  WindowDevice(Idiom idiom, double scale, double width) : idiom_(idiom), scale_(scale), width_(width) {}

  [[nodiscard]] std::optional<int> userInterfaceIdiom() const override { return static_cast<int>(idiom_); }
  [[nodiscard]] double screenScale() const override { return scale_; }
  [[nodiscard]] double screenWidth() const override { return width_; }

 private:
  Idiom idiom_;
  double scale_;
  double width_;
};

/// A store on top of another one: what is set stays in memory, so that nobody's values are touched.
class ThrowawayPreferences final : public platform::Preferences {
 public:
  /// Takes the store that is read where nothing was set here.
  explicit ThrowawayPreferences(platform::Preferences& beneath) : beneath_(beneath) {}

  [[nodiscard]] std::optional<platform::Value> copyAppValue(std::string_view key, std::string_view domain) override;
  [[nodiscard]] bool wasRead(std::string_view domain) const override { return beneath_.wasRead(domain); }
  void setAppValue(std::string_view key, const std::optional<platform::Value>& value, std::string_view domain) override;
  void appSynchronize(std::string_view /*domain*/) override {}
  /// Forgets all that was set.
  void clear() { values_.clear(); }

 private:
  platform::Preferences& beneath_;
  /// By domain and key.
  std::map<std::pair<std::string, std::string>, std::optional<platform::Value>> values_;
};

struct WindowPlatformOptions {
  std::optional<std::string> deviceRoot;
  std::optional<std::string> language;
  Idiom idiom = Idiom::phone;
  /// Pixels a point of the screen, and its width in points.
  double scale = 1;
  double width = 390;
  /// Values are kept in memory and notifications stay in the process.
  bool throwaway = false;
  /// What stands for the wallpaper of a device without one; grey where it is empty.
  WallpaperStandIn wallpaperStandIn = {};
  linux::BackgroundPreferencesOptions store = {};
  /// Is told of troubles of the store.
  linux::FilePreferences::TroubleListener onTrouble;
};

/// The panel on the real system, as the window runs it: stores and bus of this machine, the toolkit's event loop, all
/// pages. Needs a QCoreApplication.
class WindowPlatform {
 public:
  explicit WindowPlatform(const WindowPlatformOptions& options);
  /// Waits until all that was set is written and posted.
  ~WindowPlatform();
  WindowPlatform(const WindowPlatform&) = delete;
  WindowPlatform& operator=(const WindowPlatform&) = delete;

  [[nodiscard]] platform::Platform& platform() { return platform_; }
  [[nodiscard]] platform::NavigationController& navigation() { return navigation_; }
  [[nodiscard]] frame::PageRegistry& pages() { return pages_; }
  [[nodiscard]] QtMainQueue& mainQueue() { return mainQueue_; }
  [[nodiscard]] bool isRightToLeft() { return services_.bundles.isRightToLeft(); }
  /// Images, texts and the wallpaper, and what the window knows of other programs; this object outlives their use.
  [[nodiscard]] WindowResources resources();
  /// The values that were set, where they are kept in memory; nullptr otherwise.
  [[nodiscard]] ThrowawayPreferences* throwaway() { return throwaway_.get(); }
  /// The store, whose writes go on in the background.
  [[nodiscard]] linux::BackgroundPreferences& preferences() { return preferences_; }

 private:
  linux::Services services_;
  const WallpaperStandIn wallpaperStandIn_;
  /// Where the writing thread asks for the main one.
  QObject mainThread_;
  linux::BackgroundPreferences preferences_;
  linux::WrittenFirstDarwinCenter darwin_{preferences_, services_.darwin};
  linux::WrittenFirstDistributedCenter distributed_{preferences_, services_.distributed};
  std::unique_ptr<ThrowawayPreferences> throwaway_;
  QSocketNotifier busNotifier_;
  platform::NotificationCenter notifications_;
  QtMainQueue mainQueue_;
  WindowDevice device_;
  frame::PageRegistry pages_;
  platform::SharedInstances shared_;
  platform::NavigationController navigation_{notifications_};
  platform::Platform platform_;
  ElsewhereWatch elsewhere_;
};

}  // namespace quellar::host::window
