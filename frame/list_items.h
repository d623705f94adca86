// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "frame/page.h"

namespace quellar::frame {

/// The titles and values of the pickers for a blur look, a blur strength and a saturation amount. The n-th title
/// belongs to the n-th value; each call makes new lists.
class KVQLRListItems {
 public:
  /// The blur looks; the transparent one, if it is offered, comes first. The value 16 stands twice.
  static std::vector<std::string> visualEffectTitlesIncludeTransparent(bool include);
  static std::vector<Value> visualEffectValuesIncludeTransparent(bool include);

  static std::vector<std::string> visualEffectBlurStrengthTitles();
  static std::vector<std::string> visualEffectBlurStrengthShortTitles();
  static std::vector<Value> visualEffectBlurStrengthValues();

  static std::vector<std::string> visualEffectSaturationAmountTitles();
  /// Integers and reals, as the add-on expects them: 0.69999 and 1.39999 are meant.
  static std::vector<Value> visualEffectSaturationAmountValues();
};

/// The same lists as the choices of a picker.
[[nodiscard]] Choices blurLooks(bool includeTransparent);
[[nodiscard]] Choices blurStrengths();
[[nodiscard]] Choices saturationAmounts();

}  // namespace quellar::frame
