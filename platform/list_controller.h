// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/cell.h"
#include "platform/specifier.h"
#include "platform/view_controller.h"

namespace quellar::platform {

class PSListController;

/// Is told how a page's rows change, after each change. A page has one.
class ListObserver {
 public:
  virtual ~ListObserver() = default;

  /// `count` rows stand at `at` now, inserted after the row with that identifier.
  virtual void rowsInserted(PSListController& page, std::string_view afterSpecifierID, std::size_t at,
                            std::size_t count, bool animated) = 0;
  /// These rows stood at `at`.
  virtual void rowsRemoved(PSListController& page, std::size_t at, const Specifiers& rows, bool animated) = 0;
  /// One row has a new cell.
  virtual void rowReloaded(PSListController& page, PSSpecifier& row) = 0;
  /// The list was built anew, rows and cells.
  virtual void specifiersReloaded(PSListController& page) = 0;
  /// The rows are the same; their cells are new.
  virtual void pageReloaded(PSListController& page) = 0;
  /// What rows show has changed: values, the text that is being edited, check marks. Rows and cells are the same.
  virtual void valuesChanged(PSListController& page) = 0;
};

/// A page that is a list of rows: it builds them once, shows them, moves blocks of them in and out, and hands what the
/// user does to their handlers.
class PSListController : public ViewController {
 public:
  using ViewController::ViewController;

  void setObserver(ListObserver* observer) { observer_ = observer; }

  /// The row that was tapped to open this page; nullptr where there was none.
  [[nodiscard]] PSSpecifier* specifier() const { return specifier_.get(); }
  /// Takes the row that opens this page; its name becomes the title.
  void setSpecifier(PSSpecifier::Pointer specifier);

  /// The rows in display order, group rows included. They are built on the first request; later ones return the same
  /// list.
  const Specifiers& specifiers();

  /// Builds the rows. A page overrides it.
  virtual Specifiers makeSpecifiers() { return {}; }

  /// Rows of a row file ("QuellarMusic") of the settings bundle, with this page as their target. An item that can't be
  /// used is skipped and reported; a missing file gives no rows.
  Specifiers loadSpecifiersFromPlistName(std::string_view name, std::string_view bundlePath);

  /// What runs for the action that a row file names by its selector; nothing where this page has no such action.
  [[nodiscard]] virtual std::optional<Action> actionForSelector(std::string_view selector);

  [[nodiscard]] PSSpecifier::Pointer specifierForID(std::string_view identifier);
  /// The place of a row object, its first where it stands twice; nothing where it is not listed.
  [[nodiscard]] std::optional<std::size_t> indexOfSpecifier(const PSSpecifier& specifier);
  /// The section of the row at a place. Each group row opens a section; rows before the first one are section 0.
  [[nodiscard]] std::size_t sectionOfIndex(std::size_t index);

  /// Inserts rows as one run after the first row with the identifier. Does nothing where no listed row has it or where
  /// the very run stands there already; a row that is listed elsewhere is listed twice.
  void insertContiguousSpecifiers(const Specifiers& block, std::string_view afterSpecifierID, bool animated);
  void insertSpecifier(const PSSpecifier::Pointer& row, std::string_view afterSpecifierID, bool animated);
  /// Removes each row of the block at its first place; rows that are not listed are passed over.
  void removeContiguousSpecifiers(const Specifiers& block, bool animated);
  void removeSpecifier(const PSSpecifier::Pointer& row, bool animated);

  /// Builds the row list anew, with new cells.
  void reloadSpecifiers();
  /// Makes all cells anew; the rows stay.
  void reload();
  /// Makes the cell of one row anew; does nothing where it is not listed.
  void reloadSpecifier(PSSpecifier& row);

  /// The platform's own handlers: the value lives in the domain that the row's "defaults" property names, under its
  /// key. A row without that property reads nothing and writes nothing.
  virtual void setPreferenceValue(const std::optional<Value>& value, PSSpecifier& specifier);
  [[nodiscard]] virtual std::optional<Value> readPreferenceValue(PSSpecifier& specifier);

  /// The row at a place was tapped: a link opens its page, a button runs its action. Pages override it.
  virtual void didSelectRowAtIndex(std::size_t index);
  /// Whether the row at a place carries a check mark. Pages override it.
  [[nodiscard]] virtual bool showsCheckmark(std::size_t /*index*/) { return false; }
  /// Makes and dresses the cell of a row. Pages override it.
  virtual std::shared_ptr<PSTableCell> cellForRow(PSSpecifier& row);

  /// What the user does with a control, and with the text rows. A text row that has the focus commits and loses it
  /// before another row is used.
  void userSetsValue(PSSpecifier& row, const Value& value);
  /// A slider is let go: its knob stands at the value, held within the bounds, which is stored as a real.
  void userMovesSlider(PSSpecifier& row, double value);
  void userTapsRow(std::size_t index);
  void beginEditing(PSSpecifier& row);
  void setEditingText(std::string text);
  void endEditing() override;
  /// The text row that has the focus, or nullptr.
  [[nodiscard]] PSSpecifier* editedSpecifier() const { return editing_ ? editing_->row.get() : nullptr; }
  [[nodiscard]] const std::string& editingText() const { return editing_->text; }

  void viewDidAppear() override;

  /// On-tint of the switches of this page, as the page's appearance sets it.
  std::optional<Color> switchOnTintColor;

 protected:
  /// Tells the observer that what rows show has changed.
  void notifyValuesChanged();
  /// Makes the cells of rows anew and tells nobody.
  void layOutAnew(const Specifiers& rows);

 private:
  struct Editing {
    PSSpecifier::Pointer row;
    std::string text;
  };

  PSSpecifier::Pointer makeRowOfItem(const Dictionary& item, std::string_view bundlePath,
                                     const std::function<void(const std::string&)>& report);
  void layOut(PSSpecifier& row);
  void endEditingOfUnlistedRow();

  ListObserver* observer_ = nullptr;
  PSSpecifier::Pointer specifier_;
  std::optional<Specifiers> specifiers_;
  std::optional<Editing> editing_;
};

/// The list that a picker row opens: one row a choice, with a check mark at the chosen one.
class PSListItemsController : public PSListController {
 public:
  using PSListController::PSListController;

  Specifiers makeSpecifiers() override;
  void didSelectRowAtIndex(std::size_t index) override;
  [[nodiscard]] bool showsCheckmark(std::size_t index) override { return checked_ == index; }
  /// The place of the row that carries the check mark; nothing where no choice is the stored value.
  [[nodiscard]] std::optional<std::size_t> checkedIndex() const { return checked_; }

 private:
  std::optional<std::size_t> checked_;
};

}  // namespace quellar::platform
