// SPDX-License-Identifier: MIT
#include "pages/system_apps/animations_page.h"

#include "frame/names.h"

namespace quellar::pages {

using namespace frame;

namespace {

/// A spring parameter: its group, its switch, its slider.
std::vector<Row> parameter(const char* name, const char* switchLabel, const char* switchKey, const char* key,
                           double byDefault, double minimum, double maximum) {
  return {Group{.title = name}, Switch{.label = switchLabel, .key = switchKey, .byDefault = 1},
          Slider{.label = name, .key = key, .byDefault = byDefault, .minimum = minimum, .maximum = maximum}};
}

}  // namespace

const Page& KVQuellarAnimationsListController::page() {
  static const Page page{
      .className = "KVQuellarAnimationsListController",
      .defaultsKey = "Animation_Defaults",
      .posts = {darwin(kSettings)},
      .savesTypedValues = true,
      .respringButton = true,
      .saveButton = true,
      .rows = {
          Group{.title = "Animation Behavior"},
          Switch{.label = "Use Springy Animations", .key = "userRequestsSpringyAnimations"},
          Dependent{.name = "springySpecs",
                    .shownBy = "userRequestsSpringyAnimations",
                    .rows = rows({
                        parameter("Damping", "Use Custom Damping", "userRequestsCustomDamping",
                                  "userSpringyAnimationDamping", 30.0, 0.1, 100.0),
                        parameter("Mass", "Use Custom Mass", "userRequestsCustomMass", "userSpringyAnimationMass", 1.0,
                                  0.1, 2.0),
                        parameter("Speed Multiplier", "Use Custom Multiplier ", "userRequestsCustomMultiplier",
                                  "userSpringyAnimationSpeedMultiplier", 1.0, 0.1, 2.0),
                        parameter("Stiffness", "Use Custom Stiffness ", "userRequestsCustomStiffness",
                                  "userSpringyAnimationStiffness", 300.0, 100.0, 500.0),
                        parameter("Velocity", "Use Custom Velocity ", "userRequestsCustomVelocity",
                                  "userSpringyAnimationVelocity", 20.0, 10.0, 50.0),
                    })},
          Group{.title = "Animation Speed"},
          Switch{.label = "Use Custom Speed Factor", .key = "userRequestsCustomAnimationFactor"},
          Dependent{.name = "animationSpecs",
                    .shownBy = "userRequestsCustomAnimationFactor",
                    .rows = {Group{.title = "Animation Factor"}, Slider{.label = "Factor",
                                                                        .key = "userSlowDownFactor",
                                                                        .byDefault = 0.2,
                                                                        .minimum = 0.2,
                                                                        .maximum = 1.0}}},
      }};
  return page;
}

}  // namespace quellar::pages
