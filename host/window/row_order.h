// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QQuickItem>

namespace quellar::host::window {

/// Keeps the rows of a list in the order in which they are seen. A list view adds new rows behind all others, which a
/// screen reader would then read last and which would be drawn above the rows that make way for them.
class RowOrder final : public QObject {
  Q_OBJECT

 public:
  /// Takes the item that holds the rows; those with an "index" property are put in its order.
  Q_INVOKABLE void restore(QQuickItem* holder) const;
};

}  // namespace quellar::host::window
