// SPDX-License-Identifier: MIT
#include "host/linux/bus.h"

#include <poll.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include "host/linux/utf8.h"

#if defined(__SANITIZE_ADDRESS__)
// The library forgets its bus object, two kilobytes, where a connection fails; another reason for trying rarely.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:sd_bus_new\n";
}
// Programs print nothing of their own on standard error, nor does the sanitizer then.
extern "C" const char* __lsan_default_options() {
  return "print_suppressions=0";
}
#endif

namespace quellar::host::linux {

namespace {

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;
using Clock = std::chrono::steady_clock;

const std::string kObjectPath = "/com/vantorick/Notifications";
const std::string kInterface = "com.vantorick.Notifications1";
const std::string kDarwin = "Darwin";
const std::string kDistributed = "Distributed";

// The bus refuses messages in which containers stand deeper than 64, and closes the connection of who sends one. A
// dictionary in a dictionary is three containers deeper: variant, array, entry.
constexpr int kDepthLimit = 16;
// Text and data of one notification; keeps what waits for a slow bus small.
constexpr std::size_t kSizeLimit = std::size_t{64} * 1024;

// What one call of `process` takes from the bus at most, so that a flood doesn't hold up the panel.
constexpr int kMessagesAtOnce = 256;
constexpr std::chrono::milliseconds kReceivingAtOnce{5};

// ---- What can travel

bool textCanTravel(std::string_view text, std::size_t& room) {
  if (text.size() > room || text.find('\0') != std::string_view::npos || !isUtf8(text)) return false;
  room -= text.size();
  return true;
}

bool canTravel(const Dictionary& dictionary, std::size_t& room, int depth);

bool canTravel(const Value& value, std::size_t& room, int depth) {
  // What each value takes at least: its type and its padding.
  constexpr std::size_t kOverhead = 16;
  if (room < kOverhead) return false;
  room -= kOverhead;
  if (const auto* text = value.as<std::string>()) return textCanTravel(*text, room);
  if (const auto* data = value.as<Data>()) {
    if (data->bytes.size() > room) return false;
    room -= data->bytes.size();
  }
  if (const auto* array = value.as<Array>()) {
    if (depth >= kDepthLimit) return false;
    for (const Value& item : *array) {
      if (!canTravel(item, room, depth + 1)) return false;
    }
  }
  if (const auto* dictionary = value.as<Dictionary>()) return canTravel(*dictionary, room, depth + 1);
  return true;
}

bool canTravel(const Dictionary& dictionary, std::size_t& room, int depth) {
  if (depth > kDepthLimit) return false;
  for (const auto& [key, value] : dictionary) {
    if (!textCanTravel(key, room) || !canTravel(value, room, depth)) return false;
  }
  return true;
}

bool canTravel(const BusNotification& notification) {
  std::size_t room = kSizeLimit;
  return textCanTravel(notification.name, room) && textCanTravel(notification.object.value_or(""), room) &&
         (!notification.userInfo || canTravel(*notification.userInfo, room, 1));
}

// ---- Writing

void append(sdbus::Message& message, const Dictionary& dictionary);

// Appends a value as a variant. The library's own variant class builds a message of its own for each; this doesn't.
struct AppendVariant {
  sdbus::Message& message;

  void operator()(bool boolean) const { plain("b", boolean); }
  void operator()(std::int64_t integer) const { plain("x", integer); }
  void operator()(double real) const { plain("d", real); }
  void operator()(const std::string& text) const { plain("s", text); }
  void operator()(const Data& data) const { plain("ay", data.bytes); }
  void operator()(const Date& date) const { plain("(d)", sdbus::Struct<double>(date.seconds)); }
  void operator()(const Array& array) const {
    message.openVariant("av");
    message.openContainer("v");
    for (const Value& item : array) std::visit(*this, item.variant());
    message.closeContainer();
    message.closeVariant();
  }
  void operator()(const Dictionary& dictionary) const {
    message.openVariant("a{sv}");
    append(message, dictionary);
    message.closeVariant();
  }

