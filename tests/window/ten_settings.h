// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/value.h"

namespace quellar::tests {

/// Ten settings, found from the first page and changed as a newcomer would; docs/walkthroughs.md tells of them. By
/// which means is for those who walk to say.
class TenSettings {
 protected:
  ~TenSettings() = default;

  /// Goes through a row: follows a link, turns a switch over, taps a button, picks a choice.
  virtual void use(const std::string& label) = 0;
  virtual void enter(const std::string& label, const std::string& text) = 0;
  virtual void increase(const std::string& label) = 0;
  /// Sets a slider to half of its range beyond the middle.
  virtual void raise(const std::string& label) = 0;
  virtual void choose(const std::string& label, const std::string& choice) = 0;
  /// In the colour dialog: another shade than the one that it starts from.
  virtual void pickAnotherShade() = 0;
  /// In the grid of previews.
  virtual void pickPreview(const std::string& label) = 0;
  virtual void goBack() = 0;
  /// Whether it is the first page that is shown, once all that goes on is done.
  virtual bool isAtStart() = 0;
  /// What the store has; "" for nothing.
  virtual platform::Value value(const std::string& defaultsKey, const std::string& key) = 0;

  /// Changes all ten, from the first page and back to it each time.
  void change() {
    using platform::Value;
    visit({"Alerts"}, [this] { use("Use Dynamic Alerts"); });
    EXPECT_EQ(value("Alerts_Defaults", "userRequestsDynamicAlerts"), Value(true));
    visit({"Dock"}, [this] {
      use("Use Custom Count");
      increase("Max Icons");
      use("Use Custom Blur");
      use("Blur style");
      use("Normal");
    });
    EXPECT_EQ(value("Dock_Defaults", "dockMaxIcons"), Value(5.0));
    EXPECT_EQ(value("Dock_Defaults", "dockBackgroundStyle"), Value(12));
    visit({"Home Screen"}, [this] { use("Hide Page Dots"); });
    EXPECT_EQ(value("HomeScreen_Defaults", "hidePageDots"), Value(true));
    visit({"Icons"}, [this] {
      use("Use Custom Size");
      raise("Icon Scale");
      use("Use Custom Color");
      use("Border Color");
      pickAnotherShade();
    });
    EXPECT_NEAR(value("Icon_Defaults", "customIconScaleSize").doubleValue(), 1.5, 0.1);
    EXPECT_NE(value("Icon_Defaults", "iconBadgeBorderColor"), Value(""));
    EXPECT_NE(value("Icon_Defaults", "iconBadgeBorderColor"), Value("#ffffff"));
    visit({"Medusa"}, [this] {
      use("Use Custom Blur");
      choose("Blur Style", "Light");
    });
    EXPECT_EQ(value("Medusa_Defaults", "userStyleForSideSwitcherBlur"), Value(2));
    visit({"Notification Center"}, [this] {
      use("Blur Style");
      pickPreview("2040");
    });
    EXPECT_EQ(value("NotificationCenter_Defaults", "ncPrefferedBackdropStyle").integerValue(), 2040);
    visit({"Status Bar", "Custom Carrier Strings"}, [this] {
      use("Use Custom String");
      enter("Text:", "Mine");
    });
    EXPECT_EQ(value("StatusBar_Defaults", "userCustomCarrierText"), Value("Mine"));
    visit({"Weather"}, [this] { use("Badge Shows Temp"); });
    EXPECT_EQ(value("Weather_Defaults", "userRequestsWeatherIconBadge"), Value(true));
  }

 private:
  void visit(const std::vector<std::string>& links, const std::function<void()>& changeThere) {
    for (const std::string& link : links) use(link);
    changeThere();
    while (!isAtStart()) goBack();
  }
};

}  // namespace quellar::tests
