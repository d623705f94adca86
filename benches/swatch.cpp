// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>

#include "cells/color_preview_cell.h"
#include "suite.h"

namespace quellar::benches {

namespace {

// Of a phone, where a swatch is the largest.
constexpr double kScale = 3;

}  // namespace

void addSwatch(Suite& suite) {
  const std::string fill = "color cell: fill as many pixels";

  suite.add({.name = "color cell: draw its swatch at scale 3", .floors = {fill}}, {}, [] {
    return [] {
      const Stopwatch stopwatch;
      const cells::Picture picture = cells::_accessoryImageForColor("#41a9d6", kScale);
      benchmark::DoNotOptimize(picture.pixels.data());
      return stopwatch.elapsed();
    };
  });

  suite.add({.name = fill, .floors = {}}, {}, [] {
    const std::size_t pixels = cells::_accessoryImageForColor("#41a9d6", kScale).pixels.size() / 4;
    return [pixels] {
      using Pixel = std::array<std::uint8_t, 4>;
      const Stopwatch stopwatch;
      const std::vector<Pixel> filled(pixels, Pixel{0x41, 0xa9, 0xd6, 0xff});
      benchmark::DoNotOptimize(filled.data());
      benchmark::ClobberMemory();
      return stopwatch.elapsed();
    };
  });
}

}  // namespace quellar::benches
