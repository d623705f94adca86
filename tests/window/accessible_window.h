// SPDX-License-Identifier: MIT
#pragma once

#include <atspi/atspi.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "bus/private_bus.h"
#include "host/linux/bus.h"
#include "support/temporary_folder.h"

namespace quellar::tests {

/// Waits until `holds` returns true, trying again all the time; false where ten seconds were not enough.
bool eventually(const std::function<bool()>& holds);

/// An X server without a screen, a session bus and an accessibility bus of their own, as a screen reader finds them.
/// A process can have one: the client library keeps its connection for good.
class AccessibleDesktop {
 public:
  static AccessibleDesktop& shared();

  [[nodiscard]] const std::string& busAddress() const { return bus_.address(); }

 private:
  AccessibleDesktop();

  PrivateBus bus_;
  TemporaryFolder home_;
  std::unique_ptr<Process> display_;
  std::unique_ptr<Process> launcher_;
};

/// An object of another program, as a screen reader sees it.
class Accessible {
 public:
  /// Takes over the reference.
  explicit Accessible(AtspiAccessible* object) : object_(object, g_object_unref) {}

  [[nodiscard]] std::string name() const;
  [[nodiscard]] std::string description() const;
  /// "check box", "push button", ... A text that can be edited is an "entry": the toolkit has one role for both, and
  /// screen readers tell them by that state.
  [[nodiscard]] std::string role() const;
  [[nodiscard]] bool has(AtspiStateType state) const;
  [[nodiscard]] std::vector<Accessible> children() const;
  [[nodiscard]] AtspiRect extents() const;
  /// The text of an entry.
  [[nodiscard]] std::string text() const;
  [[nodiscard]] std::vector<std::string> actions() const;

  /// Does the action of a name; false where there is none.
  bool act(std::string_view action) const;
  bool grabFocus() const;
  /// Sets the value of a slider; false where it has none.
  bool setValue(double value) const;
  [[nodiscard]] double value() const;

  /// The same object of the same program.
  bool operator==(const Accessible&) const = default;

 private:
  std::shared_ptr<AtspiAccessible> object_;
};

/// What a program tells of an object while it changes.
struct AccessibleEvent {
  /// "object:state-changed:showing", ...
  std::string type;
  /// For a state: 1 where it is set.
  int detail = 0;
  /// The child that came or went, else the object itself.
  Accessible object;
  /// Its role and name when this arrived; an object that is gone has none.
  std::string role;
  std::string name;
};

/// Listens on the accessibility bus as a screen reader does; made before the window, which tells only those who listen.
class AccessibleEvents {
 public:
  /// Takes what to listen for: "object:state-changed:showing", or all of a kind: "object:state-changed".
  explicit AccessibleEvents(std::vector<std::string> types);
  AccessibleEvents(const AccessibleEvents&) = delete;
  AccessibleEvents& operator=(const AccessibleEvents&) = delete;
  ~AccessibleEvents();

  /// Everything that has arrived since the last `forget`.
  const std::vector<AccessibleEvent>& arrived();
  /// The same as lines: "object:state-changed:showing 1 dialog Error".
  std::vector<std::string> lines();
  /// Forgets what has arrived so far.
  void forget();

 private:
  static void take(AtspiEvent* event, void* self);

  const std::vector<std::string> types_;
  AtspiEventListener* const listener_;
  std::vector<AccessibleEvent> arrived_;
};

/// The program's window in another process, driven through the accessibility bus alone.
class AccessibleWindow {
 public:
  /// Takes further arguments of the program; it gets a device root of its own.
  explicit AccessibleWindow(std::vector<std::string> arguments = {},
                            const std::function<void(const TemporaryFolder&)>& prepare = {});

  AccessibleWindow(const AccessibleWindow&) = delete;
  AccessibleWindow& operator=(const AccessibleWindow&) = delete;
  /// Ends the program. Fails the test where the toolkit has complained meanwhile.
  ~AccessibleWindow();

  [[nodiscard]] const TemporaryFolder& root() const { return root_; }
  /// All objects of the program's tree, in reading order; some may be off the window and have to be scrolled to.
  [[nodiscard]] std::vector<Accessible> objects() const;
  /// The first object of a role and name that comes within the time limit; fails the test where none does.
  [[nodiscard]] Accessible find(std::string_view role, std::string_view name) const;
  [[nodiscard]] bool shows(std::string_view role, std::string_view name) const;
  /// Role and name of all objects, in reading order.
  [[nodiscard]] std::vector<std::pair<std::string, std::string>> listed() const;

  /// What the program is called.
  [[nodiscard]] std::string applicationName() const;

  /// The notifications that have arrived at this process so far.
  const std::vector<host::linux::BusNotification>& notifications();
  /// Types on the keyboard.
  void type(const std::string& text) const;

 private:
  [[nodiscard]] std::optional<Accessible> application() const;
  /// The file of the program's standard error.
  [[nodiscard]] std::string errors() const { return (output_.path() / "errors").string(); }

  TemporaryFolder root_;
  TemporaryFolder output_;
  host::linux::Bus bus_;
  std::vector<host::linux::BusNotification> notifications_;
  std::unique_ptr<Process> program_;
};

}  // namespace quellar::tests
