// SPDX-License-Identifier: MIT
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "host/linux/device_root.h"
#include "host/window/wallpaper.h"
#include "support/temporary_folder.h"
#include "targets.h"

namespace quellar::tests::fuzz {

namespace {

/// A device root in memory, with a place for the wallpaper.
class WallpaperDevice {
 public:
  WallpaperDevice()
      : folder_(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path()),
        file_(folder_.write("var/mobile/Library/SpringBoard/LockBackground.cpbitmap", "")) {}

  void write(std::string_view bytes) const {
    std::ofstream stream(file_, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    demand(stream.flush().good(), "the wallpaper can be written");
  }
  [[nodiscard]] const host::linux::DeviceRoot& root() const { return root_; }

 private:
  TemporaryFolder folder_;
  std::filesystem::path file_;
  host::linux::DeviceRoot root_{folder_.path()};
};

std::uint64_t number(std::string_view bytes) {
  std::uint64_t result = 0;
  for (std::size_t place = 4; place-- > 0;) result = result << 8U | static_cast<std::uint8_t>(bytes[place]);
  return result;
}

}  // namespace

void wallpaper(std::string_view bytes) {
  static const WallpaperDevice device;
  if (bytes.size() < 2) return;
  int width = static_cast<std::uint8_t>(bytes[0]) % 64;
  int height = static_cast<std::uint8_t>(bytes[1]) % 64;
  const std::string_view file = bytes.substr(2);
  device.write(file);

  // Whether it is a wallpaper, told from its trailer alone.
  std::uint64_t ownWidth = 0;
  std::uint64_t ownHeight = 0;
  if (file.size() >= 20) {
    ownWidth = number(file.substr(file.size() - 20));
    ownHeight = number(file.substr(file.size() - 16));
  }
  const std::uint64_t rowBytes = (ownWidth + 7) / 8 * 32;
  const bool usable = ownWidth > 0 && ownHeight > 0 && ownWidth <= 65536 && ownHeight <= 65536 &&
                      rowBytes * ownHeight + 20 <= file.size();
  const bool ownSize = usable && (width == 0 || height == 0) && ownWidth < 64 && ownHeight < 64;
  if (ownSize) {
    width = static_cast<int>(ownWidth);
    height = static_cast<int>(ownHeight);
  }

  std::vector<std::string> reports;
  const QImage image = host::window::wallpaperFilling(device.root(), {width, height},
                                                      [&](const std::string& message) { reports.push_back(message); });
  demand(image.size() == QSize(width, height).expandedTo(QSize(1, 1)), "the picture has the size that was asked for");
  demand(reports.size() == (usable ? 0U : 1U), "what is no wallpaper is told once");
  if (!usable) demand(image.pixel(0, 0) == host::window::kNoWallpaper, "without a wallpaper the ground is grey");
  if (!ownSize) return;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto pixel = file.substr(static_cast<std::size_t>(y) * rowBytes + static_cast<std::size_t>(x) * 4, 4);
      const auto component = [&](std::size_t at) { return static_cast<std::uint8_t>(pixel[at]); };
      if (component(3) != 255) continue;
      demand(image.pixel(x, y) == qRgb(component(2), component(1), component(0)),
             "a wallpaper in its own size keeps each opaque pixel");
    }
  }
}

}  // namespace quellar::tests::fuzz
