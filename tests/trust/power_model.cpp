// SPDX-License-Identifier: MIT
#include "power_model.h"

#include <algorithm>
#include <stdexcept>

namespace quellar::tests {

void PowerModel::apply(const FileAction& action) {
  using Kind = FileAction::Kind;
  const Place place{action.folder, action.name};
  switch (action.kind) {
    case Kind::Create:
      nodes[action.node] = {Entry::Kind::File, {}, {}};
      change({{}, place, action.node});
      break;
    case Kind::MakeFolder:
      nodes[action.node] = {Entry::Kind::Folder, {}, {}};
      change({{}, place, action.node});
      break;
    case Kind::MakeLink:
      // Where a symbolic link lasts, so does its target.
      nodes[action.node] = {Entry::Kind::Link, action.bytes, action.bytes};
      change({{}, place, action.node});
      break;
    case Kind::Write:
      nodes.at(action.node).written += action.bytes;
      break;
    case Kind::Link:
      change({{}, place, action.node});
      break;
    case Kind::Rename:
      change({Place{action.formerFolder, action.formerName}, place, action.node});
      break;
    case Kind::Exchange:
      change({Place{action.formerFolder, action.formerName}, place, action.node, action.formerNode});
      break;
    case Kind::Remove:
      change({{}, place, {}});
      break;
    case Kind::Flush: {
      Node& node = nodes.at(action.node);
      if (!node.hasFailed) node.flushed = node.written;
      if (node.kind != Entry::Kind::Folder) break;
      std::erase_if(pending_, [&](const Change& each) {
        if (!concerns(each, action.node)) return false;
        carryOut(each, lasting_);
        return true;
      });
      break;
    }
    case Kind::FailedFlush:
      nodes.at(action.node).hasFailed = true;
      break;
    case Kind::Tell:
      break;
  }
}

void PowerModel::change(Change change) {
  pending_.push_back(std::move(change));
}

void PowerModel::carryOut(const Change& change, Names& names) {
  if (change.exchanged) {
    names[*change.left] = *change.exchanged;
  } else if (change.left) {
    names.erase(*change.left);
  }
  if (change.node) {
    names[change.place] = *change.node;
  } else {
    names.erase(change.place);
  }
}

bool PowerModel::concerns(const Change& change, int folder) {
  return change.place.first == folder || (change.left && change.left->first == folder);
}

std::vector<std::string> PowerModel::possibleBytes(const Node& node) {
  if (node.kind != Entry::Kind::File || node.flushed == node.written) return {node.written};
  const std::size_t whole = node.written.size();
  std::vector<std::string> all;
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, whole / 3, whole / 2, whole - 1, whole}) {
    if (size >= node.flushed.size()) all.push_back(node.written.substr(0, size));
  }
  // The size came through and the data did not, or not all of it.
  all.push_back(node.flushed + std::string(whole - node.flushed.size(), '\0'));
  const std::size_t half = std::max(whole / 2, node.flushed.size());
  all.push_back(node.written.substr(0, half) + std::string(whole - half, '\0'));
  return all;
}

std::size_t PowerModel::addPictures(std::set<Picture>& pictures) const {
  constexpr std::size_t kMostPending = 16;
  if (pending_.size() > kMostPending) throw std::runtime_error("too many changes without a flush");
  std::set<Names> states;
  for (std::size_t subset = 0; subset < std::size_t{1} << pending_.size(); ++subset) {
    Names names = lasting_;
    for (std::size_t index = 0; index < pending_.size(); ++index) {
      if ((subset >> index & 1U) != 0) carryOut(pending_[index], names);
    }
    states.insert(std::move(names));
  }

  std::size_t combinations = 0;
  for (const Names& names : states) {
    // Only what can be reached from the root is there; each file once, whatever its number of names.
    std::map<int, std::vector<std::string>> paths;
    std::vector<std::pair<int, std::string>> folders = {{kRoot, ""}};
    while (!folders.empty()) {
      const auto [folder, prefix] = folders.back();
      folders.pop_back();
      for (auto name = names.lower_bound({folder, ""}); name != names.end() && name->first.first == folder; ++name) {
        const std::string path = prefix + name->first.second;
        paths[name->second].push_back(path);
        if (nodes.at(name->second).kind == Entry::Kind::Folder) folders.emplace_back(name->second, path + "/");
      }
    }
    std::vector<Picture> some(1);
    for (const auto& [number, places] : paths) {
      const Node& node = nodes.at(number);
      std::vector<Picture> more;
      for (const std::string& bytes : possibleBytes(node)) {
        for (Picture picture : some) {
          for (const std::string& path : places) picture[path] = {node.kind, bytes, number};
          more.push_back(std::move(picture));
        }
      }
      some = std::move(more);
    }
    combinations += some.size();
    pictures.insert(some.begin(), some.end());
  }
  return combinations;
}

}  // namespace quellar::tests
