// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "frame/page.h"
#include "platform/list_controller.h"
#include "platform/platform.h"

namespace quellar::frame {

/// The base of every settings page: one look, the page dictionary, the rows of the page's description, what a write
/// stores and posts, and the blocks that a switch shows and hides.
class KVQuellarListController : public platform::PSListController {
 public:
  /// Takes the page's description, which must outlive the controller; loads the page dictionary and builds the
  /// dependent blocks.
  KVQuellarListController(platform::Platform& platform, const Page& page);

  [[nodiscard]] const Page& page() const { return page_; }
  /// The page's working copy of its defaults key, or of its colours' where that is another one. It is loaded once, when
  /// the page is made.
  [[nodiscard]] const platform::Dictionary& userDefaults() const { return userDefaults_; }
  /// The rows of a dependent block.
  [[nodiscard]] const platform::Specifiers& dynamicSpecs(std::string_view name) const;
  /// Whether the page's dictionary holds the value that shows a block.
  [[nodiscard]] bool isOn(const Dependent& dependent) const;

  /// Builds every dependent block anew.
  void createDynamicSpecs();
  platform::Specifiers makeSpecifiers() override;
  /// Rows of a row file of the settings bundle, localised.
  platform::Specifiers specifiersForPlistName(std::string_view name);

  /// Stores the value in the page dictionary, writes the whole dictionary, posts, then shows or hides the block that
  /// the key controls. Nothing for the value removes the entry.
  void setPreferenceValue(const std::optional<Value>& value, platform::PSSpecifier& specifier) override;
  std::optional<Value> readPreferenceValue(platform::PSSpecifier& specifier) override;
  /// Shows or hides, animated, the blocks that belong to a key; does nothing for other keys.
  void updateSpecifiersWithValue(bool value, std::string_view key);

  [[nodiscard]] std::optional<platform::Action> actionForSelector(std::string_view selector) override;
  /// The action of the page's colour rows: shows the colour dialog, started from the stored colour.
  void setColorForSpecifier(platform::PSSpecifier& specifier);
  /// Shows the colour dialog; `picked` runs with the colour unless the page is gone by then.
  void presentColorDialog(const platform::Color& start, bool showAlpha,
                          std::function<void(const platform::Color&)> picked);
  /// Stores a colour under a key and draws the page anew a little later, with the posts of the page's colours.
  void saveHexString(const std::string& hex, const std::string& key);
  /// A value was typed into a slider's entry dialog: it is written, and the slider is drawn anew a little later.
  void handleSavingSliderValueForChanges(const platform::Notification& notification);
  /// A stepper row has stored a value: the dictionary is read again and the rows are built anew.
  void refreshTableCellForTimerWithKey(const platform::Notification& notification);

  void loadView() override;
  void viewWillAppear() override;
  std::shared_ptr<platform::PSTableCell> cellForRow(platform::PSSpecifier& row) override;

  void keyboardWillShow();
  void keyboardWillHide();
  /// Action of the "Save" button: ends editing, which commits the edited text.
  void Save();
  /// Action of the "Respring" button: asks for confirmation and then posts the respring request.
  void respring();

  /// Reads the page dictionary again and builds the rows anew: another program has changed it.
  void reloadUserDefaults();

  /// The status bar style to come back to.
  int prevStatusStyle = 0;

 protected:
  /// Reads the page dictionary from the store again.
  void loadUserDefaults();
  /// Before a write: a page whose dictionary could not be read tries again, so that the write does not replace what it
  /// has never seen.
  void readIfUnread();
  /// Takes one key's value over from the store, if it has one.
  void takeOver(const std::string& key);
  /// Shows the colour dialog, started from the stored colour of a key, and stores the colour that is picked.
  void pickColor(const std::string& key, const std::string& fallback);
  /// Sets a value in the page dictionary alone; nothing removes the entry.
  void setUserDefault(const std::string& key, const std::optional<Value>& value);
  /// Writes the whole page dictionary under the page's defaults key.
  void store();
  /// Writes the whole page dictionary under the colours' defaults key, posts, and draws the page anew a little later.
  void saveColors(const Post& post);
  /// Observes what the page's description asks for.
  void observeNotifications();
  [[nodiscard]] std::string localizedText(std::string_view english) const;

 private:
  struct Block {
    const Dependent* description;
    platform::Specifiers rows;
  };

  template <Route usual>
  [[nodiscard]] std::string text(const RoutedText<usual>& text) const;
  platform::PSSpecifier::Pointer makeValueRow(const Localized& label, const std::string& key, platform::PSCellType kind,
                                              std::string detail = "");
  platform::PSSpecifier::Pointer makeButton(const Localized& label, const std::string& selector);
  void addIcon(platform::PSSpecifier& row, const Icon& icon) const;
  void appendRows(const std::vector<Row>& rows, platform::Specifiers& list);
  void appendBlock(const Dependent& dependent, platform::Specifiers& list);
  void createDynamicSpecs(const std::vector<Row>& rows);
  void makeRow(const Row& row, platform::Specifiers& list);
  void send(const Post& post);
  void post(const Post& post, const std::optional<Value>& value, const platform::PSSpecifier& specifier);
  void post(Moment moment, const std::optional<Value>& value, const platform::PSSpecifier& specifier);
  bool clearOtherKeys(const std::string& key, bool value);
  [[nodiscard]] const std::string& insertionPoint(const Dependent& dependent) const;
  [[nodiscard]] bool isOn(std::string_view key) const;
  /// The defaults key that the page dictionary is loaded from and that colours are stored under.
  [[nodiscard]] const std::string& colorsKey() const;
  void redraw();
  void showRespringButton();

  const Page& page_;
  platform::Dictionary userDefaults_;
  /// Whether the store could be read when the dictionary was loaded.
  bool wasRead_ = true;
  std::vector<Block> blocks_;
};

/// Looks of all pages.
inline constexpr platform::Color kSwitchTint{65, 169, 214, 1};
inline constexpr platform::Color kTitleColor{22, 36, 51, 1};

}  // namespace quellar::frame
