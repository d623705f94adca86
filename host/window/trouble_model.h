// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "host/linux/file_preferences.h"

namespace quellar::host::window {

/// What the banner says of the store's troubles, in the user's language.
struct TroubleTexts {
  QString unsaved;
  QString unreadable;
  QString damaged;
  QString recovered;
  QString damagedKept;
  QString replacedKept;
  QString tryAgain;
  QString showInFiles;
  QString dismiss;
};

/// The trouble of the store that the banner tells, and what the user can do about it. The banner comes and goes only
/// while nothing is held on the screen, because it moves rows.
class TroubleModel final : public QObject {
  Q_OBJECT
  /// What is wrong, "" for nothing.
  Q_PROPERTY(QString text READ text NOTIFY changed)
  /// Where, and why.
  Q_PROPERTY(QString detail READ detail NOTIFY changed)
  /// What the user can do about it, "" for nothing.
  Q_PROPERTY(QString action READ action NOTIFY changed)
  Q_PROPERTY(QString dismissal READ dismissal CONSTANT)

 public:
  /// Takes what tells whether the user holds something, or has just let go, and what writes again at once; nothing
  /// where there is nothing to write.
  TroubleModel(TroubleTexts texts, std::function<bool()> isHeld, std::function<void()> retry);

  [[nodiscard]] QString text() const;
  [[nodiscard]] QString detail() const;
  [[nodiscard]] QString action() const;
  [[nodiscard]] const QString& dismissal() const { return texts_.dismiss; }

  /// Takes a trouble, or the news that one is resolved, as the store reports it.
  void tell(const linux::StoreTrouble& trouble);
  /// The store can be read again.
  void tellReadable();

  /// Takes what shows a folder in place of the desktop.
  void setOpener(std::function<void(const QUrl&)> open) { open_ = std::move(open); }

  Q_INVOKABLE void act();
  /// The user has read it.
  Q_INVOKABLE void dismiss();

 signals:
  void changed();

 private:
  /// The trouble that matters most; nullptr for none.
  [[nodiscard]] const linux::StoreTrouble* first() const;
  void showSoon();
  void show();

  const TroubleTexts texts_;
  const std::function<bool()> isHeld_;
  const std::function<void()> retry_;
  std::function<void(const QUrl&)> open_;
  std::vector<linux::StoreTrouble> troubles_;
  std::optional<linux::StoreTrouble> shown_;
  /// Runs while the banner waits.
  QTimer due_;
};

}  // namespace quellar::host::window
