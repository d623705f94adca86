// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QQuickItem>
#include <QTest>
#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "cells/backdrop_picker.h"
#include "frame/names.h"
#include "host/window/opening.h"
#include "host/window/sample_page.h"
#include "host/window/settings_window.h"
#include "host/window/window_platform.h"
#include "support/temporary_folder.h"

// What is laid out is looked at by asking the items, in a window that is never shown: nothing is drawn, so that many
// sizes, languages and text sizes take little time. The scale is that of the process, QT_SCALE_FACTOR.
namespace quellar::tests::clipping_test {
namespace {

using host::window::Idiom;
using host::window::Sample;
using host::window::SettingsWindow;
using host::window::WindowPlatform;
using platform::Dictionary;
using platform::Value;
using testing::IsEmpty;

// Points that a place may be short of what the toolkit rounds.
constexpr double kRounding = 0.51;
constexpr double kTarget = 44;
// As high as any page, so that all of its rows are laid out at once.
constexpr int kAllRows = 30000;

std::string describe(const QRectF& rect) {
  return QString("%1 x %2 at %3, %4")
      .arg(rect.width(), 0, 'f', 1)
      .arg(rect.height(), 0, 'f', 1)
      .arg(rect.x(), 0, 'f', 1)
      .arg(rect.y(), 0, 'f', 1)
      .toStdString();
}

bool contains(const QRectF& outer, const QRectF& inner) {
  return outer.adjusted(-kRounding, -kRounding, kRounding, kRounding).contains(inner);
}

bool overlap(const QRectF& one, const QRectF& other) {
  const QRectF shared = one.intersected(other);
  return shared.width() > kRounding && shared.height() > kRounding;
}

bool isText(const QQuickItem& item) {
  return item.inherits("QQuickText") && !item.property("text").toString().isEmpty();
}

QRectF inScene(const QQuickItem& item) {
  return item.mapRectToScene(QRectF(0, 0, item.width(), item.height()));
}

// Where the letters of a text are.
QRectF ink(const QQuickItem& text) {
  const QSizeF size(text.property("contentWidth").toReal(), text.property("contentHeight").toReal());
  const auto within = [](int alignment, int far, int middle, double room) {
    return alignment & middle ? room / 2 : alignment & far ? room : 0.0;
  };
  const int across = text.property("effectiveHorizontalAlignment").toInt();
  const int down = text.property("verticalAlignment").toInt();
  const QPointF corner(within(across, Qt::AlignRight, Qt::AlignHCenter, text.width() - size.width()),
                       within(down, Qt::AlignBottom, Qt::AlignVCenter, text.height() - size.height()));
  return text.mapRectToScene(QRectF(corner, size));
}

// A bar has one line, and a placeholder the room that its text would have: there, what does not fit is elided on
// purpose. A screen reader has it whole.
bool mayBeElided(const QQuickItem& text) {
  for (const QQuickItem* item = text.parentItem(); item; item = item->parentItem()) {
    if (item->property("backItem").isValid() || item->inherits("QQuickTextInput")) return true;
  }
  return false;
}

// Looks at what is shown of an item and those below it, and tells what is wrong with it.
class Inspection {
 public:
  // Takes the room that nothing may leave.
  explicit Inspection(const QRectF& room) : room_(room) {}

  void look(const QQuickItem& item) { look(item, nullptr, false); }
  [[nodiscard]] std::vector<std::string> findings() {
    for (const Leaf& text : leaves_) {
      if (!isText(*text.item)) continue;
      for (const Leaf& other : leaves_) {
        if (text.item == other.item || text.holder != other.holder || !overlap(text.rect, other.rect)) continue;
        // On a surface is right; half on it is not.
        if (!isText(*other.item) && contains(other.rect, text.rect)) continue;
        tell(*text.item, "lies over " +
                             (isText(*other.item) ? '"' + other.item->property("text").toString().toStdString() + '"'
                                                  : std::string("an edge")) +
                             ": " + describe(text.rect) + " and " + describe(other.rect));
      }
    }
    return findings_;
  }
  [[nodiscard]] std::size_t texts() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(leaves_, [](const Leaf& leaf) { return isText(*leaf.item); }));
  }

