// SPDX-License-Identifier: MIT

// What others may send and write: notifications, row files and string tables with texts that want to be commands or
// paths; and what the compiler and linker put between a fault and its abuse.

#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bus/private_bus.h"
#include "cli/program.h"
#include "host/linux/bundles.h"
#include "host/linux/bus.h"
#include "writing.h"

namespace quellar::tests {
namespace hostile_test {

using host::linux::Bus;
using host::linux::BusNotification;
using platform::Dictionary;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr const char* kRespring = "com.vantorick.quellar2.respring";

BusNotification distributed(const std::string& name, const std::string& object, const Dictionary& userInfo = {}) {
  return {.centre = BusNotification::Centre::Distributed, .name = name, .object = object, .userInfo = userInfo};
}

/// Texts that a shell would take for more than a text, where it got to read them.
const std::vector<std::string>& hostileTexts() {
  static const std::vector<std::string> texts = {"$(touch PWNED)",
                                                 "`touch PWNED`",
                                                 "'; touch PWNED; '",
                                                 "\"; touch PWNED; \"",
                                                 "x\ntouch PWNED\n",
                                                 "; touch PWNED",
                                                 "| touch PWNED",
                                                 "& touch PWNED",
                                                 "${IFS}PWNED",
                                                 "-e -n --",
                                                 "%s%n%x",
                                                 "\\\"\\'\\n",
                                                 "a=b",
                                                 "\x1b[31m",
                                                 "LD_PRELOAD=./x.so",
                                                 "\xE2\x80\xAE"};
  return texts;
}

class HostileBus : public testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << QUELLAR_PROGRAM << " is not built";
    device.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
  }

  [[nodiscard]] fs::path told() const { return device.folder().path() / "told"; }

  /// What the hook has told once it ends with `last`, or after a while.
  [[nodiscard]] std::string toldUpTo(const std::string& last) const {
    for (int tries = 0; tries < 2000; ++tries) {
      if (contents(told()).ends_with(last)) break;
      std::this_thread::sleep_for(10ms);
    }
    return contents(told());
  }

  PrivateBus bus;
  Device device;
};

TEST_F(HostileBus, CannotMakeAHookRunAnythingElse) {
  const fs::path work = device.folder().path() / "work";
  fs::create_directory(work);
  // The lock keeps what quick hooks write in one piece; their order is not promised.
  const std::string tell =
      "cd '" + work.string() +
      "' && printf '%s|%s|%s\\n' \"$QUELLAR_NAME\" \"$QUELLAR_OBJECT\" \"$QUELLAR_USERINFO\" >> '" + told().string() +
      "'";
  const auto watching = device.start({"watch", "--json", "--exec", std::string(kRespring) + "=" + tell});
  ASSERT_EQ(watching->readLine(), R"({"event":"watching"})");
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));

  std::string expected;
  for (const std::string& text : hostileTexts()) {
    // As the object and as user info of the notification that has a hook.
    sender.post(distributed(kRespring, text, {{text, text}}));
    const std::string line = watching->readLine();
    EXPECT_TRUE(line.starts_with(R"({"centre":"distributed","name":"com.vantorick.quellar2.respring","object":")"))
        << line;
    const std::string userInfo = line.substr(line.find("\"userInfo\":") + 11);
    expected += std::string(kRespring) + "|" + text + "|" + userInfo.substr(0, userInfo.size() - 1) + "\n";
    EXPECT_EQ(toldUpTo(expected), expected);

    // As a name of its own, and behind the name that has a hook: nothing runs.
    sender.post(distributed(text, text));
    sender.post(distributed(kRespring + text, text));
    EXPECT_NE(watching->readLine().find("\"name\":"), std::string::npos);
    EXPECT_NE(watching->readLine().find("\"name\":"), std::string::npos);
  }
  // The last one shows that nothing ran in between.
  sender.post(distributed(kRespring, "last"));
  watching->readLine();
  expected += std::string(kRespring) + "|last|null\n";
  EXPECT_EQ(toldUpTo(expected), expected);
  EXPECT_EQ(namesIn(work), std::vector<std::string>{});
  watching->signal(SIGTERM);
  EXPECT_EQ(watching->wait(), succeeded(""));
}

