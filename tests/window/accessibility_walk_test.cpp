// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>

#include "accessible_window.h"
#include "host/linux/file_preferences.h"

namespace quellar::tests {
namespace accessibility_walk_test {

using nlohmann::json;
using platform::Dictionary;
using platform::Value;

constexpr const char* kDomain = "com.vantorick.quellar2";

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// What the command line prints for a device root.
json command(const std::filesystem::path& root, const std::string& arguments) {
  const TemporaryFolder folder;
  const auto output = folder.path() / "output";
  const std::string line = "QUELLAR_DEVICE_ROOT='" + root.string() + "' " QUELLAR_BIN "/quellar " + arguments +
                           " --json >'" + output.string() + "'";
  if (std::system(line.c_str()) != 0) throw std::runtime_error("quellar " + arguments + " fails");
  return json::parse(contents(output));
}

/// Turns every switch of every page on, so that every block is shown.
void turnOnAllSwitches(const std::filesystem::path& root) {
  std::map<std::string, Dictionary> pages;
  for (const json& key : command(root, "schema")) {
    if (key["type"] == "boolean" && key["defaultsKey"].is_string()) {
      pages[key["defaultsKey"].get<std::string>()].insert_or_assign(key["key"].get<std::string>(), Value(true));
    }
  }
  host::linux::FilePreferences store((host::linux::DeviceRoot(root)));
  for (const auto& [defaultsKey, values] : pages) store.setAppValue(defaultsKey, Value(values), kDomain);
}

enum class Kind { slider, stepper, color, segment, picker, text, toggle };

std::optional<Kind> kindOf(const json& row) {
  const std::string kind = row["kind"];
  if (!row["enabled"]) return std::nullopt;
  if (row["properties"].contains("colorKey")) return Kind::color;
  if (kind == "PSSwitchCell") return Kind::toggle;
  if (kind == "PSSliderCell") return Kind::slider;
  if (kind == "PSSegmentCell") return Kind::segment;
  if (kind == "PSEditTextCell") return Kind::text;
  if (kind == "PSLinkListCell" && row["values"].is_array()) return Kind::picker;
  if (kind == "PSStaticTextCell" && row["properties"].contains("key")) return Kind::stepper;
  return std::nullopt;
}

std::string keyOf(const json& row) {
  const json& properties = row["properties"];
  return properties.contains("colorKey") ? properties["colorKey"] : properties["key"];
}

/// Goes through the panel as a screen reader's user would.
class Walk {
 public:
  Walk()
      : window_({}, [](const TemporaryFolder& root) {
          // Another control centre, which has a page of its own.
          std::filesystem::create_directories(root.path() / "usr/lib");
          std::ignore = root.write("usr/lib/libflipcontrolcenter.dylib", "");
          turnOnAllSwitches(root.path());
        }) {
    for (const json& page : command(window_.root().path(), "pages"))
      titles_[page["class"].get<std::string>()] = page["title"];
    for (const json& key : command(window_.root().path(), "schema")) {
      if (!key["posts"].empty()) posting_.emplace(key["page"].get<std::string>(), key["key"].get<std::string>());
    }
  }

  /// Changes one row of each kind on the page that is shown, then does so on those that it links to.
  void visit(const std::string& page, const std::string& title) {
    (void)window_.find("heading", title);
    visited_.insert(page);
    const json rows = command(window_.root().path(), "rows " + page);
    std::map<Kind, json> first;
    for (const json& row : rows) {
      if (const auto kind = kindOf(row)) first.emplace(*kind, row);
    }
    for (const auto& [kind, row] : first) change(page, title, kind, row);
    std::map<std::string, std::size_t> alike;
    for (const json& row : rows) {
      const std::string detail = row["detail"].is_string() ? row["detail"].get<std::string>() : "";
      if (!titles_.contains(detail)) continue;
      const std::string label = row["label"];
      const std::size_t nth = alike[label]++;
      if (visited_.contains(detail)) continue;
      ASSERT_TRUE(pressLink(label, nth)) << label;
      visit(detail, titles_.at(detail));
      press("push button", title);
      (void)window_.find("heading", title);
    }
  }

