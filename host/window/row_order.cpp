// SPDX-License-Identifier: MIT
#include "host/window/row_order.h"

#include <QVariant>
#include <algorithm>
#include <utility>
#include <vector>

namespace quellar::host::window {

void RowOrder::restore(QQuickItem* holder) const {
  if (!holder) return;
  std::vector<std::pair<int, QQuickItem*>> rows;
  const auto children = holder->childItems();
  for (QQuickItem* item : children) {
    bool isNumber = false;
    const int index = item->property("index").toInt(&isNumber);
    // A row that fades away has lost its place.
    if (isNumber && index >= 0) rows.emplace_back(index, item);
  }
  const auto place = [](const auto& row) { return row.first; };
  if (std::ranges::is_sorted(rows, {}, place)) return;
  std::ranges::stable_sort(rows, {}, place);
  for (std::size_t row = 1; row < rows.size(); ++row) rows[row].second->stackAfter(rows[row - 1].second);
}

}  // namespace quellar::host::window
