// SPDX-License-Identifier: MIT
#include "host/headless/recorder.h"

namespace quellar::host::headless {

using platform::BarButtonItem;
using platform::BarButtonItemStyle;
using platform::BarSide;
using platform::ButtonStyle;
using platform::Dialog;
using platform::DialogKind;
using platform::Dictionary;
using platform::KeyboardType;
using platform::Notification;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;
using platform::ViewController;

namespace {

std::string_view styleName(BarButtonItemStyle style) {
  return style == BarButtonItemStyle::done ? "done" : "plain";
}

std::string_view styleName(ButtonStyle style) {
  switch (style) {
    case ButtonStyle::plain:
      return "default";
    case ButtonStyle::cancel:
      return "cancel";
    case ButtonStyle::destructive:
      return "destructive";
  }
  return "default";
}

std::string_view sideName(BarSide side) {
  switch (side) {
    case BarSide::left:
      return "left";
    case BarSide::right:
      return "right";
    case BarSide::back:
      return "back";
  }
  return "right";
}

std::string_view kindName(DialogKind kind) {
  switch (kind) {
    case DialogKind::alert:
      return "alert";
    case DialogKind::sheet:
      return "sheet";
    case DialogKind::color:
      return "color";
  }
  return "alert";
}

Json identifierOf(const PSSpecifier& row) {
  const auto identifier = row.identifier();
  return identifier ? Json(*identifier) : Json(nullptr);
}

Json labelsOf(const Specifiers& rows) {
  Json labels = Json::array();
  for (const auto& row : rows) labels.push_back(row->name());
  return labels;
}

}  // namespace

Json dialogFields(const Dialog& dialog) {
  Json buttons = Json::array();
  for (const auto& button : dialog.buttons) {
    buttons.push_back({{"title", button.title}, {"style", styleName(button.style)}});
  }
  Json accessory = Json::array();
  for (const auto& button : dialog.accessory) accessory.push_back(button.title);
  Json fields = Json::object();
  fields["kind"] = kindName(dialog.kind);
  fields["title"] = dialog.title;
  fields["message"] = dialog.message;
  fields["buttons"] = std::move(buttons);
  fields["text"] = dialog.text ? Json(*dialog.text) : Json(nullptr);
  fields["keyboardType"] = dialog.keyboardType == KeyboardType::numberPad ? "numberPad" : "default";
  fields["accessory"] = std::move(accessory);
  fields["anchor"] = dialog.anchoredToRightBar ? Json("rightBar") : Json(nullptr);
  if (dialog.color) {
    fields["start"] = hexString(dialog.color->start);
    fields["startAlpha"] = dialog.color->start.alpha;
    fields["showAlpha"] = dialog.color->showAlpha;
  }
  return fields;
}

Json barButton(const std::optional<BarButtonItem>& item) {
  if (!item) return nullptr;
  return {{"title", item->title}, {"style", styleName(item->style)}};
}

void Recorder::tell(Json event) {
  event["t"] = seconds(queue_.now());
  sink_(event);
}

void Recorder::wrote(std::string_view domain, std::string_view key, const std::optional<Value>& value) {
  tell({{"event", "write"}, {"domain", domain}, {"key", key}, {"value", toJson(value)}});
}

void Recorder::synchronized(std::string_view domain) {
  tell({{"event", "synchronize"}, {"domain", domain}});
}

void Recorder::posted(std::string_view centre, std::string_view name, const Json& object,
                      const std::optional<Dictionary>& userInfo, bool immediately, std::string_view through) {
  tell({{"event", "post"},
        {"centre", centre},
        {"name", name},
        {"object", object},
        {"userInfo", userInfo ? toJson(Value(*userInfo)) : Json(nullptr)},
        {"immediately", immediately},
        {"through", through}});
}

void Recorder::postedInProcess(const Notification& notification) {
  if (notification.name == platform::UIKeyboardWillShowNotification ||
      notification.name == platform::UIKeyboardWillHideNotification) {
    return;
  }
  Json object = nullptr;
  if (const auto* text = std::get_if<std::string>(&notification.object)) object = *text;
  if (const auto* row = std::get_if<PSSpecifier::Pointer>(&notification.object)) object = identifierOf(**row);
  posted("process", notification.name, object, notification.userInfo, true, "centre");
}

void Recorder::pushed(ViewController& controller) {
  if (auto* page = dynamic_cast<PSListController*>(&controller)) page->setObserver(this);
  tell({{"event", "push"}, {"page", controller.className()}});
}

void Recorder::popped(ViewController& controller, bool animated) {
  tell({{"event", "pop"}, {"page", controller.className()}, {"animated", animated}});
}

void Recorder::barChanged(ViewController& /*controller*/, BarSide side, const std::optional<BarButtonItem>& item) {
  tell({{"event", "bar"},
        {"side", sideName(side)},
        {"title", item ? Json(item->title) : Json(nullptr)},
        {"style", item ? Json(styleName(item->style)) : Json(nullptr)}});
}

void Recorder::titleViewFades(ViewController& /*controller*/, double to, std::chrono::nanoseconds duration) {
  tell({{"event", "alpha"}, {"to", to}, {"duration", seconds(duration)}});
}

void Recorder::dialogShown(const Dialog& dialog) {
  Json event{{"event", "dialog"}};
  event.update(dialogFields(dialog));
  tell(std::move(event));
}

void Recorder::dialogDismissed() {
  tell({{"event", "dismiss"}});
}

void Recorder::keyboardChanged(bool visible) {
  tell({{"event", "keyboard"}, {"visible", visible}});
}

void Recorder::rowsInserted(PSListController& page, std::string_view afterSpecifierID, std::size_t at,
                            std::size_t count, bool animated) {
  const auto first = page.specifiers().begin() + static_cast<std::ptrdiff_t>(at);
  tell({{"event", "insert"},
        {"after", afterSpecifierID},
        {"at", at},
        {"labels", labelsOf(Specifiers(first, first + static_cast<std::ptrdiff_t>(count)))},
        {"animated", animated}});
}

void Recorder::rowsRemoved(PSListController& /*page*/, std::size_t at, const Specifiers& rows, bool animated) {
  tell({{"event", "remove"}, {"at", at}, {"labels", labelsOf(rows)}, {"animated", animated}});
}

void Recorder::rowReloaded(PSListController& /*page*/, PSSpecifier& row) {
  tell({{"event", "reload"}, {"what", "row"}, {"row", identifierOf(row)}});
}

void Recorder::specifiersReloaded(PSListController& /*page*/) {
  tell({{"event", "reload"}, {"what", "specifiers"}});
}

void Recorder::pageReloaded(PSListController& /*page*/) {
  tell({{"event", "reload"}, {"what", "page"}});
}

void Recorder::valuesChanged(PSListController& /*page*/) {}

std::optional<Value> RecordingPreferences::copyAppValue(std::string_view key, std::string_view domain) {
  return store_.copyAppValue(key, domain);
}

void RecordingPreferences::setAppValue(std::string_view key, const std::optional<Value>& value,
                                       std::string_view domain) {
  store_.setAppValue(key, value, domain);
  recorder_.wrote(domain, key, value);
}

void RecordingPreferences::appSynchronize(std::string_view domain) {
  store_.appSynchronize(domain);
  recorder_.synchronized(domain);
}

void RecordingDarwinCenter::postNotification(std::string_view name, bool deliverImmediately) {
  if (next_) next_->postNotification(name, deliverImmediately);
  recorder_.posted("darwin", name, nullptr, std::nullopt, deliverImmediately, "centre");
}

void RecordingDarwinCenter::notifyPost(std::string_view name) {
  if (next_) next_->notifyPost(name);
  recorder_.posted("darwin", name, nullptr, std::nullopt, true, "notify_post");
}

void RecordingDistributedCenter::postNotification(std::string_view name, const std::optional<std::string>& object,
                                                  const std::optional<Dictionary>& userInfo, bool deliverImmediately) {
  if (next_) next_->postNotification(name, object, userInfo, deliverImmediately);
  recorder_.posted("distributed", name, object ? Json(*object) : Json(nullptr), userInfo, deliverImmediately, "centre");
}

}  // namespace quellar::host::headless
