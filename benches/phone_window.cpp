// SPDX-License-Identifier: MIT
#include "phone_window.h"

#include <QAnimationDriver>
#include <QCoreApplication>
#include <QGuiApplication>
#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

#include "host/window/opening.h"

namespace quellar::benches {

namespace {

// Sixty frames a second, however long one takes.
class FrameClock final : public QAnimationDriver {
 public:
  void next() {
    ++frames_;
    advance();
  }
  [[nodiscard]] qint64 elapsed() const override { return frames_ * 1000 / 60; }

 private:
  qint64 frames_ = 0;
};

FrameClock& frameClock() {
  // Never deleted: at the end of the process the toolkit's own statics are gone before ours.
  static auto* const clock = new FrameClock;
  return *clock;
}

// Returns the scale, so that the toolkit runs before the panel that needs it is made.
double startToolkit() {
  static QGuiApplication* application = nullptr;
  if (application) return kPhoneScale;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kPhoneScale));
  host::window::chooseRenderer();
  static int argumentCount = 1;
  static std::string name = "quellar-bench";
  static std::array<char*, 2> arguments = {name.data(), nullptr};
  application = new QGuiApplication(argumentCount, arguments.data());
  host::window::prepareApplication();
  frameClock().install();
  return kPhoneScale;
}

QQuickItem* findList(QQuickItem& among, const QObject* page) {
  if (among.property("page").value<QObject*>() == page && among.property("list").isValid()) {
    return among.property("list").value<QQuickItem*>();
  }
  const auto children = among.childItems();
  for (QQuickItem* child : children) {
    if (QQuickItem* found = findList(*child, page)) return found;
  }
  return nullptr;
}

}  // namespace

PhoneWindow::PhoneWindow(const host::window::Appearance& appearance)
    : panel_({.deviceRoot = folder_.path().string(),
              .language = "en",
              .idiom = host::window::Idiom::phone,
              .scale = startToolkit(),
              .width = static_cast<double>(kPhone.width()),
              .throwaway = true,
              .onTrouble = {}}),
      window_(panel_.navigation(), panel_.resources(), kPhoneScale, appearance) {
  window_.resize(kPhone);
  window_.start();
}

void PhoneWindow::open(const std::string& name) {
  host::window::openPage(panel_.platform(), panel_.pages(), *panel_.pages().find(name));
  window_.navigation().settle();
}

void PhoneWindow::push(std::shared_ptr<platform::ViewController> page) {
  panel_.navigation().pushViewController(std::move(page));
  window_.navigation().settle();
}

void PhoneWindow::rest() {
  constexpr int kFramesOfASecond = 60;
  for (int each = 0; each < kFramesOfASecond; ++each) {
    QCoreApplication::processEvents(QEventLoop::AllEvents);
    frameClock().next();
  }
  // Rows off the view are made when there is time.
  const QQuickItem& rows = list();
  for (int turn = 0; turn < 1000; ++turn) {
    const auto made = rows.property("contentItem").value<QQuickItem*>()->childItems().size();
    if (made >= std::min(rows.property("count").toInt(), 30)) break;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 5);
  }
  draw();
}

void PhoneWindow::frame() {
  QCoreApplication::processEvents(QEventLoop::AllEvents);
  frameClock().next();
  draw();
}

void PhoneWindow::draw() {
  const QImage picture = window_.window().grabWindow();
  benchmark::DoNotOptimize(picture.constBits());
}

QQuickItem& PhoneWindow::list() {
  QQuickItem* found = findList(*window_.window().contentItem(), window_.navigation().top());
  if (!found) throw std::runtime_error("the window shows no list");
  return *found;
}

}  // namespace quellar::benches
