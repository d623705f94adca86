// SPDX-License-Identifier: MIT
#include "host/window/wallpaper.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QImageReader>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "cells/backdrop_picker.h"
#include "host/linux/posix_call.h"
#include "host/window/picture_rules.h"

namespace quellar::host::window {

using linux::FileError;

namespace {

using Path = std::filesystem::path;

// The platform's bitmap file: four bytes a pixel, rows padded to a multiple of pixels, and a trailer that begins with
// the width and the height, 32 bits each, the lowest byte first.
constexpr std::int64_t kPixelBytes = 4;
constexpr std::int64_t kRowPadding = 8;
constexpr std::int64_t kTrailerBytes = 20;
constexpr std::int64_t kLongestSide = 65536;
// So many rows, and so many pixels of each, make one pixel of the result at most. More would not be seen.
constexpr std::int64_t kMostSamples = 4;

void readAt(int file, std::int64_t offset, std::uint8_t* bytes, std::size_t count, const Path& name) {
  while (count > 0) {
    const auto got = linux::retried([&] { return ::pread(file, bytes, count, offset); });
    if (got < 0) linux::throwErrno(name);
    if (got == 0) throw FileError(name, "is cut off");
    bytes += got;
    offset += got;
    count -= static_cast<std::size_t>(got);
  }
}

struct Span {
  std::int64_t begin;
  std::int64_t end;
};

// The middle part of a length that is left when the picture fills the target.
Span middle(std::int64_t length, std::int64_t target, double perPixel) {
  const auto part = std::clamp(static_cast<std::int64_t>(std::lround(static_cast<double>(target) * perPixel)),
                               std::int64_t{1}, length);
  return {(length - part) / 2, (length - part) / 2 + part};
}

// Up to kMostSamples places, evenly over the part of a span that one of `count` pixels covers.
std::vector<std::int64_t> samples(Span span, std::int64_t pixel, std::int64_t count) {
  const std::int64_t length = span.end - span.begin;
  const std::int64_t begin = span.begin + length * pixel / count;
  const std::int64_t end = std::max(begin + 1, span.begin + length * (pixel + 1) / count);
  const std::int64_t number = std::min(kMostSamples, end - begin);
  std::vector<std::int64_t> places;
  for (std::int64_t each = 0; each < number; ++each) {
    places.push_back(begin + (end - begin) * (2 * each + 1) / (2 * number));
  }
  return places;
}

class PlatformBitmap {
 public:
  PlatformBitmap(int file, std::int64_t bytes, const Path& name) : file_(file), name_(name) {
    if (bytes < kTrailerBytes) throw FileError(name, "is too short for a wallpaper");
    std::array<std::uint8_t, 8> size{};
    readAt(file, bytes - kTrailerBytes, size.data(), size.size(), name);
    width_ = number(&size[0]);
    height_ = number(&size[4]);
    if (width_ < 1 || height_ < 1 || width_ > kLongestSide || height_ > kLongestSide) {
      throw FileError(name, "is no wallpaper: its size would be " + sizeText());
    }
    rowBytes_ = (width_ + kRowPadding - 1) / kRowPadding * kRowPadding * kPixelBytes;
    if (rowBytes_ * height_ > bytes - kTrailerBytes) {
      throw FileError(name, "is cut off: it has no room for " + sizeText() + " pixels");
    }
  }

