// SPDX-License-Identifier: MIT
#include "host/window/backdrop_looks.h"

#include <algorithm>
#include <array>

namespace quellar::host::window {

namespace {

// Alpha, red, green, blue.
constexpr auto kLooks = std::to_array<BackdropLook>({
    // Clear glass: hardly any blur.
    {2000, 3, 1.0, 1.00, 0x00ffffff},
    {2010, 6, 1.4, 1.05, 0x1fffffff},
    // Light, from frosted to nearly white.
    {2020, 20, 1.8, 1.00, 0x6bf7f7f7},
    {2029, 8, 1.6, 1.05, 0x59ffffff},
    // Dark, from nearly black to smoked.
    {2030, 20, 1.8, 1.00, 0xba111111},
    {2031, 20, 1.6, 0.90, 0x80111318},
    {2032, 12, 1.4, 0.80, 0x4d000000},
    {2039, 4, 1.0, 0.70, 0x66000000},
    // Colour and blur alone.
    {2040, 30, 1.8, 1.00, 0x00ffffff},
    {2050, 20, 2.6, 1.10, 0x00ffffff},
    {2060, 30, 1.2, 1.15, 0x40ffffff},
    // Without colours.
    {2070, 20, 0.0, 1.00, 0x00ffffff},
    {2071, 20, 0.0, 0.55, 0x1a000000},
    {2080, 20, 0.2, 1.15, 0x73ffffff},
    // Veils without blur.
    {3900, 0, 1.0, 1.00, 0x26000000},
    {3901, 0, 1.0, 1.00, 0x4dffffff},
    {3902, 0, 0.4, 0.85, 0x26808890},
    // Coloured glass.
    {4000, 16, 1.2, 0.95, 0x8c5b6f86},
    {4001, 16, 1.2, 0.95, 0x8c1f8a8c},
    {4002, 16, 1.2, 0.95, 0x8c3f8f4f},
    {4003, 16, 1.2, 1.00, 0x8cd9b27c},
    {4004, 16, 1.2, 0.95, 0x8cc9566b},
    {4005, 16, 1.2, 0.90, 0x8c7a4a8e},
    {4006, 16, 1.2, 0.80, 0x8c1c2f5c},
    {4007, 16, 0.6, 0.95, 0x8c8a6a45},
    {4008, 16, 1.2, 1.00, 0x8ce08a3c},
    {4009, 16, 1.2, 0.95, 0x8c2f74c4},
    {4010, 24, 1.4, 1.00, 0xbfe6edf2},
    {4011, 24, 1.4, 1.00, 0xbff4e9d8},
    {4012, 24, 1.4, 0.80, 0xbf262c33},
    {4013, 24, 1.4, 0.80, 0xbf33241f},
});

}  // namespace

std::span<const BackdropLook> backdropLooks() {
  return kLooks;
}

const BackdropLook* backdropLook(std::int64_t style) {
  const auto* const found = std::ranges::lower_bound(kLooks, style, {}, &BackdropLook::style);
  return found != kLooks.end() && found->style == style ? found : nullptr;
}

}  // namespace quellar::host::window
