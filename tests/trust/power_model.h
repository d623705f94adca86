// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace quellar::tests {

/// What a process did to files, as far as a power cut can undo it.
struct FileAction {
  enum class Kind { Create, MakeFolder, MakeLink, Write, Link, Rename, Exchange, Remove, Flush, FailedFlush, Tell };
  Kind kind = Kind::Tell;
  /// The file or folder that is created, written, linked, renamed or flushed, by a number of its own.
  int node = 0;
  /// Where its name stands, or comes to stand: the number of a folder, and the name.
  int folder = 0;
  std::string name;
  /// Of a Rename, the place that it leaves; of an Exchange, the other one's place and number.
  int formerFolder = 0;
  std::string formerName;
  /// What is written, told, or the target of a symbolic link.
  std::string bytes;
  int formerNode = 0;
};

/// A file system as it may be after a power cut, in the model of a careful pessimist:
///
///   - Each change to a folder (a name made, replaced or removed) lasts once that folder was flushed. Of those that
///     were not, any subset lasts, in any combination; each by itself is atomic.
///   - What was written to a file lasts once the file was flushed. Before that the file may hold any beginning of it,
///     nothing, or as many zeros, also where its name lasts already.
///   - A flush that failed may have dropped what was written before it: no later flush of that file brings it back.
///
/// Real file systems keep more order than this.
class PowerModel {
 public:
  /// What a cut left: the paths below the device root with their kinds and bytes; ordered, so that it can be compared.
  struct Entry {
    enum class Kind { File, Folder, Link };
    Kind kind = Kind::File;
    std::string bytes;
    /// Two names of one file have the same.
    int node = 0;
    auto operator<=>(const Entry&) const = default;
  };
  using Picture = std::map<std::string, Entry>;

  static constexpr int kRoot = 0;

  /// Begins with what is on the device, all of it flushed. Node numbers are the caller's; kRoot is the device root's.
  struct Node {
    Entry::Kind kind = Entry::Kind::File;
    /// What lasts for sure, and what was written in all.
    std::string flushed;
    std::string written;
    bool hasFailed = false;
  };
  std::map<int, Node> nodes;

  /// The name of a node in a folder from the start.
  void begin(int folder, const std::string& name, int node) { lasting_[{folder, name}] = node; }

  void apply(const FileAction& action);

  /// Adds all pictures that a power cut at this moment can leave; gives how many combinations there were.
  std::size_t addPictures(std::set<Picture>& pictures) const;

 private:
  using Place = std::pair<int, std::string>;
  using Names = std::map<Place, int>;
  /// A change of names, all of it or nothing.
  struct Change {
    std::optional<Place> left;
    Place place;
    /// None where the name is removed.
    std::optional<int> node;
    /// What gets the place that is left, in an exchange.
    std::optional<int> exchanged = std::nullopt;
  };

  void change(Change change);
  static void carryOut(const Change& change, Names& names);
  [[nodiscard]] static bool concerns(const Change& change, int folder);
  /// What a file that has this name may hold.
  [[nodiscard]] static std::vector<std::string> possibleBytes(const Node& node);

  Names lasting_;
  std::vector<Change> pending_;
};

}  // namespace quellar::tests
