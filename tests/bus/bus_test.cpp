// SPDX-License-Identifier: MIT
#include "host/linux/bus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <future>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "private_bus.h"
#include "support/memory_in_use.h"

namespace quellar::host::linux {

void PrintTo(const BusNotification& notification, std::ostream* stream) {
  *stream << (notification.centre == BusNotification::Centre::Darwin ? "Darwin " : "Distributed ") << notification.name
          << ' ' << notification.object.value_or("(none)") << " userInfo of "
          << (notification.userInfo ? static_cast<int>(notification.userInfo->size()) : -1);
}

namespace bus_test {

using namespace std::chrono_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using testing::ElementsAre;
using tests::memoryInUse;
using tests::PrivateBus;
using Clock = std::chrono::steady_clock;

// Long enough for a loaded machine; a test waits for it only when it fails.
constexpr auto kPatience = 20s;

BusNotification darwin(const std::string& name) {
  return {.centre = BusNotification::Centre::Darwin, .name = name, .object = {}, .userInfo = {}};
}

BusNotification distributed(const std::string& name, const std::optional<std::string>& object,
                            const std::optional<Dictionary>& userInfo) {
  return {.centre = BusNotification::Centre::Distributed, .name = name, .object = object, .userInfo = userInfo};
}

// A post may not hold its caller up for longer.
constexpr auto kLongest = 50ms;
// How often a machine under load may take this test's processor away for longer than that.
constexpr int kInterruptions = 5;

Clock::duration timeOf(const std::function<void()>& call) {
  const auto began = Clock::now();
  call();
  return Clock::now() - began;
}

// Processes a bus until a condition holds; false where it takes too long.
bool processUntil(Bus& bus, const std::function<bool()>& condition) {
  const auto deadline = Clock::now() + kPatience;
  while (!condition()) {
    if (Clock::now() > deadline) return false;
    pollfd polled = {.fd = bus.descriptor(), .events = POLLIN, .revents = 0};
    if (::poll(&polled, 1, 100) > 0) bus.process();
  }
  return true;
}

// Another process's end of the bus: collects what arrives.
class Collector {
 public:
  explicit Collector(const std::string& address) : bus_(address) {
    bus_.listen([this](const BusNotification& notification) { received_.push_back(notification); });
    if (!bus_.waitUntilConnected(kPatience)) throw std::runtime_error("the bus is not there");
  }

  // All that has arrived up to the notification with this name, which is left out.
  std::vector<BusNotification> upTo(const std::string& name) {
    const auto last = [&] { return !received_.empty() && received_.back().name == name; };
    EXPECT_TRUE(processUntil(bus_, last)) << "the last notification is missing";
    std::vector<BusNotification> all = std::move(received_);
    received_.clear();
    if (!all.empty()) all.pop_back();
    return all;
  }

  Bus& bus() { return bus_; }

 private:
  Bus bus_;
  std::vector<BusNotification> received_;
};

// A foreign program that sends what it likes from our object path.
class Stranger {
 public:
  explicit Stranger(const std::string& address)
      : connection_(sdbus::createSessionBusConnectionWithAddress(address)),
        object_(sdbus::createObject(*connection_, "/com/vantorick/Notifications")) {}

  template <typename... Arguments>
  void send(const std::string& member, const Arguments&... arguments) {
    sdbus::Signal signal = object_->createSignal("com.vantorick.Notifications1", member);
    (void)(signal << ... << arguments);
    object_->emitSignal(signal);
  }
  void sendEmpty(const std::string& member) {
    object_->emitSignal(object_->createSignal("com.vantorick.Notifications1", member));
  }

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> object_;
};

using Payload = std::map<std::string, sdbus::Variant>;

// A server that lets everybody connect and never says a word.
class SilentServer {
 public:
  SilentServer() : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    (folder_.path() / "socket").string().copy(name.sun_path, sizeof name.sun_path - 1);
    if (::bind(socket_.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0 ||
        ::listen(socket_.get(), 8) != 0) {
      throw std::runtime_error("no socket");
    }
  }
  [[nodiscard]] std::string address() const { return "unix:path=" + (folder_.path() / "socket").string(); }

