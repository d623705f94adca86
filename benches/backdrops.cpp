// SPDX-License-Identifier: MIT
#include <QImage>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/linux/device_root.h"
#include "host/window/backdrop_looks.h"
#include "host/window/backdrop_preview.h"
#include "host/window/wallpaper.h"
#include "suite.h"
#include "support/temporary_folder.h"

namespace quellar::benches {

namespace {

constexpr QSize kWallpaper(1290, 2796);
// Of a phone of that size, with three pixels a point.
constexpr QSize kPreview(585, 270);

struct Measured {
  std::string name;
  QSize wallpaper;
  QSize preview;
  std::vector<std::string> floors;
};

// A bitmap as the platform stores it, of pixels that do not repeat.
std::string bitmapBytes(QSize size) {
  const int row = (size.width() + 7) / 8 * 8;
  std::string bytes(static_cast<std::size_t>(row) * static_cast<std::size_t>(size.height()) * 4, '\xff');
  std::uint32_t state = 1;
  for (std::size_t at = 0; at < bytes.size(); ++at) {
    state = state * 1664525U + 1013904223U;
    if (at % 4 != 3) bytes[at] = static_cast<char>(state >> 24U);
  }
  for (const int number : {size.width(), size.height(), 0, 0, 0}) {
    for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

// All previews one after the other, as one thread draws them, from the file on.
void addPreviews(Suite& suite, const Measured& measured) {
  suite.add({.name = measured.name, .floors = measured.floors},
            {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 1}, [measured] {
              const auto folder = std::make_shared<tests::TemporaryFolder>();
              folder->write("var/mobile/Library/SpringBoard/LockBackground.cpbitmap", bitmapBytes(measured.wallpaper));
              return [folder, measured] {
                const host::linux::DeviceRoot root(folder->path());
                const Stopwatch stopwatch;
                const QImage ground = host::window::wallpaperFilling(root, measured.preview, {});
                for (const auto& look : host::window::backdropLooks()) {
                  const QImage preview = host::window::drawBackdrop(ground, look, measured.preview.height() / 90.0);
                  benchmark::DoNotOptimize(preview.constBits());
                }
                return stopwatch.elapsed();
              };
            });
}

}  // namespace

void addBackdrops(Suite& suite) {
  const std::string copied = "backdrop picker: copy as many pixels 31 times";
  const std::string usual = "backdrop picker: 31 previews of 585 x 270 from a wallpaper of 1290 x 2796";
  addPreviews(suite, {usual, kWallpaper, kPreview, {copied}});
  addPreviews(suite, {"backdrop picker: the same from a wallpaper of 2580 x 5592", kWallpaper * 2, kPreview, {usual}});
  addPreviews(suite, {"backdrop picker: 31 previews of 1170 x 540", kWallpaper, kPreview * 2, {usual}});

  suite.add({.name = copied, .floors = {}}, {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 1}, [] {
    const auto pixels = static_cast<std::size_t>(kPreview.width()) * static_cast<std::size_t>(kPreview.height());
    const auto ground = std::make_shared<std::vector<std::uint32_t>>(pixels, 0xff808080U);
    return [ground] {
      const Stopwatch stopwatch;
      for (int preview = 0; preview < 31; ++preview) {
        auto copy = *ground;
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
      }
      return stopwatch.elapsed();
    };
  });
}

}  // namespace quellar::benches
