// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <QMouseEvent>
#include <QQuickItem>
#include <memory>
#include <stdexcept>

#include "frame/names.h"
#include "phone_window.h"

namespace quellar::benches {

namespace {

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
  Slider() {
    window_.panel().throwaway()->setAppValue(
        "Icon_Defaults", platform::Value(platform::Dictionary{{"usesCustomIconSize", true}}), frame::kSettingsDomain);
    window_.open("Icons");
    window_.rest();
    const QQuickItem* row = findSlider(window_.list());
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
  void draw() { window_.draw(); }

 private:
  void send(QEvent::Type type, double x) {
    const QPointF at(x, track_.y());
    QQuickWindow& view = window_.window().window();
    QMouseEvent event(type, at, view.mapToGlobal(at), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
  }

  PhoneWindow window_;
  QPointF track_;
  double place_ = 80;
};

}  // namespace

void addDragFrames(Suite& suite) {
  const auto addFrames = [&suite](const Entry& entry, void (Slider::*frame)()) {
    suite.add(entry, {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 60}, [frame] {
      const auto slider = std::make_shared<Slider>();
      return [slider, frame] {
        const Stopwatch stopwatch;
        (*slider.*frame)();
        return stopwatch.elapsed();
      };
    });
  };
  addFrames({.name = "window: one frame of a slider's drag", .floors = {kStillFrame}}, &Slider::drag);
  addFrames({.name = kStillFrame, .floors = {}}, &Slider::draw);
}

}  // namespace quellar::benches
