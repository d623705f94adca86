// SPDX-License-Identifier: MIT
#include "host/window/wallpaper.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QBuffer>
#include <filesystem>

#include "cells/backdrop_picker.h"
#include "host/window/backdrop_looks.h"
#include "host/window/backdrop_preview.h"
#include "support/temporary_folder.h"
#include "wallpaper_files.h"

namespace quellar::tests {
namespace wallpaper_test {

using host::window::BackdropLook;
using host::window::backdropLook;
using host::window::backdropLooks;
using host::window::drawBackdrop;
using host::window::kNoWallpaper;
using host::window::wallpaperFilling;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Wallpaper : public testing::Test {
 protected:
  void write(const char* extension, std::string_view bytes) { root_.write(std::string(kWallpaper) + extension, bytes); }
  QImage filling(QSize pixels) {
    const host::linux::DeviceRoot root(root_.path());
    return wallpaperFilling(root, pixels, [this](const std::string& message) { reports_.push_back(message); });
  }
  // What is told where nothing can be used.
  std::string refusal() {
    reports_.clear();
    const QImage image = filling(QSize(20, 10));
    EXPECT_EQ(image.size(), QSize(20, 10));
    EXPECT_TRUE(isGrey(image));
    return reports_.size() == 1 ? reports_.front() : std::to_string(reports_.size()) + " reports";
  }
  static bool isGrey(const QImage& image) {
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        if (image.pixel(x, y) != kNoWallpaper) return false;
      }
    }
    return true;
  }
  static std::string encoded(const QImage& image, const char* format) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return buffer.data().toStdString();
  }
  // A file of a size that takes no room.
  void writeHuge(std::uint32_t width, std::uint32_t height, std::uintmax_t bytes) {
    std::string trailer;
    for (const std::uint32_t number : {width, height, 0U, 0U, 0U}) {
      for (unsigned shift = 0; shift < 32; shift += 8) trailer += static_cast<char>(number >> shift & 0xFFU);
    }
    const auto file = root_.write(std::string(kWallpaper) + ".cpbitmap", "");
    std::filesystem::resize_file(file, bytes);
    std::ofstream(file, std::ios::binary | std::ios::app) << trailer;
  }

  TemporaryFolder root_;
  std::vector<std::string> reports_;
};

