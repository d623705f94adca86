// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "host/headless/session.h"
#include "host/linux/bundles.h"
#include "model.h"
#include "support/memory_services.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// The bundle as it is in the source tree. Row files are read once.
class BundleOfSources : public platform::Bundles {
 public:
  BundleOfSources();
  std::string localizedString(std::string_view bundlePath, std::string_view key, std::string_view value,
                              const std::optional<std::string>& table) override;
  std::optional<platform::Array> rowFileItems(std::string_view bundlePath, std::string_view name) override;
  void reportRowFile(std::string_view name, std::string_view problem) override;

 private:
  TemporaryFolder folder_;
  host::linux::DeviceRoot root_;
  host::linux::BundleResources resources_;
  std::map<std::string, std::optional<platform::Array>, std::less<>> rowFiles_;
};

/// A user without a plan, who drives the panel through a scripted session: taps, switches, drags, types, waits, goes
/// back, does what can't be done; while others change the store and post notifications. After each action it checks
///
/// - what was written and posted, in which order and when (model.h),
/// - that the store holds it, and that each page's copy of its dictionary is the one that it should be,
/// - that the page lists the rows that a page lists which is made anew with the same dictionary; where the two differ
///   on purpose, kStayingBlocks in monkey.cpp says why,
/// - that what can't be done is refused and changes nothing, and that a page that was left is gone.
///
/// All of it follows from the seed.
class Monkey {
 public:
  explicit Monkey(std::uint64_t seed);

  /// One random action and the checks after it. Throws std::logic_error, which names the action and what does not hold.
  void act();

  [[nodiscard]] std::uint64_t actions() const { return actions_; }
  /// How often each command was taken, and how often a page was shown.
  [[nodiscard]] const std::map<std::string, std::uint64_t>& commands() const { return commands_; }
  [[nodiscard]] const std::map<std::string, std::uint64_t>& pages() const { return pages_; }
  [[nodiscard]] std::uint64_t events() const { return eventCount_; }

 private:
  using Json = host::headless::Json;
  using Row = platform::PSSpecifier;
  using ListPage = platform::PSListController;

  /// A number from 0 to count - 1.
  std::size_t below(std::size_t count);
  bool oneIn(std::size_t count) { return below(count) == 0; }
  template <typename Choices>
  const auto& anyOf(const Choices& choices) {
    return choices[below(std::size(choices))];
  }
  std::string anyText();
  platform::Value anyValue();

  void feed(const Json& command, bool succeeds = true);
  void feedLine(const std::string& line, const std::string& name, bool succeeds);

  void actWithoutPage();
  void actOnDialog();
  void actOnPage();
  void actOnList(ListPage& page);
  void actOnBackdrops();
  void useRow(ListPage& page, std::size_t index);
  void chooseItem(ListPage& page, std::size_t index);
  void slide(const platform::PSSpecifier::Pointer& row, std::size_t index);
  void step(const platform::PSSpecifier::Pointer& row, std::size_t index);
  void pressButton(const platform::PSSpecifier::Pointer& row, std::size_t index);
  void answerColorDialog();
  void answerAlert();
  void pressBar();
  void goBack();
  void wait();
  void tryWhatCannotBeDone();
  void changeStoreFromOutside();
  void notifyFromOutside();
  void reloadPage(ListPage& page);

  /// The text row that is edited, if any, commits its text.
  void expectCommit();
  PanelModel::Page& pageOf(const platform::ViewController& controller);
  PanelModel::Page& top() { return model_.stack.back(); }

  void followStack();
  void check();
  void checkRows(ListPage& page);
  [[noreturn]] void fail(const std::string& what) const;
  void demand(bool holds, const std::string& what) const;

  /// Not a distribution of the library's: the numbers of a seed are to be the same everywhere.
  std::mt19937_64 random_;
  std::uint64_t actions_ = 0;
  std::uint64_t eventCount_ = 0;
  std::map<std::string, std::uint64_t> commands_;
  std::map<std::string, std::uint64_t> pages_;
  std::string action_;

  PanelModel model_;
  MemoryPreferences preferences_;
  MemoryFiles files_;
  BundleOfSources bundles_;
  MemoryApplications applications_;
  /// Where pages are made anew, to compare with.
  MemoryPreferences mirrorPreferences_;
  std::vector<std::string> lines_;
  std::unique_ptr<host::headless::Session> session_;
  std::unique_ptr<host::headless::HeadlessHost> mirror_;
  /// The row whose dialog is shown.
  platform::PSSpecifier::Pointer asked_;
};

}  // namespace quellar::tests
