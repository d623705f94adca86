// SPDX-License-Identifier: MIT
#include "host/window/row_model.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>
#include <memory>
#include <optional>

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/row_value.h"
#include "host/window/image_address.h"
#include "host/window/row_matching.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

using cells::KVQuellarSliderCell;
using cells::KVQuellarStepperCell;
using platform::Control;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSliderTableCell;
using platform::PSSpecifier;
using platform::Specifiers;

namespace {

constexpr const char* kFooterKind = "footer";
constexpr const char* kGroupKind = "group";
constexpr const char* kTextKind = "text";

QString kindName(Control control) {
  switch (control) {
    case Control::group:
      return kGroupKind;
    case Control::link:
      return "link";
    case Control::picker:
      return "picker";
    case Control::pickerItem:
      return "pickerItem";
    case Control::toggle:
      return "switch";
    case Control::slider:
      return "slider";
    case Control::typedSlider:
      return "typedSlider";
    case Control::stepper:
      return "stepper";
    case Control::text:
      return kTextKind;
    case Control::segment:
      return "segment";
    case Control::button:
      return "button";
    case Control::color:
      return "color";
    case Control::staticText:
      return "staticText";
  }
  return {};
}

QColor color(const platform::Color& color) {
  QColor result(color.red, color.green, color.blue);
  result.setAlphaF(static_cast<float>(color.alpha));
  return result;
}

QString iconAddress(const PSSpecifier& row) {
  const auto* property = row.propertyForKey("iconImage");
  const auto* image = property ? std::get_if<platform::Image>(property) : nullptr;
  return image ? imageAddress(*image) : QString();
}

QString shownText(PSListController& page, PSSpecifier& row, bool editing) {
  if (editing) return QString::fromStdString(page.editingText());
  const auto shown = frame::shownValue(row);
  const auto* text = shown ? shown->as<std::string>() : nullptr;
  return text ? QString::fromStdString(*text) : QString();
}

template <typename Cell>
std::shared_ptr<Cell> cellOf(const PSSpecifier& row) {
  return std::dynamic_pointer_cast<Cell>(row.cell());
}

// A value as the row's slider shows it.
std::string shownAt(PSSpecifier& row, double value) {
  PSSliderTableCell cell(row, {});
  cell.setValue(value);
  return cell.valueText();
}

// The distance between two neighbouring values that the row's slider shows.
double shownStep(PSSpecifier& row) {
  const std::string text = shownAt(row, 0);
  const std::size_t point = text.find('.');
  return point == std::string::npos ? 1 : 1 / std::pow(10.0, static_cast<double>(text.size() - point - 1));
}

// The number that the text of a value reads as: what is stored is what is shown.
double nearestShown(PSSpecifier& row, double value) {
  PSSliderTableCell cell(row, {});
  const std::string text = shownAt(row, value);
  std::from_chars(text.data(), text.data() + text.size(), value);
  // A zero without a sign.
  cell.setValue(value + 0.0);
  return cell.value();
}

void addSlider(ShownRow& row, const PSSliderTableCell& cell) {
  row.level = cell.value();
  row.minimum = cell.minimum();
  row.maximum = cell.maximum();
  row.step = shownStep(cell.specifier());
  if (cell.showValue()) row.text = QString::fromStdString(cell.valueText());
  if (const auto* typed = dynamic_cast<const KVQuellarSliderCell*>(&cell)) {
    row.label = QString::fromStdString(typed->labelText().text);
    row.titleColor = color(typed->labelText().color);
    row.tint = color(typed->minimumTrackTint);
    row.restTint = color(typed->maximumTrackTint);
    if (const auto& footnote = typed->footerText()) {
      row.footnote = QString::fromStdString(footnote->text);
      row.footnoteColor = color(footnote->color);
    }
  }
}

void addStepper(ShownRow& row, const KVQuellarStepperCell& cell) {
  const auto& stepper = cell.stepper();
  row.level = stepper.value;
  row.minimum = stepper.minimum;
  row.maximum = stepper.maximum;
  row.step = stepper.step;
  row.canDecrease = stepper.wraps || stepper.value > stepper.minimum;
  row.canIncrease = stepper.wraps || stepper.value < stepper.maximum;
  row.autorepeat = stepper.autorepeat;
  row.text = QString::fromStdString(cell.label().text);
  row.textColor = color(cell.label().color);
}

// The place of the choice that a picker or segment row shows; nothing where what is stored is none of them.
std::optional<std::size_t> chosenPlace(PSSpecifier& row) {
  const auto shown = frame::shownValue(row);
  return shown ? row.indexOfValue(*shown) : std::nullopt;
}

void addChoices(ShownRow& row, Control control, PSSpecifier& specifier) {
  const auto chosen = chosenPlace(specifier);
  if (control == Control::segment) {
    for (const auto& title : specifier.titles()) row.titles.append(QString::fromStdString(title));
    row.chosen = chosen ? static_cast<int>(*chosen) : -1;
    return;
  }
  const auto& titles = specifier.shortTitles().empty() ? specifier.titles() : specifier.shortTitles();
  if (chosen && *chosen < titles.size()) row.text = QString::fromStdString(titles[*chosen]);
}

ShownRow rowOf(PSListController& page, PSSpecifier& specifier, std::size_t place) {
  const Control control =
      specifier.cell() ? specifier.cell()->control() : platform::PSTableCell(specifier, {}).control();
  const auto identifier = specifier.identifier();
  ShownRow row;
  row.kind = kindName(control);
  row.label = QString::fromStdString(specifier.name());
  row.identifier = QString::fromStdString(identifier.value_or(""));
  row.key = row.kind.toStdString() + (identifier ? "#" + *identifier : ":" + specifier.name());
  row.opens = QString::fromStdString(specifier.detailControllerClass());
  row.icon = iconAddress(specifier);
  row.enabled = specifier.enabled();
  row.placeholder = QString::fromStdString(specifier.stringForKey("placeholder"));
  row.place = place;
  if (const auto& cell = specifier.cell()) {
    row.titleColor = color(cell->titleColor);
    if (cell->onTint) row.tint = color(*cell->onTint);
  }
  if (control == Control::toggle) {
    const auto shown = frame::shownValue(specifier);
    row.checked = shown && shown->boolValue();
  } else {
    row.checked = page.showsCheckmark(place);
  }
  if (control == Control::text) {
    row.editing = page.editedSpecifier() == &specifier;
    row.text = shownText(page, specifier, row.editing);
  } else if (control == Control::picker || control == Control::segment) {
    addChoices(row, control, specifier);
  } else if (const auto slider = cellOf<PSSliderTableCell>(specifier)) {
    addSlider(row, *slider);
  } else if (const auto stepper = cellOf<KVQuellarStepperCell>(specifier)) {
    addStepper(row, *stepper);
  }
  if (const auto* cell = dynamic_cast<const cells::KVQuellarColorPreviewTableCell*>(specifier.cell().get())) {
    const auto& drawn = cell->swatch();
    row.swatch = color(drawn.colorAt(drawn.pixelWidth / 2, drawn.pixelHeight / 2));
  }
  return row;
}

// A group's rows, from `from` up to the end of the list so far, learn how they stand in it.
void closeGroup(std::vector<ShownRow>& rows, std::size_t from, const ShownRow* title) {
  if (from < rows.size()) {
    rows[from].first = true;
    rows.back().last = true;
    const bool icons = std::any_of(rows.begin() + static_cast<std::ptrdiff_t>(from), rows.end(),
                                   [](const ShownRow& row) { return !row.icon.isEmpty(); });
    for (std::size_t place = from; place < rows.size(); ++place) rows[place].iconColumn = icons;
  }
  if (!title || title->footer.isEmpty()) return;
  ShownRow footer;
  footer.key = kFooterKind + ("#" + title->key);
  footer.kind = kFooterKind;
  footer.label = title->footer;
  footer.place = title->place;
  // A footer describes its group's title; where there is none, it speaks for itself.
  footer.footer = title->label;
  rows.push_back(std::move(footer));
}

// A text row has a label like any other text row's ("Text:"), also where it is the only one.
void nameGroups(std::vector<ShownRow>& rows) {
  std::map<QString, int> uses;
  for (const ShownRow& row : rows) {
    if (row.kind != kGroupKind && row.kind != kFooterKind) ++uses[row.label];
  }
  QString group;
  for (ShownRow& row : rows) {
    if (row.kind == kGroupKind) {
      group = row.label;
    } else if (row.kind != kFooterKind && (uses[row.label] > 1 || row.kind == kTextKind)) {
      row.group = group;
    }
  }
}

std::vector<ShownRow> rowsOf(PSListController& page) {
  std::vector<ShownRow> rows;
  std::optional<ShownRow> title;
  std::size_t groupStart = 0;
  const Specifiers& specifiers = page.specifiers();
  rows.reserve(specifiers.size() + 8);
  for (std::size_t place = 0; place < specifiers.size(); ++place) {
    PSSpecifier& specifier = *specifiers[place];
    ShownRow row = rowOf(page, specifier, place);
    if (specifier.cellType() != PSCellType::PSGroupCell) {
      rows.push_back(std::move(row));
      continue;
    }
    closeGroup(rows, groupStart, title ? &*title : nullptr);
    row.footer = QString::fromStdString(specifier.stringForKey("footerText"));
    title = row;
    rows.push_back(std::move(row));
    groupStart = rows.size();
  }
  closeGroup(rows, groupStart, title ? &*title : nullptr);
  nameGroups(rows);
  return rows;
}

std::vector<std::string_view> keysOf(const std::vector<ShownRow>& rows) {
  std::vector<std::string_view> keys;
  keys.reserve(rows.size());
  for (const ShownRow& row : rows) keys.emplace_back(row.key);
  return keys;
}

bool focusable(const ShownRow& row) {
  return row.enabled && row.kind != "group" && row.kind != kFooterKind && row.kind != "staticText";
}

struct Role {
  const char* name;
  std::function<QVariant(const ShownRow&)> value;
};

const std::vector<Role>& roles() {
  static const std::vector<Role> all{
      {"kind", [](const ShownRow& row) { return row.kind; }},
      {"label", [](const ShownRow& row) { return row.label; }},
      {"group", [](const ShownRow& row) { return row.group; }},
      {"identifier", [](const ShownRow& row) { return row.identifier; }},
      {"opens", [](const ShownRow& row) { return row.opens; }},
      {"icon", [](const ShownRow& row) { return row.icon; }},
      {"iconColumn", [](const ShownRow& row) { return row.iconColumn; }},
      {"checked", [](const ShownRow& row) { return row.checked; }},
      {"rowEnabled", [](const ShownRow& row) { return row.enabled; }},
      {"footer", [](const ShownRow& row) { return row.footer; }},
      {"text", [](const ShownRow& row) { return row.text; }},
      {"textColor", [](const ShownRow& row) { return row.textColor; }},
      {"placeholder", [](const ShownRow& row) { return row.placeholder; }},
      {"editing", [](const ShownRow& row) { return row.editing; }},
      {"first", [](const ShownRow& row) { return row.first; }},
      {"last", [](const ShownRow& row) { return row.last; }},
      {"titleColor", [](const ShownRow& row) { return row.titleColor; }},
      {"tint", [](const ShownRow& row) { return row.tint; }},
      {"restTint", [](const ShownRow& row) { return row.restTint; }},
      {"footnote", [](const ShownRow& row) { return row.footnote; }},
      {"footnoteColor", [](const ShownRow& row) { return row.footnoteColor; }},
      {"level", [](const ShownRow& row) { return row.level; }},
      {"minimum", [](const ShownRow& row) { return row.minimum; }},
      {"maximum", [](const ShownRow& row) { return row.maximum; }},
      {"step", [](const ShownRow& row) { return row.step; }},
      {"canDecrease", [](const ShownRow& row) { return row.canDecrease; }},
      {"canIncrease", [](const ShownRow& row) { return row.canIncrease; }},
      {"autorepeat", [](const ShownRow& row) { return row.autorepeat; }},
      {"titles", [](const ShownRow& row) { return row.titles; }},
      {"chosen", [](const ShownRow& row) { return row.chosen; }},
      {"swatch", [](const ShownRow& row) { return row.swatch; }},
  };
  return all;
}

constexpr int kFirstRole = Qt::UserRole + 1;

}  // namespace

