// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include "host/linux/bus.h"
#include "private_bus.h"
#include "program.h"

namespace quellar::tests {
namespace watch_test {

using namespace std::chrono_literals;
using host::linux::Bus;
using host::linux::BusNotification;
using host::linux::FileDescriptor;

constexpr auto kWatching = R"({"event":"watching"})";

/// A device with a session bus of its own.
class Watch : public testing::Test {
 protected:
  Watch() { device.environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address(); }

  PrivateBus bus;
  Device device;
};

/// Waits until a file holds a text, for ten seconds at most; returns what it holds.
std::string contentsOnce(const std::filesystem::path& file, const std::string& expected) {
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (contents(file) != expected && std::chrono::steady_clock::now() < deadline) std::this_thread::sleep_for(5ms);
  return contents(file);
}

TEST_F(Watch, SeesWhatAnotherProcessSetsAndTheValueIsInTheFileByThen) {
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), kWatching);
  EXPECT_EQ(device.run({"set", "Status Bar", "disablesBatterySTBIcon", "on"}), succeeded(""));
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null})");
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object",)"
            R"("userInfo":{"barItem":8,"enabled":true}})");
  EXPECT_EQ(device.run({"get", "Status Bar", "disablesBatterySTBIcon"}), succeeded("true\n"));
  watching->signal(SIGTERM);
  EXPECT_EQ(watching->wait(), succeeded(""));
}

TEST_F(Watch, PrintsLinesForPeople) {
  const auto watching = device.start({"watch"});
  // It says nothing when it begins to listen.
  do {
    EXPECT_EQ(device.run({"set", "Status Bar", "usesLowercaseAMPM", "on"}), succeeded(""));
  } while (!watching->hasLine(100ms));
  EXPECT_EQ(watching->readLine(), "darwin com.vantorick.quellar2.settings");
  EXPECT_EQ(device.run({"set", "Status Bar", "disablesBatterySTBIcon", "on"}), succeeded(""));
  std::string line;
  do line = watching->readLine();
  while (line == "darwin com.vantorick.quellar2.settings");
  EXPECT_EQ(line, R"(distributed com.vantorick.quellar2.statusbaritems "string object" {"barItem":8,"enabled":true})");
  watching->signal(SIGINT);
  EXPECT_EQ(watching->wait(), succeeded(""));
}

TEST_F(Watch, SetReturnsOnceItsDelayedPostsAreOnTheBus) {
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), kWatching);
  const auto before = std::chrono::steady_clock::now();
  EXPECT_EQ(device.run({"set", "Custom Carrier Strings", "usesCustomCarrierText", "on"}), succeeded(""));
  EXPECT_GE(std::chrono::steady_clock::now() - before, 100ms);
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"distributed","name":"com.vantorick.quellar2.settings.uikit","object":null,"userInfo":null})");
  EXPECT_EQ(
      watching->readLine(),
      R"({"centre":"distributed","name":"com.vantorick.quellar2.statusbarcarrier","object":null,"userInfo":null})");
}

TEST_F(Watch, HearsASessionThatWasGivenTheBusAndNoOther) {
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), kWatching);
  const std::string script = R"({"do":"open","page":"Status Bar"})"
                             "\n"
                             R"({"do":"set","row":"usesLowercaseAMPM","value":true})"
                             "\n";
  EXPECT_EQ(device.run({"session"}, script).code, 0);
  EXPECT_EQ(device.run({"session", "--bus"}, script + R"({"do":"set","row":"disablesVPNSTBIcon","value":true})").code,
            0);
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null})");
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null})");
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"distributed","name":"com.vantorick.quellar2.statusbaritems","object":"string object",)"
            R"("userInfo":{"barItem":24,"enabled":true}})");
}

TEST_F(Watch, RunsTheCommandsOfANotificationWithWhatCameWithIt) {
  const auto file = device.folder().path() / "told";
  const std::string tell =
      "printf '%s|%s|%s\\n' \"$QUELLAR_NAME\" \"$QUELLAR_OBJECT\" \"$QUELLAR_USERINFO\" >> '" + file.string() + "'";
  // The variables of the caller must not show through.
  device.environment["QUELLAR_OBJECT"] = "of the caller";
  const auto watching =
      device.start({"watch", "--json", "--exec", "com.vantorick.quellar2.statusbaritems=" + tell, "--exec",
                    "com.vantorick.quellar2.statusbarcarrier=read line; " + tell + "; exit 3"});
  EXPECT_EQ(watching->readLine(), kWatching);
  EXPECT_EQ(device.run({"set", "Status Bar", "disablesBatterySTBIcon", "off"}), succeeded(""));
  const std::string first = "com.vantorick.quellar2.statusbaritems|string object|{\"barItem\":8,\"enabled\":false}\n";
  EXPECT_EQ(contentsOnce(file, first), first);
  EXPECT_EQ(device.run({"set", "Custom Carrier Strings", "usesCustomCarrierText", "on"}), succeeded(""));
  const std::string second = first + "com.vantorick.quellar2.statusbarcarrier||null\n";
  EXPECT_EQ(contentsOnce(file, second), second) << "a command that reads finds the end of its input";

  for (int line = 0; line < 4; ++line) watching->readLine();
  const std::string children =
      "/proc/" + std::to_string(watching->process()) + "/task/" + std::to_string(watching->process()) + "/children";
  EXPECT_EQ(contentsOnce(children, ""), "") << "no child is left behind, dead or alive";
  watching->signal(SIGTERM);
  EXPECT_EQ(watching->wait(), succeeded(""));
}