 private:
  // Something that is seen, and the row or panel that it belongs to.
  struct Leaf {
    const QQuickItem* item;
    const QQuickItem* holder;
    QRectF rect;
  };

  void tell(const QQuickItem& item, const std::string& what) {
    std::string name = item.property("text").toString().toStdString();
    if (name.empty()) name = item.metaObject()->className();
    findings_.push_back('"' + name + "\" " + what);
  }

  void look(const QQuickItem& item, const QQuickItem* holder, bool scrolls) {
    if (!item.isVisible() || item.opacity() == 0) return;
    // What scrolls may lie above or below the room, not beside it.
    const bool isScroller = item.inherits("QQuickFlickable");
    if (item.parentItem() && item.parentItem()->parentItem() &&
        item.parentItem()->parentItem()->inherits("QQuickFlickable")) {
      holder = &item;
    }
    if (isText(item)) {
      lookAtText(item, holder, scrolls);
    } else if (item.inherits("QQuickMouseArea")) {
      lookAtTarget(item, scrolls);
    } else if (isSurface(item)) {
      leaves_.push_back({&item, holder, inScene(item)});
    }
    const auto children = item.childItems();
    for (const QQuickItem* child : children) look(*child, holder, scrolls || isScroller);
  }

  // A card is put together of several rectangles, and is one surface.
  static bool isCard(const QQuickItem& item) {
    return item.property("first").isValid() && item.property("color").isValid() && !item.property("label").isValid();
  }
  static bool isSurface(const QQuickItem& item) {
    if (isCard(item)) return true;
    const QQuickItem* parent = item.parentItem();
    if (parent && isCard(*parent) && parent->property("color") == item.property("color")) return false;
    if (item.inherits("QQuickRectangle")) return item.property("color").value<QColor>().alpha() > 0;
    return item.inherits("QQuickImage") && !item.property("source").toUrl().isEmpty();
  }

  void lookAtText(const QQuickItem& text, const QQuickItem* holder, bool scrolls) {
    const QRectF rect = ink(text);
    leaves_.push_back({&text, holder, rect});
    if (rect.width() > text.width() + kRounding || rect.height() > text.height() + kRounding) {
      tell(text, "is larger than its place: " + describe(rect) + " in " + describe(inScene(text)));
    }
    if (text.property("truncated").toBool() && !mayBeElided(text)) tell(text, "is elided");
    if (holder && !contains(inScene(*holder), rect)) {
      tell(text, "leaves its row: " + describe(rect) + " in " + describe(inScene(*holder)));
    }
    lookAtRoom(text, rect, scrolls);
  }

  void lookAtTarget(const QQuickItem& area, bool scrolls) {
    if (!area.isEnabled()) return;
    const QRectF rect = inScene(area);
    if (rect.width() < kTarget - 0.01 || rect.height() < kTarget - 0.01) {
      tell(area, "is too small to touch: " + describe(rect) + " in \"" +
                     area.parentItem()->property("label").toString().toStdString() + "\"");
    }
    // A row's area may reach over its edge.
    if (!area.property("held").isValid()) lookAtRoom(area, rect, scrolls);
  }

  void lookAtRoom(const QQuickItem& item, const QRectF& rect, bool scrolls) {
    const QRectF room = scrolls ? QRectF(room_.x(), rect.y(), room_.width(), rect.height()) : room_;
    if (!contains(room, rect)) tell(item, "leaves the window: " + describe(rect) + " in " + describe(room_));
  }

  const QRectF room_;
  std::vector<Leaf> leaves_;
  std::vector<std::string> findings_;
};

struct Manner {
  const char* language = "en";
  double textScale = 1;
};

// The window in one manner, on values of its own.
class Stage {
 public:
  explicit Stage(const Manner& manner, Idiom idiom = Idiom::phone)
      : panel_({.deviceRoot = folder_.path().string(),
                .language = manner.language,
                .idiom = idiom,
                .scale = 1,
                .width = 390,
                .throwaway = true,
                .onTrouble = {}}),
        window_(panel_.navigation(), panel_.resources(), 1,
                {.textScale = manner.textScale, .reducedMotion = true, .rightToLeft = panel_.isRightToLeft()}),
        name_(QString("%1 at %2%").arg(manner.language).arg(100 * manner.textScale).toStdString()) {}

  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  // Animations end by an event, for which their window has to be there.
  ~Stage() { QTest::qWait(60); }

