// SPDX-License-Identifier: MIT
#include "host/window/sample_wallpaper.h"

#include <QLinearGradient>
#include <QPainter>
#include <QPolygonF>
#include <QRadialGradient>
#include <array>
#include <cmath>

namespace quellar::host::window {

namespace {

// The outline of a chain of hills: where its crest is on the average and how high it swings, as parts of the height,
// and how many hills there are.
struct Ridge {
  double crest;
  double swing;
  double hills;
  QRgb top;
  QRgb bottom;
};

constexpr std::array kRidges{Ridge{0.56, 0.10, 1.7, 0xff8f6fa3, 0xff6c5b96},
                             Ridge{0.66, 0.12, 2.6, 0xff4f4f8c, 0xff3a4279},
                             Ridge{0.80, 0.10, 3.9, 0xff23345f, 0xff14233f}};

double crestAt(const Ridge& ridge, double along) {
  const double turn = along * ridge.hills * 6.28;
  return ridge.crest + ridge.swing * (0.6 * std::sin(turn + ridge.hills) + 0.3 * std::sin(2.3 * turn) +
                                      0.1 * std::sin(7.1 * turn + 2 * ridge.hills));
}

}  // namespace

QImage sampleWallpaper(QSize pixels) {
  QImage image(pixels, QImage::Format_RGB32);
  const double width = pixels.width();
  const double height = pixels.height();
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);

  QLinearGradient sky(0, 0, 0, height * 0.75);
  sky.setColorAt(0, QColor("#2b5f9e"));
  sky.setColorAt(0.45, QColor("#e58fa4"));
  sky.setColorAt(0.8, QColor("#ffc27a"));
  sky.setColorAt(1, QColor("#fff0c2"));
  painter.fillRect(image.rect(), sky);

  const QPointF sun(width * 0.68, height * 0.42);
  QRadialGradient glow(sun, height * 0.5);
  glow.setColorAt(0, QColor(255, 246, 214, 230));
  glow.setColorAt(0.3, QColor(255, 214, 140, 110));
  glow.setColorAt(1, QColor(255, 190, 120, 0));
  painter.fillRect(image.rect(), glow);
  painter.setBrush(QColor("#fffbe8"));
  painter.drawEllipse(sun, height * 0.1, height * 0.1);

  for (const Ridge& ridge : kRidges) {
    QPolygonF outline{{0, height}};
    constexpr int kSteps = 240;
    for (int step = 0; step <= kSteps; ++step) {
      const double along = static_cast<double>(step) / kSteps;
      outline << QPointF(along * width, crestAt(ridge, along) * height);
    }
    outline << QPointF(width, height);
    QLinearGradient slope(0, (ridge.crest - ridge.swing) * height, 0, height);
    slope.setColorAt(0, QColor(ridge.top));
    slope.setColorAt(1, QColor(ridge.bottom));
    painter.setBrush(slope);
    painter.drawPolygon(outline);
  }
  return image;
}

}  // namespace quellar::host::window
