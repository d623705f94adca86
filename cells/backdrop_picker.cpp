// SPDX-License-Identifier: MIT
#include "cells/backdrop_picker.h"

#include <charconv>

#include "frame/names.h"
#include "platform/navigation_controller.h"

namespace quellar::cells {

using platform::Dictionary;
using platform::Value;

void KVQuellarBackdropPickerCollectionViewCell::setStyle(std::int64_t style) {
  style_ = style;
  styleLabel_ = std::to_string(style);
}

const std::array<std::string_view, 31>& KVQuellarBackdropPickerCollectionView::backdropStyles() {
  static constexpr std::array<std::string_view, 31> kStyles = {
      "2060", "2000", "2040", "2030", "2039", "2031", "2071", "2020", "3902", "3901", "2029",
      "3900", "2070", "2080", "2050", "2032", "2010", "4013", "4012", "4010", "4011", "4007",
      "4002", "4006", "4001", "4009", "4004", "4005", "4000", "4008", "4003"};
  return kStyles;
}

KVQuellarBackdropPickerCollectionViewCell KVQuellarBackdropPickerCollectionView::cellForItem(std::size_t item) const {
  const std::string_view text = backdropStyles().at(item);
  std::int64_t style = 0;
  std::from_chars(text.data(), text.data() + text.size(), style);
  KVQuellarBackdropPickerCollectionViewCell cell;
  cell.setStyle(style);
  return cell;
}

platform::Rect KVQuellarBackdropPickerCollectionView::sizeForItem(double viewWidth) {
  return {0, 0, viewWidth * 0.5 - 20, kItemHeight};
}

void KVQuellarBackdropPickerCollectionView::didSelectItem(std::size_t item) {
  if (selectionDelegate_) selectionDelegate_->tappedOnCellWithStyle(cellForItem(item).style());
}

KVQuellarBackdropPickerViewController::KVQuellarBackdropPickerViewController(platform::Platform& platform,
                                                                             std::string key, std::string defaults)
    : ViewController(platform, "KVQuellarBackdropPickerViewController"),
      key_(std::move(key)),
      defaults_(std::move(defaults)) {}

void KVQuellarBackdropPickerViewController::viewDidLoad() {
  ViewController::viewDidLoad();
  setTitle("Pick A Style");
}

void KVQuellarBackdropPickerViewController::tappedOnCellWithStyle(std::int64_t style) {
  auto& preferences = platform().preferences;
  const auto stored = preferences.copyAppValue(defaults_, frame::kSettingsDomain);
  const auto* dictionary = stored ? stored->as<Dictionary>() : nullptr;
  Dictionary changed = dictionary ? *dictionary : Dictionary{};
  changed.insert_or_assign(key_, Value(style));
  preferences.setAppValue(defaults_, Value(std::move(changed)), frame::kSettingsDomain);
  platform().darwin.notifyPost(frame::kSettings);
  platform().navigation.popViewController(true);
}

}  // namespace quellar::cells