  // With its blocks.
  void open(const std::string& name) {
    const auto& entry = *panel_.pages().find(name);
    popTo(&entry == &panel_.pages().entries().front() ? 0 : 1);
    panel_.throwaway()->clear();
    host::window::openPage(panel_.platform(), panel_.pages(), entry);
    host::window::showBlocks(
        *std::dynamic_pointer_cast<platform::PSListController>(panel_.navigation().topViewController()), true);
    window_.navigation().settle();
    page_ = name;
  }
  void open(std::shared_ptr<platform::ViewController> page, const std::string& name) {
    popTo(1);
    panel_.navigation().pushViewController(std::move(page));
    window_.navigation().settle();
    page_ = name;
  }

  // What is wrong with the page, or the dialog, at a size; the page alone is laid out as high as it is.
  std::vector<std::string> look(QSize size) {
    const bool dialog = panel_.navigation().dialog().has_value();
    layOut(size);
    // A dialog is looked at alone: the page beneath it is not in use.
    const QQuickItem* shown = dialog ? dialogLayer() : window_.window().contentItem();
    Inspection inspection(QRectF(QPointF(0, 0), size));
    inspection.look(*shown);
    std::vector<std::string> findings;
    for (const std::string& each : inspection.findings()) {
      findings.push_back(page_ + ", " + name_ + ", " + std::to_string(size.width()) + " x " +
                         std::to_string(size.height()) + ": " + each);
    }
    texts_ += inspection.texts();
    return findings;
  }

  void layOut(QSize size) {
    QQuickItem* root = window_.window().contentItem();
    root->setSize(size);
    // Some sizes follow from others that were found before, and some calls are put off.
    for (int turn = 0; turn < 3; ++turn) {
      polish(*root);
      QCoreApplication::processEvents();
    }
  }

  [[nodiscard]] WindowPlatform& panel() { return panel_; }
  [[nodiscard]] SettingsWindow& window() { return window_; }
  [[nodiscard]] host::window::RowModel& rows() { return *window_.navigation().top()->rows(); }
  // The number of texts that were looked at so far.
  [[nodiscard]] std::size_t texts() const { return texts_; }

  // The first row of a kind.
  int firstRow(const char* kind) {
    const auto& all = rows().rows();
    const auto found = std::ranges::find(all, QString(kind), &host::window::ShownRow::kind);
    if (found == all.end()) throw std::runtime_error(page_ + " has no row of the kind " + kind);
    return static_cast<int>(found - all.begin());
  }

 private:
  static void polish(QQuickItem& item) {
    // What lies around others takes its size from theirs.
    const auto children = item.childItems();
    for (QQuickItem* child : children) polish(*child);
    item.ensurePolished();
  }

  const QQuickItem* dialogLayer() {
    for (const QQuickItem* item : window_.window().contentItem()->childItems()) {
      const auto* loaded = item->property("item").value<QQuickItem*>();
      if (loaded != nullptr && loaded->property("presence").isValid()) return loaded;
    }
    throw std::runtime_error("no dialog is shown");
  }

  void popTo(std::size_t depth) {
    while (panel_.navigation().viewControllers().size() > depth) panel_.navigation().popViewController(false);
  }

  TemporaryFolder folder_;
  WindowPlatform panel_;
  SettingsWindow window_;
  const std::string name_;
  std::string page_;
  std::size_t texts_ = 0;
};

// Keeps what was found, without what was found before in another page or size.
class Findings {
 public:
  void add(const std::vector<std::string>& findings) { all_.insert(all_.end(), findings.begin(), findings.end()); }
  [[nodiscard]] std::vector<std::string> first() const {
    return {all_.begin(), all_.begin() + std::min<std::ptrdiff_t>(20, std::ssize(all_))};
  }

 private:
  std::vector<std::string> all_;
};

// The window shows both as narrow as it can be, in the narrowest two columns, and as wide as a desktop.
constexpr QSize kNarrow(320, kAllRows);
constexpr QSize kNarrowColumns(700, kAllRows);
constexpr QSize kWide(2560, kAllRows);

