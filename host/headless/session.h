// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "host/headless/headless_host.h"
#include "host/headless/json.h"

namespace quellar::host::headless {

/// A longer line is refused as a whole.
inline constexpr std::size_t kLongestLine = std::size_t{1} << 20U;

/// The scripted session: the real pages, driven by one JSON object a line.
///
/// Each line fed gives zero or more event lines, in the order in which things happen, then exactly one closing line:
/// {"ok":true, ...} or {"error":"..."}. A command that fails changes nothing. Every field of a command is checked, also
/// that no other one stands beside them.
class Session {
 public:
  /// Is given each line of output, without its line end.
  using Output = std::function<void(std::string_view line)>;
  /// Says which write of the store has failed since it was last asked ("<file>: <cause>"), or nothing.
  using FailedWrite = std::function<std::optional<std::string>()>;

  /// The services must outlive the session. Posts reach their centres, where they have them, and the output.
  Session(const DeviceOptions& device, Services services, Output output, FailedWrite failedWrite = {});

  /// Runs the command of one line of input, without its line end. Of a line that is longer than kLongestLine no more
  /// than one byte beyond it is needed.
  void feed(std::string_view line);

  /// What the session drives.
  [[nodiscard]] HeadlessHost& host() { return host_; }

 private:
  struct Row {
    platform::PSListController& page;
    std::size_t index;
    /// Held, because what a command does may take the row off the list.
    platform::PSSpecifier::Pointer specifier;
    /// 'row 3 ("Enable")', for messages.
    [[nodiscard]] std::string described() const;
    [[nodiscard]] platform::Control control() const;
  };
  struct Command;
  static const std::vector<Command>& commands();

  Json run(std::string_view line);

  // Each runs one command; what it returns joins the closing line.
  Json open(const Json& fields);
  Json back(const Json& fields);
  Json rows(const Json& fields);
  Json inspect(const Json& fields);
  Json screen(const Json& fields);
  Json set(const Json& fields);
  Json drag(const Json& fields);
  Json step(const Json& fields);
  Json tap(const Json& fields);
  Json popup(const Json& fields);
  Json accessory(const Json& fields);
  Json type(const Json& fields);
  Json press(const Json& fields);
  Json edit(const Json& fields);
  Json pressReturn(const Json& fields);
  Json bar(const Json& fields);
  Json pick(const Json& fields);
  Json style(const Json& fields);
  Json advance(const Json& fields);
  Json stored(const Json& fields);

  [[nodiscard]] platform::PSListController& topList();
  [[nodiscard]] const platform::Dialog& dialog();
  [[nodiscard]] Row rowOf(const Json& fields);
  /// The same, of a row that the user can use now.
  [[nodiscard]] Row enabledRowOf(const Json& fields);

  Output output_;
  FailedWrite failedWrite_;
  HeadlessHost host_;
};

}  // namespace quellar::host::headless
