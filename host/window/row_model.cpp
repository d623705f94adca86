// SPDX-License-Identifier: MIT
#include "host/window/row_model.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>

#include "cells/color_preview_cell.h"
#include "frame/row_value.h"
#include "host/window/image_address.h"
#include "host/window/row_matching.h"

namespace quellar::host::window {

using platform::Control;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;

namespace {

constexpr const char* kFooterKind = "footer";

QString kindName(Control control) {
  switch (control) {
    case Control::group:
      return "group";
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
      return "text";
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

ShownRow rowOf(PSListController& page, PSSpecifier& specifier, std::size_t place) {
  const Control control =
      specifier.cell() ? specifier.cell()->control() : platform::PSTableCell(specifier, {}).control();
  const auto identifier = specifier.identifier();
  ShownRow row;
  row.kind = kindName(control);
  row.label = QString::fromStdString(specifier.name());
  row.identifier = QString::fromStdString(identifier.value_or(""));
  row.key = row.kind.toStdString() + (identifier ? "#" + *identifier : ":" + specifier.name());
  row.icon = iconAddress(specifier);
  row.enabled = specifier.enabled();
  row.placeholder = QString::fromStdString(specifier.stringForKey("placeholder"));
  row.place = place;
  if (control == Control::toggle) {
    const auto shown = frame::shownValue(specifier);
    row.checked = shown && shown->boolValue();
  } else if (control == Control::text) {
    row.editing = page.editedSpecifier() == &specifier;
    row.text = shownText(page, specifier, row.editing);
  }
  if (const auto* cell = dynamic_cast<const cells::KVQuellarColorPreviewTableCell*>(specifier.cell().get())) {
    const auto& drawn = cell->swatch();
    row.swatch = color(drawn.colorAt(drawn.pixelWidth / 2, drawn.pixelHeight / 2));
  }
  if (const auto& cell = specifier.cell()) {
    row.titleColor = color(cell->titleColor);
    if (cell->onTint) row.tint = color(*cell->onTint);
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
      {"identifier", [](const ShownRow& row) { return row.identifier; }},
      {"icon", [](const ShownRow& row) { return row.icon; }},
      {"iconColumn", [](const ShownRow& row) { return row.iconColumn; }},
      {"checked", [](const ShownRow& row) { return row.checked; }},
      {"rowEnabled", [](const ShownRow& row) { return row.enabled; }},
      {"footer", [](const ShownRow& row) { return row.footer; }},
      {"text", [](const ShownRow& row) { return row.text; }},
      {"placeholder", [](const ShownRow& row) { return row.placeholder; }},
      {"editing", [](const ShownRow& row) { return row.editing; }},
      {"first", [](const ShownRow& row) { return row.first; }},
      {"last", [](const ShownRow& row) { return row.last; }},
      {"titleColor", [](const ShownRow& row) { return row.titleColor; }},
      {"tint", [](const ShownRow& row) { return row.tint; }},
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
