// SPDX-License-Identifier: MIT

// Power cuts: what writers do to files is recorded, and every state that a cut at any moment can leave behind is made
// anew and given to the next program.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <tuple>

#include "power_model.h"
#include "scenarios.h"
#include "support/temporary_folder.h"
#include "tracer.h"

namespace quellar::tests {
namespace power_test {

using host::linux::DeviceRoot;
using host::linux::FilePreferences;
using platform::Value;
using namespace std::chrono_literals;
namespace fs = std::filesystem;

/// Watches a writer, and tells what it does as actions on a model that begins with what a folder holds.
class Recorder {
 public:
  explicit Recorder(const fs::path& folder) {
    numbers_[inodeOf(folder)] = PowerModel::kRoot;
    model.nodes[PowerModel::kRoot] = {PowerModel::Entry::Kind::Folder, {}, {}};
    beginWith(folder, PowerModel::kRoot);
  }

  /// As it is before the first action.
  PowerModel model;
  std::vector<FileAction> actions;

  void record(const std::function<int()>& work, int outputEnd) {
    Tracee writer(work);
    outputEnd_ = outputEnd;
    const Tracee::End end = writer.run({}, [&](const SystemCall& call) {
      if (call.result >= 0) note(writer, call);
      return Verdict{};
    });
    EXPECT_EQ(end, Tracee::End{});
  }

 private:
  static ino_t inodeOf(const fs::path& path, bool followsLinks = false) {
    struct stat status{};
    if ((followsLinks ? ::stat : ::lstat)(path.c_str(), &status) != 0) return 0;
    return status.st_ino;
  }

  void beginWith(const fs::path& folder, int number) {
    for (const auto& entry : fs::directory_iterator(folder)) {
      const ino_t inode = inodeOf(entry.path());
      const bool isNew = !numbers_.contains(inode);
      const int node = isNew ? add(inode) : numbers_.at(inode);
      model.begin(number, entry.path().filename(), node);
      if (!isNew) continue;
      if (entry.is_symlink()) {
        const std::string target = fs::read_symlink(entry.path());
        model.nodes[node] = {PowerModel::Entry::Kind::Link, target, target};
      } else if (entry.is_directory()) {
        model.nodes[node] = {PowerModel::Entry::Kind::Folder, {}, {}};
        beginWith(entry.path(), node);
      } else {
        const std::string bytes = bytesOf(entry.path());
        model.nodes[node] = {PowerModel::Entry::Kind::File, bytes, bytes};
      }
    }
  }

  int add(ino_t inode) {
    numbers_[inode] = ++lastNumber_;
    return lastNumber_;
  }

  /// The number of what a descriptor of the writer's stands for; none for what lies outside of the model.
  std::optional<int> numberAt(const fs::path& path, bool followsLinks) const {
    const auto known = numbers_.find(inodeOf(path, followsLinks));
    return known == numbers_.end() ? std::nullopt : std::optional(known->second);
  }

  static fs::path descriptorPath(const Tracee& writer, int descriptor) {
    const std::string process = "/proc/" + std::to_string(writer.process());
    if (descriptor == AT_FDCWD) return process + "/cwd";
    return process + "/fd/" + std::to_string(descriptor);
  }

  /// A folder and a name in it, as a call names them.
  struct Named {
    fs::path path;
    std::optional<int> folder;
    std::string name;
  };
  Named named(const Tracee& writer, const SystemCall& call, std::size_t descriptor) const {
    const fs::path given = writer.textAt(call.arguments.at(descriptor + 1));
    const fs::path path = descriptorPath(writer, call.argument(descriptor)) / given;
    return {path, numberAt(path.parent_path(), true), path.filename()};
  }

