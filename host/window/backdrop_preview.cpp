// SPDX-License-Identifier: MIT
#include "host/window/backdrop_preview.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace quellar::host::window {

namespace {

constexpr std::size_t kComponents = 3;
// Three averages in a row come close to a Gaussian blur, whatever its radius, at a cost that does not grow with it.
constexpr int kPasses = 3;

// Pixels of red, green and blue, without a gap.
struct Canvas {
  std::size_t width;
  std::size_t height;
  std::vector<std::uint8_t> bytes;
};

Canvas canvasOf(const QImage& image) {
  const QImage plain = image.convertToFormat(QImage::Format_RGB888);
  Canvas canvas{static_cast<std::size_t>(plain.width()), static_cast<std::size_t>(plain.height()), {}};
  canvas.bytes.reserve(canvas.width * canvas.height * kComponents);
  for (int y = 0; y < plain.height(); ++y) {
    const std::uint8_t* line = plain.constScanLine(y);
    canvas.bytes.insert(canvas.bytes.end(), line, line + canvas.width * kComponents);
  }
  return canvas;
}

// How far to either side each of the averages reaches, so that together they have the standard deviation.
std::array<std::size_t, kPasses> reachesOf(double deviation) {
  const double ideal = std::sqrt(12 * deviation * deviation / kPasses + 1);
  auto lower = static_cast<int>(std::floor(ideal));
  if (lower % 2 == 0) --lower;
  const double wide = (12 * deviation * deviation - kPasses * (lower * lower + 4 * lower + 3)) / (-4 * lower - 4);
  std::array<std::size_t, kPasses> reaches{};
  for (int pass = 0; pass < kPasses; ++pass) {
    reaches.at(static_cast<std::size_t>(pass)) =
        static_cast<std::size_t>((pass < std::lround(wide) ? lower : lower + 2) - 1) / 2;
  }
  return reaches;
}

// Averages lines of `count` places, `stride` bytes apart, with `reach` places to either side; beyond its ends a line
// goes on as it ends. `run` neighbouring bytes are averaged alike, each for itself.
void average(const std::uint8_t* from, std::uint8_t* to, std::size_t count, std::size_t stride, std::size_t run,
             std::size_t reach, std::vector<std::uint32_t>& sums) {
  sums.assign(run, 0);
  const auto at = [&](std::size_t place) { return from + std::min(place, count - 1) * stride; };
  const auto span = static_cast<std::uint32_t>(2 * reach + 1);
  // A division by multiplication: exact for the averages of bytes over any span that a screen has room for.
  const std::uint64_t factor = ((std::uint64_t{1} << 32U) + span - 1) / span;
  for (std::size_t byte = 0; byte < run; ++byte) {
    sums[byte] = static_cast<std::uint32_t>(reach + 1) * from[byte] + span / 2;
  }
  for (std::size_t place = 1; place <= reach; ++place) {
    const std::uint8_t* entering = at(place);
    for (std::size_t byte = 0; byte < run; ++byte) sums[byte] += entering[byte];
  }
  for (std::size_t place = 0; place < count; ++place) {
    const std::uint8_t* leaving = at(place < reach ? 0 : place - reach);
    const std::uint8_t* entering = at(place + reach + 1);
    std::uint8_t* target = to + place * stride;
    for (std::size_t byte = 0; byte < run; ++byte) {
      target[byte] = static_cast<std::uint8_t>(sums[byte] * factor >> 32U);
      sums[byte] += static_cast<std::uint32_t>(entering[byte]) - leaving[byte];
    }
  }
}

void blur(Canvas& canvas, double deviation) {
  std::vector<std::uint8_t> other(canvas.bytes.size());
  std::vector<std::uint32_t> sums;
  const std::size_t line = canvas.width * kComponents;
  for (const std::size_t reach : reachesOf(deviation)) {
    for (std::size_t y = 0; y < canvas.height; ++y) {
      average(&canvas.bytes[y * line], &other[y * line], canvas.width, kComponents, kComponents, reach, sums);
    }
    average(other.data(), canvas.bytes.data(), canvas.height, line, line, reach, sums);
  }
}

std::uint8_t byteOf(float value) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0F, 255.0F)));
}

}  // namespace

QImage drawBackdrop(const QImage& ground, const BackdropLook& look, double scale) {
  if (ground.isNull()) return {};
  Canvas canvas = canvasOf(ground);
  if (look.blur > 0) blur(canvas, look.blur * scale);

  const auto saturation = static_cast<float>(look.saturation);
  const auto light = static_cast<float>(look.brightness);
  const float veil = static_cast<float>(qAlpha(look.tint)) / 255;
  const std::array<float, kComponents> tint{static_cast<float>(qRed(look.tint)), static_cast<float>(qGreen(look.tint)),
                                            static_cast<float>(qBlue(look.tint))};
  QImage drawn(ground.size(), QImage::Format_RGB888);
  const std::uint8_t* pixel = canvas.bytes.data();
  for (int y = 0; y < drawn.height(); ++y) {
    std::uint8_t* target = drawn.scanLine(y);
    for (std::size_t x = 0; x < canvas.width; ++x, pixel += kComponents, target += kComponents) {
      // What the eye takes for the light of a colour (ITU-R BT.709).
      const std::array<float, kComponents> color{static_cast<float>(pixel[0]), static_cast<float>(pixel[1]),
                                                 static_cast<float>(pixel[2])};
      const float grey = 0.2126F * color[0] + 0.7152F * color[1] + 0.0722F * color[2];
      for (std::size_t component = 0; component < kComponents; ++component) {
        const float colored = std::clamp((grey + (color.at(component) - grey) * saturation) * light, 0.0F, 255.0F);
        target[component] = byteOf(colored + (tint.at(component) - colored) * veil);
      }
    }
  }
  return drawn;
}

}  // namespace quellar::host::window
