// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>

#include "accessible_window.h"
#include "host/linux/file_preferences.h"
#include "ten_settings.h"

namespace quellar::tests {
namespace accessible_walkthrough_test {

using platform::Dictionary;
using platform::Value;

/// Finds everything by role and name in the program's tree, and acts by actions, values and the focus alone.
class WalkthroughByScreenReader : public testing::Test, protected TenSettings {
 protected:
  static void SetUpTestSuite() { AccessibleDesktop::shared(); }

  void use(const std::string& label) override {
    std::optional<Accessible> found;
    ASSERT_TRUE(eventually([&] { return (found = control(label)).has_value(); })) << label;
    EXPECT_TRUE(found->act(found->role() == "check box" ? "Toggle" : "Press")) << label;
  }
  void enter(const std::string& label, const std::string& text) override {
    ASSERT_TRUE(window_.find("entry", label).grabFocus());
    (void)window_.find("push button", "Save");
    window_.type(text);
    ASSERT_TRUE(eventually([&] { return window_.find("entry", label).text() == text; }));
    EXPECT_TRUE(window_.find("push button", "Save").act("Press"));
  }
  void increase(const std::string& label) override { EXPECT_TRUE(window_.find("spin button", label).act("Increase")); }
  void raise(const std::string& label) override {
    constexpr double kWanted = 1.5;
    EXPECT_TRUE(window_.find("slider", label).setValue(kWanted));
    EXPECT_TRUE(eventually([&] { return window_.find("slider", label).value() == kWanted; }));
  }
  void choose(const std::string& label, const std::string& choice) override {
    (void)window_.find("radio button", choice);
    const auto objects = window_.objects();
    const auto row = std::ranges::find_if(objects, [&](const Accessible& each) { return each.name() == label; });
    const auto found = std::find_if(row, objects.end(), [&](const Accessible& each) { return each.name() == choice; });
    ASSERT_NE(found, objects.end()) << label;
    EXPECT_TRUE(found->act("Press"));
  }
  void pickAnotherShade() override {
    EXPECT_TRUE(window_.find("slider", "Saturation").setValue(0.5));
    use("Choose");
  }
  void pickPreview(const std::string& label) override { EXPECT_TRUE(window_.find("radio button", label).act("Press")); }
  // The button that leads back is the first one of the page.
  void goBack() override {
    const std::string left = heading();
    for (const Accessible& each : window_.objects()) {
      if (each.role() != "push button") continue;
      EXPECT_TRUE(each.act("Press"));
      break;
    }
    ASSERT_TRUE(eventually([&] { return heading() != left; })) << left;
  }
  bool isAtStart() override { return heading() == "Quellar"; }
  Value value(const std::string& defaultsKey, const std::string& key) override {
    const auto stored = host::linux::FilePreferences((host::linux::DeviceRoot(window_.root().path())))
                            .copyAppValue(defaultsKey, "com.vantorick.quellar2");
    const auto* values = stored ? stored->as<Dictionary>() : nullptr;
    const auto found = values ? values->find(key) : Dictionary::const_iterator();
    return values && found != values->end() ? found->second : Value("");
  }

 private:
  // The page's title.
  std::string heading() {
    std::string title;
    (void)eventually([&] {
      for (const auto& [role, name] : window_.listed()) {
        if (role == "heading") title = name;
        if (!title.empty()) return true;
      }
      return false;
    });
    return title;
  }
  // The first thing of a name that can be used.
  std::optional<Accessible> control(const std::string& name) {
    for (const Accessible& each : window_.objects()) {
      const std::string role = each.role();
      if (each.name() == name && (role == "check box" || role == "push button" || role == "radio button")) return each;
    }
    return std::nullopt;
  }

  AccessibleWindow window_;
};

TEST_F(WalkthroughByScreenReader, ChangesTenSettings) {
  change();
}

}  // namespace accessible_walkthrough_test
}  // namespace quellar::tests
