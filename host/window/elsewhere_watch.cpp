// SPDX-License-Identifier: MIT
#include "host/window/elsewhere_watch.h"

#include <algorithm>
#include <utility>

#include "frame/list_controller.h"
#include "frame/names.h"

namespace quellar::host::window {

namespace {

/// How soon it is looked again whether the user has let go.
constexpr int kRetryMilliseconds = 50;
/// How soon a store that can't be read is tried again: access may come back without any change in its folders.
constexpr int kUnreadMilliseconds = 1000;

}  // namespace

ElsewhereWatch::ElsewhereWatch(linux::BackgroundPreferences& preferences, std::function<QStringList()> folders,
                               platform::NavigationController& navigation)
    : preferences_(preferences), folders_(std::move(folders)), navigation_(navigation) {
  due_.setSingleShot(true);
  retry_.setInterval(kRetryMilliseconds);
  unread_.setInterval(kUnreadMilliseconds);
  connect(&unread_, &QTimer::timeout, this, &ElsewhereWatch::check);
  connect(&due_, &QTimer::timeout, this, &ElsewhereWatch::check);
  connect(&retry_, &QTimer::timeout, this, &ElsewhereWatch::check);
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
  const auto places = preferences_.changedElsewhere();
  noteReadable();
  if (places.empty()) return setChanged(false);
  if (isInUse()) return setChanged(concernsPages(places));
  rebuildPages();
  setChanged(false);
}

/// A page keeps its values under its keys of the settings domain; what lies in other domains is of the first page.
bool ElsewhereWatch::concernsPages(const std::vector<linux::BackgroundPreferences::Place>& places) const {
  const auto concerns = [&](const frame::Page& page) {
    return std::ranges::any_of(places, [&](const auto& place) {
      const auto& [domain, key] = place;
      return domain != frame::kSettingsDomain || key == page.defaultsKey || key == page.colors.defaultsKey;
    });
  };
  return std::ranges::any_of(navigation_.viewControllers(), [&](const auto& controller) {
    const auto* page = dynamic_cast<const frame::KVQuellarListController*>(controller.get());
    return page && concerns(page->page());
  });
}

bool ElsewhereWatch::isInUse() const {
  return navigation_.dialog() || navigation_.keyboardVisible() || (isHeld_ && isHeld_());
}

void ElsewhereWatch::rebuildPages() {
  emit aboutToRebuild();
  // A page may read what another one keeps, so that all are rebuilt.
  for (const auto& controller : navigation_.viewControllers()) {
    if (auto* page = dynamic_cast<frame::KVQuellarListController*>(controller.get())) page->reloadUserDefaults();
  }
  preferences_.acceptChanges();
  emit rebuilt();
}

void ElsewhereWatch::noteReadable() {
  const bool isReadable = preferences_.wasRead(frame::kSettingsDomain);
  if (!isReadable && !unread_.isActive()) unread_.start();
  if (!isReadable || !unread_.isActive()) return;
  unread_.stop();
  emit readAgain();
}

void ElsewhereWatch::setChanged(bool changed) {
  // What does not concern the pages now may concern them once they are let go.
  if (preferences_.changedElsewhere().empty()) {
    retry_.stop();
  } else {
    retry_.start();
  }
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
