// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>

namespace quellar::frame {

/// How a text of the panel reaches the user's language.
enum class Route {
  /// Through the shared localizer.
  localizer,
  /// Through the settings bundle's own string table.
  bundle,
  /// Not at all: it is shown as it stands.
  asWritten,
};

/// An English text and its route. It converts from a bare string with the route that its place usually has, so that a
/// page names a route only where a text takes another one.
template <Route usual>
struct RoutedText {
  std::string english;
  Route route = usual;

  RoutedText() = default;
  RoutedText(const char* text) : english(text) {}
  RoutedText(std::string text) : english(std::move(text)) {}
  template <Route other>
  RoutedText(RoutedText<other> text) : english(std::move(text.english)), route(text.route) {}

  bool operator==(const RoutedText&) const = default;
};

using Localized = RoutedText<Route::localizer>;
using Bundled = RoutedText<Route::bundle>;
using AsWritten = RoutedText<Route::asWritten>;

inline Localized localized(std::string text) {
  return {std::move(text)};
}
inline Bundled bundled(std::string text) {
  return {std::move(text)};
}
inline AsWritten asWritten(std::string text) {
  return {std::move(text)};
}

}  // namespace quellar::frame