// At other scales, where only what the toolkit rounds differs, the extremes alone.
std::vector<Manner> manners() {
  if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) return {{"ar-XB", 0.85}, {"en-XA", 2}};
  return {{"en", 0.85}, {"en-XA", 1}, {"ar-XB", 1.3}, {"en-XA", 2}};
}

TEST(Clipping, SparesEveryPageAtTheExtremes) {
  Findings findings;
  for (const Manner manner : {Manner{"en-XA", 2}, Manner{"ar-XB", 0.85}}) {
    Stage stage(manner);
    for (const auto& entry : stage.panel().pages().entries()) {
      stage.open(entry.name);
      for (const QSize size : {kNarrow, kNarrowColumns}) findings.add(stage.look(size));
    }
    EXPECT_GT(stage.texts(), 1500U);
  }
  EXPECT_THAT(findings.first(), IsEmpty());
}

TEST(Clipping, SparesEachKindOfRowAtEverySize) {
  Findings findings;
  for (const Manner manner : manners()) {
    Stage stage(manner);
    for (const Sample sample : {Sample::plain, Sample::lengthy}) {
      stage.open(host::window::makeSamplePage(stage.panel().platform(), sample), "Rows");
      for (const int width : {320, 390, 699, 700, 1180, 2560}) findings.add(stage.look(QSize(width, kAllRows)));
    }
    for (const char* page : {"Quellar", "Icons"}) {
      stage.open(page);
      for (const QSize size : {kNarrow, QSize(480, kAllRows), kWide}) findings.add(stage.look(size));
    }
  }
  EXPECT_THAT(findings.first(), IsEmpty());
}

TEST(Clipping, SparesEveryDialog) {
  Findings findings;
  for (const Manner manner : manners()) {
    // A popover stands where there is room for it.
    const bool pad = manner.textScale < 1 || manner.textScale == 2;
    for (const Idiom idiom : pad ? std::vector{Idiom::phone, Idiom::pad} : std::vector{Idiom::phone}) {
      Stage stage(manner, idiom);
      const auto look = [&] {
        ASSERT_TRUE(stage.panel().navigation().dialog());
        for (const QSize size : {QSize(320, 290), QSize(320, 480), QSize(700, 290), QSize(2560, 1600)})
          findings.add(stage.look(size));
      };
      stage.open("Quellar");
      stage.window().navigation().pressBar("right");
      look();
      stage.panel().navigation().dismiss();
      stage.open("Icons");
      stage.rows().enterValue(stage.firstRow("typedSlider"));
      look();
      stage.window().navigation().dialog()->typeText("1000000");
      stage.window().navigation().dialog()->accept();
      look();
      stage.panel().navigation().dismiss();
      stage.rows().activate(stage.firstRow("color"));
      look();
      auto* color = stage.window().navigation().dialog()->color();
      color->setProperty("code", "no colour");
      color->settle();
      look();
      stage.panel().navigation().dismiss();
    }
  }
  EXPECT_THAT(findings.first(), IsEmpty());
}

TEST(Clipping, SparesNoticesAndPreviews) {
  Findings findings;
  for (const Manner manner : {Manner{"en", 1}, Manner{"ar-XB", 2}, Manner{"en-XA", 2}}) {
    Stage stage(manner);
    stage.open("Dock");
    stage.window().trouble().tell({host::linux::StoreTrouble::Kind::Write,
                                   "/a/folder/with/a/long/name/somewhere/com.vantorick.quellar2.plist",
                                   "cannot write"});
    for (const QSize size : {kNarrow, kNarrowColumns, kWide}) findings.add(stage.look(size));
    stage.open(std::make_shared<cells::KVQuellarBackdropPickerViewController>(stage.panel().platform(), "style",
                                                                              "Picture_Defaults"),
               "Backdrops");
    for (const QSize size : {kNarrow, kNarrowColumns, kWide}) findings.add(stage.look(size));
    // The previews are drawn anew once the window rests.
    QTest::qWait(200);
  }
  EXPECT_THAT(findings.first(), IsEmpty());
}

}  // namespace
}  // namespace quellar::tests::clipping_test
