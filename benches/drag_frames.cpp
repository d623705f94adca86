// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <array>
#include <memory>
#include <stdexcept>
#include <string>

#include "frame/names.h"
#include "host/window/opening.h"
#include "host/window/settings_window.h"
#include "host/window/window_platform.h"
#include "suite.h"
#include "support/temporary_folder.h"

namespace quellar::benches {

namespace {

using host::window::SettingsWindow;
using host::window::WindowPlatform;

constexpr QSize kPhone(390, 844);
constexpr double kScale = 2;

void startToolkit() {
  // Never deleted: at the end of the process the toolkit's own statics are gone before ours.
  static QGuiApplication* application = nullptr;
  if (application) return;
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qputenv("QT_SCALE_FACTOR", QByteArray::number(kScale));
  host::window::chooseRenderer();
  static int argumentCount = 1;
  static std::string name = "quellar-bench";
  static std::array<char*, 2> arguments = {name.data(), nullptr};
  application = new QGuiApplication(argumentCount, arguments.data());
  host::window::prepareApplication();
}

QQuickItem* findSlider(QQuickItem& among) {
  if (among.property("minimum").isValid() && among.property("rowEnabled").isValid()) return &among;
  const auto children = among.childItems();
  for (QQuickItem* child : children) {
    if (QQuickItem* found = findSlider(*child)) return found;
  }
  return nullptr;
}

// The icons page with its slider, in a window that nobody sees.
class Slider {
 public:
  Slider()
      : panel_({.deviceRoot = folder_.path().string(),
                .language = "en",
                .idiom = host::window::Idiom::phone,
                .scale = kScale,
                .width = static_cast<double>(kPhone.width()),
                .throwaway = true,
                .onTrouble = {}}),
        window_(panel_.navigation(), panel_.resources(), kScale, {}) {
    panel_.throwaway()->setAppValue(
        "Icon_Defaults", platform::Value(platform::Dictionary{{"usesCustomIconSize", true}}), frame::kSettingsDomain);
    window_.show(kPhone);
    host::window::openPage(panel_.platform(), panel_.pages(), *panel_.pages().find("Icons"));
    window_.navigation().settle();
    QElapsedTimer clock;
    clock.start();
    // Until the page has slid in.
    while (clock.elapsed() < 1000) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    (void)window_.window().grabWindow();
    const QQuickItem* row = findSlider(*window_.window().contentItem());
    if (!row) throw std::runtime_error("the page shows no slider");
    track_ = row->mapToScene(QPointF(0, row->height() - 24));
    send(QEvent::MouseButtonPress, kPhone.width() / 2.0);
  }

  // The pointer goes on, and the window is drawn whole.
  void drag() {
    place_ = place_ >= 300 ? 80 : place_ + 3;
    send(QEvent::MouseMove, place_);
    draw();
  }
  void draw() {
    const QImage frame = window_.window().grabWindow();
    benchmark::DoNotOptimize(frame.constBits());
  }

 private:
  void send(QEvent::Type type, double x) {
    const QPointF at(x, track_.y());
    QMouseEvent event(type, at, window_.window().mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&window_.window(), &event);
  }

  tests::TemporaryFolder folder_;
  WindowPlatform panel_;
  SettingsWindow window_;
  QPointF track_;
  double place_ = 80;
};

}  // namespace

void addDragFrames(Suite& suite) {
  const std::string still = "window: draw 390 x 844 at scale 2, nothing changed";
  const auto addFrames = [&suite](const Entry& entry, void (Slider::*frame)()) {
    suite.add(entry, {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 60}, [frame] {
      startToolkit();
      const auto slider = std::make_shared<Slider>();
      return [slider, frame] {
        const Stopwatch stopwatch;
        (*slider.*frame)();
        return stopwatch.elapsed();
      };
    });
  };
  addFrames({.name = "window: one frame of a slider's drag", .floors = {still}}, &Slider::drag);
  addFrames({.name = still, .floors = {}}, &Slider::draw);
}

}  // namespace quellar::benches