TEST_F(Watch, RunsOneCommandAtATimeForANameAndKeepsTheNewestNotificationWaiting) {
  constexpr int kSignals = 2000;
  const std::string kSlow = "com.example.slow";
  const std::string kOther = "com.example.other";
  const auto told = device.folder().path() / "told";
  const auto busy = device.folder().path() / "busy";
  const auto go = device.folder().path() / "go";
  const auto other = device.folder().path() / "other";
  ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
  // A folder can be made once only: a second command at the same time would tell itself.
  const std::string slow = "mkdir '" + busy.string() + "' || echo twice >>'" + told.string() + "'; read line <'" +
                           go.string() + "'; printf '%s\\n' \"$QUELLAR_OBJECT\" >>'" + told.string() + "'; rmdir '" +
                           busy.string() + "'";
  const auto watching = device.start({"watch", "--json", "--exec", kSlow + "=" + slow, "--exec",
                                      kOther + "=printf '%s\\n' \"$QUELLAR_OBJECT\" >>'" + other.string() + "'"});
  EXPECT_EQ(watching->readLine(), kWatching);
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  const auto post = [&](const std::string& name, const std::string& object) {
    sender.post({.centre = BusNotification::Centre::Distributed, .name = name, .object = object, .userInfo = {}});
    while (watching->readLine().find("\"object\":\"" + object + "\"") == std::string::npos) continue;
  };
  for (int count = 1; count <= kSignals; ++count) post(kSlow, std::to_string(count));
  const std::string children =
      "/proc/" + std::to_string(watching->process()) + "/task/" + std::to_string(watching->process()) + "/children";
  const std::string running = contents(children);
  EXPECT_EQ(std::ranges::count(running, ' '), 1) << "of two thousand notifications: " << running;
  // Another name does not wait for this one.
  post(kOther, "other");
  EXPECT_EQ(contentsOnce(other, "other\n"), "other\n");
  std::ofstream(go) << "go\n";
  EXPECT_EQ(contentsOnce(told, "1\n"), "1\n");
  std::ofstream(go) << "go\n";
  EXPECT_EQ(contentsOnce(told, "1\n2000\n"), "1\n2000\n") << "the last one gets its run, those between none";
  EXPECT_EQ(contentsOnce(children, ""), "");
  watching->signal(SIGTERM);
  EXPECT_EQ(watching->wait().code, 0);
}

TEST_F(Watch, StartsWhatWaitsWhenItEnds) {
  const std::string name = "com.example.name";
  const auto told = device.folder().path() / "told";
  const auto go = device.folder().path() / "go";
  ASSERT_EQ(::mkfifo(go.c_str(), 0600), 0);
  const FileDescriptor gate(::open(go.c_str(), O_RDWR | O_CLOEXEC));
  ASSERT_TRUE(gate);
  const auto watching =
      device.start({"watch", "--json", "--exec",
                    name + "=read line <'" + go.string() + "'; echo \"$QUELLAR_OBJECT\" >>'" + told.string() + "'"});
  EXPECT_EQ(watching->readLine(), kWatching);
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  for (const char* object : {"first", "between", "last"}) {
    sender.post({.centre = BusNotification::Centre::Distributed, .name = name, .object = object, .userInfo = {}});
    watching->readLine();
  }
  watching->signal(SIGTERM);
  // Each command takes one of the lines.
  ASSERT_EQ(::write(gate.get(), "\n\n", 2), 2);
  EXPECT_EQ(watching->wait(), succeeded(""));
  const std::string both = contents(told);
  EXPECT_TRUE(both == "first\nlast\n" || both == "last\nfirst\n") << both;
}

