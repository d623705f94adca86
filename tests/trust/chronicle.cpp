// SPDX-License-Identifier: MIT
#include "chronicle.h"

#include <algorithm>

#include "stranger.h"

namespace quellar::tests {

using platform::Dictionary;
using platform::Value;

void Chronicle::beginWith(const Dictionary& domain) {
  for (const auto& [page, entries] : domain) {
    const Dictionary* const keys = entries.as<Dictionary>();
    if (keys == nullptr) {
      note({"", page}, entries);
      continue;
    }
    for (const auto& [key, value] : *keys) note({page, key}, value);
  }
}

void Chronicle::note(const Place& place, const Value& value) {
  attempts_[place] = {{value, 0, 0}};
}

std::size_t Chronicle::begin(const Place& place, const Value& value, std::size_t time) {
  attempts_[place].push_back({value, time, std::nullopt});
  return attempts_[place].size() - 1;
}

void Chronicle::acknowledge(const Place& place, std::size_t attempt, std::size_t time) {
  attempts_.at(place).at(attempt).acknowledged = time;
  ++acknowledged_;
}

bool Chronicle::isEmptyAt(std::size_t time) const {
  return std::ranges::none_of(attempts_, [&](const auto& each) {
    return std::ranges::any_of(
        each.second, [&](const Attempt& attempt) { return attempt.acknowledged && *attempt.acknowledged <= time; });
  });
}

std::string Chronicle::faults(const std::optional<Dictionary>& found, std::size_t time) const {
  if (!found) return "there is no whole property list; ";
  std::string faults;
  for (const auto& [place, attempts] : attempts_) {
    const std::string name = place.page + "/" + place.key;
    const Value* const alone = place.page.empty() ? platform::find(*found, place.key) : nullptr;
    const std::optional<Value> value = place.page.empty() ? (alone != nullptr ? std::optional(*alone) : std::nullopt)
                                                          : pageEntry(found, place.page, place.key);
    std::size_t last = attempts.size();
    while (last > 0 && (!attempts[last - 1].acknowledged || *attempts[last - 1].acknowledged > time)) --last;
    const bool mayBeMissing = last == 0;
    const auto first = attempts.begin() + static_cast<std::ptrdiff_t>(mayBeMissing ? 0 : last - 1);
    const bool isAllowed =
        value ? std::any_of(first, attempts.end(),
                            [&](const Attempt& each) { return each.begun <= time && each.value == *value; })
              : mayBeMissing;
    if (isAllowed) continue;
    if (!value) {
      faults += name + " is gone; ";
    } else {
      faults += name + " is not the value that was acknowledged; ";
    }
  }
  return faults;
}

}  // namespace quellar::tests
