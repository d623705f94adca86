// SPDX-License-Identifier: MIT
#include "platform/notification_center.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quellar::tests {
namespace notification_center_test {

using platform::Notification;
using platform::NotificationCenter;
using testing::ElementsAre;

class NotificationCenterTest : public testing::Test {
 protected:
  void observe(const std::shared_ptr<int>& observer, const std::string& name, const std::string& mark) {
    center.addObserver(observer, name, [this, mark](const Notification&) { heard.push_back(mark); });
  }
  NotificationCenter center;
  std::vector<std::string> heard;
  std::shared_ptr<int> first = std::make_shared<int>();
  std::shared_ptr<int> second = std::make_shared<int>();
};

TEST_F(NotificationCenterTest, CallsTheObserversOfANameInTheOrderOfTheirRegistration) {
  observe(second, "a", "second");
  observe(first, "a", "first");
  observe(first, "b", "other");
  center.postNotification({"a", {}, std::nullopt});
  EXPECT_THAT(heard, ElementsAre("second", "first"));
}

TEST_F(NotificationCenterTest, LeavesObserversThatAreGoneAlone) {
  observe(first, "a", "first");
  observe(second, "a", "second");
  first.reset();
  center.postNotification({"a", {}, std::nullopt});
  EXPECT_THAT(heard, ElementsAre("second"));
}

TEST_F(NotificationCenterTest, EndsAllObservationsOfARemovedObserver) {
  observe(first, "a", "a");
  observe(first, "b", "b");
  observe(second, "a", "second");
  center.removeObserver(first);
  center.postNotification({"a", {}, std::nullopt});
  center.postNotification({"b", {}, std::nullopt});
  EXPECT_THAT(heard, ElementsAre("second"));
}

TEST_F(NotificationCenterTest, LetsHandlersAddAndRemoveObservers) {
  center.addObserver(first, "a", [this](const Notification&) {
    heard.emplace_back("first");
    center.removeObserver(second);
    observe(first, "a", "late");
  });
  observe(second, "a", "second");
  center.postNotification({"a", {}, std::nullopt});
  EXPECT_THAT(heard, ElementsAre("first"));
}

TEST_F(NotificationCenterTest, HandsOverObjectAndUserInfoAndTellsTheTapFirst) {
  center.setTap([this](const Notification& notification) { heard.push_back("tap " + notification.name); });
  center.addObserver(first, "a", [this](const Notification& notification) {
    heard.push_back(std::get<std::string>(notification.object));
    heard.push_back(*platform::find(*notification.userInfo, "k")->as<std::string>());
  });
  center.postNotification({"a", std::string("object"), platform::Dictionary{{"k", "v"}}});
  EXPECT_THAT(heard, ElementsAre("tap a", "object", "v"));
}

}  // namespace notification_center_test
}  // namespace quellar::tests
