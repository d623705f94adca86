// SPDX-License-Identifier: MIT
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <QGuiApplication>
#include <QImage>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "host/linux/file_preferences.h"
#include "support/temporary_folder.h"

namespace quellar::tests {
namespace program_test {

using platform::Dictionary;
using platform::Value;
using testing::HasSubstr;
using testing::MatchesRegex;

struct Outcome {
  int code = -1;
  std::string output;
  std::string errors;
};

std::string contents(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The program on a machine without a display and without a session bus.
class ProgramTest : public testing::Test {
 protected:
  Outcome run(const std::string& arguments) {
    const auto output = folder_.path() / "output";
    const auto errors = folder_.path() / "errors";
    // The toolkit and the font library keep what they made until the process ends.
    const std::string command =
        "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM -u DBUS_SESSION_BUS_ADDRESS "
        "-u XDG_RUNTIME_DIR ASAN_OPTIONS=detect_leaks=0 QUELLAR_DEVICE_ROOT=" +
        root().string() + " " QUELLAR_BIN "/quellar-settings " + arguments + " >" + output.string() + " 2>" +
        errors.string();
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contents(output), contents(errors)};
  }
  [[nodiscard]] std::filesystem::path root() const { return folder_.path() / "root"; }
  [[nodiscard]] std::filesystem::path pictures() const { return folder_.path() / "pictures"; }

  TemporaryFolder folder_;
};

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.insert(entry.path().filename());
  return {names.begin(), names.end()};
}

// How many colours a picture has, counted up to a hundred.
std::size_t colours(const QImage& image) {
  std::set<QRgb> found;
  for (int y = 0; y < image.height() && found.size() < 100; y += 3) {
    for (int x = 0; x < image.width(); ++x) found.insert(image.pixel(x, y));
  }
  return found.size();
}

TEST_F(ProgramTest, StartsWithItsStandardDescriptorsOpenAndLimitsOfFilesAsErrors) {
  const auto told = folder_.path() / "told";
  const std::string script =
      "QT_QPA_PLATFORM=offscreen QUELLAR_DEVICE_ROOT=" + root().string() +
      " ASAN_OPTIONS=detect_leaks=0 " QUELLAR_BIN
      "/quellar-settings <&- >&- 2>&- & pid=$!; for try in $(seq 300); do "
      "links=$(readlink /proc/$pid/fd/0 /proc/$pid/fd/1 /proc/$pid/fd/2 | tr '\\n' ' '); "
      "ignored=$(sed -n 's/^SigIgn:.*\\(.\\)......$/\\1/p' /proc/$pid/status); "
      "[ \"$links$ignored\" = '/dev/null /dev/null /dev/null 1' ] && break; sleep 0.1; done; kill $pid; "
      "echo \"$links$ignored\" >" +
      told.string();
  ASSERT_EQ(std::system(script.c_str()), 0);
  // The signal with the number 25 is that of the limit.
  EXPECT_EQ(contents(told), "/dev/null /dev/null /dev/null 1\n");
}

TEST_F(ProgramTest, TellsHelpAndVersion) {
  const Outcome help = run("--help");
  EXPECT_EQ(help.code, 0);
  for (const char* option : {"--device-root", "--page", "--idiom", "--lang", "--pictures", "--scale", "--text-size",
                             "--reduced-motion", "--help", "--version"}) {
    EXPECT_THAT(help.output, HasSubstr(option));
  }
  const Outcome version = run("--version");
  EXPECT_EQ(version.code, 0);
  EXPECT_EQ(version.output, "quellar-settings " QUELLAR_VERSION "\n");
  EXPECT_EQ(version.errors, "");
}

TEST_F(ProgramTest, RefusesWrongOptionsInOneLine) {
  for (const char* arguments : {"--no-such-option", "--idiom watch", "--text-size 84", "--text-size 201",
                                "--text-size big", "--scale 0", "--scale", "--page Nowhere", "--page ''", "stray"}) {
    const Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, 2) << arguments;
    EXPECT_EQ(outcome.output, "") << arguments;
    EXPECT_THAT(outcome.errors, MatchesRegex("quellar-settings: [^\n]+\n")) << arguments;
  }
  EXPECT_THAT(run("--page Nowhere").errors, HasSubstr("\"Nowhere\""));
  EXPECT_THAT(run("--page Nowhere").errors, HasSubstr("\"Status Bar\""));
  EXPECT_FALSE(std::filesystem::exists(root()));
}

TEST_F(ProgramTest, RefusesARowThatThePageDoesNotHave) {
  // The row is looked for before a window is shown; any platform will do for that.
  const std::string offscreen = "--page status-bar/nothing";
  const auto errors = folder_.path() / "errors";
  const std::string command =
      "env -u DBUS_SESSION_BUS_ADDRESS -u XDG_RUNTIME_DIR QT_QPA_PLATFORM=offscreen "
      "QUELLAR_DEVICE_ROOT=" +
      root().string() + " " QUELLAR_BIN "/quellar-settings " + offscreen + " 2>" + errors.string();
  const int status = std::system(command.c_str());
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 2);
  EXPECT_EQ(contents(errors),
            "quellar-settings: the page \"Status Bar\" has no row \"nothing\"; `quellar schema` lists them\n");
}