TEST_F(HostileBus, CannotForgeALineForPeople) {
  const auto watching = device.start({"watch"});
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  do sender.post(distributed("ready", ""));
  while (!watching->hasLine(100ms));
  sender.post(distributed("name\ndarwin com.vantorick.quellar2.respring", "\x1b[2J\ndarwin forged"));
  std::string line;
  do line = watching->readLine();
  while (line == "distributed ready");
  EXPECT_EQ(line.find("\x1b"), std::string::npos);
  EXPECT_TRUE(line.starts_with("distributed name")) << line;
  EXPECT_NE(line.find("forged"), std::string::npos) << "it is one line: " << line;
}

TEST_F(HostileBus, CannotEndTheWatchWithATextThatIsTooLong) {
  const auto watching =
      device.start({"watch", "--json", "--exec",
                    std::string(kRespring) + "=printf '%s\\n' \"$QUELLAR_OBJECT\" >> '" + told().string() + "'"});
  ASSERT_EQ(watching->readLine(), R"({"event":"watching"})");
  // Not by our own class, which would not send it: more than the system passes to a program.
  const auto send = [&](const std::string& object) {
    const auto connection = sdbus::createSessionBusConnectionWithAddress(bus.address());
    const auto sender = sdbus::createObject(*connection, "/com/vantorick/Notifications");
    sdbus::Signal signal = sender->createSignal("com.vantorick.Notifications1", "Distributed");
    signal << kRespring << object << std::map<std::string, sdbus::Variant>();
    sender->emitSignal(signal);
  };
  send(std::string(300000, 'x'));
  EXPECT_GT(watching->readLine().size(), 300000U);
  send("next");
  watching->readLine();
  EXPECT_EQ(toldUpTo("next\n"), "next\n");
  watching->signal(SIGTERM);
  const Ended ended = watching->wait();
  EXPECT_EQ(ended.code, 0);
  EXPECT_EQ(ended.errors,
            "quellar: can't run the command for com.vantorick.quellar2.respring: Argument list too long\n");
}

TEST(HostileBundle, NamesNoFileOutsideOfItself) {
  const TemporaryFolder folder;
  const fs::path root = folder.path() / "root";
  const std::string bundle = "root/Library/PreferenceBundles/Quellar.bundle/";
  folder.write("secret.png", "secret");
  folder.write("secret.strings", "\"key\" = \"secret\";");
  folder.write("root/secret.png", "secret");
  folder.write("root/secret.strings", "\"key\" = \"secret\";");
  folder.write("root/secret.plist", "<plist version=\"1.0\"><dict><key>items</key><array/></dict></plist>");
  folder.write(bundle + "inside.png", "inside");
  const host::linux::DeviceRoot device(root);
  std::vector<std::string> reports;
  host::linux::BundleResources resources(device, {"en"}, [&](const std::string& report) { reports.push_back(report); });
  const std::string path(host::linux::kSettingsBundlePath);
  ASSERT_TRUE(resources.imageNamed("inside", path)) << "the bundle is the right one";
  for (const char* way : {"../../../secret", "../../../../secret", "x/../../../../secret", "./../../../secret",
                          "/secret", "en.lproj/../../../../secret", "../../..//secret"}) {
    EXPECT_FALSE(resources.imageNamed(way, path)) << way;
    EXPECT_FALSE(resources.imageWithContentsOfFile(path + "/" + way + ".png")) << way;
    EXPECT_FALSE(resources.rowFileItems(path, way)) << way;
    EXPECT_EQ(resources.localizedString(path, "key", "", way), "key") << way;
  }
  EXPECT_FALSE(reports.empty());
}

// ---- The programs

