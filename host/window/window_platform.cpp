// SPDX-License-Identifier: MIT
#include "host/window/window_platform.h"

#include <iostream>
#include <system_error>

#include "frame/localizer.h"
#include "host/window/wallpaper.h"
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

std::vector<std::filesystem::path> bundleFolders() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  const auto prefix = program.parent_path().parent_path();
  return {prefix / "share/quellar/Quellar.bundle", prefix / "Quellar.bundle"};
}

WindowPlatform::WindowPlatform(const WindowPlatformOptions& options)
    : root_(linux::DeviceRoot::chooseFolder(options.deviceRoot), bundleFolders()),
      languages_(linux::userLanguages(options.language)),
      bundles_(root_, languages_, [](const std::string& message) { std::cerr << message << std::endl; }),
      applications_(linux::dataFolders(), languages_),
      files_(root_, options.onTrouble),
      throwaway_(options.throwaway ? std::make_unique<ThrowawayPreferences>(files_) : nullptr),
      bus_(options.throwaway ? std::string() : linux::sessionBusAddress()),
      busNotifier_(bus_.descriptor(), QSocketNotifier::Read),
      device_(options.idiom, options.scale, options.width),
      platform_{throwaway_ ? static_cast<platform::Preferences&>(*throwaway_) : files_,
                darwin_,
                distributed_,
                notifications_,
                mainQueue_,
                device_,
                bundles_,
                bundles_,
                applications_,
                pages_,
                navigation_,
                shared_} {
  pages::registerPages(pages_);
  pages_.setPlatform(platform_);
  QObject::connect(&busNotifier_, &QSocketNotifier::activated, [this] { bus_.process(); });
}

WindowResources WindowPlatform::resources() {
  const auto findImage = [this](const platform::Image& image, double scale) -> std::optional<QString> {
    const auto found = bundles_.imageFile(image, scale);
    if (!found) return std::nullopt;
    return QString::fromStdString(found->file.string());
  };
  const auto text = [this](std::string_view english) {
    return QString::fromStdString(frame::KVQuellarLocalizer::sharedLocalizer(platform_).localizedStringForKey(english));
  };
  const auto wallpaper = [this](QSize pixels) {
    return wallpaperFilling(root_, pixels, [](const std::string& message) { std::cerr << message << std::endl; });
  };
  return {.findImage = findImage, .text = text, .wallpaper = wallpaper};
}

}  // namespace quellar::host::window
