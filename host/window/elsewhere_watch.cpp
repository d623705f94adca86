// SPDX-License-Identifier: MIT
#include "host/window/elsewhere_watch.h"

#include <memory>
#include <utility>

#include "frame/list_controller.h"
#include "frame/names.h"

namespace quellar::host::window {

ElsewhereWatch::ElsewhereWatch(SeenPreferences& preferences, std::function<QStringList()> folders,
                               const platform::NavigationController& navigation)
    : preferences_(preferences), folders_(std::move(folders)), navigation_(navigation) {
  due_.setSingleShot(true);
  connect(&due_, &QTimer::timeout, this, &ElsewhereWatch::check);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &ElsewhereWatch::checkSoon);
  preferences_.setListener([this] { checkSoon(); });
  watchFolders();
}

ElsewhereWatch::~ElsewhereWatch() {
  preferences_.setListener({});
}

void ElsewhereWatch::checkSoon() {
  if (!due_.isActive()) due_.start(0);
}

void ElsewhereWatch::check() {
  watchFolders();
  const auto page = std::dynamic_pointer_cast<frame::KVQuellarListController>(navigation_.topViewController());
  const bool changed = page && preferences_.changedElsewhere(page->page().defaultsKey, frame::kSettingsDomain);
  if (changed == changed_) return;
  changed_ = changed;
  emit changedChanged();
}

void ElsewhereWatch::watchFolders() {
  // Folders may be made while the one above them comes to be watched, of which nobody would tell.
  QStringList watched;
  for (QStringList folders = folders_(); folders != watched; folders = folders_()) {
    if (!watched.isEmpty()) checkSoon();
    watch(folders);
    watched = folders;
  }
}

void ElsewhereWatch::watch(const QStringList& folders) {
  const QStringList watched = watcher_.directories();
  for (const QString& folder : watched) {
    if (!folders.contains(folder)) watcher_.removePath(folder);
  }
  for (const QString& folder : folders) {
    if (!watched.contains(folder)) watcher_.addPath(folder);
  }
}

}  // namespace quellar::host::window
