// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractItemModel>
#include <QObject>
#include <QPersistentModelIndex>
#include <QQuickItem>
#include <QString>
#include <vector>

namespace quellar::host::window {

/// Tells assistive technology that an item has come into sight, or gone out of it. The toolkit says that one comes for
/// items alone that a screen reader could find while they were hidden, which ours never can.
void tellShown(QObject* item, bool shown);

/// Has a screen reader say a text once it has nothing else to say. Before version 6.8 the toolkit can't; the rows' own
/// changes of state are told by every version.
void tellQuietly(QObject* item, const QString& text);

/// Tells assistive technology of the rows that come to a list, or go, while it is shown. The toolkit says nothing of a
/// row that goes, and never that a list has other rows than before.
class LiveRows final : public QObject {
  Q_OBJECT

 public:
  /// Takes a list view and the model that it shows; belongs to the list.
  LiveRows(QQuickItem& list, const QAbstractItemModel& model);

  /// Tells of the rows that have come since the last call, in their order; to be called when they have their places.
  void tellNew();

 private:
  void tellLeaving(const QModelIndex& parent, int first, int last);
  [[nodiscard]] QQuickItem* itemAt(int row) const;

  QQuickItem& list_;
  /// Rows of the model that have no item yet, or whose item is not in its place.
  std::vector<QPersistentModelIndex> coming_;
};

}  // namespace quellar::host::window
