// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "frame/page.h"
#include "platform/specifier.h"

namespace quellar::frame {

/// A row of a page's description, and where it is.
struct RowPlace {
  const Row& row;
  /// Each row of a row file is visited by itself: `row` is the RowFile then, and this one is the row. nullptr for all
  /// other rows.
  const platform::PSSpecifier* fileRow = nullptr;
  /// Title of the group above the row, in English; "" for none.
  const std::string& group;
  /// The blocks that the row is in, from the outermost inwards.
  const std::vector<const Dependent*>& blocks;

  /// The preference key of the row's value, of a colour row its colorKey, which may be empty; nothing for a row without
  /// a value.
  [[nodiscard]] std::optional<std::string> key() const;
  /// The class of the page that the row opens; "" for none.
  [[nodiscard]] std::string opens() const;
};

/// Whether the walk reads row files. Without them it asks the device for nothing but what computed rows need.
enum class RowFiles { read, leftOut };

/// Visits every row of a page's description in display order, the rows of all blocks among them. What the visitor is
/// given is valid during the call only, but for the blocks, which live as long as the description.
void walkRows(const Page& page, const Surroundings& surroundings, const std::function<void(const RowPlace&)>& visit,
              RowFiles rowFiles = RowFiles::read);

/// The preference key of a row's value, of a colour row its colorKey, which may be empty; nothing for a row without a
/// value.
[[nodiscard]] std::optional<std::string> keyOf(const platform::PSSpecifier& row);

}  // namespace quellar::frame
