// SPDX-License-Identifier: MIT
#include "host/window/image_provider.h"

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QPolygonF>
#include <QStringList>
#include <utility>

#include "cells/color_preview_cell.h"
#include "host/window/image_address.h"
#include "host/window/picture_rules.h"

namespace quellar::host::window {

namespace {

constexpr double kSwatchPoints = 30;

QImage emptyImage() {
  QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  return image;
}

QImage inColor(QImage image, const QColor& color) {
  image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  QPainter painter(&image);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), color);
  return image;
}

}  // namespace

QImage PlatformImageProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const auto named = namedImage(id);
  auto bytes = named ? read_(platform::Image{named->path, std::nullopt}, scale_) : std::nullopt;
  QImage image;
  if (bytes) {
    QBuffer buffer;
    buffer.setData(QByteArray::fromStdString(*std::exchange(bytes, std::nullopt)));
    QImageReader reader(&buffer);
    if (!whyNoPicture(reader)) image = reader.read();
  }
  if (image.isNull()) image = emptyImage();
  if (size) *size = image.size();
  if (!requestedSize.isEmpty()) {
    image = image.scaled(requestedSize, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  } else if (requestedSize.height() > 0) {
    image = image.scaledToHeight(requestedSize.height(), Qt::SmoothTransformation);
  }
  return named && named->mask.isValid() ? inColor(std::move(image), named->mask) : image;
}

QImage SwatchProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const cells::Picture swatch =
      cells::_accessoryImageForColor("#" + id.toStdString(), std::max(1, requestedSize.width()) / kSwatchPoints);
  const QImage image(swatch.pixels.data(), swatch.pixelWidth, swatch.pixelHeight, qsizetype{4} * swatch.pixelWidth,
                     QImage::Format_RGBA8888_Premultiplied);
  if (size) *size = image.size();
  // The pixels go with the picture.
  return image.copy();
}

QImage GlyphProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
  const QStringList parts = id.split('/');
  const QSize extent = requestedSize.isEmpty() ? QSize(32, 32) : requestedSize;
  if (size) *size = extent;
  QImage image(extent, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  if (parts.front() == "checks") {
    const QSize square = extent / 2;
    painter.fillRect(QRect(QPoint(square.width(), 0), square), QColor("#" + parts.back()));
    painter.fillRect(QRect(QPoint(0, square.height()), square), QColor("#" + parts.back()));
    return image;
  }
  painter.setRenderHint(QPainter::Antialiasing);
  // The signs are drawn in a square of 16.
  const double unit = std::min(extent.width(), extent.height()) / 16.0;
  painter.scale(unit, unit);
  const QString& name = parts.front();
  painter.setPen(
      QPen(QColor("#" + parts.back()), name == "chevron" ? 1.8 : 1.9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  QPolygonF line({{6, 3.4}, {10.6, 8}, {6, 12.6}});
  if (name == "back") line = QPolygonF({{10.4, 2.2}, {4.6, 8}, {10.4, 13.8}});
  if (name == "check") line = QPolygonF({{2.6, 8.6}, {6.2, 12.2}, {13.4, 4}});
  painter.drawPolyline(line);
  return image;
}

}  // namespace quellar::host::window
