// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "accessible_window.h"
#include "host/linux/file_preferences.h"

namespace quellar::tests {
namespace wayland_test {

using platform::Dictionary;
using platform::Value;

/// A compositor of the test's own.
class Compositor {
 public:
  explicit Compositor(std::vector<std::string> options) {
    const auto socket = std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / socket_;
    options.insert(options.begin(), {"weston", "--socket=" + socket_});
    weston_ = std::make_unique<Process>(options);
    if (!eventually([&] { return std::filesystem::exists(socket); })) throw std::runtime_error("no compositor");
  }

  /// Opens the program's window on it, at a page.
  [[nodiscard]] AccessibleWindow open(const std::string& page) const {
    const Here here(socket_);
    return AccessibleWindow({"--page", page});
  }

 private:
  // The environment of a program that starts here; the test itself stays on the display beneath.
  struct Here {
    explicit Here(const std::string& socket) {
      ::setenv("WAYLAND_DISPLAY", socket.c_str(), 1);
      ::setenv("QT_QPA_PLATFORM", "wayland", 1);
    }
    Here(const Here&) = delete;
    Here& operator=(const Here&) = delete;
    ~Here() {
      ::unsetenv("WAYLAND_DISPLAY");
      ::setenv("QT_QPA_PLATFORM", "xcb", 1);
    }
  };

  /// Tests that run at the same time have a compositor each.
  const std::string socket_ = "quellar-test-" + std::to_string(::getpid());
  std::unique_ptr<Process> weston_;
};

class WaylandTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { AccessibleDesktop::shared(); }

  // In the middle of an object at its right end, where a switch is and a text is typed. The compositor's window is at
  // the display's corner, and the program's fills it.
  static void click(const Accessible& object) {
    const AtspiRect place = object.extents();
    ASSERT_TRUE(atspi_generate_mouse_event(place.x + place.width - 50, place.y + place.height / 2, "b1c", nullptr));
  }
  static Dictionary stored(const AccessibleWindow& window) {
    host::linux::FilePreferences store((host::linux::DeviceRoot(window.root().path())));
    const auto value = store.copyAppValue("StatusBar_Defaults", "com.vantorick.quellar2");
    const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
    return dictionary ? *dictionary : Dictionary();
  }
};

TEST_F(WaylandTest, StartsIsClickedAndTypedInto) {
  const Compositor compositor({"--backend=x11-backend.so", "--shell=kiosk-shell.so", "--width=420", "--height=900"});
  const AccessibleWindow window = compositor.open("Custom Carrier Strings");
  const Accessible toggle = window.find("check box", "Use Custom String");
  // The compositor gives the window its size after its first frame, and the rows move once more then.
  AtspiRect last{};
  int unchanged = 0;
  ASSERT_TRUE(eventually([&] {
    const AtspiRect now = toggle.extents();
    unchanged = now.y == last.y && now.width == last.width ? unchanged + 1 : 0;
    last = now;
    return now.width >= 400 && unchanged >= 20;
  })) << "it fills the compositor's window";
  click(toggle);
  const Accessible entry = window.find("entry", "Text:");
  ASSERT_TRUE(eventually([&] { return stored(window) == Dictionary{{"usesCustomCarrierText", true}}; }));
  click(entry);
  ASSERT_TRUE(eventually([&] { return entry.has(ATSPI_STATE_FOCUSED); }));
  window.type("way");
  ASSERT_TRUE(eventually([&] { return entry.text() == "way"; })) << entry.text();
  ASSERT_TRUE(window.find("push button", "Save").act("Press"));
  EXPECT_TRUE(eventually(
      [&] { return stored(window) == Dictionary{{"usesCustomCarrierText", true}, {"userCustomCarrierText", "way"}}; }));
}

TEST_F(WaylandTest, StartsWhereTheCompositorHasNoSeat) {
  // This shell offers input methods; without them the toolkit asks for no seat.
  const Compositor compositor(
      {"--backend=headless-backend.so", "--shell=desktop-shell.so", "--width=420", "--height=900"});
  const AccessibleWindow window = compositor.open("Status Bar");
  ASSERT_TRUE(window.find("check box", "Battery (+ Bolt)").act("Toggle"));
  EXPECT_TRUE(eventually([&] { return stored(window) == Dictionary{{"disablesBatterySTBIcon", true}}; }));
}

}  // namespace wayland_test
}  // namespace quellar::tests
