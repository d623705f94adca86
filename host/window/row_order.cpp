// SPDX-License-Identifier: MIT
#include "host/window/row_order.h"

#include <QVariant>
#include <algorithm>
#include <utility>
#include <vector>

#include "host/window/live_changes.h"

namespace quellar::host::window {

namespace {

void sortRows(const QQuickItem& holder) {
  std::vector<std::pair<int, QQuickItem*>> rows;
  const auto children = holder.childItems();
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

}  // namespace

void RowOrder::restore(QQuickItem* holder) const {
  if (!holder) return;
  sortRows(*holder);
  QQuickItem* const list = holder->parentItem();
  const auto* model = list ? list->property("rows").value<QAbstractItemModel*>() : nullptr;
  if (!model) return;
  auto* live = list->findChild<LiveRows*>(QString(), Qt::FindDirectChildrenOnly);
  if (!live) live = new LiveRows(*list, *model);
  live->tellNew();
}

}  // namespace quellar::host::window