 private:
  template <typename T>
  void plain(const char* signature, const T& content) const {
    message.openVariant(signature);
    message << content;
    message.closeVariant();
  }
};

void append(sdbus::Message& message, const Dictionary& dictionary) {
  message.openContainer("{sv}");
  for (const auto& [key, value] : dictionary) {
    message.openDictEntry("sv");
    message << key;
    std::visit(AppendVariant{message}, value.variant());
    message.closeDictEntry();
  }
  message.closeContainer();
}

// ---- Reading

struct Type {
  // The D-Bus type code; 0 at the end of a container or message.
  char code = 0;
  std::string contents;
};

Type nextType(const sdbus::Message& message) {
  std::string code;
  Type type;
  message.peekType(code, type.contents);
  if (!code.empty()) type.code = code.front();
  return type;
}

template <typename T>
T take(sdbus::Message& message) {
  T item{};
  message >> item;
  return item;
}

std::optional<Value> takeValue(sdbus::Message& message, int depth);

std::optional<Array> takeArray(sdbus::Message& message, const std::string& contents, int depth) {
  Array array;
  message.enterContainer(contents);
  while (nextType(message).code != 0) {
    std::optional<Value> item = takeValue(message, depth);
    if (!item) return std::nullopt;
    array.push_back(std::move(*item));
  }
  message.exitContainer();
  return array;
}

// `contents` is that of an array of dictionary entries: "{sv}".
std::optional<Dictionary> takeDictionary(sdbus::Message& message, const std::string& contents, int depth) {
  if (!contents.starts_with("{s")) return std::nullopt;
  Dictionary dictionary;
  message.enterContainer(contents);
  while (nextType(message).code != 0) {
    message.enterDictEntry(contents.substr(1, contents.size() - 2));
    auto key = take<std::string>(message);
    std::optional<Value> value = takeValue(message, depth);
    if (!value) return std::nullopt;
    dictionary.insert_or_assign(std::move(key), std::move(*value));
    message.exitDictEntry();
  }
  message.exitContainer();
  return dictionary;
}

// The next value of a message; nothing where no property list could hold it. Other programs may send any width of
// integer, and arrays of one type.
std::optional<Value> takeValue(sdbus::Message& message, int depth) {
  if (depth > 2 * kDepthLimit) return std::nullopt;
  const Type type = nextType(message);
  switch (type.code) {
    case 'b':
      return take<bool>(message);
    case 'y':
      return std::int64_t{take<std::uint8_t>(message)};
    case 'n':
      return std::int64_t{take<std::int16_t>(message)};
    case 'q':
      return std::int64_t{take<std::uint16_t>(message)};
    case 'i':
      return std::int64_t{take<std::int32_t>(message)};
    case 'u':
      return std::int64_t{take<std::uint32_t>(message)};
    case 'x':
      return take<std::int64_t>(message);
    case 't': {
      const auto integer = take<std::uint64_t>(message);
      if (integer > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
      return static_cast<std::int64_t>(integer);
    }
    case 'd': {
      const auto real = take<double>(message);
      if (!std::isfinite(real)) return std::nullopt;
      return real;
    }
    case 's':
      return take<std::string>(message);
    case 'v': {
      message.enterVariant(type.contents);
      std::optional<Value> value = takeValue(message, depth + 1);
      if (value) message.exitVariant();
      return value;
    }
    case 'r': {
      if (type.contents != "d") return std::nullopt;
      message.enterStruct(type.contents);
      const auto seconds = take<double>(message);
      message.exitStruct();
      if (!std::isfinite(seconds)) return std::nullopt;
      return Date{seconds};
    }
    case 'a': {
      if (type.contents == "y") return Data{take<std::vector<std::uint8_t>>(message)};
      if (type.contents.starts_with('{')) return takeDictionary(message, type.contents, depth + 1);
      return takeArray(message, type.contents, depth + 1);
    }
    default:
      return std::nullopt;
  }
}

std::optional<BusNotification> takeNotification(sdbus::Message& message) {
  using Centre = BusNotification::Centre;
  const std::string member = message.getMemberName();
  if (member != kDarwin && member != kDistributed) return std::nullopt;

  BusNotification notification;
  if (nextType(message).code != 's') return std::nullopt;
  notification.name = take<std::string>(message);
  if (member == kDistributed) {
    notification.centre = Centre::Distributed;
    if (nextType(message).code != 's') return std::nullopt;
    if (auto object = take<std::string>(message); !object.empty()) notification.object = std::move(object);
    const Type type = nextType(message);
    if (type.code != 'a' || type.contents != "{sv}") return std::nullopt;
    std::optional<Dictionary> userInfo = takeDictionary(message, type.contents, 1);
    if (!userInfo) return std::nullopt;
    if (!userInfo->empty()) notification.userInfo = std::move(userInfo);
  }
  if (nextType(message).code != 0) return std::nullopt;
  return notification;
}

// ---- Addresses

// Only these transports connect to a bus that runs already; others start a program.
bool connectsOnly(std::string_view address) {
  return address.starts_with("unix:") || address.starts_with("tcp:");
}

// The escapes of the D-Bus specification, "Server Addresses".
std::string escapedForAddress(std::string_view text) {
  constexpr std::string_view kHex = "0123456789abcdef";
  constexpr std::string_view kPlain = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_/.\\*";
  std::string escaped;
  for (const char character : text) {
    if (kPlain.find(character) != std::string_view::npos) {
      escaped += character;
    } else {
      const auto byte = static_cast<unsigned char>(character);
      escaped += '%';
      escaped += kHex[byte >> 4];
      escaped += kHex[byte & 0xF];
    }
  }
  return escaped;
}

}  // namespace

std::string sessionBusAddress() {
  if (const char* addresses = std::getenv("DBUS_SESSION_BUS_ADDRESS"); addresses != nullptr && *addresses != '\0') {
    std::string kept;
    std::string_view rest = addresses;
    while (!rest.empty()) {
      const std::string_view address = rest.substr(0, rest.find(';'));
      rest.remove_prefix(std::min(rest.size(), address.size() + 1));
      if (!connectsOnly(address)) continue;
      if (!kept.empty()) kept += ';';
      kept += address;
    }
    return kept;
  }
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime == '/') {
    const std::string socket = std::string(runtime) + "/bus";
    std::error_code error;
    if (std::filesystem::is_socket(socket, error)) return "unix:path=" + escapedForAddress(socket);
  }
  return {};
}

// A connection that stands.
struct Bus::Link {
  // Filled by the library's callback and emptied after it, so that a listener may do as it likes.
  std::deque<BusNotification> inbox;
  std::unique_ptr<sdbus::IConnection> connection;
  std::unique_ptr<sdbus::IObject> object;
  // What the descriptor of the connection is watched for.
  int watched = -1;
  short events = 0;