RowModel::~RowModel() {
  detach();
}

void RowModel::attach(PSListController& page) {
  detach();
  page_ = &page;
  page.setObserver(this);
  beginResetModel();
  rows_ = rowsOf(page);
  endResetModel();
  emit countChanged();
}

void RowModel::detach() {
  if (page_) page_->setObserver(nullptr);
  page_ = nullptr;
}

int RowModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
  const auto number = static_cast<std::size_t>(role - kFirstRole);
  if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role < kFirstRole || number >= roles().size()) return {};
  return roles()[number].value(rows_[static_cast<std::size_t>(index.row())]);
}

QHash<int, QByteArray> RowModel::roleNames() const {
  QHash<int, QByteArray> names;
  for (std::size_t number = 0; number < roles().size(); ++number) {
    names.insert(kFirstRole + static_cast<int>(number), roles()[number].name);
  }
  return names;
}

int RowModel::indexOf(const QString& identifier) const {
  const auto found = std::ranges::find_if(
      rows_, [&](const ShownRow& row) { return row.kind != kFooterKind && row.identifier == identifier; });
  return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

int RowModel::indexOfPlace(std::size_t place) const {
  const auto found =
      std::ranges::find_if(rows_, [&](const ShownRow& row) { return row.kind != kFooterKind && row.place == place; });
  return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

int RowModel::indexOpening(const QString& className) const {
  const auto found = std::ranges::find(rows_, className, &ShownRow::opens);
  return className.isEmpty() || found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

QString RowModel::kindAt(int index) const {
  return index >= 0 && index < count() ? rows_[static_cast<std::size_t>(index)].kind : QString();
}

int RowModel::nextFocusable(int from, int step) const {
  for (int index = from + step; index >= 0 && index < count(); index += step) {
    if (focusable(rows_[static_cast<std::size_t>(index)])) return index;
  }
  return -1;
}

PSSpecifier::Pointer RowModel::specifierAt(int index) const {
  if (!page_ || index < 0 || index >= count()) return nullptr;
  const ShownRow& row = rows_[static_cast<std::size_t>(index)];
  const Specifiers& specifiers = page_->specifiers();
  if (!focusable(row) || row.place >= specifiers.size()) return nullptr;
  return specifiers[row.place];
}

void RowModel::activate(int index) {
  // What the tap shows comes on top of this page.
  if (kindAt(index) != "switch") emit aboutToBeTapped();
  const auto specifier = specifierAt(index);
  if (!specifier) return;
  // What the row does may take its page off the screen.
  const auto alive = page_->shared_from_this();
  const ShownRow row = rows_[static_cast<std::size_t>(index)];
  if (row.kind == "switch") {
    page_->userSetsValue(*specifier, platform::Value(!row.checked));
  } else {
    page_->userTapsRow(row.place);
  }
}

void RowModel::beginEditing(int index) {
  const auto specifier = specifierAt(index);
  if (!specifier) return;
  editing_ = this->index(index);
  page_->beginEditing(*specifier);
}

void RowModel::setEditingText(int index, const QString& text) {
  if (!page_ || !editing_.isValid() || editing_.row() != index) return;
  page_->setEditingText(text.toStdString());
}

void RowModel::endEditing(int index) {
  if (!page_ || !editing_.isValid() || editing_.row() != index) return;
  page_->endEditing();
}

PSSpecifier::Pointer RowModel::specifierAfterEditing(int index) {
  if (!page_) return nullptr;
  const QPersistentModelIndex place(this->index(index));
  page_->endEditing();
  return specifierAt(place.row());
}

void RowModel::moveTo(int index, double value) {
  const auto specifier = specifierAfterEditing(index);
  if (!specifier) return;
  if (const auto stepper = cellOf<KVQuellarStepperCell>(*specifier)) {
    stepper->moveTo(value);
    follow(false);
  } else if (specifier->cell()) {
    page_->userMovesSlider(*specifier, value);
  }
}

void RowModel::step(int index, int steps) {
  const auto specifier = specifierAfterEditing(index);
  if (!specifier || steps == 0) return;
  if (const auto stepper = cellOf<KVQuellarStepperCell>(*specifier)) {
    stepper->press(steps);
    follow(false);
  } else if (const auto slider = cellOf<PSSliderTableCell>(*specifier)) {
    const double value = nearestShown(*specifier, slider->value() + steps * shownStep(*specifier));
    if (value != slider->value()) page_->userMovesSlider(*specifier, value);
  }
}

double RowModel::shownValueNear(int index, double value) const {
  const auto specifier = specifierAt(index);
  const auto slider = specifier ? cellOf<PSSliderTableCell>(*specifier) : nullptr;
  return slider ? nearestShown(*specifier, value) : value;
}

QString RowModel::valueText(int index, double value) const {
  const auto specifier = specifierAt(index);
  const auto slider = specifier ? cellOf<PSSliderTableCell>(*specifier) : nullptr;
  return slider && slider->showValue() ? QString::fromStdString(shownAt(*specifier, value)) : QString();
}

void RowModel::enterValue(int index, const QString& typed) {
  const auto specifier = specifierAfterEditing(index);
  const auto slider = specifier ? cellOf<KVQuellarSliderCell>(*specifier) : nullptr;
  if (!slider) return;
  auto& navigation = page_->platform().navigation;
  slider->presentPopup();
  if (!typed.isEmpty()) navigation.setDialogText(typed.toStdString());
}

void RowModel::choose(int index, int choice) {
  const auto specifier = specifierAfterEditing(index);
  if (!specifier || choice < 0 || static_cast<std::size_t>(choice) >= specifier->values().size()) return;
  if (chosenPlace(*specifier) == static_cast<std::size_t>(choice)) return;
  page_->userSetsValue(*specifier, specifier->values()[static_cast<std::size_t>(choice)]);
}

void RowModel::rowsInserted(PSListController&, std::string_view, std::size_t, std::size_t, bool animated) {
  follow(animated);
}

void RowModel::rowsRemoved(PSListController&, std::size_t, const Specifiers&, bool animated) {
  follow(animated);
}

void RowModel::rowReloaded(PSListController&, PSSpecifier&) {
  follow(false);
}

void RowModel::specifiersReloaded(PSListController&) {
  follow(false);
}

void RowModel::pageReloaded(PSListController&) {
  follow(false);
}

void RowModel::valuesChanged(PSListController&) {
  follow(false);
}

void RowModel::follow(bool animated) {
  if (!page_) return;
  const std::vector<ShownRow> fresh = rowsOf(*page_);
  const Matching matching = matchKeys(keysOf(rows_), keysOf(fresh));
  const bool sameKeys = std::ranges::find(matching.before, false) == matching.before.end() &&
                        std::ranges::find(matching.after, false) == matching.after.end();
  if (!sameKeys) {
    if (animated != animated_) {
      animated_ = animated;
      emit animatedChanged();
    }
    removeUnmatched(matching.before);
    insertUnmatched(fresh, matching.after);
    emit countChanged();
  }
  for (std::size_t place = 0; place < fresh.size(); ++place) {
    if (rows_[place] == fresh[place]) continue;
    rows_[place] = fresh[place];
    const QModelIndex changed = index(static_cast<int>(place));
    emit dataChanged(changed, changed);
  }
}

void RowModel::removeUnmatched(const std::vector<bool>& kept) {
  // From the end, so that the places before a run keep their numbers.
  for (std::size_t end = kept.size(); end > 0;) {
    if (kept[end - 1]) {
      --end;
      continue;
    }
    std::size_t begin = end - 1;
    while (begin > 0 && !kept[begin - 1]) --begin;
    beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(begin), rows_.begin() + static_cast<std::ptrdiff_t>(end));
    endRemoveRows();
    end = begin;
  }
}

void RowModel::insertUnmatched(const std::vector<ShownRow>& fresh, const std::vector<bool>& matched) {
  for (std::size_t begin = 0; begin < fresh.size();) {
    if (matched[begin]) {
      ++begin;
      continue;
    }
    std::size_t end = begin + 1;
    while (end < fresh.size() && !matched[end]) ++end;
    const auto offset = [](std::size_t place) { return static_cast<std::ptrdiff_t>(place); };
    beginInsertRows({}, static_cast<int>(begin), static_cast<int>(end) - 1);
    rows_.insert(rows_.begin() + offset(begin), fresh.begin() + offset(begin), fresh.begin() + offset(end));
    endInsertRows();
    begin = end;
  }
}

}  // namespace quellar::host::window
