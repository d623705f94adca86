// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractListModel>

#include "cells/backdrop_picker.h"

namespace quellar::host::window {

/// The previews of a backdrop picker for the view, in the order of the picker.
class BackdropModel final : public QAbstractListModel {
  Q_OBJECT
  Q_PROPERTY(int count READ count CONSTANT)
  /// In points: around the grid and between its lines, an item's height, and the radius of its corners.
  Q_PROPERTY(double spacing READ spacing CONSTANT)
  Q_PROPERTY(double itemHeight READ itemHeight CONSTANT)
  Q_PROPERTY(double corner READ corner CONSTANT)

 public:
  /// Takes the picker, which outlives the model or is let go of by `detach`.
  BackdropModel(cells::KVQuellarBackdropPickerViewController& picker, QObject* parent);

  /// The picker goes; the previews stay as they are.
  void detach() { picker_ = nullptr; }

  [[nodiscard]] int count() const { return static_cast<int>(styles_.size()); }
  [[nodiscard]] double spacing() const;
  [[nodiscard]] double itemHeight() const;
  [[nodiscard]] double corner() const;
  /// Of an item in a grid of a width, in points.
  Q_INVOKABLE [[nodiscard]] double itemWidth(double gridWidth) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  /// What a tap on the item at a place does.
  Q_INVOKABLE void pick(int index);

 private:
  cells::KVQuellarBackdropPickerViewController* picker_;
  std::vector<cells::KVQuellarBackdropPickerCollectionViewCell> styles_;
  const int showing_;
};

}  // namespace quellar::host::window
