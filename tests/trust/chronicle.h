// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/value.h"

namespace quellar::tests {

/// What programs were asked to store, and what they said about it, as a judge of what is found later.
///
/// Times are counts of anything that grows. A value may be found once it was begun, and must be found, or one that was
/// begun later, once it was acknowledged.
class Chronicle {
 public:
  /// A key of a page's dictionary; the page is empty for a key of the domain itself.
  struct Place {
    std::string page;
    std::string key;
    auto operator<=>(const Place&) const = default;
  };

  /// What was in the domain from the start and what nobody touches.
  void beginWith(const platform::Dictionary& domain);

  /// Gives the number of the attempt, for acknowledge().
  std::size_t begin(const Place& place, const platform::Value& value, std::size_t time);
  void acknowledge(const Place& place, std::size_t attempt, std::size_t time);

  /// Whether nothing had to be there at a time.
  [[nodiscard]] bool isEmptyAt(std::size_t time) const;

  /// How many values were acknowledged.
  [[nodiscard]] std::size_t acknowledged() const { return acknowledged_; }

  /// What is wrong with a domain that was found as it was at a time; "" for nothing. No domain is a fault too.
  [[nodiscard]] std::string faults(const std::optional<platform::Dictionary>& found, std::size_t time) const;

 private:
  struct Attempt {
    platform::Value value;
    std::size_t begun = 0;
    std::optional<std::size_t> acknowledged;
  };
  void note(const Place& place, const platform::Value& value);

  std::map<Place, std::vector<Attempt>> attempts_;
  std::size_t acknowledged_ = 0;
};

}  // namespace quellar::tests
