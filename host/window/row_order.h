// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QQuickItem>

namespace quellar::host::window {

/// Keeps the rows of a list in the order in which they are seen, and tells a screen reader of new ones once they have
/// their places. A list view adds new rows behind all others, which a screen reader would then read last and which
/// would be drawn above the rows that make way for them.
class RowOrder final : public QObject {
  Q_OBJECT

 public:
  /// Takes the item of a list view that holds its rows; those with an "index" property are put in its order. The list's
  /// "rows" are the model that it shows.
  Q_INVOKABLE void restore(QQuickItem* holder) const;
};

}  // namespace quellar::host::window