TEST_F(Wallpaper, IsGreyWhereThereIsNone) {
  EXPECT_TRUE(isGrey(filling(QSize(30, 20))));
  EXPECT_EQ(kNoWallpaper, 0xff808080);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(Wallpaper, IsReadPixelForPixelFromABitmapOfTheSameSize) {
  // Rows of eleven pixels are padded to sixteen.
  write(".cpbitmap", bitmapBytes(11, 5, [](int x, int y) { return qRgb(20 * x, 50 * y, 7); }));
  const QImage image = filling(QSize(11, 5));
  EXPECT_EQ(image.pixel(0, 0), qRgb(0, 0, 7));
  EXPECT_EQ(image.pixel(10, 0), qRgb(200, 0, 7));
  EXPECT_EQ(image.pixel(3, 4), qRgb(60, 200, 7));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(Wallpaper, FillsTheSizeFromItsMiddle) {
  // Bands of ten: of a square that fills a low strip the middle band is seen.
  write(".cpbitmap", bitmapBytes(300, 300, [](int, int y) { return qRgb(0, y / 100 * 100, 0); }));
  QImage image = filling(QSize(100, 30));
  EXPECT_EQ(image.pixel(0, 0), qRgb(0, 100, 0));
  EXPECT_EQ(image.pixel(99, 29), qRgb(0, 100, 0));
  image = filling(QSize(30, 30));
  EXPECT_EQ(image.pixel(15, 4), qRgb(0, 0, 0));
  EXPECT_EQ(image.pixel(15, 25), qRgb(0, 200, 0));
}

TEST_F(Wallpaper, IsTheMeanOfWhatAPixelCovers) {
  write(".cpbitmap",
        bitmapBytes(64, 64, [](int x, int y) { return (x + y) % 2 == 0 ? qRgb(255, 255, 255) : qRgb(0, 0, 0); }));
  const QImage image = filling(QSize(32, 32));
  EXPECT_EQ(image.pixel(10, 10), qRgb(128, 128, 128));
  EXPECT_EQ(image.pixel(31, 31), qRgb(128, 128, 128));
}

TEST_F(Wallpaper, IsStretchedWhereItIsSmaller) {
  write(".cpbitmap", bitmapBytes(1, 1, [](int, int) { return qRgb(10, 20, 30); }));
  EXPECT_EQ(filling(QSize(500, 200)).pixel(499, 0), qRgb(10, 20, 30));
  write(".cpbitmap", bitmapBytes(4000, 1, [](int, int) { return qRgb(10, 20, 30); }));
  EXPECT_EQ(filling(QSize(50, 200)).pixel(49, 199), qRgb(10, 20, 30));
}

TEST_F(Wallpaper, LetsGreyThroughWhereItIsTransparent) {
  // Half transparent red, premultiplied; and a pixel that breaks the rule.
  write(".cpbitmap", bitmapBytes(8, 8, [](int x, int) { return x < 4 ? qRgba(128, 0, 0, 128) : qRgba(200, 0, 0, 0); }));
  const QImage image = filling(QSize(8, 8));
  EXPECT_NEAR(qRed(image.pixel(0, 0)), 192, 1);
  EXPECT_NEAR(qGreen(image.pixel(0, 0)), 64, 1);
  EXPECT_EQ(image.pixel(7, 0), kNoWallpaper);
}

TEST_F(Wallpaper, IsReadFromAPngOrJpegToo) {
  QImage picture(40, 20, QImage::Format_RGB32);
  picture.fill(qRgb(0, 0, 200));
  write(".jpg", encoded(picture, "JPEG"));
  EXPECT_NEAR(qBlue(filling(QSize(10, 10)).pixel(5, 5)), 200, 2);
  picture.fill(qRgb(0, 200, 0));
  write(".png", encoded(picture, "PNG"));
  EXPECT_EQ(filling(QSize(100, 10)).pixel(99, 9), qRgb(0, 200, 0));
  // The platform's own file comes first.
  write(".cpbitmap", bitmapBytes(8, 8, [](int, int) { return qRgb(200, 0, 0); }));
  EXPECT_EQ(filling(QSize(10, 10)).pixel(5, 5), qRgb(200, 0, 0));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(Wallpaper, GoesOnToTheNextFileWhereOneCannotBeUsed) {
  write(".cpbitmap", "no bitmap");
  QImage picture(4, 4, QImage::Format_RGB32);
  picture.fill(qRgb(0, 200, 0));
  write(".png", encoded(picture, "PNG"));
  EXPECT_EQ(filling(QSize(10, 10)).pixel(5, 5), qRgb(0, 200, 0));
  EXPECT_THAT(reports_, ElementsAre(HasSubstr("LockBackground.cpbitmap: is too short for a wallpaper")));
}

TEST_F(Wallpaper, IsGreyWhereTheBitmapIsDamaged) {
  const std::string good = bitmapBytes(64, 64, colorfulPixel);
  write(".cpbitmap", good.substr(0, 19));
  EXPECT_THAT(refusal(), HasSubstr("too short"));
  write(".cpbitmap", good.substr(good.size() - 20));
  EXPECT_THAT(refusal(), HasSubstr("cut off: it has no room for 64 x 64 pixels"));
  write(".cpbitmap", good.substr(1));
  EXPECT_THAT(refusal(), HasSubstr("cut off"));
  // The end is missing: what is taken for the size is pixels.
  write(".cpbitmap", good.substr(0, good.size() / 2));
  EXPECT_THAT(refusal(), HasSubstr("LockBackground.cpbitmap: is no wallpaper: its size would be "));
  write(".cpbitmap", std::string(2000, '\0'));
  EXPECT_THAT(refusal(), HasSubstr("0 x 0"));
  write(".cpbitmap", std::string(2000, '\xff'));
  EXPECT_THAT(refusal(), HasSubstr("4294967295 x 4294967295"));
}

TEST_F(Wallpaper, IsGreyWhereThePictureIsDamagedOrNone) {
  write(".png", "This is no picture at all.");
  EXPECT_THAT(refusal(), HasSubstr("LockBackground.png: is no PNG or JPEG picture"));
  write(".png", R"(<svg xmlns="http://www.w3.org/2000/svg" width="10" height="10"/>)");
  EXPECT_THAT(refusal(), HasSubstr("is no PNG or JPEG picture"));
  QImage picture(64, 64, QImage::Format_RGB32);
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) picture.setPixel(x, y, colorfulPixel(x * 31, y * 17));
  }
  const std::string good = encoded(picture, "PNG");
  write(".png", good.substr(0, good.size() / 2));
  EXPECT_THAT(refusal(), HasSubstr("LockBackground.png: "));
  write(".png", good.substr(0, 20));
  EXPECT_THAT(refusal(), HasSubstr("LockBackground.png: "));
}

TEST_F(Wallpaper, IsGreyWhereSomethingElseThanAFileHasItsName) {
  const auto path = root_.path() / (std::string(kWallpaper) + ".cpbitmap");
  std::filesystem::create_directories(path);
  EXPECT_THAT(refusal(), HasSubstr("is not a regular file"));
  std::filesystem::remove(path);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_THAT(refusal(), HasSubstr("is not a regular file"));
  std::filesystem::remove(path);
  std::filesystem::create_symlink("/etc/passwd", path);
  EXPECT_THAT(refusal(), HasSubstr("LockBackground.cpbitmap"));
}

TEST_F(Wallpaper, OfAHundredMegapixelsIsReadWithoutRoomForAllOfThem) {
  writeHuge(10000, 10000, 400000000);
  rusage before{};
  ::getrusage(RUSAGE_SELF, &before);
  const QImage image = filling(QSize(525, 270));
  rusage after{};
  ::getrusage(RUSAGE_SELF, &after);
  EXPECT_THAT(reports_, IsEmpty());
  // The holes of the file are transparent pixels.
  EXPECT_EQ(image.pixel(100, 100), kNoWallpaper);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 20 * 1024) << "KiB";

  writeHuge(60000, 60000, 1000);
  EXPECT_THAT(refusal(), HasSubstr("no room for 60000 x 60000 pixels"));
}

TEST_F(Wallpaper, RefusesAPictureOfAHundredMegapixels) {
  QImage line(10000, 1, QImage::Format_Mono);
  line.fill(0);
  std::string bytes = encoded(line, "PNG");
  // The height stands in the header, whose checksum is made anew.
  bytes[22] = '\x27';
  bytes[23] = '\x10';
  std::uint32_t crc = 0xFFFFFFFFU;
  for (std::size_t at = 12; at < 29; ++at) {
    crc ^= static_cast<unsigned char>(bytes[at]);
    for (int bit = 0; bit < 8; ++bit) crc = crc & 1U ? crc >> 1U ^ 0xEDB88320U : crc >> 1U;
  }
  crc = ~crc;
  for (unsigned byte = 0; byte < 4; ++byte) bytes[29 + byte] = static_cast<char>(crc >> (24 - 8 * byte) & 0xFFU);
  write(".png", bytes);
  EXPECT_THAT(refusal(), HasSubstr("has more than 64 megapixels (10000 x 10000)"));
}

// The looks of the styles.
class Backdrops : public testing::Test {
 protected:
  static constexpr QSize kSize{175, 90};
  static QImage ground() {
    QImage image(kSize, QImage::Format_RGB32);
    for (int y = 0; y < kSize.height(); ++y) {
      for (int x = 0; x < kSize.width(); ++x) image.setPixel(x, y, colorfulPixel(x, y));
    }
    return image;
  }
  static QImage drawn(std::int64_t style, const QImage& beneath) {
    const BackdropLook* look = backdropLook(style);
    if (!look) throw std::runtime_error("no look for " + std::to_string(style));
    return drawBackdrop(beneath, *look, 1);
  }
  // The mean of the pixels: their red, green and blue.
  static std::array<double, 3> mean(const QImage& image) {
    std::array<double, 3> sum{};
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const QRgb pixel = image.pixel(x, y);
        sum[0] += qRed(pixel);
        sum[1] += qGreen(pixel);
        sum[2] += qBlue(pixel);
      }
    }
    for (double& each : sum) each /= image.width() * image.height();
    return sum;
  }
  static double light(const QImage& image) {
    const auto [red, green, blue] = mean(image);
    return (red + green + blue) / 3;
  }
  // How much neighbouring pixels differ: edges that are still to be seen.
  static double detail(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 1; x < image.width(); ++x)
        sum += std::abs(qGreen(image.pixel(x, y)) - qGreen(image.pixel(x - 1, y)));
    }
    return sum / (image.width() * image.height());
  }
  static double distance(const QImage& one, const QImage& other) {
    double sum = 0;
    for (int y = 0; y < one.height(); ++y) {
      for (int x = 0; x < one.width(); ++x) {
        const QRgb a = one.pixel(x, y);
        const QRgb b = other.pixel(x, y);
        sum += std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) + std::abs(qBlue(a) - qBlue(b));
      }
    }
    return sum / (one.width() * one.height());
  }
};

