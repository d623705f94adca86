// SPDX-License-Identifier: MIT
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/list_controller.h"
#include "frame/row_value.h"
#include "platform/navigation_controller.h"
#include "support/expectations.h"
#include "support/memory_services.h"

namespace quellar::tests {

using Lines = std::vector<std::string>;

inline const std::string kImages = "/Library/PreferenceBundles/Quellar.bundle/images/";
inline const std::string kSynchronizeLine = R"({"event":"synchronize","domain":"com.vantorick.quellar2","t":0.0})";

/// The texts of a page's expected rows: in English, or in a language in which a translated text stands in brackets. Its
/// table has an entry for every text, so that a text which is to stay as written is seen when it is translated.
class Texts {
 public:
  explicit Texts(bool foreign) : foreign_(foreign) {}

  std::string translated(const std::string& text) {
    const std::string& entry = table_[text] = "<" + text + ">";
    return foreign_ ? entry : text;
  }
  std::string asWritten(const std::string& text) {
    table_[text] = "<" + text + ">";
    return text;
  }
  [[nodiscard]] std::map<std::string, std::string, std::less<>> table() const {
    return foreign_ ? table_ : std::map<std::string, std::string, std::less<>>{};
  }

 private:
  bool foreign_;
  std::map<std::string, std::string, std::less<>> table_;
};

inline Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

/// Rows where a block is shown, none where it is not.
inline Lines shownIf(bool shown, Lines rows) {
  return shown ? std::move(rows) : Lines{};
}

/// An untitled group with a footer.
inline std::string untitledGroup(const std::string& footer) {
  return R"(PSGroupCell {"footerText":")" + footer + R"("})";
}
inline std::string linkRow(const std::string& label, const std::string& opens, const std::string& icon) {
  return R"(PSLinkListCell {"iconImage":{"$image":")" + kImages + icon + R"("},"label":")" + label + R"("} opens )" +
         opens;
}
inline std::string textRow(const std::string& label, const std::string& key) {
  return R"(PSEditTextCell {"key":")" + key + R"(","label":")" + label + R"("} set get)";
}
/// A segment row of the values 1, 2, 3; the titles as JSON.
inline std::string segmentRow(const std::string& label, const std::string& key, int byDefault,
                              const std::string& titles) {
  return R"(PSSegmentCell {"default":)" + std::to_string(byDefault) + R"(,"key":")" + key + R"(","label":")" + label +
         R"("} set get values [1,2,3] titles )" + titles;
}
/// Values and titles as JSON.
inline std::string pickerRow(const std::string& label, const std::string& key, const std::string& values,
                             const std::string& titles) {
  return R"(PSLinkListCell {"key":")" + key + R"(","label":")" + label +
         R"("} set get opens KVQuellarListItemsController values )" + values + " titles " + titles;
}

inline const std::string kLookValues = "[9,16,12,17,15,16,19,5,13,3,4]";
inline const std::string kLookTitles =
    R"-(["Very White Blur","Less White Blur","Normal","Even Less White Blur","Transparent White (No Blur)",)-"
    R"-("More Transparent White (No Blur)","Transparent Black (No Blur)","Saturated Blur","Saturated Blur Medium",)-"
    R"-("Saturated Blur Strong","Saturated Blur Stronger"])-";
inline const std::string kLookValuesWithTransparent = "[0," + kLookValues.substr(1);
inline const std::string kLookTitlesWithTransparent = R"(["Transparent",)" + kLookTitles.substr(1);

/// A page of the panel, the store that it stands on and what a user does with it.
class FamilyPage : public testing::Test {
 protected:
  FamilyPage(std::string className, std::string defaultsKey)
      : className_(std::move(className)), defaultsKey_(std::move(defaultsKey)) {}

  Panel panel;

  frame::KVQuellarListController& open(const platform::Dictionary& stored = {}) {
    if (!stored.empty()) panel.store(defaultsKey_, stored);
    return dynamic_cast<frame::KVQuellarListController&>(panel.open(className_));
  }
  platform::PSListController& page() { return *panel.host.topList(); }

