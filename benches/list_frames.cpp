// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "frame/page_registry.h"
#include "pages/registry.h"
#include "phone_window.h"
#include "platform/list_controller.h"

namespace quellar::benches {

namespace {

using platform::Class;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;

constexpr const char* kSwitch = "switch";

// Rows of all kinds that a page has many of.
PSSpecifier::Pointer makeRow(PSListController& page, std::size_t number, PSSpecifier::Setter set = {}) {
  constexpr std::array kKinds = {PSCellType::PSSwitchCell,   PSCellType::PSLinkListCell, PSCellType::PSSwitchCell,
                                 PSCellType::PSEditTextCell, PSCellType::PSSliderCell,   PSCellType::PSButtonCell};
  const PSCellType kind = kKinds.at(number % kKinds.size());
  auto row =
      PSSpecifier::preferenceSpecifierNamed("Row " + std::to_string(number), &page, std::move(set), {}, "", kind);
  row->setProperty("key", Value("row" + std::to_string(number)));
  if (kind == PSCellType::PSSliderCell) {
    row->setProperty("cellClass", Class{"KVQuellarSliderCell"});
    row->setProperty("min", Value(0.0));
    row->setProperty("max", Value(100.0));
    row->setProperty("default", Value(30.0));
    row->setProperty("showValue", Value(true));
  }
  return row;
}

// A switch that shows a block of fifteen rows, and rows below it.
class BlockPage final : public PSListController {
 public:
  explicit BlockPage(platform::Platform& platform) : PSListController(platform, "BlockPage") {
    setTitle("Block");
    for (std::size_t number = 0; number < 15; ++number) block_.push_back(makeRow(*this, 100 + number));
  }

  Specifiers makeSpecifiers() override {
    Specifiers rows;
    auto toggle = PSSpecifier::preferenceSpecifierNamed(
        "Show", this,
        [this](const auto& value, PSSpecifier& /*row*/) {
          if (value && value->boolValue()) {
            insertContiguousSpecifiers(block_, kSwitch, true);
          } else {
            removeContiguousSpecifiers(block_, true);
          }
        },
        {}, "", PSCellType::PSSwitchCell);
    toggle->setProperty("key", Value(kSwitch));
    rows.push_back(std::move(toggle));
    for (std::size_t number = 0; number < 20; ++number) rows.push_back(makeRow(*this, number));
    return rows;
  }

  void show(bool shown) { userSetsValue(*specifierForID(kSwitch), Value(shown)); }

 private:
  Specifiers block_;
};

class LongPage final : public PSListController {
 public:
  LongPage(platform::Platform& platform, std::size_t rows) : PSListController(platform, "LongPage"), rows_(rows) {
    setTitle("Long");
  }
  Specifiers makeSpecifiers() override {
    Specifiers rows;
    for (std::size_t number = 0; number < rows_; ++number) rows.push_back(makeRow(*this, number));
    return rows;
  }

 private:
  const std::size_t rows_;
};

// Of a number of frames the one that only one in a hundred is slower than.
std::chrono::nanoseconds ninetyNinth(std::vector<std::chrono::nanoseconds> frames) {
  const std::size_t place = frames.size() - 1 - frames.size() / 100;
  std::nth_element(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(place), frames.end());
  return frames[place];
}

void addBlock(Suite& suite) {
  // One operation is ten openings.
  suite.add({.name = "window: a block of fifteen rows opens, 99th frame of 100", .floors = {kStillFrame}},
            {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 1}, [] {
              const auto window = std::make_shared<PhoneWindow>();
              const auto page = std::make_shared<BlockPage>(window->panel().platform());
              window->open("Quellar");
              window->push(page);
              window->rest();
              return [window, page] {
                constexpr int kOpenings = 10;
                constexpr int kFrames = 24;
                std::vector<std::chrono::nanoseconds> frames;
                for (int opening = 0; opening < kOpenings; ++opening) {
                  for (int each = 0; each < kFrames; ++each) {
                    const Stopwatch stopwatch;
                    if (each == 0) page->show(true);
                    window->frame();
                    frames.push_back(stopwatch.elapsed());
                  }
                  page->show(false);
                  window->rest();
                }
                return ninetyNinth(std::move(frames));
              };
            });
}

// Goes up and down a page, forty points a frame; `pick` makes one figure of a hundred frames.
void addScroll(Suite& suite, Entry entry, std::size_t rows,
               std::chrono::nanoseconds (*pick)(std::vector<std::chrono::nanoseconds>)) {
  suite.add(std::move(entry), {.unit = benchmark::kMillisecond, .repetitions = 7, .operations = 3}, [rows, pick] {
    const auto window = std::make_shared<PhoneWindow>();
    window->open("Quellar");
    window->push(std::make_shared<LongPage>(window->panel().platform(), rows));
    window->rest();
    QQuickItem* const list = &window->list();
    return [window, list, pick, step = 40.0]() mutable {
      std::vector<std::chrono::nanoseconds> frames;
      while (frames.size() < 100) {
        const double before = list->property("contentY").toDouble();
        const Stopwatch stopwatch;
        QMetaObject::invokeMethod(list, "scrollBy", Q_ARG(QVariant, step));
        window->frame();
        const auto elapsed = stopwatch.elapsed();
        if (list->property("contentY").toDouble() == before) {
          step = -step;
        } else {
          frames.push_back(elapsed);
        }
      }
      return pick(std::move(frames));
    };
  });
}

std::chrono::nanoseconds median(std::vector<std::chrono::nanoseconds> frames) {
  const auto middle = frames.begin() + std::ssize(frames) / 2;
  std::nth_element(frames.begin(), middle, frames.end());
  return *middle;
}

void addScrolls(Suite& suite) {
  const std::string few = "window: scroll a page of 30 rows, median frame";
  const std::string fewWorst = "window: scroll a page of 30 rows, 99th frame of 100";
  addScroll(suite, {.name = "window: scroll a page of 10,000 rows, median frame", .floors = {few}}, 10000, median);
  addScroll(suite, {.name = few, .floors = {}}, 30, median);
  addScroll(suite, {.name = "window: scroll a page of 10,000 rows, 99th frame of 100", .floors = {fewWorst}}, 10000,
            ninetyNinth);
  addScroll(suite, {.name = fewWorst, .floors = {}}, 30, ninetyNinth);
}

// From the tap on its link to the picture of its first screenful.
void addScreenfuls(Suite& suite) {
  frame::PageRegistry pages;
  pages::registerPages(pages);
  for (const auto& entry : pages.entries()) {
    suite.add({.name = "first screenful: " + entry.name, .floors = {kStillFrame}},
              {.unit = benchmark::kMillisecond, .repetitions = 5, .operations = 3},
              [className = entry.page->className] {
                const auto window = std::make_shared<PhoneWindow>(host::window::Appearance{.reducedMotion = true});
                window->open("Quellar");
                window->rest();
                return [window, className] {
                  auto& navigation = window->panel().navigation();
                  const Stopwatch stopwatch;
                  window->push(window->panel().pages().makeViewController(className));
                  window->draw();
                  const auto elapsed = stopwatch.elapsed();
                  navigation.popViewController(false);
                  window->rest();
                  return elapsed;
                };
              });
  }
}

}  // namespace

void addListFrames(Suite& suite) {
  addBlock(suite);
  addScrolls(suite);
  addScreenfuls(suite);
}

}  // namespace quellar::benches