  [[nodiscard]] QImage filling(QSize pixels) const {
    const double perPixel =
        std::min(static_cast<double>(width_) / pixels.width(), static_cast<double>(height_) / pixels.height());
    const Span columns = middle(width_, pixels.width(), perPixel);
    const Span rows = middle(height_, pixels.height(), perPixel);
    if (perPixel <= 1) {
      // It is no larger than the result.
      const QSize part(static_cast<int>(columns.end - columns.begin), static_cast<int>(rows.end - rows.begin));
      return reduced(columns, rows, part).scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    return reduced(columns, rows, pixels);
  }

 private:
  static std::int64_t number(const std::uint8_t* bytes) {
    return bytes[0] | std::int64_t{bytes[1]} << 8U | std::int64_t{bytes[2]} << 16U | std::int64_t{bytes[3]} << 24U;
  }

  [[nodiscard]] std::string sizeText() const { return std::to_string(width_) + " x " + std::to_string(height_); }

  [[nodiscard]] QImage reduced(Span columns, Span rows, QSize pixels) const {
    std::vector<std::vector<std::int64_t>> columnSamples;
    for (int x = 0; x < pixels.width(); ++x) columnSamples.push_back(samples(columns, x, pixels.width()));
    std::vector<std::uint8_t> line(static_cast<std::size_t>((columns.end - columns.begin) * kPixelBytes));
    std::vector<std::array<std::uint32_t, kPixelBytes>> sums;
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < pixels.height(); ++y) {
      sums.assign(static_cast<std::size_t>(pixels.width()), {});
      const auto rowSamples = samples(rows, y, pixels.height());
      for (const std::int64_t row : rowSamples) {
        readAt(file_, row * rowBytes_ + columns.begin * kPixelBytes, line.data(), line.size(), name_);
        for (std::size_t x = 0; x < sums.size(); ++x) {
          for (const std::int64_t column : columnSamples[x]) {
            const std::uint8_t* pixel = &line[static_cast<std::size_t>((column - columns.begin) * kPixelBytes)];
            for (std::size_t byte = 0; byte < kPixelBytes; ++byte) sums[x].at(byte) += pixel[byte];
          }
        }
      }
      auto* target = reinterpret_cast<QRgb*>(image.scanLine(y));
      for (std::size_t x = 0; x < sums.size(); ++x) {
        const auto count = static_cast<std::uint32_t>(rowSamples.size() * columnSamples[x].size());
        const auto mean = [&](std::size_t byte) { return static_cast<int>((sums[x].at(byte) + count / 2) / count); };
        const int alpha = mean(3);
        // A premultiplied component is never above its alpha.
        target[x] = qRgba(std::min(mean(2), alpha), std::min(mean(1), alpha), std::min(mean(0), alpha), alpha);
      }
    }
    return image;
  }

  int file_;
  const Path& name_;
  std::int64_t width_ = 0;
  std::int64_t height_ = 0;
  std::int64_t rowBytes_ = 0;
};

QImage readPicture(linux::FileDescriptor file, QSize pixels, const Path& name) {
  QFile device;
  if (!device.open(file.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
    throw FileError(name, device.errorString().toStdString());
  }
  QImageReader reader(&device);
  if (const auto why = whyNoPicture(reader)) throw FileError(name, *why);
  const QSize size = reader.size();
  reader.setAutoTransform(true);
  const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
  const QSize filling = size.scaled(turned ? pixels.transposed() : pixels, Qt::KeepAspectRatioByExpanding);
  if (filling.width() < size.width()) reader.setScaledSize(filling.expandedTo(QSize(1, 1)));
  QImage image = reader.read();
  if (image.isNull()) throw FileError(name, reader.errorString().toStdString());
  if (image.size().scaled(pixels, Qt::KeepAspectRatioByExpanding) != image.size()) {
    image = image.scaled(pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
  }
  return image.copy((image.width() - pixels.width()) / 2, (image.height() - pixels.height()) / 2, pixels.width(),
                    pixels.height());
}

std::optional<QImage> read(const linux::DeviceRoot& root, const Path& path, QSize pixels) {
  auto file = root.openForReading(path.string());
  if (!file) return std::nullopt;
  const Path name = root.hostPath(path.string());
  struct stat status{};
  if (linux::retried([&] { return ::fstat(file->get(), &status); }) != 0) linux::throwErrno(name);
  if (!S_ISREG(status.st_mode)) throw FileError(name, "is not a regular file");
  if (path.extension() != ".cpbitmap") return readPicture(std::move(*file), pixels, name);
  return PlatformBitmap(file->get(), status.st_size, name).filling(pixels);
}

}  // namespace

QImage wallpaperFilling(const linux::DeviceRoot& root, QSize pixels, const WallpaperReport& report,
                        const WallpaperStandIn& standIn) {
  QImage ground(pixels.expandedTo(QSize(1, 1)), QImage::Format_RGB32);
  ground.fill(kNoWallpaper);
  Path path = cells::KVQuellarBackdropPickerCollectionView::kWallpaperPath;
  for (const char* extension : {".cpbitmap", ".png", ".jpg"}) {
    try {
      path.replace_extension(extension);
      const auto wallpaper = read(root, path, ground.size());
      if (!wallpaper) continue;
      QPainter(&ground).drawImage(0, 0, *wallpaper);
      return ground;
    } catch (const FileError& error) {
      if (report) report(error.what());
    }
  }
  return standIn ? standIn(ground.size()) : ground;
}

}  // namespace quellar::host::window