TEST_F(Backdrops, HaveALookForEachStyleOfThePickerAndNoOther) {
  std::set<std::int64_t> styles;
  for (const std::string_view style : cells::KVQuellarBackdropPickerCollectionView::backdropStyles()) {
    styles.insert(std::stoll(std::string(style)));
    EXPECT_NE(backdropLook(*styles.rbegin()), nullptr) << style;
  }
  std::set<std::int64_t> looks;
  for (const BackdropLook& look : backdropLooks()) {
    looks.insert(look.style);
    EXPECT_EQ(backdropLook(look.style), &look);
  }
  EXPECT_EQ(looks, styles);
  EXPECT_EQ(backdropLooks().size(), 31U);
  EXPECT_EQ(backdropLook(1), nullptr);
  EXPECT_EQ(backdropLook(9999), nullptr);
}

TEST_F(Backdrops, AreAllToBeToldApart) {
  std::vector<QImage> previews;
  for (const BackdropLook& look : backdropLooks()) previews.push_back(drawBackdrop(ground(), look, 1));
  for (std::size_t one = 0; one < previews.size(); ++one) {
    for (std::size_t other = one + 1; other < previews.size(); ++other) {
      EXPECT_GT(distance(previews[one], previews[other]), 12)
          << backdropLooks()[one].style << " and " << backdropLooks()[other].style;
    }
  }
}

