// SPDX-License-Identifier: MIT
#include <sdbus-c++/sdbus-c++.h>

#include <stdexcept>

#include "bus/private_bus.h"
#include "panel_on_file.h"
#include "suite.h"

namespace quellar::benches {

namespace {

/// A switch whose write makes one post, and one whose write makes a second one with a payload.
constexpr const char* kSwitchWithOnePost = "disablesCarrierSTBIcon";
constexpr const char* kSwitchWithTwoPosts = "disablesBatterySTBIcon";

/// A bus of its own with another process that listens on it.
class Listener {
 public:
  Listener() : process_({programFolder() / "quellar-bench-listener", bus_.address()}) {
    if (process_.readLine() != "ready") throw std::runtime_error("the listener does not listen");
  }

  [[nodiscard]] const std::string& busAddress() const { return bus_.address(); }
  /// Waits for notifications and returns when the listener had the last of them.
  Stopwatch::Clock::time_point receive(int count) {
    std::chrono::nanoseconds received{0};
    for (int number = 0; number < count; ++number) received = std::chrono::nanoseconds(std::stoll(process_.readLine()));
    return Stopwatch::Clock::time_point(received);
  }

 private:
  tests::PrivateBus bus_;
  tests::Process process_;
};

/// Sends signals by the bus library alone.
class BareSender {
 public:
  explicit BareSender(const std::string& busAddress)
      : connection_(sdbus::createSessionBusConnectionWithAddress(busAddress)),
        object_(sdbus::createObject(*connection_, "/com/vantorick/Notifications")) {
    // Waits until the bus has answered; until then the library only queues.
    static_cast<void>(connection_->getUniqueName());
  }

  void send() {
    sdbus::Signal signal = object_->createSignal("com.vantorick.Notifications1", "Darwin");
    signal << std::string("com.vantorick.quellar2.settings");
    object_->emitSignal(signal);
  }

 private:
  std::unique_ptr<sdbus::IConnection> connection_;
  std::unique_ptr<sdbus::IObject> object_;
};

/// A switch of a page, with what they live in.
struct Flipped {
  std::shared_ptr<PanelOnFile> panel;
  std::shared_ptr<platform::PSListController> page;
  platform::PSSpecifier::Pointer row;

  Flipped(std::shared_ptr<PanelOnFile> itsPanel, const char* key)
      : panel(std::move(itsPanel)), page(panel->makePage()), row(page->specifierForID(key)) {}
  void flip() const { PanelOnFile::flip(*page, *row); }
};

std::string pages(int count) {
  return count == 1 ? "1 page stored" : std::to_string(count) + " pages stored";
}

std::string signals(int count) {
  return count == 1 ? "one signal" : "two signals";
}

std::string bareSignals(int count) {
  return "two processes: " + signals(count) + " by the bus library alone";
}

/// A write until the file is renamed, on a domain of a number of pages.
void addToFile(Suite& suite, const Place& place, int pagesStored) {
  const std::string where = place.fileSystem + ", " + pages(pagesStored) + ": ";
  const std::string floor = where + "write and rename of the same bytes";

  suite.add({.name = where + "switch, to the renamed file", .floors = {floor}}, {}, [place, pagesStored] {
    return [toggle = Flipped(std::make_shared<PanelOnFile>(place, pagesStored), kSwitchWithOnePost)] {
      const Stopwatch stopwatch;
      toggle.flip();
      return stopwatch.elapsed();
    };
  });

  suite.add({.name = floor, .floors = {}}, {}, [place, pagesStored] {
    const auto panel = std::make_shared<PanelOnFile>(place, pagesStored);
    return [panel, bare = std::make_shared<BareWrite>(panel->domainFile())] {
      const Stopwatch stopwatch;
      bare->run();
      return stopwatch.elapsed();
    };
  });
}

/// What sends signals, and nothing else.
void addBareSignals(Suite& suite, int count) {
  suite.add({.name = bareSignals(count), .floors = {}}, {}, [count] {
    const auto listener = std::make_shared<Listener>();
    return [listener, count, sender = std::make_shared<BareSender>(listener->busAddress())] {
      const Stopwatch stopwatch;
      for (int number = 0; number < count; ++number) sender->send();
      return stopwatch.until(listener->receive(count));
    };
  });
}

/// A write until another process has received what it posts.
void addToListener(Suite& suite, const Place& place, const char* key, int posts) {
  const std::string where = place.fileSystem + ", two processes: ";
  const std::string signalsAlone = bareSignals(posts);
  const std::string withWrite = where + "write and rename, then " + signals(posts);

  suite.add({.name = where + "switch, until " + signals(posts) + " arrived", .floors = {signalsAlone, withWrite}}, {},
            [place, key, posts] {
              const auto listener = std::make_shared<Listener>();
              const auto panel = std::make_shared<PanelOnFile>(place, 1, listener->busAddress());
              return [listener, posts, toggle = Flipped(panel, key)] {
                const Stopwatch stopwatch;
                toggle.flip();
                return stopwatch.until(listener->receive(posts));
              };
            });

  suite.add({.name = withWrite, .floors = {}}, {}, [place, posts] {
    const auto listener = std::make_shared<Listener>();
    const auto panel = std::make_shared<PanelOnFile>(place, 1);
    return [listener, posts, panel, bare = std::make_shared<BareWrite>(panel->domainFile()),
            sender = std::make_shared<BareSender>(listener->busAddress())] {
      const Stopwatch stopwatch;
      bare->run();
      for (int number = 0; number < posts; ++number) sender->send();
      return stopwatch.until(listener->receive(posts));
    };
  });
}

}  // namespace

void addSwitchWrite(Suite& suite) {
  for (const Place& place : places()) {
    for (const int pagesStored : {1, 15}) addToFile(suite, place, pagesStored);
  }
  for (const int posts : {1, 2}) addBareSignals(suite, posts);
  for (const Place& place : places()) {
    addToListener(suite, place, kSwitchWithOnePost, 1);
    addToListener(suite, place, kSwitchWithTwoPosts, 2);
  }
}

}  // namespace quellar::benches
