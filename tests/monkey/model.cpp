// SPDX-License-Identifier: MIT
#include "model.h"

#include <algorithm>

namespace quellar::tests {

using frame::Centre;
using frame::Moment;
using frame::Post;
using host::headless::dump;
using host::headless::Json;
using host::headless::toJson;
using platform::Dictionary;
using platform::PSSpecifier;
using platform::Value;

namespace {

constexpr const char* kSettings = "com.vantorick.quellar2";

const Post kSettingsPost = frame::darwin("com.vantorick.quellar2.settings");
const Post kPlainSettingsPost = frame::notifyPost("com.vantorick.quellar2.settings");

/// A post's event without its time.
Json eventOf(const Post& post, const Json& userInfo) {
  const bool darwin = post.centre == Centre::darwin || post.centre == Centre::notifyPost;
  return {{"event", "post"},
          {"centre", darwin                               ? "darwin"
                     : post.centre == Centre::distributed ? "distributed"
                                                          : "process"},
          {"name", post.name},
          {"object", post.object ? Json(*post.object) : Json(nullptr)},
          {"userInfo", userInfo},
          {"immediately", true},
          {"through", post.centre == Centre::notifyPost ? "notify_post" : "centre"}};
}

bool contains(const std::vector<std::string>& texts, const std::string& text) {
  return std::ranges::find(texts, text) != texts.end();
}

bool concerns(const Post& post, const PSSpecifier& row, const std::string& key) {
  return (post.forKeys.empty() || contains(post.forKeys, key)) && !contains(post.exceptKeys, key) &&
         (post.forRowsWith.empty() || row.propertyForKey(post.forRowsWith) != nullptr);
}

Json userInfoOf(const Post& post, const PSSpecifier& row, const Value& value) {
  if (post.userInfo.empty()) return nullptr;
  Dictionary userInfo;
  for (const auto& [name, payload] : post.userInfo) {
    if (const auto* fixed = std::get_if<Value>(&payload)) {
      userInfo[name] = *fixed;
    } else if (const auto* property = std::get_if<frame::RowProperty>(&payload)) {
      userInfo[name] = *row.valueForKey(property->name);
    } else {
      userInfo[name] = value.boolValue();
    }
  }
  return toJson(Value(userInfo));
}

}  // namespace

const std::string& PanelModel::Page::colorsKey() const {
  return description->colors.defaultsKey.empty() ? description->defaultsKey : description->colors.defaultsKey;
}

Dictionary PanelModel::stored(const std::string& key) const {
  const auto domain = store.find(kSettings);
  const Value* value = domain == store.end() ? nullptr : platform::find(domain->second, key);
  const auto* dictionary = value ? value->as<Dictionary>() : nullptr;
  return dictionary ? *dictionary : Dictionary{};
}

void PanelModel::push(const std::shared_ptr<platform::ViewController>& controller, const frame::Page* description) {
  Page page{.controller = controller, .description = description, .copy = {}};
  if (description && !page.colorsKey().empty()) page.copy = stored(page.colorsKey());
  stack.push_back(std::move(page));
}

void PanelModel::tell(Json event) {
  event["t"] = std::chrono::duration<double>(now_).count();
  events_.push_back(dump(event));
}

void PanelModel::storeDictionary(const std::string& key, const Dictionary& dictionary) {
  store[kSettings].insert_or_assign(key, Value(dictionary));
  tell({{"event", "write"}, {"domain", kSettings}, {"key", key}, {"value", toJson(Value(dictionary))}});
}

void PanelModel::send(const Post& post, const Json& userInfo) {
  tell(eventOf(post, userInfo));
}

void PanelModel::sendLater(const Post& post, std::chrono::nanoseconds delay, const Json& userInfo) {
  later_.emplace(now_ + delay, eventOf(post, userInfo));
}

void PanelModel::sendProcess(const std::string& name, const Json& object, const Json& userInfo) {
  Json event = eventOf({.centre = Centre::process, .name = name}, userInfo);
  event["object"] = object;
  tell(std::move(event));
}

void PanelModel::takesOver(Page& page) const {
  const Dictionary theirs = stored(page.colorsKey());
  for (const std::string& key : page.description->takesOver) {
    if (const Value* value = platform::find(theirs, key)) page.copy.insert_or_assign(key, *value);
  }
}

void PanelModel::writes(Page& page, const PSSpecifier& row, const Value& value) {
  const frame::Page& description = *page.description;
  const std::string key = row.stringForKey("key");
  if (const std::string domain = row.stringForKey("defaults"); !domain.empty()) {
    // The platform keeps it, under its own key.
    store[domain].insert_or_assign(key, value);
    tell({{"event", "write"}, {"domain", domain}, {"key", key}, {"value", toJson(value)}});
    return;
  }
  if (description.defaultsKey.empty()) return;
  if (description.className == "KVQuellarFCCGlintListController") {
    // This page stores the colours under the control centre's key, not the dictionary that its switch is in.
    storeDictionary(description.defaultsKey, page.copy);
    send(kSettingsPost);
    return;
  }
  takesOver(page);
  page.copy.insert_or_assign(key, value);
  for (const frame::Clearing& clearing : description.clearings) {
    if (clearing.whenOn != key || !value.boolValue()) continue;
    for (const std::string& other : clearing.keys) page.copy.insert_or_assign(other, Value(false));
  }
  storeDictionary(description.defaultsKey, page.copy);
  for (const Moment moment : {Moment::afterWrite, Moment::afterReload, Moment::afterBlocks}) {
    for (const Post& post : description.posts) {
      if (post.moment != moment || !concerns(post, row, key)) continue;
      const Json userInfo = userInfoOf(post, row, value);
      if (post.delay.count() > 0) {
        sendLater(post, post.delay, userInfo);
      } else {
        send(post, userInfo);
      }
    }
  }
}

void PanelModel::storesColors(Page& page, const Post& post) {
  const frame::Colors& colors = page.description->colors;
  storeDictionary(page.colorsKey(), page.copy);
  send(post);
  for (const Post& each : colors.postsBeforeRedraw) sendLater(each, colors.delay);
  for (const Post& each : colors.postsAfterRedraw) sendLater(each, colors.delay);
}

void PanelModel::picks(Page& page, const std::string& key, const std::string& hex) {
  takesOver(page);
  page.copy.insert_or_assign(key, Value(hex));
  storesColors(page, page.description->colors.post);
}

void PanelModel::imports(Page& page, const Dictionary& colors) {
  for (const auto& [key, value] : colors) page.copy.insert_or_assign(key, value);
  storesColors(page, kSettingsPost);
}

void PanelModel::choosesAccount(Page& page, const std::string& name) {
  page.copy.insert_or_assign("userTweetableUsername", Value(name));
  storeDictionary(page.description->defaultsKey, page.copy);
  send(kSettingsPost);
}

void PanelModel::choosesStyle(std::int64_t style) {
  Dictionary dictionary = stored("NotificationCenter_Defaults");
  dictionary.insert_or_assign("ncPrefferedBackdropStyle", Value(style));
  storeDictionary("NotificationCenter_Defaults", dictionary);
  send(kPlainSettingsPost);
}

void PanelModel::steps(const PSSpecifier& row, Dictionary copy, double value) {
  copy.insert_or_assign(row.stringForKey("key"), Value(value));
  storeDictionary(row.stringForKey("defaultsKey"), copy);
  tell({{"event", "synchronize"}, {"domain", kSettings}});
  send(kPlainSettingsPost);
  if (row.valueForKey("requestsNotification")->boolValue()) hearsOfStepper(row.stringForKey("key"));
}

void PanelModel::hearsOfStepper(const std::string& key) {
  sendProcess("stepperValueChanged", key, nullptr);
  for (Page& page : stack) {
    if (!page.description || !page.description->stepperRefresh) continue;
    // The page of timers listens only while it is shown.
    if (page.description->className == "KVQuellarCustomCCTimersListController" && &page != &stack.back()) continue;
    page.copy = stored(page.colorsKey());
    for (const Post& post : page.description->stepperRefresh->posts) send(post);
  }
}

void PanelModel::typesNumber(const PSSpecifier& row, double number) {
  const std::string key = row.stringForKey("key");
  sendProcess("sliderValueChanged", key, toJson(Value(Dictionary{{"newValue", number}, {"settingsKey", key}})));
  for (Page& page : stack) {
    if (page.description && page.description->savesTypedValues) writes(page, row, Value(number));
  }
}

void PanelModel::respring() {
  Json event = eventOf(frame::darwin("com.vantorick.quellar2.respring"), nullptr);
  event["immediately"] = false;
  tell(std::move(event));
}

void PanelModel::advance(std::chrono::nanoseconds time) {
  const auto end = now_ + time;
  while (!later_.empty() && later_.begin()->first <= end) {
    const auto next = later_.extract(later_.begin());
    now_ = next.key();
    tell(next.mapped());
  }
  now_ = end;
}

}  // namespace quellar::tests