TEST_F(ProgramTest, SaysSoInOneLineWhereThereIsNoDisplay) {
  const Outcome outcome = run("");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.output, "");
  EXPECT_THAT(outcome.errors, MatchesRegex("quellar-settings: there is no display [^\n]+\n"));
}

TEST_F(ProgramTest, DrawsEveryPageAndDialogWithoutADisplayAndTouchesNoValue) {
  const Dictionary values{{"usesCustomTimeFormatter", true}, {"userCustomClockFormatter", "HH:mm"}};
  {
    host::linux::FilePreferences store((host::linux::DeviceRoot(root())));
    store.setAppValue("StatusBar_Defaults", Value(values), "com.vantorick.quellar2");
  }
  const auto file = root() / "var/mobile/Library/Preferences/com.vantorick.quellar2.plist";
  const std::string before = contents(file);
  ASSERT_FALSE(before.empty());

  const Outcome outcome = run("--pictures " + pictures().string());
  EXPECT_EQ(contents(file), before);
  EXPECT_EQ(outcome.errors, "");
  ASSERT_EQ(outcome.code, 0);
  const auto names = namesIn(pictures());
  EXPECT_EQ(outcome.output, std::to_string(names.size()) + " pictures in " + pictures().string() + "\n");
  // In both forms: each page, twice where it has blocks, what is typed and what is picked on it, the dialogs, and a few
  // of them in three other manners.
  EXPECT_EQ(names.size(), 212U);
  for (const char* name : {"custom-carrier-strings",
                           "custom-carrier-strings-open",
                           "custom-carrier-strings-typing",
                           "status-bar-open",
                           "quellar-dialog",
                           "dock-choices",
                           "icons-color",
                           "control-center-color",
                           "icons-entry-dialog",
                           "animations-refused-dialog",
                           "backdrop-styles",
                           "backdrop-styles-end",
                           "rows",
                           "rows-focus",
                           "rows-pressed",
                           "rows-end",
                           "rows-disabled",
                           "rows-disabled-end",
                           "rows-lengthy",
                           "rows-lengthy-end",
                           "notice",
                           "trouble",
                           "status-bar-open-ar-XB",
                           "icons-color-ar-XB",
                           "rows-ar-XB",
                           "home-screen-open-en-XA",
                           "rows-en-XA",
                           "icons-open-large-text",
                           "rows-large-text"}) {
    for (const char* form : {"-phone.png", "-wide.png"})
      EXPECT_THAT(names, testing::Contains(name + std::string(form)));
  }
  const auto pressed = [this](const std::string& name) {
    const QImage picture(QString::fromStdString((pictures() / name).string()));
    int pixels = 0;
    for (int y = 0; y < picture.height(); ++y) {
      for (int x = 0; x < picture.width(); ++x) pixels += picture.pixel(x, y) == qRgb(0xe4, 0xeb, 0xf1);
    }
    return pixels;
  };
  for (const char* form : {"-phone.png", "-wide.png"}) {
    // Most of a row, which is 100 pixels high, and no other.
    const int width = form == std::string("-phone.png") ? 716 : 1360;
    EXPECT_GT(pressed("rows-pressed" + std::string(form)), width * 80) << form;
    EXPECT_LE(pressed("rows-pressed" + std::string(form)), width * 100) << form;
    EXPECT_LT(pressed("rows" + std::string(form)), width) << form;
  }
  std::set<std::string> different;
  for (const std::string& name : names) {
    const QImage picture(QString::fromStdString((pictures() / name).string()));
    const bool phone = name.ends_with("-phone.png");
    EXPECT_EQ(picture.size(), phone ? QSize(780, 1688) : QSize(2360, 1640)) << name;
    EXPECT_GE(colours(picture), 20U) << name;
    different.insert(contents(pictures() / name));
  }
  EXPECT_EQ(different.size(), names.size());
}

TEST_F(ProgramTest, DrawsAtTheScaleAndTextSizeThatAreAskedFor) {
  ASSERT_EQ(run("--scale 1 --text-size 200 --lang ar-XB --pictures " + pictures().string()).code, 0);
  EXPECT_EQ(QImage(QString::fromStdString((pictures() / "quellar-phone.png").string())).size(), QSize(390, 844));
}

TEST_F(ProgramTest, NamesTheFileThatAPictureCannotBeWrittenTo) {
  folder_.write("blocked", "a file, no folder");
  const Outcome outcome = run("--pictures " + (folder_.path() / "blocked" / "pictures").string());
  EXPECT_EQ(outcome.code, 1);
  EXPECT_THAT(outcome.errors, MatchesRegex("quellar-settings: .*/blocked/pictures: [^\n]+\n"));
}

}  // namespace program_test
}  // namespace quellar::tests
