// SPDX-License-Identifier: MIT

// Power cuts in a model: what the programs do to files is recorded, and every state that a cut at any moment can leave
// behind is made anew.
//
// The promise: whoever reads the domain file after a power cut at any moment, whoever that is, finds a whole property
// list with every value that was acknowledged before the cut, and with all other keys; and the next program goes on.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "black_box.h"
#include "chronicle.h"
#include "power_model.h"
#include "stranger.h"
#include "tracer.h"
#include "writing.h"

namespace quellar::tests {
namespace power_test {

using platform::Dictionary;
using platform::Value;
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

  /// Runs a program or a function of a process of its own; gives its exit code. The first `failing` flushes of files
  /// that are written fail.
  int record(const std::function<int()>& work, int failing = 0) {
    Tracee writer(work);
    const auto atEntry = [&](const SystemCall& call) {
      const bool isFlush = call.number == SYS_fsync || call.number == SYS_fdatasync;
      if (!isFlush || failing == 0) return Verdict{};
      const auto node = numberAt(descriptorPath(writer, call.argument(0)), true);
      if (!node || !fs::is_regular_file(descriptorPath(writer, call.argument(0)))) return Verdict{};
      --failing;
      actions.push_back({FileAction::Kind::FailedFlush, *node, 0, {}, 0, {}, {}});
      return Verdict{Verdict::Kind::Fail, EIO};
    };
    const Tracee::End end = writer.run(atEntry, [&](const SystemCall& call) {
      if (call.result >= 0) note(writer, call);
      return Verdict{};
    });
    EXPECT_FALSE(end.wasKilled);
    return end.code;
  }

  /// How many actions there were.
  [[nodiscard]] std::size_t now() const { return actions.size(); }

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

  void noteOpened(const Tracee& writer, const SystemCall& call, int flags) {
    if ((flags & O_CREAT) == 0) return;
    const Named place = named(writer, call, 0);
    // A file that was there, as the lock's.
    if ((flags & O_EXCL) == 0 && numberAt(place.path, true)) return;
    if (!place.folder) return;
    actions.push_back({FileAction::Kind::Create, add(inodeOf(place.path)), *place.folder, place.name, 0, {}, {}});
  }

  void note(const Tracee& writer, const SystemCall& call) {
    using Kind = FileAction::Kind;
    const auto made = [&](Kind kind, const Named& place, std::string bytes = {}) {
      if (!place.folder) return;
      actions.push_back({kind, add(inodeOf(place.path)), *place.folder, place.name, 0, {}, std::move(bytes)});
    };
    switch (call.number) {
      case SYS_openat:
        noteOpened(writer, call, call.argument(2));
        break;
      case SYS_openat2: {
        open_how how{};
        const std::string bytes = writer.bytesAt(call.arguments[2], sizeof how);
        std::memcpy(&how, bytes.data(), sizeof how);
        noteOpened(writer, call, static_cast<int>(how.flags));
        break;
      }
      case SYS_mkdirat:
        made(Kind::MakeFolder, named(writer, call, 0));
        break;
      case SYS_symlinkat:
        made(Kind::MakeLink, named(writer, call, 1), writer.textAt(call.arguments[0]));
        break;
      case SYS_write: {
        std::string bytes = writer.bytesAt(call.arguments[1], static_cast<std::size_t>(call.result));
        if (const auto node = numberAt(descriptorPath(writer, call.argument(0)), true)) {
          actions.push_back({Kind::Write, *node, 0, {}, 0, {}, std::move(bytes)});
        }
        break;
      }
      case SYS_pwrite64:
        // A mark at the end of a file, the only write of this kind.
        if (const auto node = numberAt(descriptorPath(writer, call.argument(0)), true)) {
          EXPECT_EQ(call.arguments[3] + static_cast<std::uint64_t>(call.result),
                    fs::file_size(descriptorPath(writer, call.argument(0))))
              << "the model knows of bytes that are appended only";
          std::string bytes = writer.bytesAt(call.arguments[1], static_cast<std::size_t>(call.result));
          actions.push_back({Kind::Write, *node, 0, {}, 0, {}, std::move(bytes)});
        }
        break;
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
      case SYS_fdatasync:
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
        SYS_writev,  SYS_pwritev, SYS_ftruncate, SYS_truncate, SYS_fallocate, SYS_copy_file_range,
        SYS_mknodat, SYS_sync,    SYS_syncfs,
#if defined(SYS_rename)
        SYS_rename,  SYS_unlink,  SYS_mkdir,     SYS_creat,    SYS_link,      SYS_symlink,
#endif
    };
    EXPECT_FALSE(kUnknown.contains(call.number)) << "call " << call.number << " is not in the model";
  }

