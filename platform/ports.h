// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/value.h"

namespace quellar::platform {

/// The preferences store: per domain a map from string keys to property-list values. Errors are not reported to the
/// panel, which ignores them; an implementation reports them to its host.
class Preferences {
 public:
  virtual ~Preferences() = default;

  /// Takes a key and a domain; returns a copy of the value stored under the key now, or nothing.
  [[nodiscard]] virtual std::optional<Value> copyAppValue(std::string_view key, std::string_view domain) = 0;

  /// Whether the last read of the domain found out what it holds. Where it did not, a value may be stored although
  /// copyAppValue() returned none.
  [[nodiscard]] virtual bool wasRead(std::string_view domain) const = 0;

  /// Replaces the value under one key of a domain; nothing for the value removes the key. By the time that a
  /// notification that is posted after the call arrives, every process reads the new value, also after a power cut.
  virtual void setAppValue(std::string_view key, const std::optional<Value>& value, std::string_view domain) = 0;

  /// Returns once all that was set in the domain is on the storage device.
  virtual void appSynchronize(std::string_view domain) = 0;
};

/// Named notifications without payload to all processes.
class DarwinCenter {
 public:
  virtual ~DarwinCenter() = default;

  /// Posts a name through the notification centre.
  virtual void postNotification(std::string_view name, bool deliverImmediately) = 0;

  /// Posts a name through the plain system call; listeners can't tell it from a post through the centre.
  virtual void notifyPost(std::string_view name) = 0;
};

/// Named notifications with an object and a payload to all processes.
class DistributedCenter {
 public:
  virtual ~DistributedCenter() = default;

  /// Posts a name with an object string or none, and user info or none.
  virtual void postNotification(std::string_view name, const std::optional<std::string>& object,
                                const std::optional<Dictionary>& userInfo, bool deliverImmediately) = 0;
};

/// The queue of the main thread, on which all panel code runs.
class MainQueue {
 public:
  using Work = std::function<void()>;
  virtual ~MainQueue() = default;

  /// Runs the work once, `delay` from now; works that fall due at the same time run in the order of their calls.
  virtual void after(std::chrono::nanoseconds delay, Work work) = 0;
};

/// The device that the panel runs on.
class Device {
 public:
  virtual ~Device() = default;

  /// 0 on a phone, 1 on a pad; nothing on a device that does not answer.
  [[nodiscard]] virtual std::optional<int> userInterfaceIdiom() const = 0;
  /// Pixels a point.
  [[nodiscard]] virtual double screenScale() const = 0;
  /// Width of the main screen in points.
  [[nodiscard]] virtual double screenWidth() const = 0;
};

/// An image of the platform, named by the path that it was found at; the host loads and draws it.
struct Image {
  std::string path;
  /// Drawn in one colour ("#rrggbb") with the image as its mask, where set.
  std::optional<std::string> flatColor;
  bool operator==(const Image&) const = default;
};

/// Files by their platform paths ("/Library/..."), read only.
class Files {
 public:
  virtual ~Files() = default;

  [[nodiscard]] virtual bool fileExists(std::string_view path) = 0;
  /// The image at a path, where there is one at any scale; nothing otherwise.
  [[nodiscard]] virtual std::optional<Image> imageWithContentsOfFile(std::string_view path) = 0;
  /// The image of a name ("BarDialer") in a bundle's folder; nothing where the bundle or the image is missing.
  [[nodiscard]] virtual std::optional<Image> imageNamed(std::string_view name, std::string_view bundlePath) = 0;
  /// The whole property list at a path, binary or XML; nothing where it is missing or can't be read.
  [[nodiscard]] virtual std::optional<Value> propertyListWithContentsOfFile(std::string_view path) = 0;
};

/// String tables and row files of bundles, by the bundle's platform path.
class Bundles {
 public:
  virtual ~Bundles() = default;

  /// The text of `key` in a table of the bundle (no table: "Localizable") in the user's language. Where the table has
  /// no such key: `value`, or the key itself when `value` is empty.
  [[nodiscard]] virtual std::string localizedString(std::string_view bundlePath, std::string_view key,
                                                    std::string_view value,
                                                    const std::optional<std::string>& table) = 0;
  /// The items of the row file `<name>.plist` of the bundle; nothing where it is missing or is no row file.
  [[nodiscard]] virtual std::optional<Array> rowFileItems(std::string_view bundlePath, std::string_view name) = 0;
  /// Something in a row file that was skipped, for the host to report.
  virtual void reportRowFile(std::string_view name, std::string_view problem) = 0;
};

/// An application installed on the machine.
struct Application {
  /// Its desktop-file id ("org.example.Camera.desktop").
  std::string identifier;
  /// Its name in the user's language.
  std::string name;
};

/// The applications installed on the machine.
class Applications {
 public:
  virtual ~Applications() = default;

  /// All that are not hidden, sorted by localised name.
  [[nodiscard]] virtual std::vector<Application> installedApplications() = 0;
};

}  // namespace quellar::platform
