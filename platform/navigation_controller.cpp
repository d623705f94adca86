// SPDX-License-Identifier: MIT
#include "platform/navigation_controller.h"

#include <utility>

#include "platform/notification_center.h"

namespace quellar::platform {

std::shared_ptr<ViewController> NavigationController::topViewController() const {
  return stack_.empty() ? nullptr : stack_.back();
}

void NavigationController::pushViewController(std::shared_ptr<ViewController> controller) {
  if (const auto below = topViewController()) {
    below->endEditing();
    below->viewWillDisappear();
  }
  stack_.push_back(controller);
  if (observer_) observer_->pushed(*controller);
  controller->loadView();
  controller->viewDidLoad();
  controller->viewWillAppear();
  controller->viewDidAppear();
}

std::shared_ptr<ViewController> NavigationController::popViewController(bool animated) {
  if (stack_.empty()) return nullptr;
  const auto top = stack_.back();
  top->endEditing();
  top->viewWillDisappear();
  stack_.pop_back();
  if (observer_) observer_->popped(*top, animated);
  if (const auto below = topViewController()) {
    below->viewWillAppear();
    below->viewDidAppear();
  }
  return top;
}

void NavigationController::present(Dialog dialog) {
  if (const auto top = topViewController()) top->endEditing();
  dismiss();
  dialog_ = std::move(dialog);
  if (observer_) observer_->dialogShown(*dialog_);
  if (dialog_->text) setKeyboardVisible(true);
}

void NavigationController::setDialogText(std::string text) {
  if (!dialog_ || !dialog_->text || *dialog_->text == text) return;
  dialog_->text = std::move(text);
  if (observer_) observer_->dialogTextChanged(*dialog_->text);
}

Dialog NavigationController::takeDialog() {
  Dialog dialog = std::move(*dialog_);
  dialog_.reset();
  if (observer_) observer_->dialogDismissed();
  return dialog;
}

void NavigationController::pressDialogButton(std::size_t index) {
  if (!dialog_ || index >= dialog_->buttons.size()) return;
  const Dialog dialog = takeDialog();
  if (const auto& handler = dialog.buttons[index].handler) handler(dialog.text.value_or(""));
  const bool fieldShown = dialog_ && dialog_->text;
  if (dialog.text && !fieldShown) setKeyboardVisible(false);
}

void NavigationController::pressAccessoryButton(std::size_t index) {
  if (!dialog_ || index >= dialog_->accessory.size()) return;
  // The handler may replace the dialog, so it must not live inside it.
  const auto handler = dialog_->accessory[index].handler;
  handler();
}

void NavigationController::completeColorDialog(const Color& color) {
  if (!dialog_ || !dialog_->color) return;
  const Dialog dialog = takeDialog();
  dialog.color->completion(color);
}

void NavigationController::dismiss() {
  if (!dialog_) return;
  if (takeDialog().text) setKeyboardVisible(false);
}

void NavigationController::setKeyboardVisible(bool visible) {
  if (visible == keyboardVisible_) return;
  keyboardVisible_ = visible;
  if (observer_) observer_->keyboardChanged(visible);
  notifications_.postNotification(
      {std::string(visible ? UIKeyboardWillShowNotification : UIKeyboardWillHideNotification), {}, std::nullopt});
}

}  // namespace quellar::platform
