// SPDX-License-Identifier: MIT
#include "host/window/settings_window.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QVariantMap>
#include <clocale>
#include <stdexcept>

#include "frame/page_walk.h"
#include "host/window/accessible_control.h"

namespace quellar::host::window {

namespace {

const QString kView = kViewAddress + "Main.qml";

TroubleTexts troubleTexts(const TextFinder& text) {
  return {.unsaved = text("Your change is not saved."),
          .unreadable = text("Your settings can’t be read now. They show as soon as they can be read."),
          .damaged = text("The file of your settings is damaged. It is kept aside when you change something."),
          .recovered = text("The file of your settings is damaged. What was saved before it is shown."),
          .damagedKept = text("The file of your settings was damaged. The damaged one was kept."),
          .replacedKept = text("A part of your settings could not be kept. The file with it was kept."),
          .tryAgain = text("Try again"),
          .showInFiles = text("Show in files"),
          .dismiss = text("Dismiss")};
}

}  // namespace

void chooseRenderer() {
  if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND") && qEnvironmentVariableIsEmpty("QSG_RHI_BACKEND")) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  }
}

void prepareApplication() {
  std::setlocale(LC_NUMERIC, "C");
  listActionsOnce();
  // The name by which screen readers call the program; it would be that of its file.
  QGuiApplication::setApplicationName("Quellar");
  QGuiApplication::setApplicationDisplayName("Quellar");
  QGuiApplication::setDesktopFileName("com.vantorick.QuellarSettings");
  QFont font = QGuiApplication::font();
  font.setFamilies({"Inter", "Noto Sans", "Cantarell", "DejaVu Sans", font.family()});
  font.setHintingPreference(QFont::PreferNoHinting);
  QGuiApplication::setFont(font);
}

SettingsWindow::SettingsWindow(platform::NavigationController& controller, const WindowResources& resources,
                               double scale, const Appearance& appearance)
    : navigation_(controller, resources),
      state_(appearance),
      trouble_(
          troubleTexts(resources.text), [this] { return state_.isTouched(); }, resources.retryWrites),
      elsewhere_(*resources.elsewhere),
      stepTexts_{.turnOn = resources.text("Turn on “%1$@” to see “%2$@”."),
                 .turnOnAgain = resources.text("Turn “%1$@” off and on again to see “%2$@”."),
                 .set = resources.text("Set “%1$@” to “%3$@” to see “%2$@”.")},
      engine_({{"platform", new PlatformImageProvider(resources.readImage, scale)},
               {"glyph", new GlyphProvider},
               {"swatch", new SwatchProvider},
               {"backdrop", new BackdropProvider(resources.wallpaper)}}) {
  QObject::connect(&navigation_, &NavigationModel::topChanged, resources.elsewhere, &ElsewhereWatch::checkSoon);
  QObject::connect(&navigation_, &NavigationModel::topChanged, &state_, &WindowState::dismissHint);
  QObject::connect(&elsewhere_, &ElsewhereWatch::readAgain, &trouble_, &TroubleModel::tellReadable);
  elsewhere_.setHeld([this] { return state_.isPointerDown(); });
  QQmlComponent view(&engine_.get(), QUrl(kView));
  std::unique_ptr<QObject> made(
      view.createWithInitialProperties({{"navigation", QVariant::fromValue<QObject*>(&navigation_)},
                                        {"status", QVariant::fromValue<QObject*>(&state_)},
                                        {"trouble", QVariant::fromValue<QObject*>(&trouble_)},
                                        {"elsewhere", QVariant::fromValue<QObject*>(resources.elsewhere)},
                                        {"texts", QVariantMap{{"changedElsewhere", resources.text("Changed elsewhere")},
                                                              {"cut", resources.text("Cut")},
                                                              {"copy", resources.text("Copy")},
                                                              {"paste", resources.text("Paste")},
                                                              {"selectAll", resources.text("Select All")}}},
                                        {"rowOrder", QVariant::fromValue<QObject*>(&order_)}}));
  window_.reset(qobject_cast<QQuickWindow*>(made.get()));
  if (!window_) throw std::runtime_error("the view of the window can't be loaded: " + view.errorString().toStdString());
  static_cast<void>(made.release());
  // Rows beyond the window are made between its frames.
  engine_.get().setIncubationController(window_->incubationController());
  window_->installEventFilter(&state_);
}

SettingsWindow::~SettingsWindow() {
  elsewhere_.setHeld({});
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
  reveal(index);
  return true;
}

void SettingsWindow::reveal(int index) {
  const auto show = [this, index] { QMetaObject::invokeMethod(window_.get(), "revealRow", Q_ARG(QVariant, index)); };
  show();
  if (window_->isExposed()) return;
  // A window that is yet to come takes its size before its first frame; the rows have their places only then.
  QObject::connect(window_.get(), &QQuickWindow::afterAnimating, &state_, show, Qt::SingleShotConnection);
}

void SettingsWindow::leadTo(const frame::FoundRow& row) {
  navigation_.settle();
  PageModel* const model = navigation_.top();
  auto* const page = dynamic_cast<frame::KVQuellarListController*>(model ? model->controller() : nullptr);
  if (!page) return;
  const auto& listed = row.steps.empty() ? row.row : row.steps.front().row;
  const auto place = page->indexOfSpecifier(*listed);
  if (!place) return;
  for (const auto& connection : leading_) QObject::disconnect(connection);
  state_.dismissHint();
  if (!row.steps.empty()) {
    const std::string key = frame::keyOf(*row.row).value_or("");
    tellStep(*page, key);
    const auto update = [this, model, page, key] {
      // A page that has gone has no rows to come; a line that the user has put away stays away.
      if (model == navigation_.top() && !state_.hint().isEmpty()) tellStep(*page, key);
    };
    leading_ = {QObject::connect(model->rows(), &RowModel::countChanged, &state_, update),
                QObject::connect(model->rows(), &RowModel::dataChanged, &state_, update)};
  }
  reveal(model->rows()->indexOfPlace(*place));
}

void SettingsWindow::tellStep(frame::KVQuellarListController& page, const std::string& key) {
  const auto row = frame::findRow(page, key);
  if (!row || row->steps.empty()) {
    state_.dismissHint();
    return;
  }
  const frame::StepToRow& step = row->steps.front();
  QString text = step.again ? stepTexts_.turnOnAgain : step.block->shownAt ? stepTexts_.set : stepTexts_.turnOn;
  if (step.block->shownAt) {
    const auto choice = step.row->indexOfValue(platform::Value(*step.block->shownAt));
    text.replace("%3$@", choice ? QString::fromStdString(step.row->titles().at(*choice)) : QString());
  }
  text.replace("%1$@", QString::fromStdString(step.row->name()));
  text.replace("%2$@", QString::fromStdString(row->row->name()));
  state_.setHint(text);
}

}  // namespace quellar::host::window
