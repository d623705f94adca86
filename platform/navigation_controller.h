// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dialog.h"
#include "platform/view_controller.h"

namespace quellar::platform {

class NotificationCenter;

/// Is told what happens on the screen, in the order in which it happens. A host implements it.
class NavigationObserver {
 public:
  virtual ~NavigationObserver() = default;

  virtual void pushed(ViewController& controller) = 0;
  /// The controller is still alive during the call.
  virtual void popped(ViewController& controller, bool animated) = 0;
  virtual void barChanged(ViewController& controller, BarSide side, const std::optional<BarButtonItem>& item) = 0;
  virtual void titleViewFades(ViewController& controller, double to, std::chrono::nanoseconds duration) = 0;
  virtual void dialogShown(const Dialog& dialog) = 0;
  virtual void dialogDismissed() = 0;
  /// The field of the dialog holds another text, typed or set by a button of the bar above the keyboard.
  virtual void dialogTextChanged(const std::string& text) = 0;
  virtual void keyboardChanged(bool visible) = 0;
};

/// The stack of screens, the dialog that lies over it and the keyboard.
class NavigationController {
 public:
  explicit NavigationController(NotificationCenter& notifications) : notifications_(notifications) {}

  void setObserver(NavigationObserver* observer) { observer_ = observer; }
  [[nodiscard]] NavigationObserver* observer() const { return observer_; }

  [[nodiscard]] const std::vector<std::shared_ptr<ViewController>>& viewControllers() const { return stack_; }
  /// The screen on top, or nullptr.
  [[nodiscard]] std::shared_ptr<ViewController> topViewController() const;

  /// Puts a screen on top and loads its view. A field that has the focus below commits and loses it first.
  void pushViewController(std::shared_ptr<ViewController> controller);
  /// Takes the top screen off; returns it, or nullptr where the stack was empty. Its edited field commits first. The
  /// screen is destroyed when the caller lets go of it.
  std::shared_ptr<ViewController> popViewController(bool animated);

  /// Shows a dialog; one that is shown already is dismissed without an answer. One with a text field raises the
  /// keyboard.
  void present(Dialog dialog);
  [[nodiscard]] const std::optional<Dialog>& dialog() const { return dialog_; }
  /// Dismisses the dialog that is shown, if any, without an answer.
  void dismiss();
  /// Sets the text of the dialog's field; does nothing where there is none.
  void setDialogText(std::string text);
  /// Presses the button of a place: the dialog goes, then the button's handler runs, then the keyboard that was up for
  /// the dialog's field goes, unless the handler has shown a dialog with a field.
  void pressDialogButton(std::size_t index);
  /// Presses a button of the bar above the keyboard.
  void pressAccessoryButton(std::size_t index);
  /// Completes a colour dialog: it goes, then its completion runs.
  void completeColorDialog(const Color& color);

  /// Raises or lowers the keyboard; posts the platform's keyboard notifications in the process when it changes.
  void setKeyboardVisible(bool visible);
  [[nodiscard]] bool keyboardVisible() const { return keyboardVisible_; }

 private:
  Dialog takeDialog();

  NotificationCenter& notifications_;
  NavigationObserver* observer_ = nullptr;
  std::vector<std::shared_ptr<ViewController>> stack_;
  std::optional<Dialog> dialog_;
  bool keyboardVisible_ = false;
};

}  // namespace quellar::platform
