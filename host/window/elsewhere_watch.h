// SPDX-License-Identifier: MIT
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <functional>

#include "host/window/seen_preferences.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

/// Tells whether another process has changed what the page on top keeps in the store. The page keeps its copy; the
/// user is offered to open it anew.
class ElsewhereWatch final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool changed READ changed NOTIFY changedChanged)

 public:
  /// Takes what finds the folders in which something happens when a value is stored; they are asked for again after
  /// each change. All that it takes outlives it.
  ElsewhereWatch(SeenPreferences& preferences, std::function<QStringList()> folders,
                 const platform::NavigationController& navigation);
  ~ElsewhereWatch() override;

  [[nodiscard]] bool changed() const { return changed_; }
  /// Compares soon, once for all calls of one turn of the event loop.
  void checkSoon();

 signals:
  void changedChanged();

 private:
  void check();
  void watchFolders();
  void watch(const QStringList& folders);

  SeenPreferences& preferences_;
  const std::function<QStringList()> folders_;
  const platform::NavigationController& navigation_;
  QFileSystemWatcher watcher_;
  QTimer due_;
  bool changed_ = false;
};

}  // namespace quellar::host::window
