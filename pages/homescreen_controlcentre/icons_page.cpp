// SPDX-License-Identifier: MIT
#include "pages/homescreen_controlcentre/icons_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;
using namespace std::chrono_literals;

namespace {

ColorRow color(const char* label, const char* key, const char* byDefault) {
  return {.label = label, .colorKey = key, .defaultColor = byDefault, .action = "setColorForSpecifier:"};
}

/// The post by which the add-on draws the badges anew.
Post badgeUpdate(std::vector<std::string> keys) {
  Post post = darwin(kBadgeUpdate);
  post.forKeys = std::move(keys);
  post.moment = Moment::afterReload;
  return post;
}

}  // namespace

const Page& KVQuellarIconsListController::page() {
  static const Page page{
      .className = "KVQuellarIconsListController",
      .defaultsKey = "Icon_Defaults",
      // Jittering is the one thing here that no icon is laid out anew for.
      .posts = {darwin(kSettings),
                {.name = std::string(kIconLayout), .exceptKeys = {"supressesIconJittering"}},
                badgeUpdate({"userRequestsColoredBadges", "userStyleForIconBadgeColoring"})},
      // The badges of docked icons keep their switch, the labels don't.
      .clearings = {{.whenOn = "hidesAllIconLabels", .keys = {"hidesDockedIconLabels", "hidesFolderIconLabels"}},
                    {.whenOn = "hidesAllIconBadges", .keys = {"hideFolderBadges"}}},
      .colors = {.fallback = "#000000",
                 .showAlpha = true,
                 .post = notifyPost(kSettings),
                 .delay = 200ms,
                 .redraw = Colors::Redraw::blocksAndSpecifiers,
                 .postsAfterRedraw = {darwin(kBadgeUpdate)}},
      .savesTypedValues = true,
      .respringButton = true,
      .saveButton = true,
      .rows = {
          Group{.title = "Appearance"},
          Switch{.label = "Use Custom Size", .key = "usesCustomIconSize"},
          Dependent{.name = "customSizeSpecs",
                    .shownBy = "usesCustomIconSize",
                    .rows = {Group{.title = "Custom Icon Scale"}, Slider{.label = "Icon Scale",
                                                                         .key = "customIconScaleSize",
                                                                         .byDefault = 1.0,
                                                                         .minimum = 0.1,
                                                                         .maximum = 2.0}}},
          Group{.title = "Badges"},
          Switch{.label = "Hide All", .key = "hidesAllIconBadges"},
          Switch{.label = "Hide On Docked Icons", .key = "hideDockBadges"},
          Switch{.label = "Hide On Folder Icons", .key = "hideFolderBadges"},
          Switch{.label = "Use Custom Color", .key = "userRequestsColoredBadges"},
          Dependent{.name = "useBadgeSpecs",
                    .shownBy = "userRequestsColoredBadges",
                    .rows = {Switch{.label = "Add Badge Border", .key = "userRequestsBadgeBorder"},
                             color("Border Color", "iconBadgeBorderColor", "#ffffff")}},
          Dependent{.name = "colorChoiceSpecs",
                    .shownBy = "userRequestsColoredBadges",
                    .rows = {Group{},
                             Segment{.label = "Color Badges via",
                                     .key = "userStyleForIconBadgeColoring",
                                     .byDefault = 2,
                                     .choices = {.values = {1, 2}, .titles = {"Custom Color", "Dominant App Color"}}}}},
          // The stored style alone shows it, whether or not the badges are coloured.
          Dependent{.name = "customColorSpec",
                    .shownBy = "userStyleForIconBadgeColoring",
                    .shownAt = 1,
                    .rows = {color("Custom Color", "iconBadgeColor", "#ff0303")}},
          Group{.title = "Behavior"},
          Switch{.label = "Don't Darken With Tap", .key = "disablesShadowWhenTapped"},
          Switch{.label = "Suppress Icon Jittering", .key = "supressesIconJittering"},
          Group{.title = "Icon Label Dots",
                .footer = "Quellar makes two new types of icon dots available. Notification Indicators are perfect for "
                          "when hiding icon badges but still want a minimal way of knowing a notifiaction exists. "
                          "Running indicators are just fun to have."},
          Switch{.label = "Hide Blue Update Dot", .key = "disablesBlueUpdateDot"},
          Switch{.label = "Hide Orange Beta Dot", .key = "disablesOrangeBetaDot"},
          Switch{.label = "Use Notification Indicator Dot", .key = "userRequestsNotificationIndicatorDot"},
          Switch{.label = "Use Running Indicator Dot", .key = "userRequestsRunningIndicatorDot"},
          Switch{.label = "Use Custom Colors", .key = "useCustomLabelIndicatorColors"},
          Dependent{.name = "dotColorSpecs",
                    .shownBy = "useCustomLabelIndicatorColors",
                    .rows = {color("Beta Dot", "userIconBetaDotColor", "#ffc103"),
                             color("Notification Indicator Dot", "userNotificationIndicatorDotColor", "#ff0000"),
                             // The add-on reads this colour under the empty key.
                             color("Recently Updated Dot", "", "#0362ff"),
                             color("Running Indicator Dot", "userRunningIndicatorDotColor", "#ffffff")}},
          Group{.title = "Labels"},
          Switch{.label = "Disable Label Shadow", .key = "hidesLabelShadow"},
          Switch{.label = "Hide All", .key = "hidesAllIconLabels"},
          Switch{.label = "Hide On Docked Icons", .key = "hidesDockedIconLabels"},
          Switch{.label = "Hide On Folder Icons", .key = "hidesFolderIconLabels"},
      }};
  return page;
}

}  // namespace quellar::pages
