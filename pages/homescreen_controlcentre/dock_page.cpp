// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/dock_page.h"

#include "frame/list_items.h"
#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarDockListController::page() {
  static const Page page{
      .className = "KVQuellarDockListController",
      .defaultsKey = "Dock_Defaults",
      .posts = {darwin(kSettings), darwin(kDockUpdate)},
      .takesOver = {"dockMaxIcons"},
      .rows = {
          Group{.title = "Appearance",
                .footer = "To view a preview of the blur use the Quellar Quick Edit menu to change the blur style"},
          Switch{.label = "Disable Blur", .key = "userDisablesBackgroundBlur"},
          Switch{.label = "Use Custom Blur", .key = "usesCustomDockBlur"},
          Dependent{.name = "blurStyleSpec",
                    .shownBy = "usesCustomDockBlur",
                    .rows = {Picker{
                        .label = bundled("Blur style"), .key = "dockBackgroundStyle", .choices = blurLooks(true)}}},
          Group{.title = "Dock Icons"},
          Switch{.label = "Use Custom Count", .key = "customMaxDockIcons"},
          Dependent{.name = "maxIconsSpec",
                    .shownBy = "customMaxDockIcons",
                    .rows = {Stepper{.label = "Max Icons",
                                     .key = "dockMaxIcons",
                                     .byDefault = 4,
                                     .minimum = 1,
                                     .maximum = 10,
                                     .updatesLabelValue = true}}},
      }};
  return page;
}

}  // namespace quellar::pages
