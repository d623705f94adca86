// SPDX-License-Identifier: MIT
#include "tracer.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <stdexcept>
#include <system_error>

// After the header of the C library, which defines the same things.
#include <linux/ptrace.h>

namespace quellar::tests {

namespace {

[[noreturn]] void throwSystemError(const char* doing) {
  throw std::system_error(errno, std::generic_category(), doing);
}

long trace(int request, pid_t thread, std::uintptr_t address, std::uintptr_t data) {
  return ::ptrace(static_cast<__ptrace_request>(request), thread, address, data);
}

// A call is skipped by giving it a number that no call has; its result is set when it returns.

#if defined(__x86_64__)

void skipCall(pid_t thread) {
  trace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, orig_rax), static_cast<std::uintptr_t>(-1));
}

void setResult(pid_t thread, std::int64_t result) {
  trace(PTRACE_POKEUSER, thread, offsetof(user_regs_struct, rax), static_cast<std::uintptr_t>(result));
}

#elif defined(__aarch64__)

void skipCall(pid_t thread) {
  int none = -1;
  iovec part{&none, sizeof none};
  trace(PTRACE_SETREGSET, thread, NT_ARM_SYSTEM_CALL, reinterpret_cast<std::uintptr_t>(&part));
}

void setResult(pid_t thread, std::int64_t result) {
  user_regs_struct registers{};
  iovec part{&registers, sizeof registers};
  trace(PTRACE_GETREGSET, thread, NT_PRSTATUS, reinterpret_cast<std::uintptr_t>(&part));
  registers.regs[0] = static_cast<std::uint64_t>(result);
  trace(PTRACE_SETREGSET, thread, NT_PRSTATUS, reinterpret_cast<std::uintptr_t>(&part));
}

#else
#error "the registers of this processor are not known here"
#endif

}  // namespace

Tracee::Tracee(const std::function<int()>& work) : process_(::fork()) {
  if (process_ < 0) throwSystemError("fork");
  if (process_ == 0) {
    trace(PTRACE_TRACEME, 0, 0, 0);
    ::raise(SIGSTOP);
    ::_exit(work());
  }
  attach();
}

Tracee::Tracee(const std::vector<std::string>& command)
    : Tracee([&]() -> int {
        std::vector<std::string> words = command;
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        ::execv(arguments[0], arguments.data());
        return 127;
      }) {}

Tracee::~Tracee() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  while (::waitpid(process_, nullptr, __WALL) < 0 && errno == EINTR) {
  }
}

void Tracee::attach() {
  int status = 0;
  if (::waitpid(process_, &status, 0) < 0) throwSystemError("waitpid");
  if (!WIFSTOPPED(status)) throw std::runtime_error("the child can't be traced");
  constexpr int kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL | PTRACE_O_TRACECLONE | PTRACE_O_TRACEEXEC;
  if (trace(PTRACE_SETOPTIONS, process_, 0, kOptions) != 0) throwSystemError("ptrace");
  threads_[process_] = {};
}

Tracee::End Tracee::run(const Handler& atEntry, const Handler& atReturn) {
  bool wasKilled = false;
  trace(PTRACE_SYSCALL, process_, 0, 0);
  while (true) {
    int status = 0;
    const pid_t thread = ::waitpid(-1, &status, __WALL);
    if (thread < 0) {
      if (errno == EINTR) continue;
      throwSystemError("waitpid");
    }
    if (WIFEXITED(status) || WIFSIGNALED(status)) {
      threads_.erase(thread);
      if (thread != process_) continue;
      process_ = -1;
      return {wasKilled, WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status)};
    }
    if (!WIFSTOPPED(status)) continue;
    const int stop = WSTOPSIG(status);
    int signal = 0;
    if (stop == (SIGTRAP | 0x80)) {
      if (!wasKilled && !atCall(thread, atEntry, atReturn)) {
        wasKilled = true;
        ::kill(process_, SIGKILL);
        continue;
      }
    } else if (status >> 16 == 0 && stop != SIGTRAP) {
      // A thread that was just made begins with a stop of its own.
      if (stop != SIGSTOP || threads_.contains(thread)) signal = stop;
    }
    threads_.try_emplace(thread);
    // Nothing to do where it fails: the thread was killed in between, and is waited for above.
    trace(PTRACE_SYSCALL, thread, 0, static_cast<std::uintptr_t>(signal));
  }
}

bool Tracee::atCall(pid_t thread, const Handler& atEntry, const Handler& atReturn) {
  ptrace_syscall_info info{};
  if (trace(PTRACE_GET_SYSCALL_INFO, thread, sizeof info, reinterpret_cast<std::uintptr_t>(&info)) <= 0) return true;
  Thread& state = threads_[thread];
  Verdict verdict;
  if (info.op == PTRACE_SYSCALL_INFO_ENTRY) {
    state.call = {thread, state.calls++, static_cast<std::int64_t>(info.entry.nr), {}, 0};
    std::copy(std::begin(info.entry.args), std::end(info.entry.args), state.call.arguments.begin());
    state.isInCall = true;
    state.failure = 0;
    if (atEntry) verdict = atEntry(state.call);
    if (verdict.kind == Verdict::Kind::Fail) {
      state.failure = verdict.error;
      skipCall(thread);
    }
  } else if (info.op == PTRACE_SYSCALL_INFO_EXIT && state.isInCall) {
    state.isInCall = false;
    if (state.failure != 0) setResult(thread, -state.failure);
    state.call.result = state.failure != 0 ? -state.failure : static_cast<std::int64_t>(info.exit.rval);
    if (atReturn) verdict = atReturn(state.call);
  }
  return verdict.kind != Verdict::Kind::Kill;
}

std::string Tracee::bytesAt(std::uint64_t address, std::size_t size) const {
  std::string bytes(size, '\0');
  const iovec here{bytes.data(), size};
  const iovec there{reinterpret_cast<void*>(address), size};  // NOLINT(performance-no-int-to-ptr)
  const ssize_t got = ::process_vm_readv(process_, &here, 1, &there, 1, 0);
  if (got < 0) throwSystemError("process_vm_readv");
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

std::string Tracee::textAt(std::uint64_t address) const {
  // A page at most at a time: the next one may not be there.
  constexpr std::uint64_t kPage = 4096;
  std::string text;
  while (text.find('\0') == std::string::npos) {
    const std::string part = bytesAt(address, kPage - address % kPage);
    text += part;
    address += part.size();
  }
  return text.substr(0, text.find('\0'));
}

bool isAboutMemoryOrTime(std::int64_t number) {
  static constexpr auto kNumbers = std::to_array<std::int64_t>({
      SYS_mmap,
      SYS_munmap,
      SYS_mprotect,
      SYS_madvise,
      SYS_mremap,
      SYS_brk,
      SYS_prctl,
      SYS_futex,
      SYS_sched_yield,
      SYS_getpid,
      SYS_gettid,
      SYS_clock_gettime,
      SYS_clock_nanosleep,
      SYS_rt_sigprocmask,
      SYS_rt_sigaction,
      SYS_sigaltstack,
      SYS_rseq,
      SYS_set_robust_list,
      SYS_exit,
      SYS_exit_group,
      SYS_getrandom,
      SYS_sched_getaffinity,
  });
  return std::ranges::find(kNumbers, number) != kNumbers.end();
}

}  // namespace quellar::tests
