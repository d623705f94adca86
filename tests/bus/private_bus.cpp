// SPDX-License-Identifier: MIT
#include "private_bus.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace quellar::tests {

namespace {

std::vector<std::string> daemonCommand(const TemporaryFolder& folder) {
  const std::filesystem::path configuration = folder.write(
      "bus.conf", "<busconfig><type>session</type><listen>unix:path=" + (folder.path() / "socket").string() +
                      "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                      "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                      "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
  return {"dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--nopidfile", "--print-address"};
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const std::string& errors) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe2");
  output_ = host::linux::FileDescriptor(ends[0]);
  const host::linux::FileDescriptor input(ends[1]);
  std::vector<std::string> words = command;
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  process_ = ::fork();
  if (process_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(ends[1], STDOUT_FILENO);
    // A service that outlives it must not keep the test's own output open.
    ::dup2(::open(errors.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
}

Process::~Process() {
  kill();
}

std::string Process::readLine() {
  for (;;) {
    if (const auto end = buffer_.find('\n'); end != std::string::npos) {
      const std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    pollfd polled = {.fd = output_.get(), .events = POLLIN, .revents = 0};
    if (::poll(&polled, 1, 10000) <= 0) throw std::runtime_error("no output within ten seconds");
    std::array<char, 4096> bytes{};
    const auto count = ::read(output_.get(), bytes.data(), bytes.size());
    if (count <= 0) throw std::runtime_error("the output has ended");
    buffer_.append(bytes.data(), static_cast<std::size_t>(count));
  }
}

void Process::signal(int number) const {
  ::kill(process_, number);
}

void Process::kill() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
}

PrivateBus::PrivateBus() {
  restart();
}

void PrivateBus::restart() {
  daemon_.reset();
  std::filesystem::remove(folder_.path() / "socket");
  daemon_ = std::make_unique<Process>(daemonCommand(folder_));
  address_ = daemon_->readLine();
  // The identity that follows the path differs from daemon to daemon.
  address_.erase(address_.find(','));
}

}  // namespace quellar::tests
