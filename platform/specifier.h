// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/ports.h"
#include "platform/value.h"

namespace quellar::platform {

class PSListController;
class PSSpecifier;
class PSTableCell;

/// Row kinds, with the numbers of the platform.
enum class PSCellType : int {
  PSGroupCell = 0,
  PSLinkListCell = 2,
  PSListItemCell = 3,
  PSSliderCell = 5,
  PSSwitchCell = 6,
  PSStaticTextCell = 7,
  PSEditTextCell = 8,
  PSSegmentCell = 9,
  PSButtonCell = 13,
};

/// "PSGroupCell", ...
[[nodiscard]] std::string_view cellTypeName(PSCellType kind);
/// The kind of a name, or nothing.
[[nodiscard]] std::optional<PSCellType> cellTypeNamed(std::string_view name);

/// A class by its name.
struct Class {
  std::string name;
  bool operator==(const Class&) const = default;
};

/// What a row property can hold: a property-list value, an image or a class.
using Property = std::variant<Value, Image, Class>;

/// What runs when a row is tapped, and the selector that names it ("respring:").
struct Action {
  std::string selector;
  std::function<void(PSSpecifier&)> run;
};

/// A row of a list page: label, kind, handlers, properties. Rows are shared objects: a page keeps the rows of a hidden
/// block and lists the same objects again.
class PSSpecifier : public std::enable_shared_from_this<PSSpecifier> {
 public:
  using Pointer = std::shared_ptr<PSSpecifier>;
  /// Writes what the user gave; nothing for the value removes the entry.
  using Setter = std::function<void(const std::optional<Value>&, PSSpecifier&)>;
  using Getter = std::function<std::optional<Value>(PSSpecifier&)>;

  /// A row of any kind but group. A name becomes its "label" property too, as the platform does it. Takes the page that
  /// it belongs to, the handlers (empty for none) and the class that a tap opens ("" for none).
  static Pointer preferenceSpecifierNamed(std::string name, PSListController* target, Setter set, Getter get,
                                          std::string detail, PSCellType cell);
  static Pointer emptyGroupSpecifier();
  static Pointer groupSpecifierWithName(std::string name);

  [[nodiscard]] const std::string& name() const { return name_; }
  void setName(std::string name) { name_ = std::move(name); }
  [[nodiscard]] PSCellType cellType() const { return cellType_; }
  [[nodiscard]] PSListController* target() const { return target_; }
  [[nodiscard]] const Setter& setter() const { return setter_; }
  [[nodiscard]] const Getter& getter() const { return getter_; }
  [[nodiscard]] const std::string& detailControllerClass() const { return detailControllerClass_; }
  [[nodiscard]] const std::optional<Action>& action() const { return action_; }
  void setAction(Action action) { action_ = std::move(action); }

  [[nodiscard]] const std::map<std::string, Property, std::less<>>& properties() const { return properties_; }
  [[nodiscard]] const Property* propertyForKey(std::string_view key) const;
  void setProperty(std::string_view key, Property property);
  /// The property's value, where it is a property-list value of type T; nullptr otherwise.
  template <typename T>
  [[nodiscard]] const T* property(std::string_view key) const {
    const Value* value = valueForKey(key);
    return value ? value->as<T>() : nullptr;
  }
  /// The property, where it is a property-list value; nullptr otherwise.
  [[nodiscard]] const Value* valueForKey(std::string_view key) const;
  /// The property, where it is a string; "" otherwise.
  [[nodiscard]] std::string stringForKey(std::string_view key) const;

  /// The choices of a picker or segment row; short titles may be empty. Values and titles are matched by place.
  void setValues(std::vector<Value> values, std::vector<std::string> titles, std::vector<std::string> shortTitles);
  [[nodiscard]] const std::vector<Value>& values() const { return values_; }
  [[nodiscard]] std::vector<std::string>& titles() { return titles_; }
  [[nodiscard]] const std::vector<std::string>& titles() const { return titles_; }
  [[nodiscard]] std::vector<std::string>& shortTitles() { return shortTitles_; }
  [[nodiscard]] const std::vector<std::string>& shortTitles() const { return shortTitles_; }
  /// The place of a value among the choices, the first one where it stands twice; nothing where it is none of them.
  /// Numbers are compared by value, so that a real 12.0 finds an integer 12.
  [[nodiscard]] std::optional<std::size_t> indexOfValue(const Value& value) const;

  /// Texts of the row that come from the system in the user's language, such as names of applications: no table of the
  /// panel has them.
  struct SystemTexts {
    bool name = false;
    bool titles = false;
  };
  void setSystemTexts(SystemTexts texts) { systemTexts_ = texts; }
  [[nodiscard]] SystemTexts systemTexts() const { return systemTexts_; }

  /// What rows are found by: the "id" property, else the "key" property; nothing where the row has neither.
  [[nodiscard]] std::optional<std::string> identifier() const;
  /// False where the "enabled" property says so.
  [[nodiscard]] bool enabled() const;

  /// The cell that shows the row, once it has been laid out.
  [[nodiscard]] const std::shared_ptr<PSTableCell>& cell() const { return cell_; }
  void setCell(std::shared_ptr<PSTableCell> cell) { cell_ = std::move(cell); }

 private:
  PSSpecifier() = default;

  std::string name_;
  PSCellType cellType_ = PSCellType::PSGroupCell;
  PSListController* target_ = nullptr;
  Setter setter_;
  Getter getter_;
  std::string detailControllerClass_;
  std::optional<Action> action_;
  std::map<std::string, Property, std::less<>> properties_;
  std::vector<Value> values_;
  std::vector<std::string> titles_;
  std::vector<std::string> shortTitles_;
  SystemTexts systemTexts_;
  std::shared_ptr<PSTableCell> cell_;
};

using Specifiers = std::vector<PSSpecifier::Pointer>;

}  // namespace quellar::platform
