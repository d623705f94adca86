// SPDX-License-Identifier: MIT
#include <algorithm>
#include <charconv>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "comparison.h"
#include "figures.h"
#include "settings_peers.h"

namespace quellar::benches {

namespace {

constexpr int kRounds = 300;

struct Command {
  std::vector<std::string> words;
  Sample times;
  /// What it is, where its words don't tell.
  std::string name = {};

  [[nodiscard]] std::string text() const {
    if (!name.empty()) return name;
    const std::string program = words.front().substr(words.front().rfind('/') + 1);
    return program + " " + words[1];
  }
};

/// The instructions that a program executes in user space, from its first, which is the dynamic linker's; its
/// children's too.
double instructionsOf(const Command& command, const PeerHome& home) {
  std::vector<std::string> words = {"valgrind", "--tool=callgrind", "--trace-children=yes",
                                    "--callgrind-out-file=/dev/null"};
  words.insert(words.end(), command.words.begin(), command.words.end());
  Program program(words, home.variables(), Program::Output::Errors);
  const std::string told = program.readAll();
  program.waitForSuccess();
  constexpr std::string_view kCollected = "Collected : ";
  double sum = 0;
  for (std::size_t at = told.find(kCollected); at != std::string::npos; at = told.find(kCollected, at + 1)) {
    double count = 0;
    std::from_chars(told.data() + at + kCollected.size(), told.data() + told.size(), count);
    sum += count;
  }
  if (sum <= 0) throw std::runtime_error("valgrind tells no instructions of " + command.text());
  return sum;
}

}  // namespace

void compareCommands() {
  describeMachine(std::cout, settingsPackages());
  const PeerHome home(places().back(), PeerHome::Service::Dconf);
  const std::string panel = (programFolder() / "quellar").string();
  const std::string dconfKey = "/com/vantorick/quellar/bench/flag";
  const std::string schema = "com.vantorick.quellar.bench";
  std::vector<Command> commands = {
      {{panel, "get", "status-bar", "disablesCarrierSTBIcon"}, {}},
      {{"gsettings", "get", schema, "flag"}, {}},
      {{"dconf", "read", dconfKey}, {}},
      {{"kreadconfig5", "--file", "quellarbenchrc", "--group", "page", "--key", "flag"}, {}},
      {{panel, "set", "status-bar", "disablesCarrierSTBIcon", "on"}, {}},
      {{"gsettings", "set", schema, "flag", "true"}, {}},
      {{"dconf", "write", dconfKey, "true"}, {}},
      {{"kwriteconfig5", "--file", "quellarbenchrc", "--group", "page", "--key", "flag", "true"}, {}},
      // What it takes to be started, step by step.
      {{panel, "--version"}, {}},
      {{(programFolder() / "quellar-bench-nothing-linked").string()}, {}, "nothing, with the libraries of quellar"},
      {{(programFolder() / "quellar-bench-nothing").string()}, {}, "nothing, with the C++ library"},
  };
  constexpr std::size_t kFirstWrite = 4;
  for (int round = 0; round < kRounds; ++round) {
    for (Command& command : commands) command.times.add(timeOf(command.words, home.variables()));
  }
  std::cout << "from the call until the program has ended, " << kRounds
            << " calls each in turns; instructions by callgrind, from the dynamic linker's first:\n\n";
  std::vector<std::vector<std::string>> rows = {
      {"command", "median", "99th of 100", "/ gsettings", "million instructions", "/ gsettings"}};
  const auto millions = [&](const Command& command) { return instructionsOf(command, home) / 1e6; };
  const std::vector<double> peers = {millions(commands[1]), millions(commands[kFirstWrite + 1])};
  for (std::size_t place = 0; place < commands.size(); ++place) {
    const Command& command = commands[place];
    const std::size_t kind = place < kFirstWrite ? 0 : 1;
    const Command& peer = commands[kind * kFirstWrite + 1];
    const double count = millions(command);
    rows.push_back({command.text(), shownTime(command.times.median()), shownTime(command.times.quantile(0.99)),
                    shownRatio(command.times.median() / peer.times.median()), shownRatio(count),
                    shownRatio(count / peers[kind])});
  }
  printTable(std::cout, rows);
}

}  // namespace quellar::benches
