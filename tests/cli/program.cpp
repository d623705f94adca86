// SPDX-License-Identifier: MIT
#include "program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <memory>
#include <ostream>
#include <sstream>

namespace quellar::tests {

using host::linux::FileDescriptor;

namespace {

constexpr std::chrono::seconds kPatience{20};

std::pair<FileDescriptor, FileDescriptor> makePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

void PrintTo(const Ended& ended, std::ostream* stream) {
  *stream << "exit " << ended.code << "\n--- output\n" << ended.output << "--- errors\n" << ended.errors << "---";
}

Running::Running(const std::vector<std::string>& arguments, const std::map<std::string, std::string>& environment,
                 const std::string& outputFile, const std::string& program) {
  auto [inputRead, inputWrite] = makePipe();
  auto [outputRead, outputWrite] = makePipe();
  auto [errorsRead, errorsWrite] = makePipe();
  std::vector<std::string> words = {program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  const auto argv = pointers(words);
  const auto envp = pointers(variables);
  FileDescriptor file;
  if (!outputFile.empty()) file = FileDescriptor(::open(outputFile.c_str(), O_WRONLY | O_CLOEXEC));
  process_ = ::fork();
  if (process_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(inputRead.get(), STDIN_FILENO);
    ::dup2(file ? file.get() : outputWrite.get(), STDOUT_FILENO);
    ::dup2(errorsWrite.get(), STDERR_FILENO);
    ::execve(argv[0], argv.data(), envp.data());
    ::_exit(127);
  }
  input_ = std::move(inputWrite);
  output_ = std::move(outputRead);
  errors_ = std::move(errorsRead);
}

Running::~Running() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Running::write(std::string_view text) {
  while (!text.empty()) {
    const auto count = ::write(input_.get(), text.data(), text.size());
    if (count < 0) throw std::system_error(errno, std::generic_category(), "write");
    text.remove_prefix(static_cast<std::size_t>(count));
  }
}

bool Running::readSome(std::chrono::milliseconds limit) {
  std::array<pollfd, 2> polled = {
      {{.fd = output_.get(), .events = POLLIN, .revents = 0}, {.fd = errors_.get(), .events = POLLIN, .revents = 0}}};
  if (::poll(polled.data(), polled.size(), static_cast<int>(limit.count())) <= 0) return false;
  const auto take = [](const pollfd& each, FileDescriptor& descriptor, std::string& text) {
    if (each.revents == 0) return;
    std::array<char, 65536> bytes{};
    const auto count = ::read(descriptor.get(), bytes.data(), bytes.size());
    if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
    if (count == 0) descriptor = FileDescriptor();
  };
  take(polled[0], output_, outputText_);
  take(polled[1], errors_, errorText_);
  return true;
}

bool Running::hasLine(std::chrono::milliseconds limit) {
  while (outputText_.find('\n') == std::string::npos) {
    if (!output_ || !readSome(limit)) return false;
  }
  return true;
}

std::string Running::readLine() {
  if (!hasLine(kPatience)) throw std::runtime_error("no line came; errors: " + errorText_);
  const auto end = outputText_.find('\n');
  std::string line = outputText_.substr(0, end);
  outputText_.erase(0, end + 1);
  return line;
}

bool Running::hasEnded(std::chrono::milliseconds limit) {
  while (output_ || errors_) {
    if (!readSome(limit)) return false;
  }
  return true;
}

void Running::signal(int number) const {
  ::kill(process_, number);
}

Ended Running::wait() {
  closeInput();
  while (output_ || errors_) {
    if (!readSome(kPatience)) throw std::runtime_error("the program did not end");
  }
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = -1;
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), outputText_, errorText_};
}

Device::Device() {
  for (const char* name : {"PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"}) {
    if (const char* value = std::getenv(name)) environment[name] = value;
  }
  environment["HOME"] = folder_.path().string();
  environment["LC_ALL"] = "C.UTF-8";
  environment["QUELLAR_DEVICE_ROOT"] = root().string();
}

std::filesystem::path Device::store() const {
  return root() / "var/mobile/Library/Preferences/com.vantorick.quellar2.plist";
}

void Device::writeStore(const std::string& entries) const {
  folder_.write(
      std::filesystem::relative(store(), folder_.path()),
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + entries + "</dict></plist>\n");
}

Ended Device::run(std::vector<std::string> arguments, std::string_view input) const {
  Running program(arguments, environment);
  program.write(input);
  return program.wait();
}

std::unique_ptr<Running> Device::start(std::vector<std::string> arguments) const {
  return std::make_unique<Running>(arguments, environment);
}

std::unique_ptr<Running> Device::startShell(const std::string& line) const {
  return std::make_unique<Running>(std::vector<std::string>{"-c", line, QUELLAR_PROGRAM}, environment, "", "/bin/sh");
}

std::string contents(const std::filesystem::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::ranges::sort(names);
  return names;
}

}  // namespace quellar::tests
