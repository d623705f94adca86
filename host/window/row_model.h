// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractListModel>
#include <QColor>
#include <QPersistentModelIndex>
#include <QString>
#include <cstddef>
#include <string>
#include <vector>

#include "platform/list_controller.h"

namespace quellar::host::window {

/// One place of the list as the window draws it: a row of the page, or the footer of a group, which stands under the
/// group's last row.
struct ShownRow {
  /// What places of the list before and after a change are matched by: kind and identifier, or kind and label where the
  /// row has no identifier.
  std::string key;
  QString kind;
  QString label;
  QString identifier;
  /// Address of the icon's image, "" for none.
  QString icon;
  /// Some row of the group has an icon, so that the labels of all keep room for one.
  bool iconColumn = false;
  bool checked = false;
  bool enabled = true;
  /// The group's footer, on its title; it describes the group to a screen reader.
  QString footer;
  QString text;
  QString placeholder;
  bool editing = false;
  bool first = false;
  bool last = false;
  QColor titleColor;
  QColor tint;
  /// The colour of a colour row's swatch, as it is drawn.
  QColor swatch;
  /// The row's place in the page's own list.
  std::size_t place = 0;

  bool operator==(const ShownRow&) const = default;
};

/// The rows of one page for the view: a flat list that follows the page's own by small steps, so that what the view
/// keeps for a row (its place, focus, a held control) survives when the page builds its rows anew. What the user does
/// goes to the page's row operations.
class RowModel final : public QAbstractListModel, public platform::ListObserver {
  Q_OBJECT
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(bool animated READ animated NOTIFY animatedChanged)

 public:
  explicit RowModel(QObject* parent = nullptr) : QAbstractListModel(parent) {}
  ~RowModel() override;

  /// Shows the rows of a page and observes it until `detach`.
  void attach(platform::PSListController& page);
  /// Stops following the page; the rows stay as they are, for a page that slides away.
  void detach();
  /// Reads all rows again.
  void refresh() { follow(false); }

  [[nodiscard]] const std::vector<ShownRow>& rows() const { return rows_; }
  [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
  /// Whether the page asked for the latest change of the rows to be animated.
  [[nodiscard]] bool animated() const { return animated_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  /// The row of an identifier, its first place; -1 where no row has it.
  Q_INVOKABLE int indexOf(const QString& identifier) const;
  /// The kind of a row ("switch"); "" where there is none.
  Q_INVOKABLE QString kindAt(int index) const;
  /// The next row from `from` in direction `step` (1 or -1) that can have the focus; -1 where there is none.
  Q_INVOKABLE int nextFocusable(int from, int step) const;

  /// What the user does with a row; the calls do nothing for a disabled row. `activate` is what a tap does: a switch
  /// changes over, any other row is tapped.
  Q_INVOKABLE void activate(int index);
  /// The text row at a place takes the focus, is typed in and loses the focus.
  Q_INVOKABLE void beginEditing(int index);
  Q_INVOKABLE void setEditingText(int index, const QString& text);
  Q_INVOKABLE void endEditing(int index);

  void rowsInserted(platform::PSListController& page, std::string_view afterSpecifierID, std::size_t at,
                    std::size_t count, bool animated) override;
  void rowsRemoved(platform::PSListController& page, std::size_t at, const platform::Specifiers& rows,
                   bool animated) override;
  void rowReloaded(platform::PSListController& page, platform::PSSpecifier& row) override;
  void specifiersReloaded(platform::PSListController& page) override;
  void pageReloaded(platform::PSListController& page) override;
  void valuesChanged(platform::PSListController& page) override;

 signals:
  void countChanged();
  void animatedChanged();

 private:
  void follow(bool animated);
  void removeUnmatched(const std::vector<bool>& kept);
  void insertUnmatched(const std::vector<ShownRow>& fresh, const std::vector<bool>& matched);
  [[nodiscard]] platform::PSSpecifier::Pointer specifierAt(int index) const;

  platform::PSListController* page_ = nullptr;
  std::vector<ShownRow> rows_;
  /// The place that edits. A row object may be listed twice, so the row alone does not tell.
  QPersistentModelIndex editing_;
  bool animated_ = false;
};

}  // namespace quellar::host::window
