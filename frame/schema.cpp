// SPDX-License-Identifier: MIT
#include "frame/schema.h"

#include <algorithm>
#include <utility>

#include "frame/names.h"
#include "frame/page_walk.h"
#include "platform/platform.h"

namespace quellar::frame {

using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;

namespace {

constexpr auto kBoolean = "boolean";
constexpr auto kInteger = "integer";
constexpr auto kReal = "real";
constexpr auto kString = "string";
constexpr auto kColor = "color";

/// The type that all choices have; numbers of both kinds are reals.
std::string typeOf(const std::vector<Value>& choices) {
  const auto all = [&](auto is) { return std::ranges::all_of(choices, is); };
  if (all([](const Value& value) { return value.is<bool>(); })) return kBoolean;
  if (all([](const Value& value) { return value.is<std::int64_t>(); })) return kInteger;
  return all([](const Value& value) { return value.isNumber(); }) ? kReal : kString;
}

/// A value in the type of its key: a switch's default 0 is false.
std::optional<Value> typed(const std::optional<Value>& value, const std::string& type) {
  if (!value || !value->isNumber()) return value;
  if (type == kBoolean) return Value(value->boolValue());
  if (type == kReal) return Value(value->doubleValue());
  return value;
}

std::optional<Value> copied(const Value* value) {
  return value ? std::optional(*value) : std::nullopt;
}

class SchemaCollector {
 public:
  SchemaCollector(const Page& page, platform::Platform& platform) : page_(page), platform_(platform) {}

  std::vector<SchemaKey> collect() {
    walkRows(page_, {platform_, {}}, [this](const RowPlace& place) {
      if (place.fileRow) {
        add(*place.fileRow);
      } else {
        std::visit(*this, place.row.row);
      }
    });
    for (const ForeignKey& foreign : page_.foreignKeys) {
      const bool hasChoices = !foreign.choices.values.empty();
      SchemaKey key = entryOf(foreign.key, hasChoices ? typeOf(foreign.choices.values) : kString, foreign.label, {});
      key.values = foreign.choices.values;
      key.titles = foreign.choices.titles;
      addNames(foreign.posts, key.posts);
      add(std::move(key));
    }
    return std::move(keys_);
  }

  // One for each kind of row.
  void operator()(const Group&) {}
  void operator()(const Link&) {}
  void operator()(const Button&) {}
  void operator()(const Switch& row) {
    SchemaKey key = entryOf(row.key, kBoolean, row.label.english, row.byDefault);
    if (row.defaults.empty()) {
      key.posts = postsOf(row.key, row.properties);
    } else {
      key.defaultsKey.clear();
    }
    add(std::move(key));
  }
  void operator()(const TextEntry& row) { addWritten(entryOf(row.key, kString, row.label.english, {})); }
  void operator()(const Slider& row) {
    SchemaKey key = entryOf(row.key, kReal, row.label.english, row.byDefault);
    key.minimum = typed(row.minimum, kReal);
    key.maximum = typed(row.maximum, kReal);
    addWritten(std::move(key));
  }
  void operator()(const Stepper& row) {
    SchemaKey key = entryOf(row.key, kInteger, row.units ? row.units->many : row.label.english, Value(row.byDefault));
    // The platform stepper's own bounds, where a row sets none.
    key.minimum = row.minimum.value_or(0);
    key.maximum = row.maximum.value_or(100);
    // It stores and posts itself.
    key.posts = {std::string(kSettings)};
    if (row.requestsNotification) {
      key.posts.emplace_back("stepperValueChanged");
      if (page_.stepperRefresh) addNames(page_.stepperRefresh->posts, key.posts);
    }
    add(std::move(key));
  }
  void operator()(const Segment& row) { addChoices(row.key, row.label.english, row.choices, row.byDefault); }
  void operator()(const Picker& row) { addChoices(row.key, row.label.english, row.choices, {}); }
  void operator()(const ColorRow& row) {
    SchemaKey key = entryOf(row.colorKey, kColor, row.label.english, Value(row.defaultColor));
    if (!page_.colors.defaultsKey.empty()) key.defaultsKey = page_.colors.defaultsKey;
    addNames({page_.colors.post}, key.posts);
    addNames(page_.colors.postsBeforeRedraw, key.posts);
    addNames(page_.colors.postsAfterRedraw, key.posts);
    add(std::move(key));
  }
  // The walk visits the rows that these stand for.
  void operator()(const RowFile&) {}
  void operator()(const Computed&) {}
  void operator()(const Dependent&) {}

