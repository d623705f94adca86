// SPDX-License-Identifier: MIT
#include "host/window/sample_page.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

#include "frame/list_controller.h"

namespace quellar::host::window {

using platform::Class;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::Specifiers;
using platform::Value;

namespace {

// With no defaults key: what is set stays here.
const frame::Page& description() {
  static const frame::Page page{.className = "SamplePage", .rows = {}};
  return page;
}

class SamplePage final : public frame::KVQuellarListController {
 public:
  SamplePage(platform::Platform& platform, Sample sample)
      : KVQuellarListController(platform, description()), sample_(sample) {
    setTitle(sampleText("Rows", "Rows whose texts are longer than the place that they have"));
  }

  Specifiers makeSpecifiers() override {
    addGroup("Switches and Links",
             sampleText("A footer tells what its group is for.",
                        "A footer may take several lines: it tells what its group is for, what has to "
                        "be there for it to work, and what else it may change.\n\nIt may have "
                        "paragraphs, and aSingleWordThatIsWiderThanAnyPhoneSoThatItHasToBeBroken."));
    add("Switch That Is Off", PSCellType::PSSwitchCell);
    add("Switch That Is On", PSCellType::PSSwitchCell).setProperty("default", Value(true));
    add("Link", PSCellType::PSLinkListCell);
    auto& picker = add("Picker", PSCellType::PSLinkListCell, "KVQuellarListItemsController");
    addChoices(picker);
    picker.setProperty("default", Value(2));
    add("Static Text", PSCellType::PSStaticTextCell);

    addGroup("Entries");
    add("Empty Text", PSCellType::PSEditTextCell)
        .setProperty("placeholder",
                     Value(sampleText("Placeholder", "A placeholder that does not fit beside its label")));
    add("Text", PSCellType::PSEditTextCell)
        .setProperty("default",
                     Value(sampleText("HH:mm", "A text that is much longer than the room that is left for it")));

    addGroup("Numbers");
    addSlider("Slider", 0.35, 1);
    auto& typed = addSlider("Slider With Typed Entry", 64, 100);
    typed.setProperty("cellClass", Class{"KVQuellarSliderCell"});
    typed.setProperty("subtitle", Value(sampleText("A footnote.",
                                                   "A footnote that says what the number stands for, what it "
                                                   "is at first, and what happens at either end of it.")));
    auto& stepper = add("Stepper", PSCellType::PSStaticTextCell);
    stepper.setProperty("cellClass", Class{"KVQuellarStepperCell"});
    stepper.setProperty("default", Value(sample_ == Sample::lengthy ? 1000000 : 4));
    stepper.setProperty("maximumValue", Value(1000000));
    stepper.setProperty("updatesLabelValue", Value(true));

    addGroup("Choices and Colors");
    auto& segment = add("Segments", PSCellType::PSSegmentCell);
    addChoices(segment);
    segment.setProperty("default", Value(1));
    auto& color = add("Color", PSCellType::PSButtonCell);
    color.setProperty("cellClass", Class{"KVQuellarColorPreviewTableCell"});
    color.setProperty("colorKey", Value("color"));
    color.setProperty("defaultColor", Value("#41a9d6"));
    color.setProperty("defaultsKey", Value("Sample_Defaults"));
    add("Button", PSCellType::PSButtonCell);
    return std::move(rows_);
  }

 private:
  [[nodiscard]] std::string sampleText(const char* usual, const char* lengthy) const {
    return sample_ == Sample::lengthy ? lengthy : usual;
  }

  void addGroup(const std::string& title, const std::string& footer = "") {
    auto group = PSSpecifier::groupSpecifierWithName(
        sample_ == Sample::lengthy ? title + ", Under a Title That Takes More Than One Line" : title);
    if (!footer.empty()) group->setProperty("footerText", Value(footer));
    rows_.push_back(std::move(group));
  }

  PSSpecifier& add(const std::string& label, PSCellType kind, const std::string& opens = "") {
    const std::string name =
        sample_ == Sample::lengthy ? label + " With a Label That Goes On and On, Past the End of Its Line" : label;
    auto row = PSSpecifier::preferenceSpecifierNamed(
        name, this,
        [this](const std::optional<Value>& value, PSSpecifier& each) {
          if (value) values_.insert_or_assign(each.stringForKey("key"), *value);
        },
        [this](PSSpecifier& each) {
          const auto found = values_.find(each.stringForKey("key"));
          return found == values_.end() ? std::nullopt : std::optional(found->second);
        },
        opens, kind);
    row->setProperty("key", Value(label));
    row->setProperty("enabled", Value(sample_ != Sample::disabled));
    rows_.push_back(std::move(row));
    return *rows_.back();
  }

  PSSpecifier& addSlider(const std::string& label, double value, double maximum) {
    PSSpecifier& slider = add(label, PSCellType::PSSliderCell);
    slider.setProperty("min", Value(0.0));
    slider.setProperty("max", Value(maximum));
    slider.setProperty("default", Value(value));
    slider.setProperty("showValue", Value(true));
    return slider;
  }

  void addChoices(PSSpecifier& row) {
    const bool lengthy = sample_ == Sample::lengthy;
    row.setValues({Value(0), Value(1), Value(2)},
                  {"Light", lengthy ? "Neither Light nor Dark" : "Medium",
                   lengthy ? "Dark, However Bright the Wallpaper Beneath May Be" : "Dark"},
                  {});
  }

  const Sample sample_;
  Specifiers rows_;
  std::map<std::string, Value> values_;
};

}  // namespace

std::shared_ptr<PSListController> makeSamplePage(platform::Platform& platform, Sample sample) {
  return std::make_shared<SamplePage>(platform, sample);
}

}  // namespace quellar::host::window
