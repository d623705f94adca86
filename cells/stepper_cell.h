// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "cells/slider_cell.h"
#include "platform/cell.h"
#include "platform/platform.h"

namespace quellar::cells {

/// The plus/minus control of a stepper row, with the platform control's own settings where a row sets none.
struct Stepper {
  platform::Rect frame;
  double value = 0;
  double minimum = 0;
  double maximum = 100;
  double step = 1;
  bool continuous = true;
  bool autorepeat = true;
  bool wraps = false;
};

/// A count with a stepper and a number label. It writes the store itself: on every step its whole copy of the page
/// dictionary, as it was at the cell's first layout.
class KVQuellarStepperCell : public platform::PSTableCell, public std::enable_shared_from_this<KVQuellarStepperCell> {
 public:
  KVQuellarStepperCell(platform::Platform& platform, platform::PSSpecifier& specifier, platform::Rect frame);

  [[nodiscard]] std::string className() const override { return "KVQuellarStepperCell"; }
  [[nodiscard]] platform::Control control() const override { return platform::Control::stepper; }
  void layoutSubviews() override;

  [[nodiscard]] const Stepper& stepper() const { return stepper_; }
  [[nodiscard]] const Label& label() const { return label_; }
  /// The cell's own copy of the page dictionary; nothing before the first layout.
  [[nodiscard]] const std::optional<platform::Dictionary>& userDefaults() const { return userDefaults_; }

  /// Presses the control once, up (positive) or down (negative). Does nothing at a bound, unless the stepper wraps.
  void press(int direction);
  /// Whether steps lead to a value from the minimum: no fraction of one is left.
  [[nodiscard]] bool reaches(double value) const;
  /// Moves the control to a value, held within the bounds, and stores it once. Does nothing where it stands there, and
  /// with a value that no steps lead to.
  void moveTo(double value);
  /// Stores the control's value and notifies.
  void stepperPressed();

 private:
  [[nodiscard]] double held(double value) const;
  void settleAt(double value);
  void updateLabel();
  /// Reads the cell's copy of the page dictionary from the store.
  void loadUserDefaults();

  platform::Platform& platform_;
  Stepper stepper_;
  Label label_;
  std::optional<platform::Dictionary> userDefaults_;
  /// Whether the store could be read then.
  bool wasRead_ = true;
};

}  // namespace quellar::cells
