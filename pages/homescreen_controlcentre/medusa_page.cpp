// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/medusa_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

const Page& KVQuellarMedusaListController::page() {
  static const Page page{.className = "KVQuellarMedusaListController",
                         .defaultsKey = "Medusa_Defaults",
                         .posts = {darwin(kSettings), darwin(kDockUpdate)},
                         .rows = {
                             RowFile{.name = "QuellarMedusa"},
                             Group{.footer = "If your device already supports Medusa there is no need to enable this"},
                             Switch{.label = "Enable Medusa", .key = "userRequestsMedusaEnabled"},
                             Group{.title = "Slide Over Appearance"},
                             Switch{.label = "Use Custom Blur", .key = "userRequestsCustomSlideOverBlur"},
                             Dependent{.name = "customSideBlurSpecs",
                                       .shownBy = "userRequestsCustomSlideOverBlur",
                                       .rows = {Group{.title = "Slideover Background Blur Style"},
                                                Segment{.label = "Blur Style",
                                                        .key = "userStyleForSideSwitcherBlur",
                                                        .byDefault = 3,
                                                        .choices = {{1, 2, 3}, {"Extra Light", "Light", "Dark"}}}}},
                         }};
  return page;
}

}  // namespace quellar::pages