 private:
  void add(SchemaKey key) {
    if (std::ranges::find(keys_, key.key, &SchemaKey::key) != keys_.end()) return;
    keys_.push_back(std::move(key));
  }

  void addWritten(SchemaKey key) {
    key.posts = postsOf(key.key, {});
    add(std::move(key));
  }

  void addChoices(const std::string& name, const std::string& label, const Choices& choices,
                  const std::optional<Value>& byDefault) {
    SchemaKey key = entryOf(name, typeOf(choices.values), label, byDefault);
    key.values = choices.values;
    key.titles = choices.titles;
    addWritten(std::move(key));
  }

  /// A row of a row file.
  void add(const PSSpecifier& row) {
    if (!keyOf(row)) return;
    const auto byDefault = copied(row.valueForKey("default"));
    const std::string name = row.stringForKey("key");
    SchemaKey key;
    switch (row.cellType()) {
      case PSCellType::PSSwitchCell:
        key = entryOf(name, kBoolean, row.name(), byDefault);
        break;
      case PSCellType::PSEditTextCell:
        key = entryOf(name, kString, row.name(), byDefault);
        break;
      case PSCellType::PSSliderCell:
        key = entryOf(name, kReal, row.name(), byDefault);
        key.minimum = typed(copied(row.valueForKey("min")), kReal);
        key.maximum = typed(copied(row.valueForKey("max")), kReal);
        break;
      case PSCellType::PSLinkListCell:
      case PSCellType::PSSegmentCell:
        key = entryOf(name, typeOf(row.values()), row.name(), byDefault);
        key.values = row.values();
        key.titles = row.titles();
        break;
      case PSCellType::PSGroupCell:
      case PSCellType::PSListItemCell:
      case PSCellType::PSStaticTextCell:
      case PSCellType::PSButtonCell:
        return;
    }
    if (row.stringForKey("defaults").empty()) {
      addWritten(std::move(key));
    } else {
      key.defaultsKey.clear();
      add(std::move(key));
    }
  }

  [[nodiscard]] SchemaKey entryOf(const std::string& name, const std::string& type, const std::string& label,
                                  const std::optional<Value>& byDefault) const {
    SchemaKey key;
    key.page = page_.className;
    key.defaultsKey = page_.defaultsKey;
    key.key = name;
    key.type = type;
    key.byDefault = typed(byDefault, type);
    key.label = label;
    return key;
  }

  /// What the page's write handler posts for a key.
  [[nodiscard]] std::vector<std::string> postsOf(const std::string& key,
                                                 const std::vector<std::pair<std::string, Value>>& properties) const {
    const auto has = [&](const std::vector<std::string>& keys) { return std::ranges::find(keys, key) != keys.end(); };
    std::vector<Post> posts;
    for (const Post& post : page_.posts) {
      if ((!post.forKeys.empty() && !has(post.forKeys)) || has(post.exceptKeys)) continue;
      const bool hasProperty =
          std::ranges::any_of(properties, [&](const auto& property) { return property.first == post.forRowsWith; });
      if (post.forRowsWith.empty() || hasProperty) posts.push_back(post);
    }
    std::vector<std::string> names;
    addNames(posts, names);
    return names;
  }

  static void addNames(const std::vector<Post>& posts, std::vector<std::string>& names) {
    for (const Post& post : posts) {
      const bool isNew = std::ranges::find(names, post.name) == names.end();
      if (isNew && !post.name.empty()) names.push_back(post.name);
    }
  }

  const Page& page_;
  platform::Platform& platform_;
  std::vector<SchemaKey> keys_;
};

}  // namespace

std::vector<SchemaKey> schemaOf(const Page& page, platform::Platform& platform) {
  return SchemaCollector(page, platform).collect();
}

}  // namespace quellar::frame
