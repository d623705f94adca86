// SPDX-License-Identifier: MIT
#include <cstdio>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/cli/command_line.h"
#include "host/cli/commands.h"
#include "host/cli/output.h"
#include "host/cli/panel_host.h"
#include "host/linux/process_start.h"
#include "host/linux/services.h"
#include "platform/printable.h"

namespace quellar::host::cli {
namespace {

using linux::StoreTrouble;
using Detail = PanelHost::Detail;

/// Keeps the first trouble of the store of one kind.
class FirstTrouble {
 public:
  explicit FirstTrouble(StoreTrouble::Kind kind) : kind_(kind) {}

  void note(const StoreTrouble& trouble) {
    const std::lock_guard guard(mutex_);
    if (trouble.kind == kind_ && !first_) first_ = trouble;
  }

  /// Throws it as a Failure, if there was one.
  void tell() {
    const std::lock_guard guard(mutex_);
    if (first_) throw Failure(first_->file + ": " + first_->cause);
  }

 private:
  const StoreTrouble::Kind kind_;
  std::mutex mutex_;
  std::optional<StoreTrouble> first_;
};

template <typename... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};

void run(const CommandLine& line) {
  const auto onStore = [&](StoreTrouble::Kind kind, auto command) {
    FirstTrouble trouble(kind);
    {
      linux::Services services({.deviceRoot = line.deviceRoot,
                                .language = std::nullopt,
                                .onTrouble = [&trouble](const StoreTrouble& each) { trouble.note(each); }});
      command(services);
      // The store is flushed to the storage device when the services go, which may fail too.
    }
    flush();
    trouble.tell();
  };
  const auto reading = [&](Detail detail, auto command) {
    onStore(StoreTrouble::Kind::Read, [&](linux::Services& services) {
      PanelHost host(services, detail);
      command(host);
    });
  };

  std::visit(
      Overloaded{
          [](const PrintText& text) {
            print(text.text);
            flush();
          },
          [&](const PagesCommand& command) {
            reading(Detail::Bare, [&](PanelHost& host) { printPages(command, host); });
          },
          [&](const RowsCommand& command) {
            reading(Detail::Full, [&](PanelHost& host) { printRows(command, host); });
          },
          [&](const GetCommand& command) {
            reading(Detail::Bare, [&](PanelHost& host) { printValue(command, host); });
          },
          [&](const SetCommand& command) {
            onStore(StoreTrouble::Kind::Write, [&](linux::Services& services) { setValue(command, services); });
          },
          // The descriptions say it all; what the store holds has no part in it.
          [&](const SchemaCommand& command) {
            onStore(StoreTrouble::Kind::Write, [&](linux::Services& services) {
              PanelHost host(services, Detail::Bare);
              printSchema(command, host);
            });
          },
          [](const WatchCommand& command) { watch(command); },
          [&](const SessionCommand& command) {
            linux::Services services({.deviceRoot = line.deviceRoot, .language = command.language, .onTrouble = {}});
            runSession(command, services);
          },
      },
      line.command);
}

int fail(const std::exception& error, int code) {
  std::fprintf(stderr, "quellar: %s\n", platform::printable(error.what()).c_str());
  return code;
}

}  // namespace
}  // namespace quellar::host::cli

int main(int count, char** arguments) {
  using namespace quellar::host::cli;
  quellar::host::linux::prepareProcess();
  try {
    run(parseCommandLine(std::vector<std::string>(arguments + 1, arguments + count)));
    return 0;
  } catch (const UsageError& error) {
    return fail(error, 2);
  } catch (const std::exception& error) {
    return fail(error, 1);
  }
}
