// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/ports.h"

namespace quellar::host::headless {

/// The device that a host without a screen plays.
struct DeviceOptions {
  /// 0 phone, 1 pad, nothing: a device that does not answer.
  std::optional<int> idiom = 0;
  double scale = 2;
  /// Width of the screen in points.
  double width = 320;
};

class HeadlessDevice : public platform::Device {
 public:
  explicit HeadlessDevice(const DeviceOptions& options) : options_(options) {}
  [[nodiscard]] std::optional<int> userInterfaceIdiom() const override { return options_.idiom; }
  [[nodiscard]] double screenScale() const override { return options_.scale; }
  [[nodiscard]] double screenWidth() const override { return options_.width; }

 private:
  DeviceOptions options_;
};

}  // namespace quellar::host::headless
