// SPDX-License-Identifier: MIT
#include "accessible_window.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace quellar::tests {

using namespace std::chrono_literals;
using host::linux::BusNotification;

namespace {

constexpr const char* kProgram = "quellar-settings";

std::string taken(char* text) {
  const std::string result = text ? text : "";
  g_free(text);
  return result;
}

void collect(const Accessible& object, std::vector<Accessible>& all) {
  all.push_back(object);
  for (const Accessible& child : object.children()) collect(child, all);
}

}  // namespace

bool eventually(const std::function<bool()>& holds) {
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (!holds()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(10ms);
  }
  return true;
}

AccessibleDesktop& AccessibleDesktop::shared() {
  static AccessibleDesktop desktop;
  return desktop;
}

AccessibleDesktop::AccessibleDesktop() {
  ::setenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().c_str(), 1);
  ::setenv("HOME", home_.path().c_str(), 1);
  ::setenv("XDG_RUNTIME_DIR", home_.path().c_str(), 1);
  ::unsetenv("WAYLAND_DISPLAY");
  ::unsetenv("AT_SPI_BUS_ADDRESS");
  // The server picks a display that is free and tells its number.
  display_ = std::make_unique<Process>(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                                                "800x1000x24", "-nolisten", "tcp", "-noreset"});
  ::setenv("DISPLAY", (":" + display_->readLine()).c_str(), 1);
  ::setenv("QT_QPA_PLATFORM", "xcb", 1);
  ::setenv("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1", 1);
  launcher_ =
      std::make_unique<Process>(std::vector<std::string>{"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"});
  // The client library ends the process where it asks before the launcher answers.
  constexpr const char* kAsk =
      "dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress >/dev/null 2>&1";
  const bool answers = eventually([] { return std::system(kAsk) == 0; });
  if (!answers || !eventually([] { return atspi_init() <= 1 && atspi_get_desktop_count() > 0; })) {
    throw std::runtime_error("the accessibility bus does not answer");
  }
}

std::string Accessible::name() const {
  return taken(atspi_accessible_get_name(object_.get(), nullptr));
}

std::string Accessible::description() const {
  return taken(atspi_accessible_get_description(object_.get(), nullptr));
}

std::string Accessible::role() const {
  const std::string name = taken(atspi_accessible_get_role_name(object_.get(), nullptr));
  return name == "text" && has(ATSPI_STATE_EDITABLE) ? "entry" : name;
}

bool Accessible::has(AtspiStateType state) const {
  AtspiStateSet* states = atspi_accessible_get_state_set(object_.get());
  const bool result = states && atspi_state_set_contains(states, state);
  if (states) g_object_unref(states);
  return result;
}

std::vector<Accessible> Accessible::children() const {
  std::vector<Accessible> result;
  const int count = atspi_accessible_get_child_count(object_.get(), nullptr);
  for (int place = 0; place < count; ++place) {
    if (auto* child = atspi_accessible_get_child_at_index(object_.get(), place, nullptr)) result.emplace_back(child);
  }
  return result;
}

AtspiRect Accessible::extents() const {
  AtspiRect result{};
  if (auto* rect = atspi_component_get_extents(ATSPI_COMPONENT(object_.get()), ATSPI_COORD_TYPE_WINDOW, nullptr)) {
    result = *rect;
    g_free(rect);
  }
  return result;
}

std::string Accessible::text() const {
  return taken(atspi_text_get_text(ATSPI_TEXT(object_.get()), 0, -1, nullptr));
}

std::vector<std::string> Accessible::actions() const {
  std::vector<std::string> result;
  const int count = atspi_action_get_n_actions(ATSPI_ACTION(object_.get()), nullptr);
  for (int place = 0; place < count; ++place) {
    result.push_back(taken(atspi_action_get_action_name(ATSPI_ACTION(object_.get()), place, nullptr)));
  }
  return result;
}

bool Accessible::act(std::string_view action) const {
  const auto all = actions();
  for (std::size_t place = 0; place < all.size(); ++place) {
    if (all[place] == action) {
      return atspi_action_do_action(ATSPI_ACTION(object_.get()), static_cast<int>(place), nullptr);
    }
  }
  return false;
}

bool Accessible::grabFocus() const {
  return atspi_component_grab_focus(ATSPI_COMPONENT(object_.get()), nullptr);
}

bool Accessible::setValue(double value) const {
  return atspi_value_set_current_value(ATSPI_VALUE(object_.get()), value, nullptr);
}

double Accessible::value() const {
  return atspi_value_get_current_value(ATSPI_VALUE(object_.get()), nullptr);
}