  std::map<ino_t, int> numbers_;
  int lastNumber_ = PowerModel::kRoot;
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

/// What the programs find, and what stays of it whatever they do.
struct Start {
  std::string name;
  std::function<void(const Device&)> prepare;
  Dictionary staying;
};

void PrintTo(const Start& start, std::ostream* stream) {
  *stream << start.name;
}

void writeRaw(const fs::path& file, std::string_view bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<Start> starts() {
  static constexpr std::string_view kGarbage = "this is no property list";
  const std::string whole = encodeAsStranger(domainOfOthers());
  Dictionary odd = domainOfOthers();
  odd.insert_or_assign(kProofPageKey, Value("no dictionary"));
  Dictionary stayingOfOdd = domainOfOthers();
  stayingOfOdd.erase(kProofPageKey);
  return {
      {"AFileOfOurs",
       [](const Device& device) {
         writeRaw(device.store(), encodeAsStranger(domainOfOthers()));
         ASSERT_EQ(device.run({"set", "Dock", "usesCustomDockBlur", "on"}), succeeded(""));
       },
       domainOfOthers()},
      {"AnEmptyDeviceRoot", [](const Device& device) { fs::remove_all(device.root()); }, {}},
      {"AFileOfAnotherProgram", [whole](const Device& device) { writeRaw(device.store(), whole); }, domainOfOthers()},
      {"ACorruptFile", [](const Device& device) { writeRaw(device.store(), kGarbage); }, {}},
      {"AValueThatIsNoDictionary", [odd](const Device& device) { writeRaw(device.store(), encodeAsStranger(odd)); },
       stayingOfOdd},
      {"ATornFileWithAKeptVersion",
       [whole](const Device& device) {
         writeRaw(device.store(), whole.substr(0, whole.size() / 2));
         writeRaw(device.store().string() + ".flushed", whole);
       },
       {}},
  };
}

/// A program as its user starts it.
std::function<int()> programOf(const Device& device, const std::vector<std::string>& arguments,
                               const std::string& input = {}) {
  return [&device, arguments, input]() -> int {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0 || ::write(ends[1], input.data(), input.size()) < 0) return 126;
    ::close(ends[1]);
    ::dup2(ends[0], STDIN_FILENO);
    const int nowhere = ::open("/dev/null", O_WRONLY);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    for (const auto& [name, value] : device.environment) ::setenv(name.c_str(), value.c_str(), 1);
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);
    std::vector<std::string> words = {QUELLAR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> all;
    for (std::string& word : words) all.push_back(word.data());
    all.push_back(nullptr);
    ::execv(all[0], all.data());
    return 127;
  };
}

/// What a stranger finds in all states that a cut may leave.
struct Judgement {
  std::size_t combinations = 0;
  std::size_t states = 0;
  std::size_t failed = 0;
  std::string first;
  /// Some good ones, and after which action they were cut.
  std::vector<std::pair<PowerModel::Picture, std::size_t>> sample;
};

Judgement judge(const Recorder& recorder, const Chronicle& chronicle) {
  Judgement result;
  PowerModel model = recorder.model;
  const auto cut = [&](std::size_t moment) {
    std::set<PowerModel::Picture> pictures;
    result.combinations += model.addPictures(pictures);
    for (const PowerModel::Picture& picture : pictures) {
      ++result.states;
      const auto file = std::ranges::find_if(picture, [](const auto& each) {
        return each.first.ends_with(std::string("Library/Preferences/") + kTrustFile);
      });
      const std::optional<Dictionary> domain =
          file != picture.end() ? parseAsStranger(file->second.bytes) : std::nullopt;
      // Nobody is owed a list before there was one.
      const std::string faults = domain || !chronicle.isEmptyAt(moment) ? chronicle.faults(domain, moment) : "";
      constexpr std::size_t kEach = 40;
      if (faults.empty() && result.states % kEach == 0) result.sample.emplace_back(picture, moment);
      if (faults.empty() || ++result.failed > 1) continue;
      result.first = "after action " + std::to_string(moment) + ": " + faults;
      for (const auto& [path, entry] : picture) {
        result.first += "\n  " + path + " (" + std::to_string(entry.node) + ", ";
        result.first += std::to_string(entry.bytes.size()) + " bytes)";
      }
    }
  };
  cut(0);
  for (std::size_t moment = 0; moment < recorder.actions.size(); ++moment) {
    model.apply(recorder.actions[moment]);
    cut(moment + 1);
  }
  return result;
}

TEST(PowerModel, IsSurvivedByACarefulProgramAndNotByACarelessOne) {
  for (const Care care : {Care::FlushesAll, Care::FlushesNothing}) {
    const Device device;
    writeRaw(device.store(), encodeAsStranger(domainOfOthers()));
    Recorder recorder(device.folder().path());
    Chronicle chronicle;
    chronicle.beginWith(domainOfOthers());
    const Chronicle::Place place{"", "Other_Program_Number"};
    for (int number = 0; number < 3; ++number) {
      Dictionary domain = domainOfOthers();
      domain.insert_or_assign(place.key, Value(number));
      const std::size_t attempt = chronicle.begin(place, Value(number), recorder.now());
      const auto replace = [&]() -> int {
        replaceAsStranger(device.store(), domain, care);
        ::_exit(0);
      };
      ASSERT_EQ(recorder.record(replace), 0);
      chronicle.acknowledge(place, attempt, recorder.now());
    }
    const Judgement judgement = judge(recorder, chronicle);
    EXPECT_EQ(judgement.failed == 0, care == Care::FlushesAll) << judgement.first;
    EXPECT_GT(judgement.states, 30U);
  }
}

class Power : public testing::TestWithParam<Start> {};

INSTANTIATE_TEST_SUITE_P(Store, Power, testing::ValuesIn(starts()), [](const auto& start) { return start.param.name; });

TEST_P(Power, ACutAtAnyMomentLeavesAWholeFileWithAllThatWasAcknowledged) {
  if (!fs::exists(QUELLAR_PROGRAM)) GTEST_SKIP() << "quellar is not built";
  const Start& start = GetParam();
  const Device device;
  start.prepare(device);
  if (HasFatalFailure()) return;
  Recorder recorder(device.folder().path());
  Chronicle chronicle;
  chronicle.beginWith(start.staying);
  const Chronicle::Place bySet{kProofPageKey, kProofSwitch};
  const Chronicle::Place byOther{"Alerts_Defaults", "userDisablesEdgeAlerts"};
  const Chronicle::Place byStranger{"", "Other_Program_Number"};
  const auto record = [&](const Chronicle::Place& place, const Value& value, const std::function<int()>& work,
                          int failing = 0) {
    const std::size_t attempt = chronicle.begin(place, value, recorder.now());
    const int code = recorder.record(work, failing);
    if (code == 0) chronicle.acknowledge(place, attempt, recorder.now());
    return code;
  };
  const auto asStranger = [&](int number) -> int {
    Dictionary domain = readAsStranger(device.store()).value_or(Dictionary());
    domain.insert_or_assign(byStranger.key, Value(number));
    replaceAsStranger(device.store(), domain);
    ::_exit(0);
  };
  const std::vector<std::string> on = {"set", kProofPage, kProofSwitch, "on"};
  const std::vector<std::string> off = {"set", kProofPage, kProofSwitch, "off"};
  const std::vector<std::string> other = {"set", "Alerts", byOther.key, "on"};
  EXPECT_EQ(record(bySet, Value(true), programOf(device, on)), 0);
  EXPECT_EQ(record(byStranger, Value(1), [&] { return asStranger(1); }), 0);
  EXPECT_EQ(record(bySet, Value(false), programOf(device, off)), 0);
  EXPECT_EQ(record(byOther, Value(true), programOf(device, other)), 0);
  // A session ends with 0 whatever became of its write, which is then no acknowledgement; the next command reads it.
  chronicle.begin(byOther, Value(false), recorder.now());
  recorder.record(programOf(device, {"session"}, R"({"do":"open","page":"Alerts"}
{"do":"set","row":"userDisablesEdgeAlerts","value":false}
)"));
  // A flush fails; whether that is then told or made good, what is acknowledged stays.
  record(bySet, Value(true), programOf(device, on), 1);
  EXPECT_EQ(record(byStranger, Value(2), [&] { return asStranger(2); }), 0);
  EXPECT_EQ(record(bySet, Value(false), programOf(device, off)), 0);
  EXPECT_EQ(chronicle.faults(readAsStranger(device.store()), recorder.now()), "");
  ASSERT_EQ(std::ranges::count(recorder.actions, FileAction::Kind::FailedFlush, &FileAction::kind), 1);

  const Judgement judgement = judge(recorder, chronicle);
  EXPECT_EQ(judgement.failed, 0U) << judgement.first;
  const auto& painted = judgement.sample;

  // The next program goes on from there.
  const std::size_t most = isLongForm() ? 200 : 5;
  const std::size_t step = std::max<std::size_t>(1, painted.size() / most);
  std::size_t tried = 0;
  for (std::size_t index = 0; index < painted.size(); index += step, ++tried) {
    const auto& [picture, moment] = painted[index];
    for (const auto& entry : fs::directory_iterator(device.folder().path())) fs::remove_all(entry);
    paint(picture, device.folder().path());
    EXPECT_EQ(device.run({"set", "Dock", "userDisablesBackgroundBlur", "on"}), succeeded(""));
    const std::optional<Dictionary> domain = readAsStranger(device.store());
    EXPECT_EQ(chronicle.faults(domain, moment), "") << "after the next write";
    EXPECT_EQ(pageEntry(domain, "Dock_Defaults", "userDisablesBackgroundBlur"), Value(true));
    for (const std::string& name : namesIn(device.store().parent_path())) {
      EXPECT_EQ(name.find(".tmp"), std::string::npos) << name << " is left";
    }
    if (HasFailure()) break;
  }
  std::cout << start.name << ": " << recorder.actions.size() << " actions, " << judgement.combinations
            << " combinations, " << judgement.states << " states, " << judgement.failed
            << " with less; the next program started from " << tried << ".\n";
}

}  // namespace power_test
}  // namespace quellar::tests