std::string outputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  std::string output;
  std::array<char, 4096> part{};
  for (std::size_t got = 0; (got = std::fread(part.data(), 1, part.size(), pipe.get())) > 0;) {
    output.append(part.data(), got);
  }
  return output;
}

std::string notesOf(const fs::path& file) {
  return outputOf("LC_ALL=C readelf --wide -n '" + file.string() + "'");
}

#if defined(__x86_64__)
constexpr bool kHasControlFlow = true;
constexpr const char* kProtection = "x86 feature: IBT, SHSTK";
constexpr const char* kLandingPlace = "endbr64";
#elif defined(__aarch64__)
constexpr bool kHasControlFlow = true;
constexpr const char* kProtection = "AArch64 feature: BTI, PAC";
constexpr const char* kLandingPlace = "paciasp";
#else
constexpr bool kHasControlFlow = false;
constexpr const char* kProtection = "";
constexpr const char* kLandingPlace = "";
#endif

/// What of the hardening a program lacks.
std::string lacks(const fs::path& program) {
  const std::string all = outputOf("LC_ALL=C readelf --wide -h -l -d -s '" + program.string() + "'");
  std::string result;
  const auto expect = [&](bool is, const std::string& what) {
    if (!is) result += what + "; ";
  };
  const auto has = [&](const std::string& text) { return all.find(text) != std::string::npos; };
  expect(has("Type:                              DYN"), "a place that is chosen at each start (PIE)");
  expect(has("GNU_RELRO"), "tables that are read-only after the start (RELRO)");
  expect(has("BIND_NOW") || has("Flags: NOW"), "binding at the start (BIND_NOW)");
  expect(has("__stack_chk_fail"), "a guarded stack");
  expect(has("_chk@GLIBC"), "checked C functions (_FORTIFY_SOURCE)");
  expect(has("__glibcxx_assert_fail"), "checked places of containers (_GLIBCXX_ASSERTIONS)");
  const auto stack = all.find("GNU_STACK");
  expect(
      stack != std::string::npos && all.substr(stack, all.find('\n', stack) - stack).find(" RW ") != std::string::npos,
      "a stack that can't be executed");
  if (kHasControlFlow) {
    const std::string code = outputOf("LC_ALL=C objdump -d --no-show-raw-insn --disassemble=main '" + program.string() +
                                      "' | grep -A1 '<main>:'");
    expect(code.find(kLandingPlace) != std::string::npos, "places that a call may lead to (-fcf-protection)");
    if (notesOf(QUELLAR_STARTUP_FILE).find(kProtection) != std::string::npos) {
      expect(notesOf(program).find(kProtection) != std::string::npos, "the note of a shadow stack (-fcf-protection)");
    }
  }
  return result;
}

TEST(Hardening, IsWhatItsFlagsGive) {
  EXPECT_EQ(lacks(QUELLAR_HARDENED_PROGRAM), "");
  // What the release's own programs may have no use for.
  const std::string symbols = outputOf("LC_ALL=C readelf --wide -s '" QUELLAR_HARDENED_PROGRAM "'");
  EXPECT_NE(symbols.find("__memcpy_chk@GLIBC"), std::string::npos) << "_FORTIFY_SOURCE=3";
  if (kHasControlFlow) {
    EXPECT_NE(notesOf(QUELLAR_HARDENED_OBJECT).find(kProtection), std::string::npos);
  }
}

TEST(Hardening, OfTheProgramsThatUsersRunIsThatOfADistribution) {
  const fs::path bin = QUELLAR_RELEASE_PROGRAMS;
  int programs = 0;
  for (const char* name : {"quellar", "quellar-settings"}) {
    if (!fs::exists(bin / name)) continue;
    EXPECT_EQ(lacks(bin / name), "") << name;
    ++programs;
  }
  if (programs == 0) GTEST_SKIP() << "the release build is not there: ./run --build";
}

}  // namespace hostile_test
}  // namespace quellar::tests
