// SPDX-License-Identifier: MIT
#include "cells/backdrop_picker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {
namespace backdrop_picker_test {

using cells::KVQuellarBackdropPickerCollectionView;
using cells::KVQuellarBackdropPickerViewController;
using platform::Dictionary;
using platform::Rect;
using platform::Value;
using testing::ElementsAre;

class BackdropPicker : public testing::Test {
 protected:
  Panel panel;

  KVQuellarBackdropPickerViewController& open() {
    auto picker = std::make_shared<KVQuellarBackdropPickerViewController>(panel.host.platform(), "style", "B_Defaults");
    panel.host.navigation().pushViewController(picker);
    panel.events();
    return *picker;
  }
};

TEST_F(BackdropPicker, ShowsThirtyOneStylesLabelledWithTheirNumbers) {
  auto& view = open().backdropCollectionView();
  std::vector<std::int64_t> styles;
  for (std::size_t item = 0; item < view.numberOfItems(); ++item) {
    styles.push_back(view.cellForItem(item).style());
    EXPECT_EQ(view.cellForItem(item).styleLabel(), std::to_string(styles.back()));
  }
  EXPECT_EQ(styles, (std::vector<std::int64_t>{2060, 2000, 2040, 2030, 2039, 2031, 2071, 2020, 3902, 3901, 2029,
                                               3900, 2070, 2080, 2050, 2032, 2010, 4013, 4012, 4010, 4011, 4007,
                                               4002, 4006, 4001, 4009, 4004, 4005, 4000, 4008, 4003}));
}

TEST_F(BackdropPicker, ShowsItsTitle) {
  EXPECT_EQ(open().title(), "Pick A Style");
}

TEST_F(BackdropPicker, PutsTwoItemsOnALine) {
  EXPECT_EQ(KVQuellarBackdropPickerCollectionView::sizeForItem(320), (Rect{0, 0, 140, 90}));
  EXPECT_EQ(KVQuellarBackdropPickerCollectionView::sizeForItem(768), (Rect{0, 0, 364, 90}));
  EXPECT_EQ(KVQuellarBackdropPickerCollectionView::kSpacing, 10);
  EXPECT_EQ(KVQuellarBackdropPickerCollectionView::kWallpaperPath,
            "/var/mobile/Library/SpringBoard/LockBackground.cpbitmap");
}

TEST_F(BackdropPicker, StoresTheTappedStyleAsAnIntegerPostsAndGoesBack) {
  panel.store("B_Defaults", Dictionary{{"other", "x"}, {"style", 2000}});
  auto& picker = open();
  // What was stored meanwhile is kept.
  panel.store("B_Defaults", Dictionary{{"other", "y"}, {"style", 2000}});
  picker.backdropCollectionView().didSelectItem(30);
  EXPECT_THAT(panel.events(),
              ElementsAre(writeLine("B_Defaults", R"({"other":"y","style":4003})"), notifyPostLine("settings"),
                          R"({"event":"pop","page":"KVQuellarBackdropPickerViewController","animated":true,"t":0.0})"));
  EXPECT_TRUE(panel.host.navigation().viewControllers().empty());
}

TEST_F(BackdropPicker, StartsADictionaryWhereNoneIsStored) {
  open().backdropCollectionView().didSelectItem(0);
  EXPECT_EQ(panel.stored("B_Defaults"), R"({"style":2060})");
  panel.store("B_Defaults", Value("text"));
  open().tappedOnCellWithStyle(2030);
  EXPECT_EQ(panel.stored("B_Defaults"), R"({"style":2030})");
}

TEST_F(BackdropPicker, TellsNobodyWhereItsGridHasNoDelegate) {
  KVQuellarBackdropPickerCollectionView grid(nullptr);
  grid.didSelectItem(0);
  EXPECT_TRUE(panel.events().empty());
}

}  // namespace backdrop_picker_test
}  // namespace quellar::tests
