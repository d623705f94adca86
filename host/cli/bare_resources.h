// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "host/linux/bundles.h"
#include "platform/ports.h"

namespace quellar::host::cli {

/// What bundles hold, without texts and images: texts stay English, and an image that is named is taken for there. For
/// commands that show neither, because looking them up costs more than all the rest.
class BareResources final : public platform::Bundles, public platform::Files {
 public:
  /// The resources outlive this object.
  explicit BareResources(linux::BundleResources& resources) : resources_(resources) {}

  std::string localizedString(std::string_view /*bundlePath*/, std::string_view key, std::string_view value,
                              const std::optional<std::string>& /*table*/) override {
    return std::string(value.empty() ? key : value);
  }
  std::optional<platform::Array> rowFileItems(std::string_view bundlePath, std::string_view name) override {
    return resources_.rowFileItems(bundlePath, name);
  }
  void reportRowFile(std::string_view name, std::string_view problem) override {
    resources_.reportRowFile(name, problem);
  }

  bool fileExists(std::string_view path) override { return resources_.fileExists(path); }
  std::optional<platform::Image> imageWithContentsOfFile(std::string_view path) override {
    return platform::Image{.path = std::string(path), .flatColor = std::nullopt};
  }
  std::optional<platform::Image> imageNamed(std::string_view name, std::string_view bundlePath) override {
    return platform::Image{.path = std::string(bundlePath) + "/" + std::string(name), .flatColor = std::nullopt};
  }
  std::optional<platform::Value> propertyListWithContentsOfFile(std::string_view path) override {
    return resources_.propertyListWithContentsOfFile(path);
  }

 private:
  linux::BundleResources& resources_;
};

}  // namespace quellar::host::cli
