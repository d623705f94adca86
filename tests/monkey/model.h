// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "frame/page.h"
#include "host/headless/json.h"
#include "platform/specifier.h"
#include "platform/view_controller.h"

namespace quellar::tests {

/// What the panel has to store and to post, told from the descriptions of its pages alone: a second, plain reading of
/// them to hold the pages to.
class PanelModel {
 public:
  using Domains = std::map<std::string, platform::Dictionary, std::less<>>;

  /// A page of the stack and its copy of its dictionary.
  struct Page {
    std::weak_ptr<platform::ViewController> controller;
    /// Nothing for a screen that is no page of settings: a list of choices, the backdrop picker.
    const frame::Page* description = nullptr;
    platform::Dictionary copy;

    /// Where the copy is loaded from, and colours are stored.
    [[nodiscard]] const std::string& colorsKey() const;
  };

  Domains store;
  /// The top one last.
  std::vector<Page> stack;

  /// A page is made: it loads its copy.
  void push(const std::shared_ptr<platform::ViewController>& controller, const frame::Page* description);

  /// The row of a page is given a value.
  void writes(Page& page, const platform::PSSpecifier& row, const platform::Value& value);
  /// A colour is picked for a row of a page.
  void picks(Page& page, const std::string& key, const std::string& hex);
  /// The colours of the sibling add-on are taken over.
  void imports(Page& page, const platform::Dictionary& colors);
  /// An account is chosen on the page of music changes.
  void choosesAccount(Page& page, const std::string& name);
  /// A style is chosen in the backdrop picker.
  void choosesStyle(std::int64_t style);
  /// A stepper that has this copy of its dictionary stores a value; the pages that listen hear of it.
  void steps(const platform::PSSpecifier& row, platform::Dictionary copy, double value);
  /// Somebody posts in the process that a stepper was pressed.
  void hearsOfStepper(const std::string& key);
  /// A number was typed into the dialog of a slider and is within its bounds.
  void typesNumber(const platform::PSSpecifier& row, double number);
  void respring();
  /// Time moves on; what was to be posted later is posted on the way.
  void advance(std::chrono::nanoseconds time);

  /// The writes, synchronisations and posts that must have happened since the last call, as lines of a session.
  std::vector<std::string> take() { return std::exchange(events_, {}); }

 private:
  void tell(host::headless::Json event);
  void storeDictionary(const std::string& key, const platform::Dictionary& dictionary);
  void sendProcess(const std::string& name, const host::headless::Json& object, const host::headless::Json& userInfo);
  void send(const frame::Post& post, const host::headless::Json& userInfo = nullptr);
  void sendLater(const frame::Post& post, std::chrono::nanoseconds delay,
                 const host::headless::Json& userInfo = nullptr);
  void takesOver(Page& page) const;
  void storesColors(Page& page, const frame::Post& post);
  [[nodiscard]] platform::Dictionary stored(const std::string& key) const;

  std::chrono::nanoseconds now_{0};
  /// By due time, then in the order of the calls.
  std::multimap<std::chrono::nanoseconds, host::headless::Json> later_;
  std::vector<std::string> events_;
};

}  // namespace quellar::tests