AccessibleEvents::AccessibleEvents(std::vector<std::string> types)
    : types_(std::move(types)), listener_(atspi_event_listener_new(take, this, nullptr)) {
  for (const std::string& type : types_) {
    if (!atspi_event_listener_register(listener_, type.c_str(), nullptr))
      throw std::runtime_error("nobody tells " + type);
  }
}

AccessibleEvents::~AccessibleEvents() {
  for (const std::string& type : types_) atspi_event_listener_deregister(listener_, type.c_str(), nullptr);
  g_object_unref(listener_);
}

const std::vector<AccessibleEvent>& AccessibleEvents::arrived() {
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  return arrived_;
}

std::vector<std::string> AccessibleEvents::lines() {
  std::vector<std::string> result;
  for (const auto& each : arrived()) {
    result.push_back(each.type + " " + std::to_string(each.detail) + " " + each.role + " " + each.name);
  }
  return result;
}

void AccessibleEvents::forget() {
  (void)arrived();
  arrived_.clear();
}

void AccessibleEvents::take(AtspiEvent* event, void* self) {
  AtspiAccessible* told = event->source;
  const std::string type = event->type;
  if (type.starts_with("object:children-changed") && G_VALUE_HOLDS(&event->any_data, ATSPI_TYPE_ACCESSIBLE)) {
    told = ATSPI_ACCESSIBLE(g_value_get_object(&event->any_data));
  }
  if (told) {
    const Accessible object(ATSPI_ACCESSIBLE(g_object_ref(told)));
    static_cast<AccessibleEvents*>(self)->arrived_.push_back(
        {type, event->detail1, object, object.role(), object.name()});
  }
  g_boxed_free(ATSPI_TYPE_EVENT, event);
}

AccessibleWindow::AccessibleWindow(std::vector<std::string> arguments,
                                   const std::function<void(const TemporaryFolder&)>& prepare)
    : bus_(AccessibleDesktop::shared().busAddress()) {
  if (prepare) prepare(root_);
  bus_.listen([this](const BusNotification& notification) { notifications_.push_back(notification); });
  if (!bus_.waitUntilConnected(10s)) throw std::runtime_error("the session bus does not answer");
  std::vector<std::string> command{QUELLAR_BIN "/" + std::string(kProgram), "--device-root", root_.path().string(),
                                   "--reduced-motion"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  program_ = std::make_unique<Process>(command, errors());
}

AccessibleWindow::~AccessibleWindow() {
  program_->kill();
  std::ifstream stream(errors());
  for (std::string line; std::getline(stream, line);) {
    // What the program itself tells its user begins with its name.
    if (!line.starts_with(kProgram + std::string(": "))) ADD_FAILURE() << line;
  }
}

std::optional<Accessible> AccessibleWindow::application() const {
  AtspiAccessible* desktop = atspi_get_desktop(0);
  if (!desktop) return std::nullopt;
  // What the client library keeps from earlier answers may be out of date.
  atspi_accessible_clear_cache(desktop);
  while (g_main_context_iteration(nullptr, FALSE)) {
  }
  for (const Accessible& each : Accessible(desktop).children()) {
    if (each.name() == kProgram || each.name() == "Quellar") return each;
  }
  return std::nullopt;
}

std::string AccessibleWindow::applicationName() const {
  const auto found = application();
  return found ? found->name() : "";
}

std::vector<Accessible> AccessibleWindow::objects() const {
  std::vector<Accessible> all;
  if (const auto found = application()) collect(*found, all);
  return all;
}

std::vector<std::pair<std::string, std::string>> AccessibleWindow::listed() const {
  std::vector<std::pair<std::string, std::string>> result;
  for (const Accessible& object : objects()) result.emplace_back(object.role(), object.name());
  return result;
}

bool AccessibleWindow::shows(std::string_view role, std::string_view name) const {
  for (const auto& [itsRole, itsName] : listed()) {
    if (itsRole == role && itsName == name) return true;
  }
  return false;
}

Accessible AccessibleWindow::find(std::string_view role, std::string_view name) const {
  std::optional<Accessible> found;
  eventually([&] {
    for (const Accessible& object : objects()) {
      if (object.role() == role && object.name() == name) found = object;
      if (found) return true;
    }
    return false;
  });
  if (!found) {
    std::string all;
    for (const auto& [itsRole, itsName] : listed()) all += "\n  " + itsRole + " \"" + itsName + "\"";
    throw std::runtime_error("no " + std::string(role) + " \"" + std::string(name) + "\" among" + all);
  }
  return *found;
}

const std::vector<BusNotification>& AccessibleWindow::notifications() {
  bus_.process();
  return notifications_;
}

void AccessibleWindow::type(const std::string& text) const {
  atspi_generate_keyboard_event(0, text.c_str(), ATSPI_KEY_STRING, nullptr);
}

}  // namespace quellar::tests