TEST_F(Watch, RunsTheCommandsOfOneNameOneAfterTheOther) {
  const auto told = device.folder().path() / "told";
  const auto tell = [&](const std::string& word) { return "echo " + word + " >>'" + told.string() + "'"; };
  const std::string name = "com.example.name";
  const auto watching =
      device.start({"watch", "--json", "--exec", name + "=sleep 0.2; " + tell("one") + "; ulimit -f 1; kill -XFSZ $$",
                    "--exec", name + "=/none 2>/dev/null; " + tell("two"), "--exec", name + "=" + tell("three")});
  EXPECT_EQ(watching->readLine(), kWatching);
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  sender.post({.centre = BusNotification::Centre::Darwin, .name = name, .object = {}, .userInfo = {}});
  EXPECT_EQ(contentsOnce(told, "one\ntwo\nthree\n"), "one\ntwo\nthree\n");
  watching->signal(SIGTERM);
  EXPECT_EQ(watching->wait().code, 0);
}

TEST_F(Watch, StartsItsCommandsWithTheSignalsAsTheyWere) {
  const auto told = device.folder().path() / "told";
  const std::string name = "com.example.name";
  // The last seven digits are those of the signals up to 28; the C library has two beyond them for itself.
  const auto watching = device.start(
      {"watch", "--json", "--exec",
       name + "=sed -En 's/^(Sig(Blk|Ign)).*(.{7})$/\\1 \\3/p' /proc/self/status >'" + told.string() + "'"});
  EXPECT_EQ(watching->readLine(), kWatching);
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  sender.post({.centre = BusNotification::Centre::Darwin, .name = name, .object = {}, .userInfo = {}});
  const std::string none = "SigBlk 0000000\nSigIgn 0000000\n";
  EXPECT_EQ(contentsOnce(told, none), none);
}

TEST_F(Watch, PrintsNoCharacterThatATerminalActsOn) {
  const std::string hostile =
      "a\x1b[2J\xc2\x9b"
      "2J\xe2\x80\xae\x7f\nb";
  const std::string escaped = R"(a\u001b[2J\u009b2J\u202e\u007f)";
  const auto lines = device.start({"watch"});
  const auto json = device.start({"watch", "--json"});
  EXPECT_EQ(json->readLine(), kWatching);
  Bus sender(bus.address());
  ASSERT_TRUE(sender.waitUntilConnected(10s));
  const auto post = [&](const std::string& name) {
    sender.post({.centre = BusNotification::Centre::Distributed,
                 .name = name,
                 .object = hostile,
                 .userInfo = platform::Dictionary{{hostile, hostile}}});
  };
  // It says nothing when it begins to listen.
  do post("ready");
  while (!lines->hasLine(100ms));
  post(hostile);
  std::string line;
  do line = lines->readLine();
  while (line.starts_with("distributed ready "));
  const std::string quoted = "\"" + escaped + "\\nb\"";
  EXPECT_EQ(line, "distributed " + escaped + "\\u000ab " + quoted + " {" + quoted + ":" + quoted + "}");
  do line = json->readLine();
  while (line.find("\"ready\"") != std::string::npos);
  EXPECT_EQ(line, R"({"centre":"distributed","name":)" + quoted + R"(,"object":)" + quoted + R"(,"userInfo":{)" +
                      quoted + ":" + quoted + "}}");
}

TEST_F(Watch, EndsWithAnErrorWhenTheBusGoes) {
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), kWatching);
  bus.daemon().kill();
  EXPECT_EQ(watching->wait(), (Ended{1, "", "quellar: the session bus is gone\n"}));
}

TEST(WatchWithoutABus, FailsInOneLine) {
  Device device;
  EXPECT_EQ(device.run({"watch"}),
            (Ended{1, "", "quellar: there is no session bus: DBUS_SESSION_BUS_ADDRESS is not set\n"}));
  const std::string address = "unix:path=" + device.folder().path().string() + "/none";
  device.environment["DBUS_SESSION_BUS_ADDRESS"] = address;
  EXPECT_EQ(device.run({"watch", "--json"}), (Ended{1, "", "quellar: there is no session bus at " + address + "\n"}));
}

TEST(SetWithoutABus, StoresAllTheSame) {
  Device device;
  device.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + device.folder().path().string() + "/none";
  EXPECT_EQ(device.run({"set", "Status Bar", "disablesVPNSTBIcon", "on"}), succeeded(""));
  EXPECT_EQ(device.run({"get", "Status Bar", "disablesVPNSTBIcon"}), succeeded("true\n"));
}

TEST_F(Watch, StillHearsThePostsOfAWriteThatFailed) {
  const auto watching = device.start({"watch", "--json"});
  EXPECT_EQ(watching->readLine(), kWatching);
  std::filesystem::create_directories(device.store());
  EXPECT_EQ(device.run({"set", "Status Bar", "usesLowercaseAMPM", "on"}).code, 1);
  EXPECT_EQ(watching->readLine(),
            R"({"centre":"darwin","name":"com.vantorick.quellar2.settings","object":null,"userInfo":null})");
}

}  // namespace watch_test
}  // namespace quellar::tests
