// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/program.h"
#include "platform/value.h"
#include "tracer.h"

// The programs as others see them, with their system calls watched.

namespace quellar::tests {

/// A domain that other programs left, with other keys on the page that is written and on other pages.
[[nodiscard]] const platform::Dictionary& domainOfOthers();

/// The page, the key, and the switch that the proofs set.
inline constexpr const char* kProofPage = "Status Bar";
inline constexpr const char* kProofPageKey = "StatusBar_Defaults";
inline constexpr const char* kProofSwitch = "disablesAlarmSTBIcon";

/// What a traced run left behind.
struct TracedRun {
  Tracee::End end;
  std::string output;
  std::string errors;
  /// The calls that may be made to fail: none about memory and time, none that tell, none of the sanitizers' probes.
  std::vector<SystemCall> calls;
  /// Of each, whether it has to do with a file or folder of the device root.
  std::vector<bool> isAtStore;
  /// The first of these; what comes before is the start of any program.
  std::size_t firstAtStore = 0;
  /// Whether a file has come into the domain file's place.
  bool isReplaced = false;
};

/// Runs the program under the tracer. Call number `failing` gives `error`; a number beyond the calls lets all go on.
/// `atOutput` is asked before each write to standard output. A program that takes too long is ended by SIGALRM.
[[nodiscard]] TracedRun runTraced(const Device& device, const std::vector<std::string>& arguments,
                                  const std::string& input, std::size_t failing, int error,
                                  const std::function<void(const std::string& bytes)>& atOutput = {});

/// Has the shim (shim.cpp) loaded into the programs that get this environment.
void preload(std::map<std::string, std::string>& environment);

/// What is wrong with the domain file of a device: it is no whole list, or entries of others are missing.
[[nodiscard]] std::string faultsOfOthers(const Device& device);

/// The switch as the file has it.
[[nodiscard]] std::optional<platform::Value> storedSwitch(const Device& device);

/// The lines of a session's output that close a command.
[[nodiscard]] std::vector<std::string> closingLines(const std::string& output);

}  // namespace quellar::tests
