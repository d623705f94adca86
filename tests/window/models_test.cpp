// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QBuffer>
#include <QTest>
#include <fstream>

#include "host/window/image_address.h"
#include "host/window/image_provider.h"
#include "host/window/qt_main_queue.h"
#include "host/window/row_matching.h"
#include "support/temporary_folder.h"

namespace quellar::tests {
namespace models_test {

using namespace std::chrono_literals;
using host::window::GlyphProvider;
using host::window::imageAddress;
using host::window::matchKeys;
using host::window::namedImage;
using host::window::PlatformImageProvider;
using host::window::QtMainQueue;
using testing::ElementsAre;

std::pair<std::string, std::string> matched(const std::vector<std::string_view>& before,
                                            const std::vector<std::string_view>& after) {
  const auto matching = matchKeys(before, after);
  const auto kept = [](const std::vector<std::string_view>& keys, const std::vector<bool>& marks) {
    std::string result;
    for (std::size_t place = 0; place < keys.size(); ++place) {
      result += marks[place] ? std::string(keys[place]) : std::string("-");
    }
    return result;
  };
  return {kept(before, matching.before), kept(after, matching.after)};
}

TEST(RowMatching, KeepsWhatStandsBeforeAndAfterABlock) {
  EXPECT_EQ(matched({"a", "b", "c"}, {"a", "x", "y", "b", "c"}), std::pair(std::string("abc"), std::string("a--bc")));
  EXPECT_EQ(matched({"a", "x", "y", "b", "c"}, {"a", "b", "c"}), std::pair(std::string("a--bc"), std::string("abc")));
}

TEST(RowMatching, KeepsARowThatIsListedASecondTime) {
  EXPECT_EQ(matched({"a", "b", "c", "x"}, {"a", "x", "b", "c", "x"}),
            std::pair(std::string("abcx"), std::string("a-bcx")));
}

TEST(RowMatching, KeepsTheLongestRunWhenSeveralPlacesChange) {
  EXPECT_EQ(matched({"a", "b", "c", "d", "e"}, {"a", "c", "x", "d", "y", "e"}),
            std::pair(std::string("a-cde"), std::string("ac-d-e")));
  EXPECT_EQ(matched({"a", "b"}, {"b", "a"}).first.size(), 2U);
}

TEST(RowMatching, TakesListsThatHaveNothingInCommon) {
  EXPECT_EQ(matched({}, {"a"}), std::pair(std::string(), std::string("-")));
  EXPECT_EQ(matched({"a", "b"}, {}), std::pair(std::string("--"), std::string()));
  EXPECT_EQ(matched({"a"}, {"b"}), std::pair(std::string("-"), std::string("-")));
}

TEST(RowMatching, StaysQuickForTwoLongListsThatDiffer) {
  std::vector<std::string> names;
  for (int each = 0; each < 20000; ++each) names.push_back(std::to_string(each));
  const std::vector<std::string_view> before(names.begin(), names.begin() + 10000);
  const std::vector<std::string_view> after(names.begin() + 10000, names.end());
  const auto matching = matchKeys(before, after);
  EXPECT_EQ(std::ranges::count(matching.before, true), 0);
  EXPECT_EQ(std::ranges::count(matching.after, true), 0);
}

TEST(QtMainQueue, RunsWorksAsTheyFallDueAndNeverAtOnce) {
  QtMainQueue queue;
  std::vector<std::string> done;
  queue.after(30ms, [&] { done.emplace_back("late"); });
  queue.after(0ns, [&] { done.emplace_back("first"); });
  queue.after(0ns, [&] { done.emplace_back("second"); });
  queue.after(10ms, [&] {
    done.emplace_back("early");
    queue.after(0ns, [&] { done.emplace_back("added"); });
  });
  EXPECT_TRUE(done.empty());
  EXPECT_FALSE(queue.idle());
  EXPECT_TRUE(QTest::qWaitFor([&] { return queue.idle(); }, 10000));
  EXPECT_THAT(done, ElementsAre("first", "second", "early", "added", "late"));
}

TEST(QtMainQueue, RunsNoWorkBeforeItsTime) {
  QtMainQueue queue;
  const auto start = std::chrono::steady_clock::now();
  std::chrono::nanoseconds waited{};
  queue.after(20ms + 300us, [&] { waited = std::chrono::steady_clock::now() - start; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return queue.idle(); }, 10000));
  EXPECT_GE(waited, 20ms + 300us);
}

TEST(QtMainQueue, TakesADelayBeyondTheClock) {
  QtMainQueue queue;
  bool ran = false;
  queue.after(std::chrono::nanoseconds::max(), [] {});
  queue.after(-1s, [&] { ran = true; });
  EXPECT_TRUE(QTest::qWaitFor([&] { return ran; }, 10000));
  EXPECT_FALSE(queue.idle());
}

TEST(ImageAddress, CarriesAnyPathAndTheColour) {
  const platform::Image image{.path = "/Library/a b/ü?#%20.png", .flatColor = "#41a9d6"};
  const QString address = imageAddress(image);
  ASSERT_TRUE(address.startsWith("image://platform/"));
  const auto named = namedImage(address.mid(17));
  ASSERT_TRUE(named);
  EXPECT_EQ(named->path, image.path);
  EXPECT_EQ(named->mask, QColor(65, 169, 214));
  EXPECT_FALSE(namedImage(imageAddress({.path = "/x.png", .flatColor = std::nullopt}).mid(17))->mask.isValid());
  EXPECT_FALSE(namedImage("*not base64*"));
}

std::string encoded(const QImage& image, const char* format) {
  QBuffer buffer;
  buffer.open(QIODevice::WriteOnly);
  EXPECT_TRUE(image.save(&buffer, format)) << format;
  return buffer.data().toStdString();
}

TEST(PlatformImageProvider, ColoursAMaskAndFitsTheSizeThatIsAskedFor) {
  QImage drawing(40, 20, QImage::Format_ARGB32);
  drawing.fill(Qt::transparent);
  for (int x = 0; x < 20; ++x) {
    for (int y = 0; y < 20; ++y) drawing.setPixelColor(x, y, Qt::black);
  }
  const std::string mask = encoded(drawing, "png");
  double askedScale = 0;
  PlatformImageProvider provider(
      [&](const platform::Image& image, double scale) -> std::optional<std::string> {
        askedScale = scale;
        if (image.path != "/mask.png") return std::nullopt;
        return mask;
      },
      2);
  const auto load = [&](const platform::Image& image, QSize size) {
    return provider.requestImage(imageAddress(image).mid(17), nullptr, size);
  };
  const QImage whole = load({.path = "/mask.png", .flatColor = "#41a9d6"}, {});
  EXPECT_EQ(askedScale, 2);
  EXPECT_EQ(whole.size(), QSize(40, 20));
  EXPECT_EQ(whole.pixelColor(5, 5), QColor(65, 169, 214));
  EXPECT_EQ(whole.pixelColor(35, 5).alpha(), 0);
  EXPECT_EQ(load({.path = "/mask.png", .flatColor = std::nullopt}, {20, 20}).size(), QSize(20, 10));
  EXPECT_EQ(load({.path = "/mask.png", .flatColor = std::nullopt}, {0, 60}).size(), QSize(120, 60));
  EXPECT_EQ(load({.path = "/missing.png", .flatColor = std::nullopt}, {29, 29}).pixelColor(0, 0).alpha(), 0);
}

TEST(PlatformImageProvider, IsEmptyForWhatIsNoPngOrJpegPictureOfASizeThatFitsInMemory) {
  QImage drawing(3, 3, QImage::Format_RGB32);
  drawing.fill(Qt::red);
  std::string huge = encoded(drawing, "png");
  // The width and the height, four bytes each, the highest first, and the checksum that goes with them.
  huge.replace(16, 17, std::string("\x00\x01\x00\x00\x00\x01\x00\x00\x08\x02\x00\x00\x00\xe3\xe6\xa7\xb4", 17));
  std::string bytes;
  PlatformImageProvider provider([&](const platform::Image&, double) { return bytes; }, 1);
  const auto sizeOf = [&](const std::string& file) {
    bytes = file;
    return provider.requestImage(imageAddress({.path = "/x.png", .flatColor = std::nullopt}).mid(17), nullptr, {})
        .size();
  };
  EXPECT_EQ(sizeOf(encoded(drawing, "png")), QSize(3, 3));
  EXPECT_EQ(sizeOf(encoded(drawing, "jpg")), QSize(3, 3)) << "the contents tell the format, whatever the name says";
  for (const std::string& file : {std::string("this is no picture"), std::string(), encoded(drawing, "bmp"),
                                  encoded(drawing, "ppm"), huge, encoded(drawing, "png").substr(0, 30)}) {
    EXPECT_EQ(sizeOf(file), QSize(1, 1)) << file.substr(0, 8);
  }
}

TEST(GlyphProvider, DrawsInTheColourAtTheSizeThatIsAskedFor) {
  GlyphProvider provider;
  const QImage chevron = provider.requestImage("chevron/0c6f9f", nullptr, {48, 48});
  EXPECT_EQ(chevron.size(), QSize(48, 48));
  bool drawn = false;
  for (int x = 0; x < 48; ++x) drawn = drawn || chevron.pixelColor(x, 24) == QColor(0x0c, 0x6f, 0x9f);
  EXPECT_TRUE(drawn);
  EXPECT_NE(chevron, provider.requestImage("back/0c6f9f", nullptr, {48, 48}));
}

}  // namespace models_test
}  // namespace quellar::tests
