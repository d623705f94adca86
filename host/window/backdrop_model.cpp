// SPDX-License-Identifier: MIT
#include "host/window/backdrop_model.h"

#include "host/window/backdrop_provider.h"

namespace quellar::host::window {

using Grid = cells::KVQuellarBackdropPickerCollectionView;

namespace {

enum Role { label = Qt::UserRole + 1, preview };

int nextShowing() {
  static int last = 0;
  return ++last;
}

}  // namespace

BackdropModel::BackdropModel(cells::KVQuellarBackdropPickerViewController& picker, QObject* parent)
    : QAbstractListModel(parent), picker_(&picker), showing_(nextShowing()) {
  const auto& grid = picker.backdropCollectionView();
  for (std::size_t item = 0; item < grid.numberOfItems(); ++item) styles_.push_back(grid.cellForItem(item));
}

double BackdropModel::spacing() const {
  return Grid::kSpacing;
}

double BackdropModel::itemHeight() const {
  return Grid::kItemHeight;
}

double BackdropModel::corner() const {
  return Grid::kCornerRadius;
}

double BackdropModel::itemWidth(double gridWidth) const {
  return Grid::sizeForItem(gridWidth).width;
}

int BackdropModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : count();
}

QVariant BackdropModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
  const auto& cell = styles_[static_cast<std::size_t>(index.row())];
  if (role == Role::label) return QString::fromStdString(cell.styleLabel());
  if (role == Role::preview) return BackdropProvider::address(showing_, cell.style());
  return {};
}

QHash<int, QByteArray> BackdropModel::roleNames() const {
  return {{Role::label, "label"}, {Role::preview, "preview"}};
}

void BackdropModel::pick(int index) {
  if (!picker_ || index < 0 || index >= count()) return;
  // The pick takes the picker off the stack.
  const auto alive = picker_->shared_from_this();
  picker_->backdropCollectionView().didSelectItem(static_cast<std::size_t>(index));
}

}  // namespace quellar::host::window