  Link() = default;
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  ~Link() {
    // The library flushes what is unsent when it closes, without a time limit; a bus that doesn't read would hold us.
    object.reset();
    if (watched >= 0 && (events & POLLOUT) != 0) ::shutdown(watched, SHUT_RDWR);
  }
};

// A connection that is being made by a thread of its own. The thread outlives the bus where the server never answers.
struct Bus::Attempt {
  std::mutex mutex;
  std::condition_variable ended;
  bool done = false;
  std::unique_ptr<Link> link;
};

Bus::Bus(std::string address, std::chrono::nanoseconds retryAfter)
    : address_(std::move(address)), retryAfter_(retryAfter), retryWait_(retryAfter) {
  poll_ = FileDescriptor(::epoll_create1(EPOLL_CLOEXEC));
  if (!poll_) throw std::system_error(errno, std::generic_category(), "epoll_create1");
  wake_ = std::make_shared<FileDescriptor>(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!*wake_) throw std::system_error(errno, std::generic_category(), "eventfd");
  epoll_event event = {};
  event.events = EPOLLIN;
  if (::epoll_ctl(poll_.get(), EPOLL_CTL_ADD, wake_->get(), &event) != 0) {
    throw std::system_error(errno, std::generic_category(), "epoll_ctl");
  }
}

Bus::~Bus() {
  try {
    flush(farewellWaits);
  } catch (const std::exception&) {
    // Out of memory, or of the system's locks: what is unsent is given up.
    queue_.clear();
  }
}

void Bus::connect() {
  if (state_ == State::Connecting || state_ == State::Connected) return;
  attemptBegan_ = Clock::now();
  state_ = State::Absent;
  if (address_.empty()) return;

  auto attempt = std::make_shared<Attempt>();
  auto work = [attempt, wake = wake_, address = address_, listens = static_cast<bool>(listener_)] {
    auto link = std::make_unique<Link>();
    try {
      link->connection = sdbus::createSessionBusConnectionWithAddress(address);
      link->object = sdbus::createObject(*link->connection, kObjectPath);
      if (listens) {
        const auto receive = [&inbox = link->inbox](sdbus::Message& message) {
          try {
            if (auto notification = takeNotification(message)) inbox.push_back(std::move(*notification));
          } catch (const sdbus::Error&) {
            return;  // A message that can't be read is not of our signatures.
          }
        };
        link->connection->addMatch("type='signal',path='" + kObjectPath + "',interface='" + kInterface + "'", receive,
                                   sdbus::floating_slot);
      }
    } catch (const sdbus::Error&) {
      link.reset();
    }
    {
      const std::lock_guard lock(attempt->mutex);
      attempt->link = std::move(link);
      attempt->done = true;
    }
    attempt->ended.notify_all();
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wake->get(), &one, sizeof one);
  };
  try {
    std::thread(std::move(work)).detach();
  } catch (const std::system_error&) {
    return;
  }
  attempt_ = std::move(attempt);
  state_ = State::Connecting;
}

