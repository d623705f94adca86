// SPDX-License-Identifier: MIT
#include "host/headless/row_json.h"

#include "cells/color_preview_cell.h"
#include "cells/slider_cell.h"
#include "cells/stepper_cell.h"
#include "frame/row_value.h"

namespace quellar::host::headless {

using cells::KVQuellarColorPreviewTableCell;
using cells::KVQuellarSliderCell;
using cells::KVQuellarStepperCell;
using platform::Control;
using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;
using platform::PSTableCell;
using platform::Rect;

namespace {

Json textsOrNull(const std::vector<std::string>& texts) {
  return texts.empty() ? Json(nullptr) : Json(texts);
}

Json accessoryOf(PSListController& page, const PSSpecifier& row, std::size_t index) {
  if (row.cellType() == PSCellType::PSLinkListCell) return "disclosure";
  return page.showsCheckmark(index) ? Json("checkmark") : Json(nullptr);
}

Json frameJson(const Rect& frame) {
  return Json::array({frame.x, frame.y, frame.width, frame.height});
}

void addSlider(Json& json, const KVQuellarSliderCell& cell) {
  const auto& title = cell.labelText();
  const auto& footnote = cell.footerText();
  json["titleLabel"] = {{"text", title.text}, {"frame", frameJson(title.frame)}, {"color", hexString(title.color)}};
  json["footnote"] = nullptr;
  if (footnote) json["footnote"] = {{"text", footnote->text}, {"color", hexString(footnote->color)}};
  json["tapArea"] = Json::object({{"frame", frameJson(cell.tapArea())}});
  json["slider"] = {{"minimum", cell.minimum()},
                    {"maximum", cell.maximum()},
                    {"value", cell.value()},
                    {"minimumTrackTint", hexString(cell.minimumTrackTint)},
                    {"maximumTrackTint", hexString(cell.maximumTrackTint)}};
  json["showValue"] = cell.showValue();
}

void addStepper(Json& json, const KVQuellarStepperCell& cell) {
  const auto& stepper = cell.stepper();
  const auto& label = cell.label();
  json["stepper"] = {{"frame", frameJson(stepper.frame)}, {"value", stepper.value}, {"minimum", stepper.minimum},
                     {"maximum", stepper.maximum},        {"step", stepper.step},   {"continuous", stepper.continuous},
                     {"autorepeat", stepper.autorepeat},  {"wraps", stepper.wraps}};
  json["stepperLabel"] = {{"frame", frameJson(label.frame)}, {"text", label.text}, {"color", hexString(label.color)}};
  json["dictionary"] = cell.userDefaults() ? toJson(platform::Value(*cell.userDefaults())) : Json(nullptr);
}

void addSwatch(Json& json, const KVQuellarColorPreviewTableCell& cell) {
  const auto& swatch = cell.swatch();
  json["swatch"] = {{"size", {swatch.width, swatch.height}},
                    {"scale", swatch.scale},
                    {"color", hexString(swatch.colorAt(swatch.pixelWidth / 2, swatch.pixelHeight / 2))}};
}

}  // namespace

Json rowJson(PSListController& page, std::size_t index) {
  PSSpecifier& row = *page.specifiers().at(index);
  const auto identifier = row.identifier();
  const std::string& detail = row.detailControllerClass();

  Json properties = Json::object();
  for (const auto& [key, property] : row.properties()) properties[key] = toJson(property);
  Json values = nullptr;
  for (const auto& value : row.values()) values.push_back(toJson(value));

  Json json = Json::object();
  json["index"] = index;
  json["section"] = page.sectionOfIndex(index);
  json["kind"] = cellTypeName(row.cellType());
  json["label"] = row.name();
  json["id"] = identifier ? Json(*identifier) : Json(nullptr);
  json["setter"] = static_cast<bool>(row.setter());
  json["getter"] = static_cast<bool>(row.getter());
  json["detail"] = detail.empty() ? Json(nullptr) : Json(detail);
  json["action"] = row.action() ? Json(row.action()->selector) : Json(nullptr);
  json["enabled"] = row.enabled();
  json["properties"] = std::move(properties);
  json["values"] = std::move(values);
  json["titles"] = textsOrNull(row.titles());
  json["shortTitles"] = textsOrNull(row.shortTitles());
  json["stored"] = toJson(frame::storedValue(row));
  json["shown"] = toJson(frame::shownValue(row));
  json["accessory"] = accessoryOf(page, row, index);
  return json;
}

Json rowsJson(PSListController& page) {
  Json rows = Json::array();
  for (std::size_t index = 0; index < page.specifiers().size(); ++index) rows.push_back(rowJson(page, index));
  return rows;
}

Json cellJson(const PSSpecifier& row) {
  if (!row.cell()) return nullptr;
  const PSTableCell& cell = *row.cell();
  Json json = Json::object();
  json["class"] = cell.className();
  json["titleColor"] = hexString(cell.titleColor);
  json["frame"] = frameJson(cell.frame());
  if (cell.control() == Control::toggle) json["onTint"] = cell.onTint ? Json(hexString(*cell.onTint)) : Json(nullptr);
  if (const auto* slider = dynamic_cast<const KVQuellarSliderCell*>(&cell)) addSlider(json, *slider);
  if (const auto* stepper = dynamic_cast<const KVQuellarStepperCell*>(&cell)) addStepper(json, *stepper);
  if (const auto* color = dynamic_cast<const KVQuellarColorPreviewTableCell*>(&cell)) addSwatch(json, *color);
  return json;
}

}  // namespace quellar::host::headless
