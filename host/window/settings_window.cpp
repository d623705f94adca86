// SPDX-License-Identifier: MIT
#include "host/window/settings_window.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QVariantMap>
#include <clocale>
#include <stdexcept>

namespace quellar::host::window {

namespace {

constexpr const char* kView = "qrc:/qt/qml/Quellar/Window/Main.qml";

}  // namespace

void chooseRenderer() {
  if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND") && qEnvironmentVariableIsEmpty("QSG_RHI_BACKEND")) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  }
}

void prepareApplication() {
  std::setlocale(LC_NUMERIC, "C");
  QGuiApplication::setApplicationDisplayName("Quellar");
  QGuiApplication::setDesktopFileName("com.vantorick.QuellarSettings");
  QFont font = QGuiApplication::font();
  font.setFamilies({"Inter", "Noto Sans", "Cantarell", "DejaVu Sans", font.family()});
  font.setHintingPreference(QFont::PreferNoHinting);
  QGuiApplication::setFont(font);
}

SettingsWindow::SettingsWindow(platform::NavigationController& controller, const WindowResources& resources,
                               double scale, const Appearance& appearance)
    : navigation_(controller, resources), state_(appearance) {
  engine_.addImageProvider("platform", new PlatformImageProvider(resources.findImage, scale));
  engine_.addImageProvider("glyph", new GlyphProvider);
  engine_.addImageProvider("swatch", new SwatchProvider);
  engine_.addImageProvider("backdrop", new BackdropProvider(resources.wallpaper));
  QObject::connect(&navigation_, &NavigationModel::topChanged, resources.elsewhere, &ElsewhereWatch::checkSoon);
  QQmlComponent view(&engine_, QUrl(kView));
  std::unique_ptr<QObject> made(view.createWithInitialProperties(
      {{"navigation", QVariant::fromValue<QObject*>(&navigation_)},
       {"status", QVariant::fromValue<QObject*>(&state_)},
       {"elsewhere", QVariant::fromValue<QObject*>(resources.elsewhere)},
       {"texts", QVariantMap{{"changedElsewhere", resources.text("Changed elsewhere. Reopen to see it.")},
                             {"reopen", resources.text("Reopen")},
                             {"cut", resources.text("Cut")},
                             {"copy", resources.text("Copy")},
                             {"paste", resources.text("Paste")},
                             {"selectAll", resources.text("Select All")}}},
       {"rowOrder", QVariant::fromValue<QObject*>(&order_)}}));
  window_.reset(qobject_cast<QQuickWindow*>(made.get()));
  if (!window_) throw std::runtime_error("the view of the window can't be loaded: " + view.errorString().toStdString());
  static_cast<void>(made.release());
  // Rows beyond the window are made between its frames.
  engine_.setIncubationController(window_->incubationController());
  window_->installEventFilter(&state_);
}

void SettingsWindow::resize(QSize size) {
  window_->resize(size);
  // The toolkit passes it on when the window is shown.
  window_->contentItem()->setSize(size);
}

void SettingsWindow::start() {
  navigation_.settle();
  window_->show();
  window_->requestActivate();
}

bool SettingsWindow::revealRow(const QString& identifier) {
  navigation_.settle();
  PageModel* page = navigation_.top();
  const int index = page ? page->rows()->indexOf(identifier) : -1;
  if (index < 0) return false;
  QMetaObject::invokeMethod(window_.get(), "revealRow", Q_ARG(QVariant, index));
  return true;
}

}  // namespace quellar::host::window