void Bus::adoptAttempt() {
  {
    const std::lock_guard lock(attempt_->mutex);
    if (!attempt_->done) return;
    link_ = std::move(attempt_->link);
  }
  attempt_.reset();
  state_ = State::Absent;
  if (link_) {
    state_ = State::Connected;
    retryWait_ = retryAfter_;
    watchLink();
  } else {
    retryWait_ = std::min<std::chrono::nanoseconds>(2 * retryWait_, std::chrono::hours(1));
    queue_.clear();
  }
}

bool Bus::waitForAttempt(Clock::time_point deadline) {
  if (state_ == State::Connecting) {
    {
      std::unique_lock lock(attempt_->mutex);
      attempt_->ended.wait_until(lock, deadline, [&] { return attempt_->done; });
    }
    adoptAttempt();
  }
  return state_ == State::Connected;
}

bool Bus::waitUntilConnected(std::chrono::nanoseconds timeout) {
  connect();
  return waitForAttempt(Clock::now() + timeout);
}

bool Bus::post(const BusNotification& notification) {
  if (!canTravel(notification)) return false;
  const bool retries = state_ == State::Absent && Clock::now() - attemptBegan_ >= retryWait_;
  if (state_ == State::NotTried || retries) connect();
  if (waitForAttempt(attemptBegan_ + postWaits)) sendQueued();
  if (state_ == State::Absent) return false;

  // What is still queued then is so because output is pending.
  if (state_ == State::Connected && !outputPending()) return sendNow(notification);
  if (queue_.size() == queueLimit) queue_.pop_front();
  queue_.push_back(notification);
  return true;
}

