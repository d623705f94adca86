// SPDX-License-Identifier: MIT
#include "host/window/live_changes.h"

#include <QAccessible>
#include <QMetaObject>
#include <algorithm>

namespace quellar::host::window {

namespace {

// A row may be found as one object, as several, or by what is typed in alone.
void tellOfAll(QQuickItem& item, QAccessible::Event event) {
  QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&item);
  QAccessibleInterface* parent = interface && interface->isValid() ? interface->parent() : nullptr;
  if (parent && parent->indexOfChild(interface) >= 0) {
    QAccessibleEvent told(&item, event);
    QAccessible::updateAccessibility(&told);
  }
  const auto children = item.childItems();
  for (QQuickItem* child : children) tellOfAll(*child, event);
}

}  // namespace

void tellShown(QObject* item, bool shown) {
  if (!item) return;
  QAccessibleEvent event(item, shown ? QAccessible::ObjectShow : QAccessible::ObjectHide);
  QAccessible::updateAccessibility(&event);
}

void tellQuietly([[maybe_unused]] QObject* item, [[maybe_unused]] const QString& text) {
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
  if (!item) return;
  QAccessibleAnnouncementEvent event(item, text);
  event.setPoliteness(QAccessible::AnnouncementPoliteness::Polite);
  QAccessible::updateAccessibility(&event);
#endif
}

LiveRows::LiveRows(QQuickItem& list, const QAbstractItemModel& model) : QObject(&list), list_(list) {
  connect(&model, &QAbstractItemModel::rowsInserted, this,
          [this, &model](const QModelIndex& parent, int first, int last) {
            if (!QAccessible::isActive()) return;
            for (int row = first; row <= last; ++row) coming_.emplace_back(model.index(row, 0, parent));
          });
  connect(&model, &QAbstractItemModel::rowsAboutToBeRemoved, this, &LiveRows::tellLeaving);
}

void LiveRows::tellNew() {
  std::ranges::sort(coming_, {}, &QPersistentModelIndex::row);
  std::erase_if(coming_, [this](const QPersistentModelIndex& row) {
    if (!row.isValid()) return true;
    QQuickItem* const item = itemAt(row.row());
    if (item) tellOfAll(*item, QAccessible::ObjectCreated);
    return item != nullptr;
  });
}

void LiveRows::tellLeaving(const QModelIndex& /*parent*/, int first, int last) {
  if (!QAccessible::isActive()) return;
  for (int row = first; row <= last; ++row) {
    QQuickItem* const item = itemAt(row);
    if (!item) continue;
    tellOfAll(*item, QAccessible::ObjectHide);
    tellOfAll(*item, QAccessible::ObjectDestroyed);
  }
}

QQuickItem* LiveRows::itemAt(int row) const {
  QQuickItem* item = nullptr;
  QMetaObject::invokeMethod(&list_, "itemAtIndex", Q_RETURN_ARG(QQuickItem*, item), Q_ARG(int, row));
  return item;
}

}  // namespace quellar::host::window
