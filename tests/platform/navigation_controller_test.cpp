// SPDX-License-Identifier: MIT
#include "platform/navigation_controller.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/memory_services.h"

namespace quellar::tests {
namespace navigation_controller_test {

using namespace std::chrono_literals;
using platform::Dialog;
using platform::DialogKind;
using platform::ViewController;
using testing::ElementsAre;
using testing::IsEmpty;

class Screen : public ViewController {
 public:
  Screen(platform::Platform& platform, std::string name, std::vector<std::string>& calls)
      : ViewController(platform, std::move(name)), calls_(calls) {}
  ~Screen() override { calls_.push_back(className() + " gone"); }
  Screen(const Screen&) = delete;
  Screen& operator=(const Screen&) = delete;
  void loadView() override { calls_.push_back(className() + " loadView"); }
  void viewDidLoad() override { calls_.push_back(className() + " viewDidLoad"); }
  void viewWillAppear() override { calls_.push_back(className() + " viewWillAppear"); }
  void viewDidAppear() override { calls_.push_back(className() + " viewDidAppear"); }
  void viewWillDisappear() override { calls_.push_back(className() + " viewWillDisappear"); }
  void endEditing() override { calls_.push_back(className() + " endEditing"); }

 private:
  std::vector<std::string>& calls_;
};

class NavigationTest : public testing::Test {
 protected:
  std::vector<std::string> calls;
  Panel panel;
  platform::NavigationController& navigation = panel.host.navigation();

  void push(const std::string& name) {
    navigation.pushViewController(std::make_shared<Screen>(panel.host.platform(), name, calls));
  }

 public:
  ~NavigationTest() override {
    while (navigation.popViewController(false)) {
    }
  }
};

TEST_F(NavigationTest, LoadsAScreenThatIsPushedAndWakesTheOneBelowWhenItIsPopped) {
  push("A");
  EXPECT_THAT(calls, ElementsAre("A loadView", "A viewDidLoad", "A viewWillAppear", "A viewDidAppear"));
  calls.clear();
  push("B");
  EXPECT_THAT(calls, ElementsAre("A endEditing", "A viewWillDisappear", "B loadView", "B viewDidLoad",
                                 "B viewWillAppear", "B viewDidAppear"));
  calls.clear();
  navigation.popViewController(true);
  EXPECT_THAT(calls,
              ElementsAre("B endEditing", "B viewWillDisappear", "A viewWillAppear", "A viewDidAppear", "B gone"));
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"push","page":"A","t":0.0})", R"({"event":"push","page":"B","t":0.0})",
                          R"({"event":"pop","page":"B","animated":true,"t":0.0})"));
}

TEST_F(NavigationTest, PopsNothingOffAnEmptyStack) {
  EXPECT_EQ(navigation.popViewController(true), nullptr);
  EXPECT_THAT(panel.events(), IsEmpty());
}

TEST_F(NavigationTest, DismissesADialogBeforeItsButtonsHandlerRuns) {
  Dialog dialog;
  dialog.title = "T";
  dialog.buttons = {{"Go", platform::ButtonStyle::destructive, [&](const std::string& text) {
                       calls.push_back("go with '" + text + "'");
                       EXPECT_FALSE(navigation.dialog());
                     }}};
  navigation.present(dialog);
  panel.events();
  navigation.pressDialogButton(0);
  EXPECT_THAT(calls, ElementsAre("go with ''"));
  EXPECT_THAT(panel.events(), ElementsAre(R"({"event":"dismiss","t":0.0})"));
}

TEST_F(NavigationTest, RaisesTheKeyboardForADialogWithAFieldAndLowersItAfterTheHandler) {
  Dialog dialog;
  dialog.text = "";
  dialog.buttons = {{"Enter", platform::ButtonStyle::plain, [&](const std::string& text) { calls.push_back(text); }}};
  navigation.present(dialog);
  EXPECT_TRUE(navigation.keyboardVisible());
  navigation.setDialogText("12");
  EXPECT_EQ(navigation.dialog()->text, "12");
  panel.events();
  navigation.pressDialogButton(0);
  EXPECT_THAT(calls, ElementsAre("12"));
  EXPECT_THAT(panel.events(),
              ElementsAre(R"({"event":"dismiss","t":0.0})", R"({"event":"keyboard","visible":false,"t":0.0})"));
}

TEST_F(NavigationTest, KeepsTheKeyboardUpWhereAHandlerShowsAnotherField) {
  Dialog again;
  again.text = "";
  Dialog dialog = again;
  dialog.buttons = {{"More", platform::ButtonStyle::plain, [&](const std::string&) { navigation.present(again); }}};
  navigation.present(dialog);
  navigation.pressDialogButton(0);
  EXPECT_TRUE(navigation.keyboardVisible());
  EXPECT_TRUE(navigation.dialog());
}

TEST_F(NavigationTest, CompletesAColourDialogAfterItHasGone) {
  Dialog dialog;
  dialog.kind = DialogKind::color;
  dialog.color = platform::ColorChoice{{1, 2, 3, 1}, false, [&](const platform::Color& color) {
                                         calls.push_back(hexString(color));
                                         EXPECT_FALSE(navigation.dialog());
                                       }};
  navigation.present(dialog);
  navigation.completeColorDialog({255, 10, 0, 1});
  EXPECT_THAT(calls, ElementsAre("#ff0a00"));
}

TEST_F(NavigationTest, PostsTheKeyboardNotificationsOnceAChange) {
  const auto observer = std::make_shared<int>();
  auto& center = panel.host.platform().notifications;
  for (const auto name : {platform::UIKeyboardWillShowNotification, platform::UIKeyboardWillHideNotification}) {
    center.addObserver(observer, name, [&](const auto& notification) { calls.push_back(notification.name); });
  }
  navigation.setKeyboardVisible(true);
  navigation.setKeyboardVisible(true);
  navigation.setKeyboardVisible(false);
  EXPECT_THAT(calls, ElementsAre("UIKeyboardWillShowNotification", "UIKeyboardWillHideNotification"));
}

TEST(VirtualQueue, RunsWorkInTheOrderOfItsTimeAndThenOfItsCalls) {
  host::headless::VirtualQueue queue;
  std::vector<std::string> ran;
  queue.after(200ms, [&] { ran.emplace_back("late"); });
  queue.after(100ms, [&] {
    ran.emplace_back("first");
    queue.after(50ms, [&] { ran.emplace_back("nested"); });
    queue.after(-1s, [&] { ran.emplace_back("at once"); });
  });
  queue.after(100ms, [&] { ran.emplace_back("second"); });
  queue.advance(99ms);
  EXPECT_THAT(ran, IsEmpty());
  queue.advance(101ms);
  EXPECT_THAT(ran, ElementsAre("first", "second", "at once", "nested", "late"));
  EXPECT_EQ(queue.now(), 200ms);
  queue.advance(std::chrono::nanoseconds::max());
  EXPECT_EQ(queue.now(), std::chrono::nanoseconds::max());
}

}  // namespace navigation_controller_test
}  // namespace quellar::tests
