// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <iterator>

#include "host/linux/string_table.h"
#include "panel_system/page_lines.h"
#include "platform/navigation_controller.h"

namespace quellar::tests {
namespace english_texts_test {

using frame::Dependent;
using frame::Row;
using host::headless::DeviceOptions;
using platform::Dictionary;
using platform::PSListController;
using platform::Value;

/// Turns on whatever shows a block.
void turnOnBlocks(const std::vector<Row>& rows, Dictionary& dictionary) {
  for (const Row& row : rows) {
    const auto* block = std::get_if<Dependent>(&row.row);
    if (!block) continue;
    dictionary.insert_or_assign(block->shownBy, block->shownAt ? Value(*block->shownAt) : Value(true));
    turnOnBlocks(block->rows, dictionary);
  }
}

/// Uses all that a page offers: every row, the button of its bar, and the button while a text is edited.
void useEverything(Panel& panel) {
  auto& navigation = panel.host.navigation();
  const auto page = std::dynamic_pointer_cast<PSListController>(navigation.topViewController());
  const auto comeBack = [&] {
    navigation.dismiss();
    while (navigation.topViewController() != page) navigation.popViewController(false);
  };
  for (std::size_t place = 0; place < page->specifiers().size(); ++place) {
    page->userTapsRow(place);
    comeBack();
    const auto row = page->specifiers()[place];
    if (row->cellType() == platform::PSCellType::PSEditTextCell) page->beginEditing(*row);
  }
  page->endEditing();
  if (const auto& item = page->navigationItem().rightBarButtonItem()) item->run();
  comeBack();
}

/// The texts that all pages look up on a device without accounts, switches or applications, whose names are looked up
/// too.
std::set<std::string> lookedUp(const DeviceOptions& device, bool blocksShown) {
  Panel panel(device);
  for (const auto& file : std::filesystem::directory_iterator(QUELLAR_RESOURCES)) {
    if (file.path().extension() == ".plist") useRowFile(panel, file.path().stem());
  }
  for (const auto& entry : panel.host.registry().entries()) {
    const frame::Page& page = *entry.page;
    Dictionary dictionary;
    if (blocksShown) turnOnBlocks(page.rows, dictionary);
    for (const auto& key : {page.defaultsKey, page.colors.defaultsKey}) {
      if (!key.empty()) panel.store(key, Value(dictionary));
    }
    panel.host.open(page.className);
    useEverything(panel);
  }
  EXPECT_EQ(panel.bundles.reports, Lines());
  return {panel.bundles.lookups.begin(), panel.bundles.lookups.end()};
}

TEST(EnglishTexts, TheTableHoldsEveryTextThatIsLookedUpAndNoOther) {
  std::set<std::string> texts;
  for (const auto& idiom : {std::optional<int>(), std::optional<int>(0), std::optional<int>(1)}) {
    for (const bool blocksShown : {false, true}) texts.merge(lookedUp({.idiom = idiom}, blocksShown));
  }
  std::ifstream file(QUELLAR_RESOURCES "/en.lproj/Localizable.strings", std::ios::binary);
  const auto table = host::linux::parseStringTable(
      std::string{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()});
  EXPECT_TRUE(table.problems.empty());
  std::set<std::string> entries;
  for (const auto& [key, text] : table.entries) entries.insert(key);

  Lines missing;
  std::ranges::set_difference(texts, entries, std::back_inserter(missing));
  EXPECT_EQ(missing, Lines());
  Lines unused;
  std::ranges::set_difference(entries, texts, std::back_inserter(unused));
  EXPECT_EQ(unused, Lines());
}

}  // namespace english_texts_test
}  // namespace quellar::tests
