// SPDX-License-Identifier: MIT
#include "frame/list_items.h"

namespace quellar::frame {

std::vector<std::string> KVQLRListItems::visualEffectTitlesIncludeTransparent(bool include) {
  std::vector<std::string> titles = {"Very White Blur",
                                     "Less White Blur",
                                     "Normal",
                                     "Even Less White Blur",
                                     "Transparent White (No Blur)",
                                     "More Transparent White (No Blur)",
                                     "Transparent Black (No Blur)",
                                     "Saturated Blur",
                                     "Saturated Blur Medium",
                                     "Saturated Blur Strong",
                                     "Saturated Blur Stronger"};
  if (include) titles.insert(titles.begin(), "Transparent");
  return titles;
}

std::vector<Value> KVQLRListItems::visualEffectValuesIncludeTransparent(bool include) {
  std::vector<Value> values = {9, 16, 12, 17, 15, 16, 19, 5, 13, 3, 4};
  if (include) values.insert(values.begin(), 0);
  return values;
}

std::vector<std::string> KVQLRListItems::visualEffectBlurStrengthTitles() {
  return {"None", "Small", "Medium", "Large", "Extra Large", "Extra Extra Large", "Extra Extra Extra Large"};
}

std::vector<std::string> KVQLRListItems::visualEffectBlurStrengthShortTitles() {
  return {"None", "Small", "Medium", "Large", "Extra Large", "XX Large", "XXX Large"};
}

std::vector<Value> KVQLRListItems::visualEffectBlurStrengthValues() {
  return {0, 10, 20, 30, 60, 90, 100};
}

std::vector<std::string> KVQLRListItems::visualEffectSaturationAmountTitles() {
  return {"Desaturate",   "Desaturate Light", "None",          "Extra Light", "Light",
          "Medium Light", "Medium",           "Medium Strong", "Strong",      "Extra Strong"};
}

std::vector<Value> KVQLRListItems::visualEffectSaturationAmountValues() {
  return {0.0, 0.69999, 1, 1.2, 1.3, 1.39999, 1.5, 1.6, 1.8, 2};
}

Choices blurLooks(bool includeTransparent) {
  return {KVQLRListItems::visualEffectValuesIncludeTransparent(includeTransparent),
          KVQLRListItems::visualEffectTitlesIncludeTransparent(includeTransparent),
          {}};
}

Choices blurStrengths() {
  return {KVQLRListItems::visualEffectBlurStrengthValues(), KVQLRListItems::visualEffectBlurStrengthTitles(),
          KVQLRListItems::visualEffectBlurStrengthShortTitles()};
}

Choices saturationAmounts() {
  return {
      KVQLRListItems::visualEffectSaturationAmountValues(), KVQLRListItems::visualEffectSaturationAmountTitles(), {}};
}

}  // namespace quellar::frame
