// SPDX-License-Identifier: MIT
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace quellar::tests {

/// One system call of a traced process.
struct SystemCall {
  pid_t thread = 0;
  /// How many calls the thread made before it.
  int index = 0;
  std::int64_t number = 0;
  std::array<std::uint64_t, 6> arguments{};
  /// What it returned, a negated error number for a failure; 0 until it has returned.
  std::int64_t result = 0;

  [[nodiscard]] int argument(std::size_t position) const { return static_cast<int>(arguments.at(position)); }
};

/// What is to become of a call, or of its process once the call has been carried out.
struct Verdict {
  enum class Kind { GoOn, Kill, Fail };
  Kind kind = Kind::GoOn;
  /// For Fail: the error number that the call gives without being carried out.
  int error = 0;
};

/// A child process whose system calls are watched one by one with ptrace(2): it can be killed before and after each,
/// and each can be made to fail. All of its threads are followed.
class Tracee {
 public:
  /// Is asked at the entry of each call (where it may Fail) and at its return.
  using Handler = std::function<Verdict(const SystemCall& call)>;

  /// How a process ended.
  struct End {
    bool wasKilled = false;
    /// Its exit code; the signal's number where a signal ended it.
    int code = 0;
    bool operator==(const End&) const = default;
  };

  /// Forks a process that is going to run `work`, whose result becomes its exit code.
  explicit Tracee(const std::function<int()>& work);
  /// Starts a program, which is watched from its execve(2) on.
  explicit Tracee(const std::vector<std::string>& command);
  ~Tracee();
  Tracee(const Tracee&) = delete;
  Tracee& operator=(const Tracee&) = delete;

  [[nodiscard]] pid_t process() const { return process_; }

  /// Lets it run to its end.
  End run(const Handler& atEntry, const Handler& atReturn = {});

  /// Within a handler: bytes of its memory, and a text that ends with a NUL.
  [[nodiscard]] std::string bytesAt(std::uint64_t address, std::size_t size) const;
  [[nodiscard]] std::string textAt(std::uint64_t address) const;

 private:
  struct Thread {
    int calls = 0;
    SystemCall call;
    bool isInCall = false;
    /// The error that the call under way is to give, or 0.
    int failure = 0;
  };

  void attach();
  /// Handles the stop of a thread at a call; false where the process is to die.
  bool atCall(pid_t thread, const Handler& atEntry, const Handler& atReturn);

  pid_t process_ = -1;
  std::map<pid_t, Thread> threads_;
};

/// Whether a call has to do with memory, threads and time alone, which no file knows about. The sanitizers and the
/// allocator make such calls whenever they like.
[[nodiscard]] bool isAboutMemoryOrTime(std::int64_t number);

}  // namespace quellar::tests
