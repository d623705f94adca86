// SPDX-License-Identifier: MIT
#include "program.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "suite.h"

namespace quellar::benches {

using host::linux::FileDescriptor;

namespace {

constexpr int kLimitInMilliseconds = 20000;

/// Texts as a program takes them, which live as long as `texts`.
std::vector<char*> asArguments(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

struct Descriptors {
  int input;
  int output;
  int errors;
};

/// Starts a program with its three standard files, -1 standing for none.
pid_t start(const std::vector<std::string>& command, const std::vector<std::string>& variables,
            const Descriptors& descriptors) {
  std::vector<std::string> words = command;
  std::vector<std::string> environment = variables;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view name = std::string_view(*variable).substr(0, std::string_view(*variable).find('='));
    bool isGiven = false;
    for (const std::string& given : variables) isGiven |= given.starts_with(std::string(name) + "=");
    if (!isGiven) environment.emplace_back(*variable);
  }
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  const std::array<int, 3> ends = {descriptors.input, descriptors.output, descriptors.errors};
  for (int number = 0; number < 3; ++number) {
    const int end = ends[static_cast<std::size_t>(number)];
    if (end >= 0) {
      ::posix_spawn_file_actions_adddup2(&actions, end, number);
    } else {
      ::posix_spawn_file_actions_addopen(&actions, number, "/dev/null", O_RDWR, 0);
    }
  }
  pid_t process = -1;
  const std::vector<char*> arguments = asArguments(words);
  const std::vector<char*> settings = asArguments(environment);
  const int error = ::posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), settings.data());
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::system_error(error, std::generic_category(), command.front());
  return process;
}

void checkSuccess(pid_t process, const std::string& name) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) throw std::system_error(errno, std::generic_category(), name);
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error(name + " failed");
}

}  // namespace

Program::Program(const std::vector<std::string>& command, const std::vector<std::string>& variables, Output output)
    : name_(command.front()) {
  std::array<int, 2> toProgram{};
  std::array<int, 2> fromProgram{};
  if (::pipe2(toProgram.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  const FileDescriptor itsInput(toProgram[0]);
  input_ = FileDescriptor(toProgram[1]);
  if (::pipe2(fromProgram.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  output_ = FileDescriptor(fromProgram[0]);
  const FileDescriptor itsOutput(fromProgram[1]);
  const bool isStandard = output == Output::Standard;
  process_ =
      start(command, variables, {itsInput.get(), isStandard ? itsOutput.get() : -1, isStandard ? -1 : itsOutput.get()});
}

Program::~Program() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Program::tell(char command) {
  if (::write(input_.get(), &command, 1) != 1) throw std::runtime_error(name_ + " does not listen");
}

bool Program::receive() {
  pollfd polled = {.fd = output_.get(), .events = POLLIN, .revents = 0};
  if (::poll(&polled, 1, kLimitInMilliseconds) <= 0) throw std::runtime_error(name_ + " is silent; before: " + buffer_);
  std::array<char, 4096> bytes{};
  const auto count = ::read(output_.get(), bytes.data(), bytes.size());
  if (count > 0) buffer_.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0;
}

std::string Program::readLine() {
  std::size_t end = 0;
  while ((end = buffer_.find('\n')) == std::string::npos) {
    if (!receive()) throw std::runtime_error(name_ + " has ended: " + buffer_);
  }
  std::string line = buffer_.substr(0, end);
  buffer_.erase(0, end + 1);
  return line;
}

void Program::waitForOutput(std::string_view text) {
  while (buffer_.find(text) == std::string::npos) {
    if (!receive()) throw std::runtime_error(name_ + " has ended: " + buffer_);
  }
}

std::string Program::readAll() {
  while (receive()) {
  }
  return buffer_;
}

void Program::waitForSuccess() {
  const pid_t process = process_;
  process_ = -1;
  checkSuccess(process, name_);
}

std::chrono::nanoseconds processorTime(pid_t process) {
  std::chrono::nanoseconds sum{0};
  for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
    std::ifstream stream(thread.path() / "schedstat");
    std::int64_t time = 0;
    if (!(stream >> time)) throw std::runtime_error("the system does not tell the processor time of a process");
    sum += std::chrono::nanoseconds(time);
  }
  return sum;
}

std::chrono::nanoseconds timeOf(const std::vector<std::string>& command, const std::vector<std::string>& variables) {
  const Stopwatch stopwatch;
  checkSuccess(start(command, variables, {-1, -1, -1}), command.front());
  return stopwatch.elapsed();
}

}  // namespace quellar::benches
