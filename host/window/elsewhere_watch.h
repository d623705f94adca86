// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <functional>

#include "host/linux/background_preferences.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

/// Notices that another process has changed what the pages of the stack keep in the store, and rebuilds them in place.
/// While the user has a control, a text or a dialog in hand, it waits, and tells that it does.
class ElsewhereWatch final : public QObject {
  Q_OBJECT
  /// The pages show values that are not the stored ones any more.
  Q_PROPERTY(bool changed READ changed NOTIFY changedChanged)

 public:
  /// Takes what finds the folders in which something happens when a value is stored; they are asked for again after
  /// each change. All that it takes outlives it.
  ElsewhereWatch(linux::BackgroundPreferences& preferences, std::function<QStringList()> folders,
                 platform::NavigationController& navigation);
  ~ElsewhereWatch() override;

  [[nodiscard]] bool changed() const { return changed_; }
  /// Tells whether the user holds something on the screen, beside a dialog or a text; it is asked again until not.
  void setHeld(std::function<bool()> isHeld) { isHeld_ = std::move(isHeld); }
  /// Compares soon, once for all calls of one turn of the event loop.
  void checkSoon();

 signals:
  void changedChanged();
  void aboutToRebuild();
  /// The pages were rebuilt from what another process has stored.
  void rebuilt();
  /// The store can be read again, after it could not be.
  void readAgain();

 private:
  void check();
  [[nodiscard]] bool concernsPages(const std::vector<linux::BackgroundPreferences::Place>& places) const;
  [[nodiscard]] bool isInUse() const;
  void rebuildPages();
  void setChanged(bool changed);
  void noteReadable();
  void watchFolders();
  void watch(const QStringList& folders);

  linux::BackgroundPreferences& preferences_;
  const std::function<QStringList()> folders_;
  platform::NavigationController& navigation_;
  std::function<bool()> isHeld_;
  QFileSystemWatcher watcher_;
  QTimer due_;
  /// Runs while the pages wait to be rebuilt.
  QTimer retry_;
  /// Runs while the store can't be read.
  QTimer unread_;
  bool changed_ = false;
};

}  // namespace quellar::host::window