  [[nodiscard]] const std::set<std::string>& visited() const { return visited_; }
  [[nodiscard]] const std::map<std::string, std::string>& titles() const { return titles_; }
  [[nodiscard]] const std::set<Kind>& changed() const { return changed_; }

 private:
  void press(const std::string& role, const std::string& name) {
    ASSERT_TRUE(window_.find(role, name).act("Press")) << role << " " << name;
  }

  /// Presses the nth of the links of a name.
  bool pressLink(const std::string& name, std::size_t nth) {
    (void)window_.find("push button", name);
    for (const Accessible& object : window_.objects()) {
      if (object.role() == "push button" && object.name() == name && nth-- == 0) return object.act("Press");
    }
    return false;
  }

  void change(const std::string& page, const std::string& title, Kind kind, const json& row) {
    SCOPED_TRACE(page + " " + keyOf(row));
    const auto file = window_.root().path() / "var/mobile/Library/Preferences" / (std::string(kDomain) + ".plist");
    const std::string before = contents(file);
    const std::size_t posts = window_.notifications().size();
    const std::string label = row["label"];
    switch (kind) {
      case Kind::toggle:
        ASSERT_TRUE(window_.find("check box", label).act("Toggle"));
        break;
      case Kind::slider:
        ASSERT_TRUE(step(window_.find("slider", label)));
        break;
      case Kind::stepper:
        ASSERT_TRUE(step(window_.find("spin button", label)));
        break;
      case Kind::segment:
        ASSERT_TRUE(pressUnchecked(label));
        break;
      case Kind::picker:
        press("push button", label);
        (void)window_.find("heading", label);
        ASSERT_TRUE(pressUnchecked(""));
        press("push button", title);
        (void)window_.find("heading", title);
        break;
      case Kind::color:
        press("push button", label);
        press("push button", "Choose");
        break;
      case Kind::text:
        ASSERT_TRUE(window_.find("entry", label).grabFocus());
        (void)window_.find("push button", "Save");
        window_.type("walk");
        ASSERT_TRUE(eventually([&] { return window_.find("entry", label).text().ends_with("walk"); }));
        press("push button", "Save");
        break;
    }
    EXPECT_TRUE(eventually([&] { return contents(file) != before; })) << "nothing is stored";
    if (posting_.contains({page, keyOf(row)})) {
      EXPECT_TRUE(eventually([&] { return window_.notifications().size() > posts; })) << "nothing is posted";
    }
    changed_.insert(kind);
  }

  static bool step(const Accessible& control) { return control.act("Increase") && control.act("Decrease"); }

  /// Presses the first choice that is not the chosen one, below an object of a name or anywhere.
  bool pressUnchecked(const std::string& below) {
    bool isBelow = below.empty();
    for (const Accessible& object : window_.objects()) {
      isBelow = isBelow || object.name() == below;
      if (isBelow && object.role() == "radio button" && !object.has(ATSPI_STATE_CHECKED)) return object.act("Press");
    }
    return false;
  }

  AccessibleWindow window_;
  std::map<std::string, std::string> titles_;
  /// Page and key of the rows whose change is posted.
  std::set<std::pair<std::string, std::string>> posting_;
  std::set<std::string> visited_;
  std::set<Kind> changed_;
};

TEST(AccessibilityWalk, OpensEveryPageAndChangesARowOfEveryKind) {
  AccessibleDesktop::shared();
  Walk walk;
  walk.visit("QuellarListController", "Quellar");
  for (const auto& [page, title] : walk.titles()) EXPECT_TRUE(walk.visited().contains(page)) << title;
  EXPECT_EQ(walk.changed(), (std::set{Kind::slider, Kind::stepper, Kind::color, Kind::segment, Kind::picker, Kind::text,
                                      Kind::toggle}));
}

}  // namespace accessibility_walk_test
}  // namespace quellar::tests
