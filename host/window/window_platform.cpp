// SPDX-License-Identifier: MIT
#include "host/window/window_platform.h"

#include <iostream>

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

WindowPlatform::WindowPlatform(const WindowPlatformOptions& options)
    : services_({.deviceRoot = options.deviceRoot,
                 .language = options.language,
                 .onTrouble = options.onTrouble,
                 .useBus = !options.throwaway}),
      throwaway_(options.throwaway ? std::make_unique<ThrowawayPreferences>(services_.preferences) : nullptr),
      busNotifier_(services_.bus.descriptor(), QSocketNotifier::Read),
      device_(options.idiom, options.scale, options.width),
      platform_{throwaway_ ? static_cast<platform::Preferences&>(*throwaway_) : services_.preferences,
                services_.darwin,
                services_.distributed,
                notifications_,
                mainQueue_,
                device_,
                services_.bundles,
                services_.bundles,
                services_.applications,
                pages_,
                navigation_,
                shared_} {
  pages::registerPages(pages_);
  pages_.setPlatform(platform_);
  QObject::connect(&busNotifier_, &QSocketNotifier::activated, [this] { services_.bus.process(); });
}

WindowResources WindowPlatform::resources() {
  const auto findImage = [this](const platform::Image& image, double scale) -> std::optional<QString> {
    const auto found = services_.bundles.imageFile(image, scale);
    if (!found) return std::nullopt;
    return QString::fromStdString(found->file.string());
  };
  const auto text = [this](std::string_view english) {
    return QString::fromStdString(frame::KVQuellarLocalizer::sharedLocalizer(platform_).localizedStringForKey(english));
  };
  const auto wallpaper = [this](QSize pixels) {
    return wallpaperFilling(services_.root, pixels, [](const std::string& message) { std::cerr << message << std::endl; });
  };
  return {.findImage = findImage, .text = text, .wallpaper = wallpaper};
}

}  // namespace quellar::host::window