bool Bus::sendNow(const BusNotification& notification) {
  try {
    const bool darwin = notification.centre == BusNotification::Centre::Darwin;
    sdbus::Signal signal = link_->object->createSignal(kInterface, darwin ? kDarwin : kDistributed);
    signal << notification.name;
    if (!darwin) {
      signal << notification.object.value_or("");
      append(signal, notification.userInfo.value_or(Dictionary()));
    }
    link_->object->emitSignal(signal);
  } catch (const sdbus::Error&) {
    lose();
    return false;
  }
  watchLink();
  return link_ != nullptr;
}

void Bus::sendQueued() {
  while (link_ && !queue_.empty() && !outputPending()) {
    const BusNotification notification = std::move(queue_.front());
    queue_.pop_front();
    sendNow(notification);
  }
}

bool Bus::flush(std::chrono::nanoseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  waitForAttempt(deadline);
  sendQueued();
  while (link_ && outputPending()) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) break;
    pollfd polled = {.fd = link_->watched, .events = POLLOUT, .revents = 0};
    if (::poll(&polled, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) break;
    try {
      link_->connection->processPendingRequest();
      watchLink();
      sendQueued();
    } catch (const sdbus::Error&) {
      lose();
    }
  }
  // What arrived meanwhile is for `process` to hand over.
  wake();
  return state_ != State::Connecting && (!link_ || (queue_.empty() && !outputPending()));
}

void Bus::process() {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto got = ::read(wake_->get(), &count, sizeof count);
  if (state_ == State::Connecting) adoptAttempt();
  if (link_) receive();
  sendQueued();
  if (std::exchange(lossUntold_, false) && lost_) lost_();
}

void Bus::receive() {
  const auto deadline = Clock::now() + kReceivingAtOnce;
  std::deque<BusNotification> arrived;
  try {
    int taken = 0;
    while (taken < kMessagesAtOnce && Clock::now() < deadline && link_->connection->processPendingRequest()) ++taken;
    arrived.swap(link_->inbox);
    watchLink();
  } catch (const sdbus::Error&) {
    arrived.swap(link_->inbox);
    lose();
  }
  for (const BusNotification& notification : arrived) listener_(notification);
}

bool Bus::outputPending() const {
  return (link_->events & POLLOUT) != 0;
}

void Bus::watchLink() {
  try {
    const auto data = link_->connection->getEventLoopPollData();
    // Messages that were read from the socket already don't make it readable again.
    if (data.timeout_usec == 0) wake();
    if (data.fd == link_->watched && data.events == link_->events) return;
    epoll_event event = {};
    event.events = static_cast<std::uint32_t>(data.events);
    const int operation = link_->watched < 0 ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    if (::epoll_ctl(poll_.get(), operation, data.fd, &event) != 0) {
      lose();
      return;
    }
    link_->watched = data.fd;
    link_->events = data.events;
  } catch (const sdbus::Error&) {
    lose();
  }
}

void Bus::wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const auto written = ::write(wake_->get(), &one, sizeof one);
}

void Bus::lose() {
  if (link_->watched >= 0) ::epoll_ctl(poll_.get(), EPOLL_CTL_DEL, link_->watched, nullptr);
  link_.reset();
  queue_.clear();
  state_ = State::Absent;
  attemptBegan_ = Clock::now();
  // A post may be what noticed; the host is told from `process` alone.
  lossUntold_ = true;
  wake();
}

void BusDarwinCenter::postNotification(std::string_view name, bool) {
  bus_.post({.centre = BusNotification::Centre::Darwin, .name = std::string(name), .object = {}, .userInfo = {}});
}

void BusDarwinCenter::notifyPost(std::string_view name) {
  postNotification(name, true);
}

void BusDistributedCenter::postNotification(std::string_view name, const std::optional<std::string>& object,
                                            const std::optional<Dictionary>& userInfo, bool) {
  bus_.post({.centre = BusNotification::Centre::Distributed,
             .name = std::string(name),
             .object = object,
             .userInfo = userInfo});
}

}  // namespace quellar::host::linux
