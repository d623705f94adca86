// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/file_descriptor.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// One notification as it travels between processes.
struct BusNotification {
  enum class Centre { Darwin, Distributed };

  Centre centre = Centre::Darwin;
  std::string name;
  /// Of the distributed centre alone; the empty string travels as none.
  std::optional<std::string> object;
  /// Of the distributed centre alone; an empty dictionary travels as none.
  std::optional<platform::Dictionary> userInfo;

  bool operator==(const BusNotification&) const = default;
};

/// The address of the user's session bus: DBUS_SESSION_BUS_ADDRESS, else the socket `bus` in XDG_RUNTIME_DIR where
/// there is one, else "". Transports that would start a program are left out of it.
[[nodiscard]] std::string sessionBusAddress();

/// Notifications between processes, as signals of the session bus.
///
/// Signals are sent from object path /com/vantorick/Notifications, interface com.vantorick.Notifications1:
///
///     Darwin(s name)
///     Distributed(s name, s object, a{sv} userInfo)      object "" and an empty userInfo stand for none
///
/// In user info a boolean travels as `b`, an integer as `x`, a real as `d`, a string as `s`, data as `ay`, an array as
/// `av`, a dictionary as `a{sv}`, and a date as `(d)`, seconds since 2001-01-01T00:00:00Z.
///
/// That there is no bus is a normal state: posts then do nothing. The connection is made with the first post or with
/// `connect`, in the background, since a bus that does not answer would hold its caller up for minutes. A connection
/// that is lost or could not be made is tried again by a later post, but rarely.
///
/// One thread alone uses an object of this class. It sends within `post`; receiving, and sending to a bus that is slow,
/// takes a call of `process` whenever `descriptor` is readable.
class Bus {
 public:
  using Listener = std::function<void(const BusNotification&)>;
  using Lost = std::function<void()>;

  enum class State { NotTried, Connecting, Connected, Absent };

  /// How long a post waits, at most, for a connection that is being made; later posts are queued without waiting.
  static constexpr std::chrono::milliseconds postWaits{40};
  /// How long the destructor waits, at most, for posts that the bus has not taken yet.
  static constexpr std::chrono::milliseconds farewellWaits{1000};
  static constexpr std::chrono::seconds usualRetry{30};
  /// Posts that wait for a slow bus; beyond that number the oldest is given up.
  static constexpr std::size_t queueLimit = 4096;

  /// Takes a D-Bus server address, an empty one standing for no bus, and how long after a connection was lost or could
  /// not be made a post tries anew; each failure doubles that. Opens no connection yet.
  explicit Bus(std::string address = sessionBusAddress(), std::chrono::nanoseconds retryAfter = usualRetry);
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;
  ~Bus();

  /// Calls `listener` for every notification that arrives, in order, from within `process`; signals that are not
  /// of the signatures above are ignored. To be called before the connection is made.
  void listen(Listener listener) { listener_ = std::move(listener); }
  /// Calls `lost`, from within `process`, when a connection that stood is lost.
  void onLost(Lost lost) { lost_ = std::move(lost); }

  /// Begins to connect, unless that is done or under way. Returns at once.
  void connect();
  /// Connects and waits for at most `timeout`; true when the connection stands (and, with a listener, listens).
  [[nodiscard]] bool waitUntilConnected(std::chrono::nanoseconds timeout);
  [[nodiscard]] State state() const { return state_; }

  /// Sends a notification, or queues it while the bus is not ready. When it returns, the signal is on the wire unless
  /// the bus is slow or still connecting. False where it can't travel: there is no bus, or a text is not UTF-8 or
  /// holds a NUL.
  bool post(const BusNotification& notification);

  /// Waits, for at most `timeout`, until the bus has taken all posts; true when none is left.
  bool flush(std::chrono::nanoseconds timeout);

  /// A descriptor to poll for POLLIN, the same for the life of this object; `process` is to be called when it is.
  [[nodiscard]] int descriptor() const { return poll_.get(); }
  /// Does what is to be done now without blocking: takes what arrived (a part of it, if there is much; `descriptor` is
  /// readable again then), hands it to the listener, sends what is queued.
  void process();

 private:
  struct Link;
  struct Attempt;

  void adoptAttempt();
  bool waitForAttempt(std::chrono::steady_clock::time_point deadline);
  bool sendNow(const BusNotification& notification);
  void sendQueued();
  void receive();
  [[nodiscard]] bool outputPending() const;
  void watchLink();
  void wake();
  void lose();

  const std::string address_;
  const std::chrono::nanoseconds retryAfter_;
  Listener listener_;
  Lost lost_;
  State state_ = State::NotTried;
  bool lossUntold_ = false;
  std::chrono::steady_clock::time_point attemptBegan_;
  std::chrono::nanoseconds retryWait_;
  std::unique_ptr<Link> link_;
  std::shared_ptr<Attempt> attempt_;
  std::deque<BusNotification> queue_;
  FileDescriptor poll_;
  std::shared_ptr<FileDescriptor> wake_;
};

/// The Darwin centre on the bus. Listeners can't tell a post through the centre from one through the plain call.
class BusDarwinCenter final : public platform::DarwinCenter {
 public:
  /// The bus outlives the centre.
  explicit BusDarwinCenter(Bus& bus) : bus_(bus) {}
  void postNotification(std::string_view name, bool deliverImmediately) override;
  void notifyPost(std::string_view name) override;

 private:
  Bus& bus_;
};

/// The distributed centre on the bus.
class BusDistributedCenter final : public platform::DistributedCenter {
 public:
  /// The bus outlives the centre.
  explicit BusDistributedCenter(Bus& bus) : bus_(bus) {}
  void postNotification(std::string_view name, const std::optional<std::string>& object,
                        const std::optional<platform::Dictionary>& userInfo, bool deliverImmediately) override;

 private:
  Bus& bus_;
};

}  // namespace quellar::host::linux
