// SPDX-License-Identifier: MIT
#include "black_box.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>

#include "scenarios.h"
#include "stranger.h"

namespace quellar::tests {

using platform::Dictionary;
using platform::Value;

namespace {

constexpr unsigned kMostSeconds = 30;

/// The path that a call names, or "".
std::string pathOf(const Tracee& program, const SystemCall& call) {
  switch (call.number) {
    case SYS_openat:
    case SYS_openat2:
    case SYS_newfstatat:
    case SYS_mkdirat:
    case SYS_readlinkat:
    case SYS_unlinkat:
    case SYS_faccessat:
      return program.textAt(call.arguments[1]);
#if defined(SYS_open)
    case SYS_open:
    case SYS_stat:
    case SYS_access:
    case SYS_readlink:
      return program.textAt(call.arguments[0]);
#endif
    default:
      return {};
  }
}

bool isWithin(const Tracee& program, const SystemCall& call, const std::string& root) {
  if (const std::string path = pathOf(program, call); path.starts_with('/')) return path.starts_with(root);
  std::error_code error;
  const auto link = std::filesystem::read_symlink(
      "/proc/" + std::to_string(program.process()) + "/fd/" + std::to_string(call.argument(0)), error);
  return !error && link.string().starts_with(root);
}

/// Leaves out the calls by which the address sanitizer asks whether memory can be read: a pipe, a write to it, two
/// closes.
class Probes {
 public:
  bool include(const SystemCall& call) const {
    if (call.number == SYS_pipe2) return true;
    return (call.number == SYS_write || call.number == SYS_close) && ends_.contains(call.argument(0));
  }
  void noteReturn(const Tracee& program, const SystemCall& call) {
    if (call.number == SYS_close) ends_.erase(call.argument(0));
    if (call.number != SYS_pipe2 || call.result < 0) return;
    std::array<int, 2> ends{};
    const std::string bytes = program.bytesAt(call.arguments[0], sizeof ends);
    std::memcpy(ends.data(), bytes.data(), sizeof ends);
    ends_.insert(ends.begin(), ends.end());
  }

 private:
  std::set<int> ends_;
};

}  // namespace

const Dictionary& domainOfOthers() {
  static const Dictionary domain = {
      {kProofPageKey, Dictionary{{"disablesDNDSTBIcon", true}, {"userCustomCarrierText", "text"}}},
      {"Dock_Defaults", Dictionary{{"usesCustomDockBlur", true}, {"dockAlpha", 0.25}}},
      {"Other_Program", Dictionary{{"number", 7}}},
      {"alone", "text"}};
  return domain;
}

TracedRun runTraced(const Device& device, const std::vector<std::string>& arguments, const std::string& input,
                    std::size_t failing, int error, const std::function<void(const std::string& bytes)>& atOutput) {
  TracedRun run;
  Pipe given;
  const Pipe output;
  const Pipe errors;
  std::size_t sent = 0;
  while (sent < input.size()) {
    const ssize_t count = ::write(given.writing.get(), input.data() + sent, input.size() - sent);
    if (count <= 0) throw std::runtime_error("the input is too long for a pipe");
    sent += static_cast<std::size_t>(count);
  }
  Tracee program([&]() -> int {
    // Pipes that wait, as those of a shell.
    for (const int end : {given.reading.get(), output.writing.get(), errors.writing.get()}) ::fcntl(end, F_SETFL, 0);
    ::dup2(given.reading.get(), STDIN_FILENO);
    ::dup2(output.writing.get(), STDOUT_FILENO);
    ::dup2(errors.writing.get(), STDERR_FILENO);
    std::vector<std::string> words = {QUELLAR_PROGRAM};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables;
    // The leak checker does not work under a tracer, and ends the program for it.
    variables.emplace_back("ASAN_OPTIONS=detect_leaks=0");
    for (const auto& [name, value] : device.environment) {
      if (name != "ASAN_OPTIONS") variables.push_back(name + "=" + value);
    }
    const auto pointers = [](std::vector<std::string>& texts) {
      std::vector<char*> all;
      for (std::string& text : texts) all.push_back(text.data());
      all.push_back(nullptr);
      return all;
    };
    ::alarm(kMostSeconds);
    ::execve(QUELLAR_PROGRAM, pointers(words).data(), pointers(variables).data());
    return 127;
  });
  bool isStarted = false;
  bool hasComeToStore = false;
  Probes probes;
  const auto atEntry = [&](const SystemCall& call) {
    if (call.number == SYS_execve) {
      isStarted = true;
      return Verdict{};
    }
    if (!isStarted || isAboutMemoryOrTime(call.number) || probes.include(call)) return Verdict{};
    if (call.number == SYS_write && (call.argument(0) == STDOUT_FILENO || call.argument(0) == STDERR_FILENO)) {
      if (atOutput && call.argument(0) == STDOUT_FILENO) {
        atOutput(program.bytesAt(call.arguments[1], static_cast<std::size_t>(call.arguments[2])));
      }
      return Verdict{};
    }
    run.isAtStore.push_back(isWithin(program, call, device.root().string()));
    if (!hasComeToStore && run.isAtStore.back()) {
      hasComeToStore = true;
      run.firstAtStore = run.calls.size();
    }
    run.calls.push_back(call);
    return run.calls.size() - 1 == failing ? Verdict{Verdict::Kind::Fail, error} : Verdict{};
  };
  const auto atReturn = [&](const SystemCall& call) {
    if (isStarted) probes.noteReturn(program, call);
    const bool isRename = call.number == SYS_renameat2
#if defined(SYS_renameat)
                          || call.number == SYS_renameat
#endif
        ;
    if (isRename && call.result == 0 && program.textAt(call.arguments[3]).ends_with(kTrustFile)) run.isReplaced = true;
    return Verdict{};
  };
  // Its input ends where the text does. The program has closed its own copy by then.
  given.writing = host::linux::FileDescriptor();
  run.end = program.run(atEntry, atReturn);
  run.output = output.contents();
  run.errors = errors.contents();
  return run;
}

void preload(std::map<std::string, std::string>& environment) {
  environment["LD_PRELOAD"] = QUELLAR_TRUST_SHIM;
  // The address sanitizer wants to be the first library, and to end a program that gets no memory.
  std::string& options = environment["ASAN_OPTIONS"];
  options += std::string(options.empty() ? "" : ":") + "verify_asan_link_order=0:allocator_may_return_null=1";
}

std::string faultsOfOthers(const Device& device) {
  const std::optional<Dictionary> domain = readAsStranger(device.store());
  if (!domain) return "there is no whole property list; ";
  std::string faults;
  for (const auto& [page, value] : domainOfOthers()) {
    const auto* entries = value.as<Dictionary>();
    if (entries == nullptr) {
      const Value* found = platform::find(*domain, page);
      if (found == nullptr || *found != value) faults += page + " is lost; ";
      continue;
    }
    for (const auto& [key, entry] : *entries) {
      if (pageEntry(domain, page, key) != entry) faults.append(page).append("/").append(key).append(" is lost; ");
    }
  }
  return faults;
}

std::optional<Value> storedSwitch(const Device& device) {
  return pageEntry(readAsStranger(device.store()), kProofPageKey, kProofSwitch);
}

std::vector<std::string> closingLines(const std::string& output) {
  std::vector<std::string> closing;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(R"({"ok")") || line.starts_with(R"({"error")")) closing.push_back(line);
  }
  return closing;
}

}  // namespace quellar::tests
