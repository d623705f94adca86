// SPDX-License-Identifier: MIT
#include "host/window/window_platform.h"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <set>
#include <system_error>

#include "frame/names.h"
#include "host/window/opening.h"
#include "pages/registry.h"

namespace quellar::host::window {

using platform::Value;

std::optional<Value> ThrowawayPreferences::copyAppValue(std::string_view key, std::string_view domain) {
  const auto set = values_.find({std::string(domain), std::string(key)});
  return set == values_.end() ? beneath_.copyAppValue(key, domain) : set->second;
}

void ThrowawayPreferences::setAppValue(std::string_view key, const std::optional<Value>& value,
                                       std::string_view domain) {
  values_.insert_or_assign({std::string(domain), std::string(key)}, value);
}

namespace {

// The nearest folder above a path, or the path itself, that exists.
std::filesystem::path nearestFolder(std::filesystem::path path) {
  std::error_code error;
  while (!std::filesystem::is_directory(path, error) && path.has_relative_path()) path = path.parent_path();
  return path;
}

// The folders in which something happens when the domain's file is made or replaced. A link may lead the file
// elsewhere, and until something is stored there may be neither file nor folder, nor the device root itself.
QStringList domainFolders(const linux::DeviceRoot& root) {
  const auto realPath = [&root](const std::string& path) {
    try {
      return root.realPath(path).value_or("");
    } catch (const std::exception&) {
      return std::filesystem::path();
    }
  };
  constexpr std::array kPaths = {"/var/mobile/Library/Preferences", "/var/mobile/Library", "/var/mobile", "/var", "/"};
  const auto file = realPath(std::string(kPaths.front()) + "/" + std::string(frame::kSettingsDomain) + ".plist");
  std::set<QString> folders;
  const auto add = [&folders](const std::filesystem::path& folder) {
    folders.insert(QString::fromStdString(folder.string()));
  };
  if (!file.empty()) add(file.parent_path());
  const auto path = std::ranges::find_if(kPaths, [&](const char* each) { return !realPath(each).empty(); });
  add(path != kPaths.end() ? realPath(*path) : nearestFolder(root.folder()));
  return {folders.begin(), folders.end()};
}

}  // namespace

WindowPlatform::WindowPlatform(const WindowPlatformOptions& options)
    : services_({.deviceRoot = options.deviceRoot,
                 .language = options.language,
                 .onTrouble = {},
                 .useBus = !options.throwaway}),
      wallpaperStandIn_(options.wallpaperStandIn),
      preferences_(
          services_.deviceRoot, options.onTrouble,
          [this] { QMetaObject::invokeMethod(&mainThread_, [this] { preferences_.deliver(); }, Qt::QueuedConnection); },
          options.store),
      throwaway_(options.throwaway ? std::make_unique<ThrowawayPreferences>(preferences_) : nullptr),
      busNotifier_(services_.bus.descriptor(), QSocketNotifier::Read),
      device_(options.idiom, options.scale, options.width),
      platform_{throwaway_ ? static_cast<platform::Preferences&>(*throwaway_) : preferences_,
                darwin_,
                distributed_,
                notifications_,
                mainQueue_,
                device_,
                services_.bundles,
                services_.bundles,
                services_.applications,
                pages_,
                navigation_,
                shared_},
      elsewhere_(preferences_, [this] { return domainFolders(services_.deviceRoot); }, navigation_) {
  pages::registerPages(pages_);
  pages_.setPlatform(platform_);
  QObject::connect(&busNotifier_, &QSocketNotifier::activated, [this] { services_.bus.process(); });
}

WindowPlatform::~WindowPlatform() {
  preferences_.finish();
}

WindowResources WindowPlatform::resources() {
  const auto readImage = [this](const platform::Image& image, double scale) {
    return services_.bundles.imageBytes(image, scale);
  };
  const auto text = [this](std::string_view english) {
    return QString::fromStdString(
        services_.bundles.localizedString(linux::kSettingsBundlePath, english, english, "Window"));
  };
  const auto wallpaper = [this](QSize pixels) {
    return wallpaperFilling(services_.deviceRoot, pixels, linux::reportToSystemLog, wallpaperStandIn_);
  };
  const auto retryWrites = [this] { preferences_.retry(); };
  return {.readImage = readImage,
          .text = text,
          .wallpaper = wallpaper,
          .retryWrites = retryWrites,
          .elsewhere = &elsewhere_};
}

}  // namespace quellar::host::window
