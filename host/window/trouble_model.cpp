// SPDX-License-Identifier: MIT
#include "host/window/trouble_model.h"

#include <QDesktopServices>
#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace quellar::host::window {

using Kind = linux::StoreTrouble::Kind;
using linux::StoreTrouble;

namespace {

/// How soon it is looked again whether the user has let go.
constexpr int kRetryMilliseconds = 50;

bool liesIn(std::string_view file, std::string_view folder) {
  return file.starts_with(folder) &&
         (file.size() == folder.size() || folder.empty() || folder.back() == '/' || file[folder.size()] == '/');
}

// A write may fail at the file or at a folder above it.
bool concernsSame(const std::string& file, const std::string& other) {
  return liesIn(file, other) || liesIn(other, file);
}

}  // namespace

TroubleModel::TroubleModel(TroubleTexts texts, std::function<bool()> isHeld, std::function<void()> retry)
    : texts_(std::move(texts)),
      isHeld_(std::move(isHeld)),
      retry_(std::move(retry)),
      open_(&QDesktopServices::openUrl) {
  due_.setInterval(kRetryMilliseconds);
  connect(&due_, &QTimer::timeout, this, &TroubleModel::showSoon);
}

QString TroubleModel::text() const {
  if (!shown_) return {};
  switch (shown_->kind) {
    case Kind::Write:
      return texts_.unsaved;
    case Kind::Unreadable:
      return texts_.unreadable;
    case Kind::Corrupt:
      return texts_.damaged;
    case Kind::Recovered:
      return texts_.recovered;
    case Kind::KeptAside:
      return shown_->file.find(".corrupt") == std::string::npos ? texts_.replacedKept : texts_.damagedKept;
    case Kind::Resolved:
      break;
  }
  return {};
}

QString TroubleModel::detail() const {
  if (!shown_) return {};
  const QString file = QString::fromStdString(shown_->file);
  const QString cause = QString::fromStdString(shown_->cause);
  return file.isEmpty() || cause.isEmpty() ? file + cause : file + "\n" + cause;
}

QString TroubleModel::action() const {
  if (!shown_) return {};
  if (shown_->kind == Kind::Write) return texts_.tryAgain;
  return shown_->kind == Kind::KeptAside ? texts_.showInFiles : QString();
}

void TroubleModel::tell(const StoreTrouble& trouble) {
  std::erase_if(troubles_, [&](const StoreTrouble& known) {
    switch (trouble.kind) {
      case Kind::Write:
      case Kind::Resolved:
        return known.kind == Kind::Write && concernsSame(known.file, trouble.file);
      case Kind::KeptAside:
        // The file is whole now.
        return known.kind == Kind::Corrupt || known.kind == Kind::Recovered;
      default:
        return known.kind == Kind::Corrupt || known.kind == Kind::Recovered || known.kind == Kind::Unreadable;
    }
  });
  if (trouble.kind != Kind::Resolved) troubles_.push_back(trouble);
  showSoon();
}

void TroubleModel::tellReadable() {
  std::erase_if(troubles_, [](const StoreTrouble& known) { return known.kind == Kind::Unreadable; });
  showSoon();
}

void TroubleModel::act() {
  if (!shown_) return;
  if (shown_->kind == Kind::Write && retry_) retry_();
  if (shown_->kind == Kind::KeptAside) {
    const auto folder = std::filesystem::path(shown_->file).parent_path();
    open_(QUrl::fromLocalFile(QString::fromStdString(folder.string())));
  }
}

void TroubleModel::dismiss() {
  if (!shown_) return;
  std::erase(troubles_, *shown_);
  show();
}

const StoreTrouble* TroubleModel::first() const {
  constexpr std::array kByWeight = {Kind::Write, Kind::Unreadable, Kind::KeptAside, Kind::Corrupt, Kind::Recovered};
  for (const Kind kind : kByWeight) {
    // The latest one of a kind.
    const auto found = std::find_if(troubles_.rbegin(), troubles_.rend(),
                                    [kind](const StoreTrouble& trouble) { return trouble.kind == kind; });
    if (found != troubles_.rend()) return &*found;
  }
  return nullptr;
}

void TroubleModel::showSoon() {
  if (isHeld_ && isHeld_()) {
    due_.start();
  } else {
    show();
  }
}

void TroubleModel::show() {
  due_.stop();
  const StoreTrouble* const trouble = first();
  const auto next = trouble ? std::optional(*trouble) : std::nullopt;
  if (next == shown_) return;
  shown_ = next;
  emit changed();
}

}  // namespace quellar::host::window
