// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/color.h"
#include "platform/ports.h"

namespace quellar::platform {

class NavigationController;
class ViewController;
struct Platform;

enum class BarButtonItemStyle { plain, done };
enum class BarSide { left, right, back };

/// A button of the navigation bar.
struct BarButtonItem {
  std::string title;
  BarButtonItemStyle style = BarButtonItemStyle::plain;
  /// Selector as written, "" for none.
  std::string action;
  std::function<void()> run;
};

/// The view in the middle of the navigation bar. Its alpha is the value that it has or is fading to.
struct TitleView {
  Image image;
  /// The image is a mask, drawn in the bar's tint.
  bool isTemplate = true;
  double alpha = 1;
};

/// What a page shows in the navigation bar. Changes are told to the navigation controller's observer.
class NavigationItem {
 public:
  explicit NavigationItem(ViewController& owner) : owner_(owner) {}

  [[nodiscard]] const std::optional<BarButtonItem>& leftBarButtonItem() const { return left_; }
  [[nodiscard]] const std::optional<BarButtonItem>& rightBarButtonItem() const { return right_; }
  /// The back button that pages pushed from this one show; nothing for the platform's own.
  [[nodiscard]] const std::optional<BarButtonItem>& backBarButtonItem() const { return back_; }
  [[nodiscard]] const std::optional<TitleView>& titleView() const { return titleView_; }

  void setLeftBarButtonItem(std::optional<BarButtonItem> item);
  void setRightBarButtonItem(std::optional<BarButtonItem> item);
  void setBackBarButtonItem(std::optional<BarButtonItem> item);
  void setTitleView(std::optional<TitleView> view) { titleView_ = std::move(view); }
  /// Starts a fade of the title view; does nothing where there is none.
  void animateTitleViewAlpha(double to, std::chrono::nanoseconds duration);

 private:
  void tell(BarSide side, const std::optional<BarButtonItem>& item);

  ViewController& owner_;
  std::optional<BarButtonItem> left_;
  std::optional<BarButtonItem> right_;
  std::optional<BarButtonItem> back_;
  std::optional<TitleView> titleView_;
};

/// A screen of the navigation stack. It is a shared object held by the stack.
class ViewController : public std::enable_shared_from_this<ViewController> {
 public:
  ViewController(Platform& platform, std::string className);
  virtual ~ViewController() = default;
  ViewController(const ViewController&) = delete;
  ViewController& operator=(const ViewController&) = delete;

  [[nodiscard]] const std::string& className() const { return className_; }
  [[nodiscard]] const std::string& title() const { return title_; }
  void setTitle(std::string title) { title_ = std::move(title); }
  [[nodiscard]] NavigationItem& navigationItem() { return navigationItem_; }
  [[nodiscard]] const NavigationItem& navigationItem() const { return navigationItem_; }
  [[nodiscard]] Platform& platform() const { return platform_; }

  /// Called once, when the screen is first shown; then viewDidLoad.
  virtual void loadView() {}
  virtual void viewDidLoad() {}
  /// Called each time the screen comes to the top of the stack or leaves it.
  virtual void viewWillAppear() {}
  virtual void viewDidAppear() {}
  virtual void viewWillDisappear() {}
  /// Ends editing in the view: a field that has the focus commits its text and loses it.
  virtual void endEditing() {}

  /// Expires when the controller is destroyed. Observers and deferred work hold it, so that what they would redraw is
  /// skipped once the screen is gone.
  [[nodiscard]] std::weak_ptr<const void> lifetime() const { return lifetime_; }

 private:
  Platform& platform_;
  std::string className_;
  std::string title_;
  NavigationItem navigationItem_{*this};
  std::shared_ptr<const void> lifetime_ = std::make_shared<char>();
};

}  // namespace quellar::platform
