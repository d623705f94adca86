// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractListModel>
#include <QColor>
#include <QPersistentModelIndex>
#include <QString>
#include <QStringList>
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
  /// The title of the row's group, where the label alone does not tell the row from others.
  QString group;
  QString identifier;
  /// The class of the page that the row opens, "" for none.
  QString opens;
  /// Address of the icon's image, "" for none.
  QString icon;
  /// Some row of the group has an icon, so that the labels of all keep room for one.
  bool iconColumn = false;
  /// A switch is on; any other row carries a check mark.
  bool checked = false;
  bool enabled = true;
  /// The group's footer, on its title; it describes the group to a screen reader.
  QString footer;
  /// The text of an entry, the number beside a slider or a stepper, or the title of a picker's choice.
  QString text;
  /// The colour of a stepper's number.
  QColor textColor;
  QString placeholder;
  bool editing = false;
  bool first = false;
  bool last = false;
  QColor titleColor;
  QColor tint;
  /// The rest of a slider's track; invalid where the cell sets none.
  QColor restTint;
  QString footnote;
  QColor footnoteColor;
  /// Where a slider's knob or a stepper stands, between which bounds, and how far one step of it goes.
  double level = 0;
  double minimum = 0;
  double maximum = 0;
  double step = 1;
  /// Whether a step down, or up, moves the stepper.
  bool canDecrease = false;
  bool canIncrease = false;
  bool autorepeat = false;
  /// The titles of a segment row, and which one is chosen; -1 for none.
  QStringList titles;
  int chosen = -1;
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
  /// The row at a place of the page's own list; -1 where there is none.
  [[nodiscard]] int indexOfPlace(std::size_t place) const;
  /// The row that opens a page class; -1 where none does.
  Q_INVOKABLE int indexOpening(const QString& className) const;
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

  /// A slider is let go at a value, or a stepper moved to one; it is held within the bounds.
  Q_INVOKABLE void moveTo(int index, double value);
  /// Steps a slider or a stepper, up (positive) or down (negative). At the bound nothing is written.
  Q_INVOKABLE void step(int index, int steps);
  /// The value nearest to `value` that a slider shows in full, within its bounds.
  Q_INVOKABLE double shownValueNear(int index, double value) const;
  /// A value as the slider would show it.
  Q_INVOKABLE QString valueText(int index, double value) const;
  /// Opens the entry dialog of a slider with typed entry; `typed` is what its field starts with.
  Q_INVOKABLE void enterValue(int index, const QString& typed = {});
  /// Taps a choice of a segment row; a tap on the chosen one does nothing.
  Q_INVOKABLE void choose(int index, int choice);

  void rowsInserted(platform::PSListController& page, std::string_view afterSpecifierID, std::size_t at,
                    std::size_t count, bool animated) override;
  void rowsRemoved(platform::PSListController& page, std::size_t at, const platform::Specifiers& rows,
                   bool animated) override;
  void rowReloaded(platform::PSListController& page, platform::PSSpecifier& row) override;
  void specifiersReloaded(platform::PSListController& page) override;
  void pageReloaded(platform::PSListController& page) override;
  void valuesChanged(platform::PSListController& page) override;

 signals:
  /// A row is about to be tapped, which may show another page.
  void aboutToBeTapped();
  void countChanged();
  void animatedChanged();

 private:
  void follow(bool animated);
  void removeUnmatched(const std::vector<bool>& kept);
  void insertUnmatched(const std::vector<ShownRow>& fresh, const std::vector<bool>& matched);
  [[nodiscard]] platform::PSSpecifier::Pointer specifierAt(int index) const;
  /// The row at a place once the text that was being edited has been committed, which may have put another one there.
  [[nodiscard]] platform::PSSpecifier::Pointer specifierAfterEditing(int index);

  platform::PSListController* page_ = nullptr;
  std::vector<ShownRow> rows_;
  /// The place that edits. A row object may be listed twice, so the row alone does not tell.
  QPersistentModelIndex editing_;
  bool animated_ = false;
};

}  // namespace quellar::host::window
