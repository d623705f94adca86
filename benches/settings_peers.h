// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "bus/private_bus.h"
#include "program.h"
#include "suite.h"
#include "support/temporary_folder.h"

namespace quellar::benches {

/// What other settings systems need to run apart from the user's: a bus, folders, a schema with one boolean, dconf's
/// service. Its variables are for every program that is to live there.
class PeerHome {
 public:
  enum class Service { None, Dconf };

  PeerHome(const Place& place, Service service);

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_.path(); }
  [[nodiscard]] const std::vector<std::string>& variables() const { return variables_; }
  [[nodiscard]] pid_t busProcess() { return bus_.daemon().id(); }

 private:
  tests::TemporaryFolder folder_;
  tests::PrivateBus bus_;
  std::vector<std::string> variables_;
  std::unique_ptr<Program> dconf_;
};

/// The Debian packages of the peers, for their versions.
[[nodiscard]] const std::vector<std::string>& settingsPackages();

}  // namespace quellar::benches
