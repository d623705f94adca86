// SPDX-License-Identifier: MIT
#include "platform/notification_center.h"

#include <algorithm>

namespace quellar::platform {

namespace {

bool same(const std::weak_ptr<const void>& left, const std::weak_ptr<const void>& right) {
  return !left.owner_before(right) && !right.owner_before(left);
}

}  // namespace

void NotificationCenter::addObserver(const std::weak_ptr<const void>& observer, std::string_view name,
                                     Handler handler) {
  observations_.push_back(std::make_shared<Observation>(Observation{observer, std::string(name), std::move(handler)}));
}

void NotificationCenter::removeObserver(const std::weak_ptr<const void>& observer) {
  std::erase_if(observations_, [&](const auto& observation) { return same(observation->observer, observer); });
}

void NotificationCenter::postNotification(const Notification& notification) {
  if (tap_) tap_(notification);
  std::erase_if(observations_, [](const auto& observation) { return observation->observer.expired(); });
  const std::vector<std::shared_ptr<Observation>> observations = observations_;
  for (const auto& observation : observations) {
    const bool stillThere = std::ranges::find(observations_, observation) != observations_.end();
    if (!stillThere || observation->name != notification.name) continue;
    if (const auto alive = observation->observer.lock()) observation->handler(notification);
  }
}

}  // namespace quellar::platform
