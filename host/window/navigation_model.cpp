// SPDX-License-Identifier: MIT
#include "host/window/navigation_model.h"

#include <QMetaObject>
#include <algorithm>

namespace quellar::host::window {

using platform::BarButtonItem;
using platform::BarSide;
using platform::ViewController;

NavigationModel::NavigationModel(platform::NavigationController& controller, const WindowResources& resources,
                                 QObject* parent)
    : QAbstractListModel(parent), controller_(controller), dialog_(controller, resources.text, this) {
  controller_.setObserver(this);
}

NavigationModel::~NavigationModel() {
  controller_.setObserver(nullptr);
}

int NavigationModel::depth() const {
  return static_cast<int>(std::ranges::count_if(pages_, [](const PageModel* page) { return !page->leaving(); }));
}

PageModel* NavigationModel::top() const {
  const int pages = depth();
  return pages == 0 ? nullptr : pages_[static_cast<std::size_t>(pages) - 1];
}

QString NavigationModel::detailClass() const {
  return depth() < 2 ? QString() : QString::fromStdString(pages_[1]->controller()->className());
}

int NavigationModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(pages_.size());
}

QVariant NavigationModel::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::UserRole) return {};
  return QVariant::fromValue<QObject*>(pages_[static_cast<std::size_t>(index.row())]);
}

QHash<int, QByteArray> NavigationModel::roleNames() const {
  return {{Qt::UserRole, "page"}};
}

void NavigationModel::back() {
  if (depth() < 2 || dialog_.shown()) return;
  controller_.popViewController(true);
  settle();
}

void NavigationModel::pressBar(const QString& side, QObject* page) {
  const PageModel* pressed = page ? qobject_cast<PageModel*>(page) : top();
  if (!pressed || pressed->leaving() || dialog_.shown()) return;
  const auto& item = pressed->controller()->navigationItem();
  const auto button = side == "left" ? item.leftBarButtonItem() : item.rightBarButtonItem();
  // What the button does may put another one in its place.
  if (button && button->run) button->run();
}

void NavigationModel::endEditing() {
  if (const auto page = controller_.topViewController()) page->endEditing();
}

void NavigationModel::pageIsGone(QObject* page) {
  const auto found = std::ranges::find(pages_, page);
  if (found != pages_.end() && (*found)->leaving()) remove(**found);
}

void NavigationModel::remove(const PageModel& page) {
  const auto found = std::ranges::find(pages_, &page);
  const auto place = static_cast<int>(found - pages_.begin());
  PageModel* const gone = *found;
  beginRemoveRows({}, place, place);
  pages_.erase(found);
  endRemoveRows();
  // The view may still be within a call of the page's own.
  gone->deleteLater();
}

void NavigationModel::settle() {
  for (PageModel* page : pages_) {
    if (page == top() || !page->isLoaded()) page->refresh();
  }
}

void NavigationModel::uncover(const PageModel& page) {
  if (page.leaving()) return;
  // A page that goes commits what is typed on it, which may show a dialog.
  while (top() != &page && !dialog_.shown()) controller_.popViewController(false);
}

void NavigationModel::settleSoon() {
  QMetaObject::invokeMethod(this, &NavigationModel::settle, Qt::QueuedConnection);
}

PageModel* NavigationModel::pageOf(const ViewController& controller) const {
  const auto found = std::ranges::find(pages_, &controller, &PageModel::controller);
  return found == pages_.end() ? nullptr : *found;
}

void NavigationModel::pushed(ViewController& controller) {
  const PageModel* beneath = top();
  const int place = depth();
  beginInsertRows({}, place, place);
  auto* const page = new PageModel(controller, beneath ? beneath->controller() : nullptr, this);
  connect(page->rows(), &RowModel::aboutToBeTapped, this, [this, page] { uncover(*page); });
  pages_.insert(pages_.begin() + place, page);
  endInsertRows();
  emit topChanged();
  // The page is loaded after this call.
  settleSoon();
}

void NavigationModel::popped(ViewController& controller, bool animated) {
  PageModel* page = pageOf(controller);
  if (!page) return;
  page->leave();
  emit topChanged();
  // A view that moves nothing has let go of the page already.
  if (!animated) pageIsGone(page);
  settleSoon();
}

void NavigationModel::barChanged(ViewController& controller, BarSide /*side*/,
                                 const std::optional<BarButtonItem>& /*item*/) {
  PageModel* page = pageOf(controller);
  if (page && page == top()) settleSoon();
}

void NavigationModel::titleViewFades(ViewController& controller, double to, std::chrono::nanoseconds duration) {
  if (PageModel* page = pageOf(controller)) page->fadeTitle(to, duration);
}

void NavigationModel::dialogShown(const platform::Dialog& dialog) {
  dialog_.show(dialog);
}

void NavigationModel::dialogDismissed() {
  dialog_.hide();
}

void NavigationModel::dialogTextChanged(const std::string& text) {
  dialog_.showText(text);
}

}  // namespace quellar::host::window
