// SPDX-License-Identifier: MIT
#include "platform/list_controller.h"

#include <algorithm>
#include <utility>

#include "platform/navigation_controller.h"
#include "platform/platform.h"

namespace quellar::platform {

void PSListController::setSpecifier(PSSpecifier::Pointer specifier) {
  specifier_ = std::move(specifier);
  if (specifier_) setTitle(specifier_->name());
}

const Specifiers& PSListController::specifiers() {
  if (!specifiers_) specifiers_ = makeSpecifiers();
  return *specifiers_;
}

PSSpecifier::Pointer PSListController::specifierForID(std::string_view identifier) {
  const auto found = std::ranges::find_if(specifiers(), [&](const auto& row) {
    const auto own = row->identifier();
    return own && *own == identifier;
  });
  return found == specifiers_->end() ? nullptr : *found;
}

std::optional<std::size_t> PSListController::indexOfSpecifier(const PSSpecifier& specifier) {
  const auto found = std::ranges::find(specifiers(), &specifier, &PSSpecifier::Pointer::get);
  if (found == specifiers_->end()) return std::nullopt;
  return static_cast<std::size_t>(found - specifiers_->begin());
}

std::size_t PSListController::sectionOfIndex(std::size_t index) {
  const Specifiers& rows = specifiers();
  std::size_t groups = 0;
  for (std::size_t place = 0; place <= index && place < rows.size(); ++place) {
    if (rows[place]->cellType() == PSCellType::PSGroupCell) ++groups;
  }
  const bool startsWithGroup = !rows.empty() && rows.front()->cellType() == PSCellType::PSGroupCell;
  return startsWithGroup ? groups - 1 : groups;
}

void PSListController::insertContiguousSpecifiers(const Specifiers& block, std::string_view afterSpecifierID,
                                                  bool animated) {
  const auto anchor = specifierForID(afterSpecifierID);
  if (!anchor || block.empty()) return;
  Specifiers& rows = *specifiers_;
  const std::size_t at = *indexOfSpecifier(*anchor) + 1;
  const auto place = rows.begin() + static_cast<std::ptrdiff_t>(at);
  const auto room = static_cast<std::size_t>(rows.end() - place);
  if (room >= block.size() && std::equal(block.begin(), block.end(), place)) return;
  rows.insert(place, block.begin(), block.end());
  for (const auto& row : block) {
    if (!row->cell()) layOut(*row);
  }
  if (observer_) observer_->rowsInserted(*this, afterSpecifierID, at, block.size(), animated);
}

void PSListController::insertSpecifier(const PSSpecifier::Pointer& row, std::string_view afterSpecifierID,
                                       bool animated) {
  insertContiguousSpecifiers({row}, afterSpecifierID, animated);
}

void PSListController::removeContiguousSpecifiers(const Specifiers& block, bool animated) {
  specifiers();
  Specifiers& rows = *specifiers_;
  std::size_t next = 0;
  while (next < block.size()) {
    const auto first = std::ranges::find(rows, block[next]);
    if (first == rows.end()) {
      ++next;
      continue;
    }
    // As many rows of the block as stand here in a run go in one removal.
    auto last = first;
    Specifiers removed;
    while (next < block.size() && last != rows.end() && *last == block[next]) {
      removed.push_back(*last);
      ++last;
      ++next;
    }
    const auto at = static_cast<std::size_t>(first - rows.begin());
    rows.erase(first, last);
    endEditingOfUnlistedRow();
    if (observer_) observer_->rowsRemoved(*this, at, removed, animated);
  }
}

void PSListController::removeSpecifier(const PSSpecifier::Pointer& row, bool animated) {
  removeContiguousSpecifiers({row}, animated);
}

void PSListController::reloadSpecifiers() {
  specifiers_ = makeSpecifiers();
  layOutAnew(*specifiers_);
  if (editing_) {
    // The user goes on typing in the row that stands in the old one's place.
    if (const auto identifier = editing_->row->identifier()) {
      if (auto row = specifierForID(*identifier)) editing_->row = std::move(row);
    }
  }
  endEditingOfUnlistedRow();
  if (observer_) observer_->specifiersReloaded(*this);
}

void PSListController::reload() {
  layOutAnew(specifiers());
  if (observer_) observer_->pageReloaded(*this);
}

void PSListController::reloadSpecifier(PSSpecifier& row) {
  if (!indexOfSpecifier(row)) return;
  layOut(row);
  if (observer_) observer_->rowReloaded(*this, row);
}

void PSListController::setPreferenceValue(const std::optional<Value>& value, PSSpecifier& specifier) {
  const auto* domain = specifier.property<std::string>("defaults");
  const auto* key = specifier.property<std::string>("key");
  if (domain && key) platform().preferences.setAppValue(*key, value, *domain);
}

std::optional<Value> PSListController::readPreferenceValue(PSSpecifier& specifier) {
  const auto* domain = specifier.property<std::string>("defaults");
  const auto* key = specifier.property<std::string>("key");
  if (!domain || !key) return std::nullopt;
  return platform().preferences.copyAppValue(*key, *domain);
}

std::optional<Action> PSListController::actionForSelector(std::string_view /*selector*/) {
  return std::nullopt;
}

void PSListController::didSelectRowAtIndex(std::size_t index) {
  // The row may be taken off the list by what its tap does.
  const PSSpecifier::Pointer row = specifiers().at(index);
  if (row->cellType() == PSCellType::PSLinkListCell) {
    auto controller = platform().classes.makeViewController(row->detailControllerClass());
    if (!controller) return;
    if (auto* page = dynamic_cast<PSListController*>(controller.get())) page->setSpecifier(row);
    platform().navigation.pushViewController(std::move(controller));
  } else if (row->action() && row->action()->run) {
    row->action()->run(*row);
  }
}

std::shared_ptr<PSTableCell> PSListController::cellForRow(PSSpecifier& row) {
  const Rect frame{0, 0, platform().device.screenWidth(), kCellHeight};
  if (const auto* property = row.propertyForKey("cellClass")) {
    if (const auto* cellClass = std::get_if<Class>(property)) {
      if (auto cell = platform().classes.makeCell(cellClass->name, row, frame)) return cell;
    }
  }
  if (row.cellType() == PSCellType::PSSliderCell) return std::make_shared<PSSliderTableCell>(row, frame);
  return std::make_shared<PSTableCell>(row, frame);
}

void PSListController::layOut(PSSpecifier& row) {
  auto cell = cellForRow(row);
  if (row.cellType() == PSCellType::PSSwitchCell) cell->onTint = switchOnTintColor;
  cell->layoutSubviews();
  row.setCell(std::move(cell));
}

void PSListController::userSetsValue(PSSpecifier& row, const Value& value) {
  endEditing();
  if (row.setter()) row.setter()(value, row);
  notifyValuesChanged();
}

void PSListController::userMovesSlider(PSSpecifier& row, double value) {
  endEditing();
  // What the handler does may put another cell in this one's place.
  const auto cell = std::dynamic_pointer_cast<PSSliderTableCell>(row.cell());
  if (!cell) return;
  cell->setValue(value);
  if (row.setter()) row.setter()(Value(cell->value()), row);
  notifyValuesChanged();
}

void PSListController::userTapsRow(std::size_t index) {
  endEditing();
  didSelectRowAtIndex(index);
}

void PSListController::beginEditing(PSSpecifier& row) {
  if (editedSpecifier() == &row) return;
  endEditing();
  const auto stored = row.getter() ? row.getter()(row) : std::nullopt;
  const auto* text = stored ? stored->as<std::string>() : nullptr;
  editing_ = Editing{row.shared_from_this(), text ? *text : row.stringForKey("default")};
  platform().navigation.setKeyboardVisible(true);
  notifyValuesChanged();
}

void PSListController::setEditingText(std::string text) {
  if (!editing_) return;
  editing_->text = std::move(text);
  notifyValuesChanged();
}

void PSListController::endEditing() {
  if (!editing_) return;
  // The focus is given up before the handler runs: what the handler does must not commit the text a second time.
  const Editing edited = std::move(*editing_);
  editing_.reset();
  if (edited.row->setter()) edited.row->setter()(Value(edited.text), *edited.row);
  platform().navigation.setKeyboardVisible(false);
  notifyValuesChanged();
}

void PSListController::endEditingOfUnlistedRow() {
  if (editing_ && !indexOfSpecifier(*editing_->row)) endEditing();
}

void PSListController::notifyValuesChanged() {
  if (observer_) observer_->valuesChanged(*this);
}

void PSListController::viewDidAppear() {
  ViewController::viewDidAppear();
  for (const auto& row : specifiers()) {
    if (!row->cell()) layOut(*row);
  }
}

void PSListController::layOutAnew(const Specifiers& rows) {
  for (const auto& row : rows) layOut(*row);
}

Specifiers PSListItemsController::makeSpecifiers() {
  Specifiers rows{PSSpecifier::emptyGroupSpecifier()};
  const PSSpecifier* picker = specifier();
  if (!picker) return rows;
  for (std::size_t place = 0; place < picker->values().size() && place < picker->titles().size(); ++place) {
    auto row =
        PSSpecifier::preferenceSpecifierNamed(picker->titles()[place], this, {}, {}, "", PSCellType::PSListItemCell);
    row->setProperty("value", picker->values()[place]);
    rows.push_back(std::move(row));
  }
  const auto stored = picker->getter() ? picker->getter()(*specifier()) : std::nullopt;
  const Value* chosen = stored ? &*stored : picker->valueForKey("default");
  checked_ = chosen ? picker->indexOfValue(*chosen) : std::nullopt;
  if (checked_) ++*checked_;  // The group row stands first.
  return rows;
}

void PSListItemsController::didSelectRowAtIndex(std::size_t index) {
  const PSSpecifier::Pointer row = specifiers().at(index);
  const Value* value = row->valueForKey("value");
  if (!value || !specifier() || !specifier()->setter()) return;
  checked_ = index;
  specifier()->setter()(*value, *specifier());
  notifyValuesChanged();
}

}  // namespace quellar::platform
