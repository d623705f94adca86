// SPDX-License-Identifier: MIT
#include "frame/page_walk.h"

#include <variant>

#include "frame/names.h"
#include "platform/list_controller.h"
#include "platform/platform.h"

namespace quellar::frame {

using platform::PSCellType;
using platform::PSListController;
using platform::PSSpecifier;

namespace {

struct KeyOfRow {
  std::optional<std::string> operator()(const Group&) const { return std::nullopt; }
  std::optional<std::string> operator()(const Link&) const { return std::nullopt; }
  std::optional<std::string> operator()(const Button&) const { return std::nullopt; }
  std::optional<std::string> operator()(const RowFile&) const { return std::nullopt; }
  std::optional<std::string> operator()(const Computed&) const { return std::nullopt; }
  std::optional<std::string> operator()(const Dependent&) const { return std::nullopt; }
  std::optional<std::string> operator()(const ColorRow& row) const { return row.colorKey; }
  template <typename KeyedRow>
  std::optional<std::string> operator()(const KeyedRow& row) const {
    return row.key;
  }
};

class Walk {
 public:
  Walk(const Page& page, const Surroundings& surroundings, const std::function<void(const RowPlace&)>& visit,
       RowFiles rowFiles)
      : page_(page), surroundings_(surroundings), visit_(visit), rowFiles_(rowFiles) {}

  void rows(const std::vector<Row>& rows) {
    for (const Row& row : rows) this->row(row);
  }

 private:
  void row(const Row& row) {
    if (const auto* block = std::get_if<Dependent>(&row.row)) {
      // The rows after the block are below its last group only while it is shown.
      const std::string outside = group_;
      blocks_.push_back(block);
      rows(block->rows);
      blocks_.pop_back();
      group_ = outside;
    } else if (const auto* computed = std::get_if<Computed>(&row.row)) {
      rows(computed->rows(surroundings_));
    } else if (const auto* file = std::get_if<RowFile>(&row.row)) {
      if (rowFiles_ == RowFiles::read) fileRows(row, *file);
    } else {
      if (const auto* group = std::get_if<Group>(&row.row)) group_ = group->title.english;
      visit_({.row = row, .group = group_, .blocks = blocks_});
    }
  }

  void fileRows(const Row& row, const RowFile& file) {
    PSListController loader(surroundings_.platform, page_.className);
    auto rows = loader.loadSpecifiersFromPlistName(file.name, kBundlePath);
    if (file.firstRowOnly && rows.size() > 1) rows.resize(1);
    for (const auto& each : rows) {
      if (each->cellType() == PSCellType::PSGroupCell) group_ = each->name();
      visit_({.row = row, .fileRow = each.get(), .group = group_, .blocks = blocks_});
    }
  }

  const Page& page_;
  const Surroundings& surroundings_;
  const std::function<void(const RowPlace&)>& visit_;
  const RowFiles rowFiles_;
  std::string group_;
  std::vector<const Dependent*> blocks_;
};

}  // namespace

std::optional<std::string> RowPlace::key() const {
  return fileRow ? keyOf(*fileRow) : std::visit(KeyOfRow{}, row.row);
}

std::string RowPlace::opens() const {
  if (fileRow) return fileRow->detailControllerClass();
  const auto* link = std::get_if<Link>(&row.row);
  return link ? link->opens : "";
}

void walkRows(const Page& page, const Surroundings& surroundings, const std::function<void(const RowPlace&)>& visit,
              RowFiles rowFiles) {
  Walk(page, surroundings, visit, rowFiles).rows(page.rows);
}

std::optional<std::string> keyOf(const PSSpecifier& row) {
  if (std::string key = row.stringForKey("key"); !key.empty()) return key;
  const auto* colorKey = row.property<std::string>("colorKey");
  return colorKey ? std::optional(*colorKey) : std::nullopt;
}

}  // namespace quellar::frame
