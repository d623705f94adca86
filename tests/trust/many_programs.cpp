// SPDX-License-Identifier: MIT
#include "many_programs.h"

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <thread>

namespace quellar::tests {

using Clock = std::chrono::steady_clock;

Child::Child(const std::function<int(int output)>& work) : process_(::fork()) {
  if (process_ != 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  try {
    ::_exit(work(output_.writing.get()));
  } catch (const std::exception& error) {
    tellParent(output_.writing.get(), std::string("trouble ") + error.what());
    ::_exit(4);
  }
}

Child::~Child() {
  if (process_ < 0) return;
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

const std::string& Child::told() {
  told_ += output_.contents();
  return told_;
}

std::optional<int> Child::endsWithin(Clock::duration limit) {
  for (const auto until = Clock::now() + limit; Clock::now() < until;
       std::this_thread::sleep_for(std::chrono::milliseconds(2))) {
    told();
    int status = 0;
    if (::waitpid(process_, &status, WNOHANG) != process_) continue;
    process_ = -1;
    told();
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return std::nullopt;
}

void tellParent(int output, const std::string& line) {
  const std::string bytes = line + "\n";
  if (::write(output, bytes.data(), bytes.size()) < 0) ::_exit(3);
}

}  // namespace quellar::tests
