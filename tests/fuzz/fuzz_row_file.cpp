// SPDX-License-Identifier: MIT
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "frame/names.h"
#include "host/headless/session.h"
#include "host/linux/bundles.h"
#include "support/memory_services.h"
#include "support/temporary_folder.h"
#include "targets.h"

namespace quellar::tests::fuzz {

using host::headless::Json;
using platform::Control;

namespace {

/// So many rows are used; more would only make it slow.
constexpr std::size_t kMostRows = 40;

/// A device root in memory, with the row file that the page of music changes reads and an image of the bundle.
class BundleDevice {
 public:
  BundleDevice()
      : folder_(std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : std::filesystem::temp_directory_path()),
        file_(folder_.write("Library/PreferenceBundles/Quellar.bundle/QuellarMusic.plist", "")) {
    folder_.write("Library/PreferenceBundles/Quellar.bundle/images/a.png", "");
    folder_.write("outside.png", "");
  }

  void write(std::string_view bytes) const {
    std::ofstream stream(file_, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    demand(stream.flush().good(), "the row file can be written");
  }
  [[nodiscard]] const host::linux::DeviceRoot& root() const { return root_; }

 private:
  TemporaryFolder folder_;
  std::filesystem::path file_;
  host::linux::DeviceRoot root_{folder_.path()};
};

/// A command by which a user uses a row, and whether it may be refused.
struct Use {
  Json command;
  bool mayFail = false;
};

Use useOf(const platform::PSSpecifier& row, std::size_t index) {
  const auto command = [&](const char* name) { return Json::object({{"do", name}, {"row", index}}); };
  Json json;
  switch (row.cell()->control()) {
    case Control::toggle:
      json = command("set");
      json["value"] = true;
      return {json};
    case Control::picker:
    case Control::link:
    case Control::pickerItem:
    case Control::button:
    case Control::color:
      return {command("tap")};
    case Control::segment:
      json = command("set");
      // A choice can be any value, and a user names only the plain ones.
      json["value"] = row.values().empty() ? Json(nullptr) : host::headless::toJson(row.values().back());
      return {json, row.values().empty() || json["value"].is_structured()};
    case Control::slider:
      json = command("drag");
      json["value"] = 0.5;
      return {json};
    case Control::text:
      json = command("edit");
      json["text"] = "typed";
      return {json};
    case Control::typedSlider:
    case Control::stepper:
    case Control::group:
    case Control::staticText:
      return {command("inspect")};
  }
  return {command("inspect")};
}

/// Checks the rows that the file gave, which stand before the page's own.
void checkRows(const platform::Specifiers& rows, std::size_t count) {
  std::set<std::string> keys;
  for (std::size_t index = 0; index < count; ++index) {
    const platform::PSSpecifier& row = *rows[index];
    if (const std::string key = row.stringForKey("key"); !key.empty()) {
      demand(keys.insert(key).second, "a key stands once");
    }
    demand(row.values().size() == row.titles().size(), "each choice has a title");
    const platform::Property* icon = row.propertyForKey("iconImage");
    if (!icon) continue;
    const auto* image = std::get_if<platform::Image>(icon);
    demand(image != nullptr, "an image is an image");
    const std::string path = std::filesystem::path(image->path).lexically_normal();
    demand(path.starts_with(std::string(frame::kBundlePath) + "/"), "an image lies in the bundle: " + image->path);
  }
}

}  // namespace

void rowFile(std::string_view bytes) {
  static const BundleDevice device;
  device.write(bytes);
  std::vector<std::string> reports;
  host::linux::BundleResources bundles(device.root(), {},
                                       [&](const std::string& message) { reports.push_back(message); });
  const auto items = bundles.rowFileItems(frame::kBundlePath, "QuellarMusic");
  demand(items.has_value() == reports.empty(), "a file that gives no items is told");

  MemoryPreferences preferences;
  MemoryApplications applications;
  applications.installed = {{"org.example.%@.desktop", "Camera"}, {"org.example.Maps.desktop", "Maps"}};
  std::vector<std::string> lines;
  host::headless::Session session(
      {}, {.preferences = preferences, .files = bundles, .bundles = bundles, .applications = applications},
      [&](std::string_view line) { lines.emplace_back(line); });
  const auto feed = [&](const Json& command) {
    lines.clear();
    session.feed(dump(command));
    return !lines.back().starts_with(R"({"error")");
  };

  reports.clear();
  demand(feed({{"do", "open"}, {"page", "Music Changes"}}), "the page opens");
  const auto page =
      std::static_pointer_cast<platform::PSListController>(session.host().navigation().topViewController());
  const auto own = std::ranges::find(page->specifiers(), "Banners", &platform::PSSpecifier::name);
  std::size_t count = 0;
  if (items) {
    // The page's own rows are those that it has without the file: two groups, two switches.
    demand(page->specifiers().size() >= 4, "the page has its own rows too");
    count = page->specifiers().size() - 4;
    const auto skipped = std::ranges::count_if(
        reports, [](const std::string& report) { return report.find(" is skipped: ") != std::string::npos; });
    const bool asksForApplications = std::ranges::any_of(*items, [](const platform::Value& item) {
      const auto* entries = item.as<platform::Dictionary>();
      return entries && platform::find(*entries, "applications");
    });
    if (!asksForApplications) {
      demand(count + static_cast<std::size_t>(skipped) == items->size(), "each item is a row or is told");
    }
  }
  demand(own != page->specifiers().end(), "the page has its own rows");
  checkRows(page->specifiers(), count);

  demand(feed({{"do", "rows"}}), "the rows can be told");
  for (std::size_t index = 0; index < std::min(count, kMostRows); ++index) {
    demand(feed({{"do", "inspect"}, {"row", index}}), "a row can be told");
    const auto row = page->specifiers()[index];
    const auto [command, mayFail] = useOf(*row, index);
    demand(feed(command) || mayFail, "a row can be used: " + dump(command) + " " + lines.back());
    const auto isOnTop = [&] { return session.host().navigation().topViewController() == page; };
    if (session.host().navigation().dialog()) session.host().navigation().dismiss();
    if (!isOnTop()) {
      feed({{"do", "rows"}});
      feed({{"do", "tap"}, {"row", 1}});
    }
    while (!isOnTop()) demand(feed({{"do", "back"}}), "there is a way back");
    demand(page->specifiers().size() >= count, "the rows of the file stay");
  }
}

}  // namespace quellar::tests::fuzz
