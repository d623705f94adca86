// SPDX-License-Identifier: MIT
#include "host/window/color_model.h"

#include <algorithm>
#include <cmath>

namespace quellar::host::window {

using platform::Color;

namespace {

constexpr double kCircle = 360;

QVariantMap textsOf(const TextFinder& text) {
  return {{"title", text("Color")},           {"hue", text("Hue")},         {"saturation", text("Saturation")},
          {"brightness", text("Brightness")}, {"opacity", text("Opacity")}, {"code", text("Color Code")},
          {"before", text("Before")},         {"now", text("Now")},         {"cancel", text("Cancel")},
          {"choose", text("Choose")}};
}

std::uint8_t byteOf(double part) {
  return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

// The usual colour wheel: each component is at its highest around its own place on it.
Color mixed(double hue, double saturation, double brightness, double alpha) {
  const auto component = [&](double place) {
    const double sector = std::fmod(place + hue / 60, 6.0);
    return byteOf(brightness * (1 - saturation * std::clamp(std::min(sector, 4 - sector), 0.0, 1.0)));
  };
  return {component(5), component(3), component(1), alpha};
}

QColor drawn(const Color& color) {
  return {color.red, color.green, color.blue, static_cast<int>(std::lround(color.alpha * 255))};
}

QString codeOf(const Color& color, bool showAlpha) {
  return QString::fromStdString(platform::hexFromColor(color, showAlpha));
}

double bounded(double value, double highest) {
  return std::clamp(value, 0.0, highest);
}

}  // namespace

ColorModel::ColorModel(const TextFinder& text, QObject* parent)
    : QObject(parent),
      texts_(textsOf(text)),
      refusalText_(text("This is no color. A color has six digits from 0 to 9 and a to f, such as #41a9d6.")) {}

void ColorModel::begin(const platform::ColorChoice& choice) {
  start_ = choice.start;
  showAlpha_ = choice.showAlpha;
  // Without the slider for it there is no alpha to pick.
  start_.alpha = showAlpha_ ? bounded(start_.alpha, 1) : 1;
  hue_ = 0;
  saturation_ = 0;
  startOver();
}

QColor ColorModel::hueColor() const {
  return drawn(mixed(hue_, 1, 1, 1));
}

QColor ColorModel::color() const {
  return drawn(value_);
}

QColor ColorModel::start() const {
  return drawn(start_);
}

QString ColorModel::colorCode() const {
  return codeOf(value_, showAlpha_);
}

QString ColorModel::startCode() const {
  return codeOf(start_, showAlpha_);
}

void ColorModel::setHue(double degrees) {
  if (std::isnan(degrees) || bounded(degrees, kCircle) == hue_) return;
  hue_ = bounded(degrees, kCircle);
  mix();
}

void ColorModel::setSaturation(double saturation) {
  setShade(saturation, brightness_);
}

void ColorModel::setBrightness(double brightness) {
  setShade(saturation_, brightness);
}

void ColorModel::setShade(double saturation, double brightness) {
  if (std::isnan(saturation) || std::isnan(brightness)) return;
  if (bounded(saturation, 1) == saturation_ && bounded(brightness, 1) == brightness_) return;
  saturation_ = bounded(saturation, 1);
  brightness_ = bounded(brightness, 1);
  mix();
}

void ColorModel::setAlpha(double alpha) {
  if (std::isnan(alpha) || !showAlpha_) return;
  const double hundredths = std::round(bounded(alpha, 1) * 100) / 100;
  if (hundredths == value_.alpha) return;
  value_.alpha = hundredths;
  showCode();
}

void ColorModel::type(const QString& code) {
  if (code == code_) return;
  code_ = code;
  refusal_.clear();
  const auto color = platform::colorFromString(code.trimmed().toStdString());
  codeIsColor_ = color.has_value();
  if (color) take(*color);
  emit changed();
}

bool ColorModel::settle() {
  if (codeIsColor_) {
    showCode();
  } else {
    refusal_ = refusalText_;
    emit changed();
  }
  return codeIsColor_;
}

void ColorModel::startOver() {
  take(start_);
  showCode();
}

void ColorModel::take(const Color& color) {
  value_ = color;
  if (!showAlpha_) value_.alpha = 1;
  const auto [lowest, highest] = std::minmax({color.red, color.green, color.blue});
  const double spread = highest - lowest;
  brightness_ = highest / 255.0;
  // A grey has no hue and black no saturation; they keep those that the handles stand at.
  if (highest > 0) saturation_ = spread / highest;
  if (spread > 0) {
    double sector = 4 + (color.red - color.green) / spread;
    if (highest == color.red) {
      sector = (color.green - color.blue) / spread;
    } else if (highest == color.green) {
      sector = 2 + (color.blue - color.red) / spread;
    }
    hue_ = std::fmod(sector * 60 + kCircle, kCircle);
  }
}

void ColorModel::mix() {
  value_ = mixed(hue_, saturation_, brightness_, value_.alpha);
  showCode();
}

void ColorModel::showCode() {
  code_ = colorCode();
  codeIsColor_ = true;
  refusal_.clear();
  emit changed();
}

}  // namespace quellar::host::window