  /// Opens the page with the values stored and compares its rows whole, in English and in another language.
  void expectRows(const std::function<Lines(Texts&)>& expected, const platform::Dictionary& stored = {}) {
    for (const bool foreign : {false, true}) {
      Texts texts(foreign);
      const Lines rows = expected(texts);
      panel.bundles.texts = texts.table();
      EXPECT_EQ(wholeRows(open(stored)), rows);
    }
    panel.bundles.texts.clear();
  }

  std::string write(const std::string& dictionary, const std::string& time = "0.0") const {
    return writeLine(defaultsKey_, dictionary, time);
  }
  std::string stored() { return panel.stored(defaultsKey_); }

  /// Writes a value through the page's handler under a key that none of its rows has.
  void writeForeignKey(const std::string& key, const platform::Value& value) {
    const auto row =
        platform::PSSpecifier::preferenceSpecifierNamed("", &page(), {}, {}, "", platform::PSCellType::PSSwitchCell);
    row->setProperty("key", platform::Value(key));
    page().setPreferenceValue(value, *row);
  }

  /// The first row of the page with a label.
  platform::PSSpecifier& rowNamed(std::string_view label) {
    for (const auto& row : page().specifiers()) {
      if (row->name() == label) return *row;
    }
    throw std::out_of_range(std::string(label));
  }
  void tap(std::string_view label) { page().userTapsRow(*page().indexOfSpecifier(rowNamed(label))); }
  void back() { panel.host.navigation().popViewController(true); }
  /// The color dialog completes.
  void pick(const platform::Color& color) { panel.host.navigation().completeColorDialog(color); }
  /// What the color dialog starts from, as "#rrggbb", with " with alpha" where it offers that.
  std::string dialogStart() {
    const auto& choice = *panel.host.navigation().dialog()->color;
    return hexString(choice.start) + (choice.showAlpha ? " with alpha" : "");
  }
  void step(std::string_view key, int direction) {
    std::dynamic_pointer_cast<cells::KVQuellarStepperCell>(panel.row(key).cell())->press(direction);
  }
  double stepperValue(std::string_view key) {
    return dynamic_cast<cells::KVQuellarStepperCell&>(*panel.row(key).cell()).stepper().value;
  }
  /// Types an exact value into a slider's entry dialog.
  void enter(std::string_view key, const std::string& text) {
    std::dynamic_pointer_cast<cells::KVQuellarSliderCell>(panel.row(key).cell())->presentPopup();
    panel.host.navigation().setDialogText(text);
    panel.events();
    panel.host.navigation().pressDialogButton(1);
  }
  double sliderValue(std::string_view key) {
    return dynamic_cast<platform::PSSliderTableCell&>(*panel.row(key).cell()).value();
  }
  std::string swatchOf(std::string_view label) {
    // A group may have the same name.
    for (const auto& row : panel.host.topList()->specifiers()) {
      const auto* cell = dynamic_cast<const cells::KVQuellarColorPreviewTableCell*>(row->cell().get());
      if (!cell || row->name() != label) continue;
      const auto& swatch = cell->swatch();
      return hexString(swatch.colorAt(swatch.pixelWidth / 2, swatch.pixelHeight / 2));
    }
    return "no such row";
  }

  /// Every switch of a list of keys is off, and set on it writes its key alone and gives these posts and nothing else.
  void expectPlainSwitches(const std::vector<std::string>& keys, const Lines& posts) {
    for (const std::string& key : keys) {
      panel.preferences.domains.clear();
      open();
      EXPECT_EQ(frame::shownValue(panel.row(key)), platform::Value(0)) << key;
      panel.set(key, true);
      EXPECT_EQ(panel.events(), joined({{write(R"({")" + key + R"(":true})")}, posts})) << key;
      panel.set(key, false);
      EXPECT_EQ(panel.events(), joined({{write(R"({")" + key + R"(":false})")}, posts})) << key;
      EXPECT_TRUE(panel.host.queue().empty()) << key;
      back();
      panel.events();
    }
  }

 private:
  std::string className_;
  std::string defaultsKey_;
};

}  // namespace quellar::tests
