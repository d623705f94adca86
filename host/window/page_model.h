// SPDX-License-Identifier: MIT
#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>
#include <memory>
#include <optional>

#include "host/window/backdrop_model.h"
#include "host/window/row_model.h"
#include "platform/view_controller.h"

namespace quellar::host::window {

/// One screen of the stack: what its navigation bar shows, and its rows.
class PageModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title MEMBER title_ NOTIFY barChanged)
  /// The button that leads back from this page: {title}; empty on the first page.
  Q_PROPERTY(QVariantMap backButton MEMBER backButton_ NOTIFY barChanged)
  /// A button at either side: {title, done}; empty for none.
  Q_PROPERTY(QVariantMap leftButton MEMBER leftButton_ NOTIFY barChanged)
  Q_PROPERTY(QVariantMap rightButton MEMBER rightButton_ NOTIFY barChanged)
  /// The picture that stands for the title, "" for none; a template is a mask for the bar's tint.
  Q_PROPERTY(QString titleImage MEMBER titleImage_ NOTIFY barChanged)
  Q_PROPERTY(bool titleImageIsTemplate MEMBER titleImageIsTemplate_ NOTIFY barChanged)
  Q_PROPERTY(double titleAlpha MEMBER titleAlpha_ NOTIFY titleAlphaChanged)
  /// How long the change to the present alpha takes, in milliseconds.
  Q_PROPERTY(int titleFade MEMBER titleFade_ NOTIFY titleAlphaChanged)
  Q_PROPERTY(QObject* rows READ rows CONSTANT)
  /// The previews of a backdrop picker, which has no rows; null on any other page.
  Q_PROPERTY(QObject* previews READ previews CONSTANT)
  /// The page is off the stack and slides away.
  Q_PROPERTY(bool leaving READ leaving NOTIFY leavingChanged)
  /// It came onto a page that was on the screen, so it slides in.
  Q_PROPERTY(bool arriving READ arriving CONSTANT)

 public:
  /// Takes the screen and the one beneath it, which gives the back button its title; nullptr for the first one.
  PageModel(platform::ViewController& controller, const platform::ViewController* beneath, QObject* parent);

  [[nodiscard]] platform::ViewController* controller() const { return controller_; }
  [[nodiscard]] RowModel* rows() { return &rows_; }
  [[nodiscard]] BackdropModel* previews() { return previews_; }
  [[nodiscard]] bool leaving() const { return controller_ == nullptr; }
  /// It has been read once.
  [[nodiscard]] bool isLoaded() const { return loaded_; }
  [[nodiscard]] bool arriving() const { return arriving_; }
  [[nodiscard]] const QString& title() const { return title_; }

  /// Reads the bar, and the rows where the page has just come up.
  void refresh();
  void fadeTitle(double to, std::chrono::nanoseconds duration);
  /// The screen goes off the stack; what was last shown stays.
  void leave();

 signals:
  void barChanged();
  void titleAlphaChanged();
  void leavingChanged();

 private:
  platform::ViewController* controller_;
  const bool arriving_;
  bool loaded_ = false;
  RowModel rows_;
  BackdropModel* previews_ = nullptr;
  QString title_;
  QVariantMap backButton_;
  QVariantMap leftButton_;
  QVariantMap rightButton_;
  QString titleImage_;
  bool titleImageIsTemplate_ = true;
  double titleAlpha_ = 1;
  int titleFade_ = 0;
};

}  // namespace quellar::host::window
