// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <concepts>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "frame/text.h"
#include "platform/value.h"

// What a page is, as one value: its rows in display order, what its writes post, which buttons it has. The same value
// builds the page, its schema and its tests.

namespace quellar::platform {
struct Platform;
}

namespace quellar::frame {

using platform::Value;

/// The icon of a row: a file of the settings bundle, by its path in the bundle's "images" folder, or an image of
/// another bundle by its name and that bundle's path.
struct Icon {
  std::string file = {};
  std::string name = {};
  std::string bundlePath = {};
  /// Drawn in this one colour ("#rrggbb"), where set.
  std::optional<std::string> flatColor = std::nullopt;
};

struct Group {
  Bundled title = {};
  /// An empty footer is one of the row's properties all the same; it shows nothing.
  std::optional<Localized> footer = std::nullopt;
};

/// Opens another page.
struct Link {
  AsWritten label = {};
  /// Class of the page.
  std::string opens = {};
  Icon icon = {};
};

struct Switch {
  Localized label = {};
  std::string key = {};
  std::optional<Value> byDefault = Value(0);
  Icon icon = {};
  /// Greyed out where false.
  std::optional<bool> enabled = std::nullopt;
  /// A domain in which the platform itself keeps the value, directly under the key; "" for the page dictionary.
  std::string defaults = {};
  /// Further row properties, that posts can take up.
  std::vector<std::pair<std::string, Value>> properties = {};
};

struct TextEntry {
  Localized label = "Text:";
  std::string key = {};
  std::string placeholder = {};
};

struct Slider {
  Localized label = {};
  std::string key = {};
  Value byDefault = {};
  Value minimum = {};
  Value maximum = {};
  /// With a title line and the typed entry of exact values.
  bool typedEntry = true;
};

/// The words for a count: "1 Minute", "2 Minutes".
struct Units {
  std::string one = {};
  std::string many = {};
};

/// A count with a plus/minus stepper. It stores its value itself.
struct Stepper {
  Localized label = {};
  /// In place of the label: the stored count with its unit, made when the row is built.
  std::optional<Units> units = std::nullopt;
  std::string key = {};
  int byDefault = 0;
  std::optional<int> minimum = std::nullopt;
  std::optional<int> maximum = std::nullopt;
  bool updatesLabelValue = false;
  bool requestsNotification = false;
  Icon icon = {};
};

/// The choices of a picker or a segment row, matched by place.
struct Choices {
  std::vector<Value> values = {};
  std::vector<std::string> titles = {};
  std::vector<std::string> shortTitles = {};
};

struct Segment {
  Localized label = {};
  std::string key = {};
  Value byDefault = {};
  Choices choices = {};
};

/// Opens the list of its choices.
struct Picker {
  Localized label = {};
  std::string key = {};
  Choices choices = {};
};

/// Shows a colour as a swatch; a tap opens the colour dialog.
struct ColorRow {
  Localized label = {};
  std::string colorKey = {};
  std::string defaultColor = {};
  /// Selector of the page's colour action.
  std::string action = {};
  Icon icon = {};
};

struct Button {
  Localized label = {};
  /// Selector of the page's action; "" for none.
  std::string action = {};
  Icon icon = {};
};

/// The rows of a row file of the settings bundle, in its order.
struct RowFile {
  std::string name = {};
  bool firstRowOnly = false;
  /// Its texts go through the localizer.
  bool localized = true;
};

struct Row;

/// What computed rows are made from.
struct Surroundings {
  platform::Platform& platform;
  const platform::Dictionary& userDefaults;
};

/// Rows that depend on the device or on stored values when the page builds them.
struct Computed {
  std::function<std::vector<Row>(const Surroundings&)> rows;
};

/// Rows that are shown only while a switch is on. It stands in the list where it is shown.
struct Dependent {
  /// Name of the page's property that holds the rows.
  std::string name = {};
  /// Key of the controlling switch.
  std::string shownBy = {};
  /// The controlling row is no switch: the rows are shown while its stored integer is this one.
  std::optional<int> shownAt = std::nullopt;
  /// Identifier of the row that a later insertion goes after; the controlling row itself when empty.
  std::string after = {};
  /// Another identifier to insert after, while the switch of this key is stored on.
  struct Alternative {
    std::string whileOn = {};
    std::string after = {};
  };
  std::optional<Alternative> alternative = std::nullopt;
  /// Where the page is built with the switch on: list the block of this name in place of this one.
  std::string listedAs = {};
  /// Not listed when the page is built, whatever the switch; only a later write brings it in.
  bool onlyInserted = false;
  // Without an initializer, which would need a complete Row.
  std::vector<Row> rows;
};

struct Row {
  using Variant = std::variant<Group, Link, Switch, TextEntry, Slider, Stepper, Segment, Picker, ColorRow, Button,
                               RowFile, Computed, Dependent>;
  Variant row;