TEST_F(Backdrops, DoWhatTheirLooksSay) {
  const QImage beneath = ground();
  EXPECT_LT(light(drawn(2030, beneath)), light(beneath) * 0.5);
  EXPECT_GT(light(drawn(2020, beneath)), light(beneath) * 1.2);
  EXPECT_LT(detail(drawn(2040, beneath)), detail(beneath) * 0.1);
  // A veil keeps its share of every edge.
  EXPECT_NEAR(detail(drawn(3900, beneath)), detail(beneath) * (1 - 0x26 / 255.0), 0.5);
  const auto [red, green, blue] = mean(drawn(2070, beneath));
  EXPECT_NEAR(red, green, 0.01);
  EXPECT_NEAR(green, blue, 0.01);
  const auto glass = mean(drawn(4009, beneath));
  EXPECT_GT(glass[2], glass[0] + 40);
}

TEST_F(Backdrops, KeepTheLightOfTheirGroundWhereTheyOnlyBlur) {
  const BackdropLook blurred{0, 12, 1, 1, 0};
  const QImage beneath = ground();
  EXPECT_NEAR(light(drawBackdrop(beneath, blurred, 1)), light(beneath), 3);
  QImage plain(kSize, QImage::Format_RGB32);
  plain.fill(qRgb(12, 200, 99));
  EXPECT_EQ(drawBackdrop(plain, blurred, 3).convertToFormat(QImage::Format_RGB32), plain);
}

TEST_F(Backdrops, BlurByPointsAndEvenlyToAllSides) {
  QImage dot(81, 81, QImage::Format_RGB32);
  dot.fill(Qt::black);
  for (int y = 38; y <= 42; ++y) {
    for (int x = 38; x <= 42; ++x) dot.setPixel(x, y, qRgb(255, 255, 255));
  }
  const auto widthOf = [&](double scale) {
    const QImage image = drawBackdrop(dot, {0, 3, 1, 1, 0}, scale);
    double sum = 0;
    double spread = 0;
    for (int x = 0; x < 81; ++x) {
      sum += qRed(image.pixel(x, 40));
      spread += qRed(image.pixel(x, 40)) * (x - 40.0) * (x - 40.0);
      EXPECT_EQ(image.pixel(x, 40), image.pixel(80 - x, 40));
      EXPECT_NEAR(qRed(image.pixel(x, 40)), qRed(image.pixel(40, x)), 1);
    }
    return std::sqrt(spread / sum);
  };
  EXPECT_NEAR(widthOf(1), 3.3, 0.5);
  EXPECT_NEAR(widthOf(2), 6.2, 0.8);
}

TEST_F(Backdrops, AreDrawnOverAGroundOfAnySize) {
  for (const QSize size : {QSize(1, 1), QSize(1, 90), QSize(90, 1), QSize(2, 3)}) {
    QImage tiny(size, QImage::Format_RGB32);
    tiny.fill(qRgb(100, 100, 100));
    EXPECT_EQ(drawBackdrop(tiny, {0, 30, 1, 1, 0}, 3).pixel(0, 0), qRgb(100, 100, 100));
  }
  EXPECT_TRUE(drawBackdrop(QImage(), backdropLooks().front(), 1).isNull());
}

}  // namespace wallpaper_test
}  // namespace quellar::tests
