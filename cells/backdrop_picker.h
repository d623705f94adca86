// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/cell.h"
#include "platform/platform.h"
#include "platform/view_controller.h"

namespace quellar::cells {

/// Is told which preview was tapped.
class KVQuellarBackdropPickerSelectionDelegate {
 public:
  virtual ~KVQuellarBackdropPickerSelectionDelegate() = default;
  virtual void tappedOnCellWithStyle(std::int64_t style) = 0;
};

/// One preview: a backdrop style over the wallpaper, with its number as the label.
class KVQuellarBackdropPickerCollectionViewCell {
 public:
  [[nodiscard]] std::int64_t style() const { return style_; }
  [[nodiscard]] const std::string& styleLabel() const { return styleLabel_; }
  void setStyle(std::int64_t style);

 private:
  std::int64_t style_ = 2020;
  std::string styleLabel_;
};

/// The grid of previews: two columns, thirty-one styles in display order. It is its own data source.
class KVQuellarBackdropPickerCollectionView {
 public:
  /// Points on all four sides, between the items and between the lines.
  static constexpr double kSpacing = 10;
  static constexpr double kItemHeight = 90;
  static constexpr double kCornerRadius = 10;
  /// Platform path of the wallpaper that the previews lie over.
  static constexpr std::string_view kWallpaperPath = "/var/mobile/Library/SpringBoard/LockBackground.cpbitmap";

  explicit KVQuellarBackdropPickerCollectionView(KVQuellarBackdropPickerSelectionDelegate* selectionDelegate)
      : selectionDelegate_(selectionDelegate) {}

  /// The style numbers as decimal strings.
  [[nodiscard]] static const std::array<std::string_view, 31>& backdropStyles();
  [[nodiscard]] std::size_t numberOfItems() const { return backdropStyles().size(); }
  [[nodiscard]] KVQuellarBackdropPickerCollectionViewCell cellForItem(std::size_t item) const;
  /// Size of an item in points, in a view of a width in points.
  [[nodiscard]] static platform::Rect sizeForItem(double viewWidth);
  void didSelectItem(std::size_t item);

 private:
  KVQuellarBackdropPickerSelectionDelegate* selectionDelegate_;
};

/// The screen that shows the platform's backdrop styles as live previews; a tap stores the style's number in one page
/// dictionary and goes back.
class KVQuellarBackdropPickerViewController : public platform::ViewController,
                                              public KVQuellarBackdropPickerSelectionDelegate {
 public:
  /// Takes the key to write and the defaults key of its page dictionary.
  KVQuellarBackdropPickerViewController(platform::Platform& platform, std::string key, std::string defaults);

  void viewDidLoad() override;
  void tappedOnCellWithStyle(std::int64_t style) override;
  [[nodiscard]] KVQuellarBackdropPickerCollectionView& backdropCollectionView() { return backdropCollectionView_; }

 private:
  std::string key_;
  std::string defaults_;
  KVQuellarBackdropPickerCollectionView backdropCollectionView_{this};
};

}  // namespace quellar::cells
