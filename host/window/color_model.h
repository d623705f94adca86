// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include "host/window/window_resources.h"
#include "platform/dialog.h"

namespace quellar::host::window {

/// The colour that is being picked in a colour dialog: by hue, saturation and brightness, or as a typed code.
///
/// The red, green and blue are kept beside the hue, saturation and brightness, so that a colour that nobody moves stays
/// exactly what it was, and a grey keeps its hue.
class ColorModel final : public QObject {
  Q_OBJECT
  /// Degrees, from 0 to 360.
  Q_PROPERTY(double hue READ hue WRITE setHue NOTIFY changed)
  /// All from 0 to 1.
  Q_PROPERTY(double saturation READ saturation WRITE setSaturation NOTIFY changed)
  Q_PROPERTY(double brightness READ brightness WRITE setBrightness NOTIFY changed)
  Q_PROPERTY(double alpha READ alpha WRITE setAlpha NOTIFY changed)
  Q_PROPERTY(bool showAlpha READ showAlpha NOTIFY changed)
  /// The hue at its strongest, the colour with its alpha, and the one that the dialog started from.
  Q_PROPERTY(QColor hueColor READ hueColor NOTIFY changed)
  Q_PROPERTY(QColor color READ color NOTIFY changed)
  Q_PROPERTY(QColor start READ start NOTIFY changed)
  /// The code as its field shows it: as it is typed, else as it would be stored.
  Q_PROPERTY(QString code READ code WRITE type NOTIFY changed)
  /// The codes of the colour and of the start, for a screen reader.
  Q_PROPERTY(QString colorCode READ colorCode NOTIFY changed)
  Q_PROPERTY(QString startCode READ startCode NOTIFY changed)
  /// Why the typed code can't be taken; "" while there is nothing to say.
  Q_PROPERTY(QString refusal READ refusal NOTIFY changed)
  /// The texts of the dialog by their use: title, hue, saturation, brightness, opacity, code, before, now, cancel,
  /// choose.
  Q_PROPERTY(QVariantMap texts READ texts CONSTANT)

 public:
  ColorModel(const TextFinder& text, QObject* parent);

  /// A dialog begins.
  void begin(const platform::ColorChoice& choice);

  [[nodiscard]] double hue() const { return hue_; }
  [[nodiscard]] double saturation() const { return saturation_; }
  [[nodiscard]] double brightness() const { return brightness_; }
  [[nodiscard]] double alpha() const { return value_.alpha; }
  [[nodiscard]] bool showAlpha() const { return showAlpha_; }
  [[nodiscard]] QColor hueColor() const;
  [[nodiscard]] QColor color() const;
  [[nodiscard]] QColor start() const;
  [[nodiscard]] QString code() const { return code_; }
  [[nodiscard]] QString colorCode() const;
  [[nodiscard]] QString startCode() const;
  [[nodiscard]] QString refusal() const { return refusal_; }
  [[nodiscard]] QVariantMap texts() const { return texts_; }
  [[nodiscard]] const platform::Color& value() const { return value_; }

  /// What is out of bounds counts as the nearest bound; what is no number changes nothing. The alpha is kept in
  /// hundredths, as it is stored.
  void setHue(double degrees);
  void setSaturation(double saturation);
  void setBrightness(double brightness);
  void setAlpha(double alpha);
  /// Both at once, where the field is touched.
  Q_INVOKABLE void setShade(double saturation, double brightness);
  /// Takes the code as it is being typed. One that is a colour is picked at once; one that is none yet changes nothing.
  void type(const QString& code);
  /// The typed code is finished: returns true and shows it as it would be stored, or false and says what is wrong with
  /// it, and leaves it as it is.
  Q_INVOKABLE bool settle();
  /// Back to the colour that the dialog started from.
  Q_INVOKABLE void startOver();

 signals:
  void changed();

 private:
  void take(const platform::Color& color);
  void mix();
  void showCode();

  const QVariantMap texts_;
  const QString refusalText_;
  platform::Color start_;
  platform::Color value_;
  bool showAlpha_ = false;
  double hue_ = 0;
  double saturation_ = 0;
  double brightness_ = 0;
  QString code_;
  bool codeIsColor_ = true;
  QString refusal_;
};

}  // namespace quellar::host::window
