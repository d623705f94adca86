// SPDX-License-Identifier: MIT
#include "host/cli/schema.h"

#include <algorithm>
#include <utility>

#include "frame/names.h"
#include "platform/list_controller.h"

namespace quellar::host::cli {

using frame::Post;
using platform::PSCellType;
using platform::PSListController;
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

class Collector {
 public:
  Collector(const frame::Page& page, platform::Platform& platform) : page_(page), platform_(platform) {}

  std::vector<SchemaKey> collect() {
    add(page_.rows);
    for (const frame::ForeignKey& foreign : page_.foreignKeys) {
      const bool hasChoices = !foreign.choices.values.empty();
      SchemaKey key = keyOf(foreign.key, hasChoices ? typeOf(foreign.choices.values) : kString, foreign.label, {});
      key.values = foreign.choices.values;
      key.titles = foreign.choices.titles;
      addNames(foreign.posts, key.posts);
      add(std::move(key));
    }
    return std::move(keys_);
  }

  // One for each kind of row.
  void operator()(const frame::Group&) {}
  void operator()(const frame::Link&) {}
  void operator()(const frame::Button&) {}
  void operator()(const frame::Switch& row) {
    SchemaKey key = keyOf(row.key, kBoolean, row.label.english, row.byDefault);
    if (row.defaults.empty()) {
      key.posts = postsOf(row.key, row.properties);
    } else {
      key.defaultsKey.clear();
    }
    add(std::move(key));
  }
  void operator()(const frame::TextEntry& row) { addWritten(keyOf(row.key, kString, row.label.english, {})); }
  void operator()(const frame::Slider& row) {
    SchemaKey key = keyOf(row.key, kReal, row.label.english, row.byDefault);
    key.minimum = typed(row.minimum, kReal);
    key.maximum = typed(row.maximum, kReal);
    addWritten(std::move(key));
  }
  void operator()(const frame::Stepper& row) {
    SchemaKey key = keyOf(row.key, kInteger, row.units ? row.units->many : row.label.english, Value(row.byDefault));
    // The platform stepper's own bounds, where a row sets none.
    key.minimum = row.minimum.value_or(0);
    key.maximum = row.maximum.value_or(100);
    // It stores and posts itself.
    key.posts = {std::string(frame::kSettings)};
    if (row.requestsNotification) {
      key.posts.emplace_back("stepperValueChanged");
      if (page_.stepperRefresh) addNames(page_.stepperRefresh->posts, key.posts);
    }
    add(std::move(key));
  }
  void operator()(const frame::Segment& row) { addChoices(row.key, row.label.english, row.choices, row.byDefault); }
  void operator()(const frame::Picker& row) { addChoices(row.key, row.label.english, row.choices, {}); }
  void operator()(const frame::ColorRow& row) {
    SchemaKey key = keyOf(row.colorKey, kColor, row.label.english, Value(row.defaultColor));
    if (!page_.colors.defaultsKey.empty()) key.defaultsKey = page_.colors.defaultsKey;
    addNames({page_.colors.post}, key.posts);
    addNames(page_.colors.postsBeforeRedraw, key.posts);
    addNames(page_.colors.postsAfterRedraw, key.posts);
    add(std::move(key));
  }
  void operator()(const frame::RowFile& file) {
    PSListController loader(platform_, page_.className);
    auto rows = loader.loadSpecifiersFromPlistName(file.name, frame::kBundlePath);
    if (file.firstRowOnly && rows.size() > 1) rows.resize(1);
    for (const auto& row : rows) add(*row);
  }
  void operator()(const frame::Computed& computed) { add(computed.rows({platform_, {}})); }
  void operator()(const frame::Dependent& block) { add(block.rows); }

 private:
  void add(const std::vector<frame::Row>& rows) {
    for (const frame::Row& row : rows) std::visit(*this, row.row);
  }

  void add(SchemaKey key) {
    if (key.key.empty() || std::ranges::find(keys_, key.key, &SchemaKey::key) != keys_.end()) return;
    keys_.push_back(std::move(key));
  }

  void addWritten(SchemaKey key) {
    key.posts = postsOf(key.key, {});
    add(std::move(key));
  }

  void addChoices(const std::string& name, const std::string& label, const frame::Choices& choices,
                  const std::optional<Value>& byDefault) {
    SchemaKey key = keyOf(name, typeOf(choices.values), label, byDefault);
    key.values = choices.values;
    key.titles = choices.titles;
    addWritten(std::move(key));
  }

  /// A row of a row file.
  void add(const PSSpecifier& row) {
    const auto byDefault = copied(row.valueForKey("default"));
    const std::string name = row.stringForKey("key");
    SchemaKey key;
    switch (row.cellType()) {
      case PSCellType::PSSwitchCell:
        key = keyOf(name, kBoolean, row.name(), byDefault);
        break;
      case PSCellType::PSEditTextCell:
        key = keyOf(name, kString, row.name(), byDefault);
        break;
      case PSCellType::PSSliderCell:
        key = keyOf(name, kReal, row.name(), byDefault);
        key.minimum = typed(copied(row.valueForKey("min")), kReal);
        key.maximum = typed(copied(row.valueForKey("max")), kReal);
        break;
      case PSCellType::PSLinkListCell:
      case PSCellType::PSSegmentCell:
        key = keyOf(name, typeOf(row.values()), row.name(), byDefault);
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

  [[nodiscard]] SchemaKey keyOf(const std::string& name, const std::string& type, const std::string& label,
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

  const frame::Page& page_;
  platform::Platform& platform_;
  std::vector<SchemaKey> keys_;
};

}  // namespace

std::vector<SchemaKey> schemaOf(const frame::Page& page, platform::Platform& platform) {
  return Collector(page, platform).collect();
}

}  // namespace quellar::host::cli