 private:
  tests::TemporaryFolder folder_;
  FileDescriptor socket_;
};

Dictionary nested(int depth) {
  Dictionary dictionary = {{"leaf", true}};
  for (int i = 1; i < depth; ++i) dictionary = {{"inner", std::move(dictionary)}};
  return dictionary;
}

TEST(Bus, PutsTheSignalsOfTheContractOnTheWire) {
  PrivateBus const server;
  tests::Process monitor({"dbus-monitor", "--address", server.address(), "interface='com.vantorick.Notifications1'"});
  // The monitor prints the loss of its own name once it monitors.
  while (monitor.readLine().find("NameLost") == std::string::npos) {
  }
  monitor.readLine();
  Bus bus(server.address());
  BusDarwinCenter darwinCenter(bus);
  BusDistributedCenter distributedCenter(bus);
  darwinCenter.postNotification("com.vantorick.quellar2.settings", true);
  darwinCenter.notifyPost("com.vantorick.quellar2.settings");
  distributedCenter.postNotification("com.vantorick.quellar2.statusbaritems", "string object",
                                     Dictionary{{"barItem", 8}, {"enabled", true}}, true);
  distributedCenter.postNotification("com.vantorick.quellar2.statusbartime", {}, {}, false);
  distributedCenter.postNotification(
      "n", {}, Dictionary{{"a", 0.5}, {"b", "text"}, {"c", Data{{1, 2}}}, {"d", Array{1}}, {"e", Date{7.5}}}, true);
  bus.post(darwin("last"));

  std::vector<std::string> lines;
  while (lines.empty() || lines.back() != "   string \"last\"") {
    std::string line = monitor.readLine();
    // "signal time=... sender=:1.2 -> destination=(null destination) serial=3 path=...; interface=...; member=Darwin"
    if (line.starts_with("signal ")) line = line.substr(line.find("path="));
    lines.push_back(line);
  }
  const std::string from = "path=/com/vantorick/Notifications; interface=com.vantorick.Notifications1; member=";
  EXPECT_THAT(lines,
              ElementsAre(from + "Darwin", "   string \"com.vantorick.quellar2.settings\"",  //
                          from + "Darwin", "   string \"com.vantorick.quellar2.settings\"",  //
                          from + "Distributed", "   string \"com.vantorick.quellar2.statusbaritems\"",
                          "   string \"string object\"", "   array [",                                              //
                          "      dict entry(", "         string \"barItem\"",                                       //
                          "         variant             int64 8", "      )",                                        //
                          "      dict entry(", "         string \"enabled\"",                                       //
                          "         variant             boolean true", "      )", "   ]",                           //
                          from + "Distributed", "   string \"com.vantorick.quellar2.statusbartime\"",               //
                          "   string \"\"", "   array [", "   ]",                                                   //
                          from + "Distributed", "   string \"n\"", "   string \"\"", "   array [",                  //
                          "      dict entry(", "         string \"a\"", "         variant             double 0.5",  //
                          "      )",                                                                                //
                          "      dict entry(", "         string \"b\"",                                             //
                          "         variant             string \"text\"", "      )",                                //
                          "      dict entry(", "         string \"c\"",                                             //
                          "         variant             array of bytes [", "               01 02",                  //
                          "            ]", "      )",                                                               //
                          "      dict entry(", "         string \"d\"",                                             //
                          "         variant             array [",                                                   //
                          "               variant                   int64 1", "            ]", "      )",           //
                          "      dict entry(", "         string \"e\"",                                             //
                          "         variant             struct {", "               double 7.5",                     //
                          "            }", "      )", "   ]",                                                       //
                          from + "Darwin", "   string \"last\""));
}

TEST(Bus, CarriesEveryPropertyListTypeUnchanged) {
  PrivateBus const server;
  Collector collector(server.address());
  const Dictionary everything = {
      {"array", Array{true, 1, 1.0, "one", Array{}, Dictionary{}}},
      {"boolean", false},
      {"data", Data{{0, 1, 255}}},
      {"date", Date{-12.25}},
      {"dictionary", Dictionary{{"inner", Dictionary{{"", Array{Array{Date{0}}}}}}}},
      {"empty data", Data{}},
      {"greatest", std::numeric_limits<std::int64_t>::max()},
      {"least", std::numeric_limits<std::int64_t>::min()},
      {"real", 0.1},
      {"string", "Blur → 20 % “custom”"},
      {"tiny", std::numeric_limits<double>::denorm_min()},
  };
  Bus bus(server.address());
  EXPECT_TRUE(bus.post(distributed("everything", "object", everything)));
  EXPECT_TRUE(bus.post(distributed("empty", "", Dictionary{})));
  EXPECT_TRUE(bus.post(darwin("end")));
  EXPECT_THAT(collector.upTo("end"),
              ElementsAre(distributed("everything", "object", everything), distributed("empty", {}, {})));
}

TEST(Bus, DeliversTheFirstPostThoughNothingElseIsCalled) {
  PrivateBus const server;
  Collector collector(server.address());
  Bus bus(server.address());
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  EXPECT_TRUE(bus.post(darwin("first")));
  EXPECT_TRUE(processUntil(collector.bus(), [&, seen = 0]() mutable { return ++seen > 1; }));
  EXPECT_THAT(collector.upTo("first"), ElementsAre());
}

TEST(Bus, DeliversAPostThatItsProgramEndsRightAfter) {
  PrivateBus const server;
  Collector collector(server.address());
  {
    Bus(server.address()).post(darwin("farewell"));
  }
  EXPECT_THAT(collector.upTo("farewell"), ElementsAre());
}

TEST(Bus, KeepsTheOrderOfPostsOfBothCentres) {
  PrivateBus const server;
  Collector collector(server.address());
  Bus bus(server.address());
  std::vector<BusNotification> posted;
  for (int i = 0; i < 3000; ++i) {
    posted.push_back(i % 3 == 0 ? darwin(std::to_string(i))
                                : distributed(std::to_string(i), "object", Dictionary{{"number", i}}));
    ASSERT_TRUE(bus.post(posted.back()));
  }
  bus.post(darwin("end"));
  EXPECT_EQ(collector.upTo("end"), posted);
}

TEST(Bus, IgnoresSignalsThatAreNotOfItsSignatures) {
  PrivateBus const server;
  Collector collector(server.address());
  Stranger stranger(server.address());
  stranger.sendEmpty("Darwin");
  stranger.send("Darwin", std::int64_t{1});
  stranger.send("Darwin", std::string("one"), std::string("too many"));
  stranger.send("Darwinian", std::string("name"));
  stranger.send("Distributed", std::string("name"));
  stranger.send("Distributed", std::string("name"), std::string("object"));
  stranger.send("Distributed", std::string("name"), std::int32_t{1}, Payload{});
  stranger.send("Distributed", std::string("name"), std::string(), std::map<std::string, std::string>{{"a", "b"}});
  stranger.send("Distributed", std::string("name"), std::string(), Payload{}, true);
  stranger.send("Distributed", std::string("name"), std::string(),
                Payload{{"number", sdbus::Variant(std::numeric_limits<std::uint64_t>::max())}});
  stranger.send("Distributed", std::string("name"), std::string(),
                Payload{{"real", sdbus::Variant(std::numeric_limits<double>::infinity())}});
  stranger.send("Distributed", std::string("name"), std::string(),
                Payload{{"path", sdbus::Variant(sdbus::ObjectPath("/"))}});
  stranger.send("Distributed", std::string("name"), std::string(),
                Payload{{"map", sdbus::Variant(std::map<std::int32_t, std::string>{{1, "b"}})}});
  stranger.send("Darwin", std::string("end"));
  EXPECT_THAT(collector.upTo("end"), ElementsAre());
}

TEST(Bus, TakesOtherWidthsOfIntegersAndArraysOfOneTypeFromOthers) {
  PrivateBus const server;
  Collector collector(server.address());
  Stranger stranger(server.address());
  stranger.send("Distributed", std::string("name"), std::string("object"),
                Payload{{"a", sdbus::Variant(std::uint8_t{255})},
                        {"b", sdbus::Variant(std::int16_t{-2})},
                        {"c", sdbus::Variant(std::uint16_t{65535})},
                        {"d", sdbus::Variant(std::int32_t{-4})},
                        {"e", sdbus::Variant(std::uint32_t{4294967295u})},
                        {"f", sdbus::Variant(std::uint64_t{6})},
                        {"g", sdbus::Variant(std::vector<std::string>{"x", "y"})},
                        {"h", sdbus::Variant(std::map<std::string, std::int32_t>{{"one", 1}})},
                        {"i", sdbus::Variant(sdbus::Variant(true))}});
  stranger.send("Darwin", std::string("end"));
  EXPECT_THAT(collector.upTo("end"), ElementsAre(distributed("name", "object",
                                                             Dictionary{{"a", 255},
                                                                        {"b", -2},
                                                                        {"c", 65535},
                                                                        {"d", -4},
                                                                        {"e", std::int64_t{4294967295}},
                                                                        {"f", 6},
                                                                        {"g", Array{"x", "y"}},
                                                                        {"h", Dictionary{{"one", 1}}},
                                                                        {"i", true}})));
}

TEST(Bus, RefusesWhatNoBusCarriesAndStaysConnected) {
  PrivateBus const server;
  Collector collector(server.address());
  Bus bus(server.address());
  EXPECT_FALSE(bus.post(darwin(std::string("a\0b", 3))));
  EXPECT_FALSE(bus.post(darwin("\xC3")));
  EXPECT_FALSE(bus.post(distributed("n", "\xED\xA0\x80", {})));
  EXPECT_FALSE(bus.post(distributed("n", {}, Dictionary{{"\xFF", 1}})));
  EXPECT_FALSE(bus.post(distributed("n", {}, Dictionary{{"a", Array{"\xC0\x80"}}})));
  EXPECT_FALSE(bus.post(distributed("n", {}, Dictionary{{"a", std::string(70000, 'x')}})));
  EXPECT_FALSE(bus.post(distributed("n", {}, Dictionary{{"a", Array(5000, true)}})));
  EXPECT_FALSE(bus.post(distributed("deep", {}, nested(17))));
  EXPECT_TRUE(bus.post(distributed("deepest", {}, nested(16))));
  EXPECT_TRUE(bus.post(darwin("end")));
  EXPECT_THAT(collector.upTo("end"), ElementsAre(distributed("deepest", {}, nested(16))));
  EXPECT_EQ(bus.state(), Bus::State::Connected);
}

TEST(Bus, DoesNothingWhereThereIsNoBus) {
  for (const std::string address : {"", "unix:path=/nonexistent/quellar/bus", "nonsense", "unix:"}) {
    SCOPED_TRACE(address);
    Bus bus(address);
    EXPECT_EQ(bus.state(), Bus::State::NotTried);
    EXPECT_FALSE(bus.waitUntilConnected(kPatience));
    EXPECT_EQ(bus.state(), Bus::State::Absent);
    EXPECT_FALSE(bus.post(darwin("name")));
    EXPECT_TRUE(bus.flush(kPatience));
    bus.process();
  }
}

TEST(Bus, AServerThatNeverAnswersHoldsUpNoPost) {
  const SilentServer server;
  const auto all = timeOf([&] {
    Bus bus(server.address());
    static_assert(Bus::postWaits < kLongest);
    const auto first = timeOf([&] { bus.post(darwin("first")); });
    EXPECT_GE(first, Bus::postWaits);
    EXPECT_LT(first, Bus::postWaits + 1s);
    const auto next = timeOf([&] {
      for (int i = 0; i < 100; ++i) bus.post(darwin("next"));
    });
    EXPECT_LT(next, 1s);
    EXPECT_EQ(bus.state(), Bus::State::Connecting);
    bus.process();
    EXPECT_FALSE(bus.flush(10ms));
  });
  EXPECT_LT(all, Bus::farewellWaits + 1s);
}

TEST(Bus, SurvivesABusThatGoesAway) {
  auto server = std::make_unique<PrivateBus>();
  Bus bus(server->address());
  int lost = 0;
  bus.onLost([&] { ++lost; });
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  ASSERT_TRUE(bus.post(darwin("before")));
  server->daemon().kill();
  // The system may take a message that nobody reads any more; then it is known that the bus is gone.
  EXPECT_TRUE(processUntil(bus, [&] { return !bus.post(darwin("after")); }));
  EXPECT_EQ(bus.state(), Bus::State::Absent);
  EXPECT_FALSE(bus.post(darwin("later")));
  EXPECT_EQ(lost, 0);
  EXPECT_TRUE(processUntil(bus, [&] { return lost > 0; }));
  bus.process();
  EXPECT_EQ(lost, 1);
  EXPECT_TRUE(bus.flush(kPatience));
}

TEST(Bus, AnotherPostTriesAgainLaterButNotAtOnce) {
  PrivateBus server;
  Bus patient(server.address());
  Bus eager(server.address(), 1ms);
  ASSERT_TRUE(patient.waitUntilConnected(kPatience));
  ASSERT_TRUE(eager.waitUntilConnected(kPatience));
  server.restart();
  Collector collector(server.address());
  EXPECT_TRUE(processUntil(patient, [&] { return patient.state() == Bus::State::Absent; }));
  EXPECT_TRUE(processUntil(eager, [&] { return eager.state() == Bus::State::Absent; }));
  EXPECT_FALSE(patient.post(darwin("patient")));
  std::this_thread::sleep_for(2ms);
  EXPECT_TRUE(eager.post(darwin("eager")));
  EXPECT_TRUE(eager.flush(kPatience));
  EXPECT_THAT(collector.upTo("eager"), ElementsAre());
}

TEST(Bus, AListenerIsToldWhenItsBusGoesAwayAndKeepsWhatArrivedBefore) {
  PrivateBus server;
  std::vector<std::string> told;
  Bus listener(server.address());
  listener.listen([&](const BusNotification& notification) { told.push_back(notification.name); });
  listener.onLost([&] { told.emplace_back("lost"); });
  ASSERT_TRUE(listener.waitUntilConnected(kPatience));
  pollfd polled = {.fd = listener.descriptor(), .events = POLLIN, .revents = 0};
  // What the bus says to a newcomer.
  while (::poll(&polled, 1, 200) > 0) listener.process();
  Bus(server.address()).post(darwin("end"));
  ASSERT_EQ(::poll(&polled, 1, 20000), 1);
  server.daemon().kill();
  EXPECT_TRUE(processUntil(listener, [&] { return told.size() >= 2; }));
  EXPECT_THAT(told, ElementsAre("end", "lost"));
}

TEST(Bus, ABusThatStandsStillHoldsUpNoPostAndGetsTheLastOnesInOrder) {
  PrivateBus server;
  Collector collector(server.address());
  Bus bus(server.address());
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  server.daemon().signal(SIGSTOP);
  const int count = 30000;
  const std::string padding(200, 'x');
  int slow = 0;
  for (int i = 0; i < count; ++i) {
    const auto time = timeOf([&] { EXPECT_TRUE(bus.post(distributed(std::to_string(i), padding, {}))); });
    if (time > kLongest) ++slow;
  }
  EXPECT_LE(slow, kInterruptions);
  EXPECT_FALSE(bus.flush(10ms));
  server.daemon().signal(SIGCONT);
  EXPECT_TRUE(bus.flush(kPatience));
  bus.post(darwin("end"));

  std::vector<int> numbers;
  for (const BusNotification& notification : collector.upTo("end")) numbers.push_back(std::stoi(notification.name));
  ASSERT_GE(numbers.size(), Bus::queueLimit);
  EXPECT_LT(numbers.size(), static_cast<std::size_t>(count));
  EXPECT_TRUE(std::ranges::is_sorted(numbers));
  EXPECT_EQ(std::ranges::adjacent_find(numbers), numbers.end());
  const std::vector<int> last(numbers.end() - static_cast<std::ptrdiff_t>(Bus::queueLimit), numbers.end());
  EXPECT_EQ(last.front(), count - static_cast<int>(Bus::queueLimit));
  EXPECT_EQ(last.back(), count - 1);
}

TEST(Bus, SendsWhatIsQueuedFromProcessOnceTheBusReadsAgain) {
  PrivateBus server;
  Collector collector(server.address());
  Bus bus(server.address());
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  server.daemon().signal(SIGSTOP);
  for (int i = 0; i < 4000; ++i) bus.post(distributed(std::to_string(i), std::string(4000, 'x'), {}));
  bus.post(darwin("end"));
  ASSERT_FALSE(bus.flush(0ms));
  server.daemon().signal(SIGCONT);
  std::atomic<bool> arrived = false;
  std::thread poster([&] { EXPECT_TRUE(processUntil(bus, [&] { return arrived.load(); })); });
  EXPECT_EQ(collector.upTo("end").size(), 4000u);
  arrived = true;
  poster.join();
}

TEST(Bus, AStuckBusDoesNotHoldUpTheEndOfTheProgram) {
  PrivateBus server;
  // The end of the program, and how long it waited.
  std::future<Clock::duration> end = std::async(std::launch::async, [&] {
    auto bus = std::make_unique<Bus>(server.address());
    EXPECT_TRUE(bus->waitUntilConnected(kPatience));
    server.daemon().signal(SIGSTOP);
    // More than fits into the socket, whose buffer the library makes large.
    for (int i = 0; i < 400; ++i) bus->post(distributed("name", std::string(50000, 'x'), {}));
    EXPECT_FALSE(bus->flush(0ms));
    return timeOf([&] { bus.reset(); });
  });
  const bool ended = end.wait_for(2 * kPatience) == std::future_status::ready;
  EXPECT_TRUE(ended) << "it goes on only once the bus reads again";
  server.daemon().signal(SIGCONT);
  EXPECT_GE(end.get(), Bus::farewellWaits);
}

TEST(Bus, SurvivesAFloodOfForeignSignalsWithFlatMemory) {
  PrivateBus server;
  std::vector<BusNotification> received;
  Bus bus(server.address());
  bus.listen([&](const BusNotification& notification) { received.push_back(notification); });
  ASSERT_TRUE(bus.waitUntilConnected(kPatience));
  const int rounds = 20;
  std::int64_t afterTheFirst = 0;
  int slow = 0;
  for (int round = 0; round < rounds; ++round) {
    std::thread flood([&] {
      Stranger stranger(server.address());
      for (int i = 0; i < 5000; ++i) stranger.send("Darwin", std::int64_t{i}, std::string(100, 'x'));
      stranger.send("Darwin", std::to_string(round));
    });
    const auto count = static_cast<std::size_t>(round) + 1;
    EXPECT_TRUE(processUntil(bus, [&] {
      if (timeOf([&] { bus.process(); }) > kLongest) ++slow;
      return received.size() == count;
    }));
    flood.join();
    if (round == 0) afterTheFirst = memoryInUse();
  }
  EXPECT_LE(slow, kInterruptions);
  EXPECT_LT(memoryInUse() - afterTheFirst, 1024 * 1024);
  ASSERT_EQ(received.size(), static_cast<std::size_t>(rounds));
  for (int round = 0; round < rounds; ++round) {
    EXPECT_EQ(received[static_cast<std::size_t>(round)], darwin(std::to_string(round)));
  }
}

TEST(Bus, AListenerMayPostWhileItIsTold) {
  PrivateBus const server;
  Collector const collector(server.address());
  Bus echo(server.address());
  echo.listen([&](const BusNotification& notification) {
    if (notification.name == "question") echo.post(darwin("answer"));
  });
  ASSERT_TRUE(echo.waitUntilConnected(kPatience));
  bool asked = false;
  std::vector<BusNotification> received;
  Bus asker(server.address());
  asker.listen([&](const BusNotification& notification) { received.push_back(notification); });
  ASSERT_TRUE(asker.waitUntilConnected(kPatience));
  asked = asker.post(darwin("question"));
  EXPECT_TRUE(asked);
  EXPECT_TRUE(processUntil(echo, [&] {
    asker.process();
    return received.size() == 2;
  }));
  EXPECT_THAT(received, ElementsAre(darwin("question"), darwin("answer")));
}

class SessionBusAddress : public testing::Test {
 protected:
  void SetUp() override {
    ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::unsetenv("XDG_RUNTIME_DIR");
  }
};

TEST_F(SessionBusAddress, IsEmptyWhereTheEnvironmentNamesNone) {
  EXPECT_EQ(sessionBusAddress(), "");
}

TEST_F(SessionBusAddress, IsTheOneOfTheEnvironment) {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/run/bus,guid=1;tcp:host=::1,port=2", 1);
  EXPECT_EQ(sessionBusAddress(), "unix:path=/run/bus,guid=1;tcp:host=::1,port=2");
}

TEST_F(SessionBusAddress, LeavesOutTransportsThatStartAProgram) {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unixexec:path=/bin/false;unix:path=/run/bus;autolaunch:;launchd:env=A", 1);
  EXPECT_EQ(sessionBusAddress(), "unix:path=/run/bus");
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:", 1);
  EXPECT_EQ(sessionBusAddress(), "");
}

TEST_F(SessionBusAddress, IsTheSocketInTheRuntimeFolderOtherwise) {
  const tests::TemporaryFolder folder;
  ::setenv("XDG_RUNTIME_DIR", folder.path().c_str(), 1);
  EXPECT_EQ(sessionBusAddress(), "");
  const std::filesystem::path odd = folder.path() / "a b";
  std::filesystem::create_directory(odd);
  ::setenv("XDG_RUNTIME_DIR", odd.c_str(), 1);
  const FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un name = {};
  name.sun_family = AF_UNIX;
  (odd / "bus").string().copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
  EXPECT_EQ(sessionBusAddress(), "unix:path=" + folder.path().string() + "/a%20b/bus");
}

}  // namespace bus_test
}  // namespace quellar::host::linux