  void note(const Tracee& writer, const SystemCall& call) {
    using Kind = FileAction::Kind;
    const auto made = [&](Kind kind, const Named& place, std::string bytes = {}) {
      if (!place.folder) return;
      actions.push_back({kind, add(inodeOf(place.path)), *place.folder, place.name, 0, {}, std::move(bytes)});
    };
    switch (call.number) {
      case SYS_openat:
        if ((call.argument(2) & O_CREAT) == 0) break;
        EXPECT_NE(call.argument(2) & O_EXCL, 0) << "the model knows of new files only";
        made(Kind::Create, named(writer, call, 0));
        break;
      case SYS_mkdirat:
        made(Kind::MakeFolder, named(writer, call, 0));
        break;
      case SYS_symlinkat:
        made(Kind::MakeLink, named(writer, call, 1), writer.textAt(call.arguments[0]));
        break;
      case SYS_write: {
        std::string bytes = writer.bytesAt(call.arguments[1], static_cast<std::size_t>(call.result));
        if (call.argument(0) == outputEnd_) {
          actions.push_back({Kind::Tell, 0, 0, {}, 0, {}, std::move(bytes)});
        } else if (const auto node = numberAt(descriptorPath(writer, call.argument(0)), true)) {
          actions.push_back({Kind::Write, *node, 0, {}, 0, {}, std::move(bytes)});
        }
        break;
      }
      case SYS_linkat: {
        const Named place = named(writer, call, 2);
        const std::optional<int> node = numberAt(place.path, false);
        ASSERT_TRUE(node && place.folder);
        actions.push_back({Kind::Link, *node, *place.folder, place.name, 0, {}, {}});
        break;
      }
      case SYS_renameat2:
#if defined(SYS_renameat)
      case SYS_renameat:
#endif
      {
        const Named former = named(writer, call, 0);
        const Named place = named(writer, call, 2);
        const std::optional<int> node = numberAt(place.path, false);
        ASSERT_TRUE(node && place.folder && former.folder);
        const bool isExchange = call.number == SYS_renameat2 && (call.argument(4) & RENAME_EXCHANGE) != 0;
        if (!isExchange) {
          actions.push_back({Kind::Rename, *node, *place.folder, place.name, *former.folder, former.name, {}});
          break;
        }
        // It was carried out, so each has the other's name.
        const std::optional<int> exchanged = numberAt(former.path, false);
        ASSERT_TRUE(exchanged);
        actions.push_back(
            {Kind::Exchange, *node, *place.folder, place.name, *former.folder, former.name, {}, *exchanged});
        break;
      }
      case SYS_unlinkat: {
        const Named place = named(writer, call, 0);
        if (place.folder) actions.push_back({Kind::Remove, 0, *place.folder, place.name, 0, {}, {}});
        break;
      }
      case SYS_fsync:
        if (const auto node = numberAt(descriptorPath(writer, call.argument(0)), true)) {
          actions.push_back({Kind::Flush, *node, 0, {}, 0, {}, {}});
        }
        break;
      default:
        noteOthers(call);
    }
  }

  /// Calls that change files and that the model doesn't know.
  static void noteOthers(const SystemCall& call) {
    static const std::set<std::int64_t> kUnknown = {
        SYS_pwrite64,        SYS_writev,    SYS_pwritev, SYS_ftruncate, SYS_truncate, SYS_fallocate,
        SYS_copy_file_range, SYS_fdatasync, SYS_mknodat, SYS_sync,      SYS_syncfs,
#if defined(SYS_rename)
        SYS_rename,          SYS_unlink,    SYS_mkdir,   SYS_creat,     SYS_link,     SYS_symlink,
#endif
    };
    EXPECT_FALSE(kUnknown.contains(call.number)) << "call " << call.number << " is not in the model";
  }

