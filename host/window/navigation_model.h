// SPDX-License-Identifier: MIT
#pragma once

#include <QAbstractListModel>
#include <vector>

#include "host/window/dialog_model.h"
#include "host/window/page_model.h"
#include "platform/navigation_controller.h"

namespace quellar::host::window {

/// The stack of pages for the view, the dialog over it and the keyboard. A page that was popped stays in the list,
/// above the others, until the view has moved it off the screen.
class NavigationModel final : public QAbstractListModel, public platform::NavigationObserver {
  Q_OBJECT
  Q_PROPERTY(QObject* dialog READ dialog CONSTANT)
  Q_PROPERTY(QObject* top READ top NOTIFY topChanged)
  /// The class of the page right above the first one, "" for none.
  Q_PROPERTY(QString detailClass READ detailClass NOTIFY topChanged)
  /// The number of pages on the stack.
  Q_PROPERTY(int depth READ depth NOTIFY topChanged)

 public:
  /// Observes the controller from now on.
  NavigationModel(platform::NavigationController& controller, const WindowResources& resources,
                  QObject* parent = nullptr);
  ~NavigationModel() override;

  [[nodiscard]] DialogModel* dialog() { return &dialog_; }
  /// The page on top, or nullptr.
  [[nodiscard]] PageModel* top() const;
  [[nodiscard]] int depth() const;
  [[nodiscard]] QString detailClass() const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

  /// Leaves the page on top; the first page stays.
  Q_INVOKABLE void back();
  /// Presses the bar button of a page at a side, "left" or "right"; of the page on top, unless another one is named.
  Q_INVOKABLE void pressBar(const QString& side, QObject* page = nullptr);
  /// Ends editing on the page on top, which commits the edited text.
  Q_INVOKABLE void endEditing();
  /// The view has moved a page that was popped off the screen.
  Q_INVOKABLE void pageIsGone(QObject* page);
  /// Reads what pages show that have just come up. After changes that the panel makes by itself this happens on the
  /// next turn of the event loop.
  void settle();

  void pushed(platform::ViewController& controller) override;
  void popped(platform::ViewController& controller, bool animated) override;
  void barChanged(platform::ViewController& controller, platform::BarSide side,
                  const std::optional<platform::BarButtonItem>& item) override;
  void titleViewFades(platform::ViewController& controller, double to, std::chrono::nanoseconds duration) override;
  void dialogShown(const platform::Dialog& dialog) override;
  void dialogDismissed() override;
  void dialogTextChanged(const std::string& text) override;
  void keyboardChanged(bool /*visible*/) override {}

 signals:
  void topChanged();

 private:
  void settleSoon();
  /// Takes the pages above one off the stack, which is there to be used beside them.
  void uncover(const PageModel& page);
  [[nodiscard]] PageModel* pageOf(const platform::ViewController& controller) const;
  void remove(const PageModel& page);

  platform::NavigationController& controller_;
  DialogModel dialog_;
  /// Bottom first; pages that leave stand behind those on the stack.
  std::vector<PageModel*> pages_;
};

}  // namespace quellar::host::window
