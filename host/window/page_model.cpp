// SPDX-License-Identifier: MIT
#include "host/window/page_model.h"

#include "host/window/image_address.h"
#include "platform/list_controller.h"

namespace quellar::host::window {

using platform::BarButtonItem;
using platform::BarButtonItemStyle;

namespace {

QVariantMap buttonOf(const std::optional<BarButtonItem>& item) {
  if (!item) return {};
  return {{"title", QString::fromStdString(item->title)}, {"done", item->style == BarButtonItemStyle::done}};
}

QVariantMap backButtonOver(const platform::ViewController* beneath) {
  if (!beneath) return {};
  if (const auto& item = beneath->navigationItem().backBarButtonItem()) return buttonOf(item);
  return {{"title", QString::fromStdString(beneath->title())}, {"done", false}};
}

}  // namespace

PageModel::PageModel(platform::ViewController& controller, const platform::ViewController* beneath, QObject* parent)
    : QObject(parent), controller_(&controller), arriving_(beneath != nullptr), backButton_(backButtonOver(beneath)) {
  auto* picker = dynamic_cast<cells::KVQuellarBackdropPickerViewController*>(&controller);
  if (picker) previews_ = new BackdropModel(*picker, this);
}

void PageModel::refresh() {
  if (!controller_) return;
  const auto& item = controller_->navigationItem();
  title_ = QString::fromStdString(controller_->title());
  leftButton_ = buttonOf(item.leftBarButtonItem());
  rightButton_ = buttonOf(item.rightBarButtonItem());
  const auto& view = item.titleView();
  const QString image = view ? imageAddress(view->image) : QString();
  if (image != titleImage_) {
    titleImage_ = image;
    titleImageIsTemplate_ = view && view->isTemplate;
    titleAlpha_ = view ? view->alpha : 1;
    titleFade_ = 0;
    emit titleAlphaChanged();
  }
  emit barChanged();
  if (loaded_) {
    // What the rows show may have changed while another page lay above.
    rows_.refresh();
  } else {
    loaded_ = true;
    if (auto* list = dynamic_cast<platform::PSListController*>(controller_)) rows_.attach(*list);
  }
}

void PageModel::fadeTitle(double to, std::chrono::nanoseconds duration) {
  titleAlpha_ = to;
  titleFade_ = static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(duration).count());
  emit titleAlphaChanged();
}

void PageModel::leave() {
  rows_.detach();
  if (previews_) previews_->detach();
  controller_ = nullptr;
  emit leavingChanged();
}

}  // namespace quellar::host::window