  std::map<ino_t, int> numbers_;
  int lastNumber_ = PowerModel::kRoot;
  int outputEnd_ = -1;
};

/// Makes a picture's files below a folder.
void paint(const PowerModel::Picture& picture, const fs::path& folder) {
  std::map<int, fs::path> painted;
  for (const auto& [relative, entry] : picture) {
    const fs::path path = folder / relative;
    switch (entry.kind) {
      case PowerModel::Entry::Kind::Folder:
        fs::create_directory(path);
        break;
      case PowerModel::Entry::Kind::Link:
        fs::create_symlink(entry.bytes, path);
        break;
      case PowerModel::Entry::Kind::File:
        if (painted.contains(entry.node)) {
          fs::create_hard_link(painted.at(entry.node), path);
        } else {
          std::ofstream(path, std::ios::binary) << entry.bytes;
          painted[entry.node] = path;
        }
        break;
    }
  }
}

constexpr int kLast = 7;

/// Two programs that write in turn: 2 and 3 unflushed, 3 flushed, 4 to 7 with flushes by the one and the other.
int writeInTurn(const WrittenRoot& root, int output) {
  const host::linux::FilePreferencesOptions options{.lockLimit = 5s};
  const auto tell = [&](const std::string& line) {
    if (::write(output, line.data(), line.size()) < 0) ::_exit(3);
  };
  FilePreferences one{DeviceRoot(root.root), {}, options};
  FilePreferences other{DeviceRoot(root.root), {}, options};
  for (int number = kLatter; number <= kLast; ++number) {
    FilePreferences& store = number == 4 || number == 5 ? other : one;
    tell("begun " + std::to_string(number) + "\n");
    store.setAppValue(WritingTask().key, numberedValue(number), kTrustDomain);
    if (number != 3 && number != 5 && number != 6) continue;
    store.appSynchronize(kTrustDomain);
    tell("flushed " + std::to_string(number) + "\n");
  }
  ::_exit(one.takeTroubles().empty() && other.takeTroubles().empty() ? 0 : 1);
}

/// What the next program finds wrong.
std::string faultsAfterCut(const WrittenRoot& root, const std::string& scenario, std::optional<int> flushed, int begun,
                           bool hasOthers) {
  std::ostringstream faults;
  FilePreferences next{DeviceRoot(root.root), {}, {.lockLimit = 5s}};
  const std::string key = WritingTask().key;
  const std::optional<Value> value = next.copyAppValue(key, kTrustDomain);
  const std::optional<int> number = numberOf(value);
  if (number ? *number < flushed.value_or(0) || *number > begun : flushed.has_value()) {
    faults << "the value is " << (number ? std::to_string(*number) : "gone") << "; ";
  }
  if (flushed && next.readTrouble(kTrustDomain)) faults << next.readTrouble(kTrustDomain)->cause << "; ";
  for (const auto& [other, otherValue] : otherKeys()) {
    if (hasOthers && next.copyAppValue(other, kTrustDomain) != otherValue) faults << other << " is lost; ";
  }
  if (scenario == "AValueThatIsNoDictionary" && value != Value("no dictionary") &&
      !fs::exists(root.beside(".kept-1"))) {
    faults << "the former value has no copy; ";
  }
  next.setAppValue("next", Value(1), kTrustDomain);
  for (const auto& trouble : next.takeTroubles()) faults << trouble.cause << "; ";
  if (next.copyAppValue(key, kTrustDomain) != value) faults << "the next write lost the value; ";
  if (root.hasTemporaryFile()) faults << "a temporary file is left; ";
  return faults.str();
}

class Power : public testing::TestWithParam<Scenario> {};

INSTANTIATE_TEST_SUITE_P(Store, Power, testing::ValuesIn(scenarios()),
                         [](const auto& scenario) { return scenario.param.name; });

TEST_P(Power, ACutAtAnyMomentLosesNothingThatWasFlushed) {
  const Scenario& scenario = GetParam();
  const TemporaryFolder folder(quickFolder());
  const WrittenRoot root{folder.path() / "root"};
  scenario.prepare(root);
  Recorder recorder(folder.path());
  const Pipe output;
  recorder.record([&] { return writeInTurn(root, output.writing.get()); }, output.writing.get());
  const auto count = [&](FileAction::Kind kind) {
    return std::ranges::count(recorder.actions, kind, &FileAction::kind);
  };
  ASSERT_EQ(count(FileAction::Kind::Tell), 9);
  ASSERT_GE(count(FileAction::Kind::Rename) + count(FileAction::Kind::Exchange), 9);
  ASSERT_GE(count(FileAction::Kind::Exchange), 5);
  ASSERT_GE(count(FileAction::Kind::Flush), 6);

  // What was there before was flushed, whoever wrote it.
  const bool hasOthers =
      scenario.name == "AFlushedFile" || scenario.name == "AFileOfAnotherProgram" || scenario.name == "ATornFile";
  std::optional<int> flushed = hasOthers ? std::optional(kFormer) : std::nullopt;
  int begun = kFormer;
  PowerModel model = recorder.model;
  std::size_t combinations = 0;
  std::set<std::tuple<PowerModel::Picture, std::optional<int>, int>> cuts;
  const auto cut = [&] {
    std::set<PowerModel::Picture> pictures;
    combinations += model.addPictures(pictures);
    for (const PowerModel::Picture& picture : pictures) cuts.emplace(picture, flushed, begun);
  };
  cut();
  for (const FileAction& action : recorder.actions) {
    model.apply(action);
    if (const auto number = lastOf(action.bytes, "begun"); action.kind == FileAction::Kind::Tell && number) {
      begun = *number;
    }
    if (const auto number = lastOf(action.bytes, "flushed"); action.kind == FileAction::Kind::Tell && number) {
      flushed = number;
    }
    cut();
  }

  // The short form looks at some of them.
  const std::size_t step = isLongForm() ? 1 : std::max<std::size_t>(1, cuts.size() / 120);
  std::size_t index = 0;
  std::size_t seen = 0;
  for (const auto& [picture, least, most] : cuts) {
    if (index++ % step != 0) continue;
    ++seen;
    fs::remove_all(root.root);
    paint(picture, folder.path());
    const std::string faults = faultsAfterCut(root, scenario.name, least, most, hasOthers);
    if (faults.empty()) continue;
    std::ostringstream found;
    for (const auto& [path, entry] : picture) {
      found << "  " << path << " (" << entry.node << ", " << entry.bytes.size() << " bytes)\n";
    }
    FAIL() << faults << "flushed " << least.value_or(0) << ", begun " << most << "; the cut left:\n" << found.str();
  }
  std::cout << scenario.name << ": " << recorder.actions.size() << " actions, " << combinations << " combinations, "
            << cuts.size() << " different states, " << seen << " of them tried.\n";
}

}  // namespace power_test
}  // namespace quellar::tests