  template <typename T>
    requires std::constructible_from<Variant, T>
  Row(T value) : row(std::move(value)) {}
};

/// Several runs of rows as one.
[[nodiscard]] inline std::vector<Row> rows(const std::vector<std::vector<Row>>& runs) {
  std::vector<Row> joined;
  for (const auto& run : runs) joined.insert(joined.end(), run.begin(), run.end());
  return joined;
}

enum class Centre {
  darwin,
  /// The Darwin name space through the plain system call.
  notifyPost,
  distributed,
  /// The default centre of the process.
  process,
};

/// When a write sends a post.
enum class Moment {
  /// Once the dictionary is stored.
  afterWrite,
  /// Once the page was reloaded because the write cleared other keys.
  afterReload,
  /// Once the block that the key controls is shown or hidden.
  afterBlocks,
};

/// A value of a post's user info.
struct RowProperty {
  std::string name;
};
struct WrittenBoolean {};
using Payload = std::variant<Value, RowProperty, WrittenBoolean>;

/// A notification that a write posts.
struct Post {
  Centre centre = Centre::darwin;
  std::string name = {};
  std::optional<std::string> object = std::nullopt;
  /// Empty for none.
  std::vector<std::pair<std::string, Payload>> userInfo = {};
  /// Only for writes of these keys; every key when empty.
  std::vector<std::string> forKeys = {};
  /// Not for writes of these keys.
  std::vector<std::string> exceptKeys = {};
  /// Only for rows that have this property, when not empty.
  std::string forRowsWith = {};
  Moment moment = Moment::afterWrite;
  /// On the main queue, this long after its moment; at once when zero.
  std::chrono::milliseconds delay{0};
};

/// A plain post of a name on the Darwin centre.
inline Post darwin(std::string_view name) {
  return {.centre = Centre::darwin, .name = std::string(name)};
}
/// The same through the plain system call.
inline Post notifyPost(std::string_view name) {
  return {.centre = Centre::notifyPost, .name = std::string(name)};
}

/// Other keys that are set to false when a switch is set on; the page is reloaded then.
struct Clearing {
  std::string whenOn = {};
  std::vector<std::string> keys = {};
};

/// How the colour rows of a page work.
struct Colors {
  /// The defaults key that the page dictionary is loaded from and that colours are stored under, where the page's
  /// writes store it under another one; the page's own when empty.
  std::string defaultsKey = {};
  /// The start colour while none is stored; the row's default colour when empty.
  std::string fallback = {};
  bool showAlpha = false;
  /// Once the dictionary is stored.
  Post post = {};
  std::chrono::milliseconds delay{100};
  /// After the delay: these posts, then the page is drawn anew, then those posts.
  std::vector<Post> postsBeforeRedraw = {};
  enum class Redraw {
    /// The cells.
    page,
    /// The rows.
    specifiers,
    /// The dependent blocks and the rows.
    blocksAndSpecifiers,
  };
  Redraw redraw = Redraw::page;
  std::vector<Post> postsAfterRedraw = {};
};

/// A key of the page's dictionary that no row has: what opens from a row, or the page itself, writes it.
struct ForeignKey {
  /// What its value is called on the page, in English.
  std::string label = {};
  std::string key = {};
  /// None where any text will do.
  Choices choices = {};
  /// What a write of the key posts.
  std::vector<Post> posts = {};
};

/// What a page does when a stepper row has stored a value: it reads its dictionary again, builds its rows anew and
/// posts.
struct StepperRefresh {
  std::vector<Post> posts = {};
};

struct Page {
  std::string className = {};
  /// Where a write stores the page dictionary; "" for a page that keeps none, whose rows have the platform's handlers.
  std::string defaultsKey = {};
  /// What a write posts, in order within each moment.
  std::vector<Post> posts = {};
  std::vector<Clearing> clearings = {};
  /// A write of this key builds the rows anew before it is stored.
  std::string rebuiltBy = {};
  /// Keys that others write: before each write of the page their values are taken over from the store.
  std::vector<std::string> takesOver = {};
  std::vector<ForeignKey> foreignKeys = {};
  Colors colors = {};
  /// Values typed into a slider's entry dialog are written.
  bool savesTypedValues = false;
  std::optional<StepperRefresh> stepperRefresh = std::nullopt;
  /// A "Respring" button at the right of the navigation bar.
  bool respringButton = false;
  /// A "Save" button at the right of the navigation bar while the keyboard is up.
  bool saveButton = false;
  std::vector<Row> rows;
};

}  // namespace quellar::frame
