// SPDX-License-Identifier: MIT
#include "host/window/image_address.h"

#include <QByteArray>
#include <QStringList>

namespace quellar::host::window {

namespace {

constexpr auto kEncoding = QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

}  // namespace

QString imageAddress(const platform::Image& image) {
  // The path is encoded, because a file name may hold what means something in an address.
  QString address = "image://platform/" + QByteArray::fromStdString(image.path).toBase64(kEncoding);
  if (image.flatColor) {
    const QColor color(QString::fromStdString(*image.flatColor));
    if (color.isValid()) address += "/" + color.name().mid(1);
  }
  return address;
}

std::optional<NamedImage> namedImage(const QString& address) {
  const QStringList parts = address.split('/');
  const auto decoded =
      QByteArray::fromBase64Encoding(parts.front().toLatin1(), kEncoding | QByteArray::AbortOnBase64DecodingErrors);
  if (!decoded || decoded.decoded.isEmpty()) return std::nullopt;
  NamedImage image{decoded.decoded.toStdString(), {}};
  if (parts.size() > 1) image.mask = QColor("#" + parts[1]);
  return image;
}

}  // namespace quellar::host::window
