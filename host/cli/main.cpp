// SPDX-License-Identifier: MIT
#include <cstdio>
#include <exception>
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

enum class Access { Reading, Writing };

/// Whether a trouble of the store makes a command fail. The first write to a corrupt file sets it aside and succeeds.
bool isFatal(const StoreTrouble& trouble, Access access) {
  switch (trouble.kind) {
    case StoreTrouble::Kind::Unreadable:
      return true;
    case StoreTrouble::Kind::Corrupt:
      return access == Access::Reading;
    case StoreTrouble::Kind::Write:
      return access == Access::Writing;
    case StoreTrouble::Kind::Recovered:
    case StoreTrouble::Kind::KeptAside:
    case StoreTrouble::Kind::Resolved:
      return false;
  }
  return true;
}

template <typename... Handlers>
struct Overloaded : Handlers... {
  using Handlers::operator()...;
};

void run(const CommandLine& line) {
  const auto onStore = [&](Access access, auto command) {
    std::optional<StoreTrouble> first;
    {
      linux::Services services(
          {.deviceRoot = line.deviceRoot, .language = std::nullopt, .onTrouble = [&](const StoreTrouble& trouble) {
             if (!first && isFatal(trouble, access)) first = trouble;
           }});
      command(services);
      // What could not be written is tried once more when the services go.
    }
    flush();
    if (first) throw Failure(first->file + ": " + first->cause);
  };
  const auto reading = [&](Detail detail, auto command) {
    onStore(Access::Reading, [&](linux::Services& services) {
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
            onStore(Access::Writing, [&](linux::Services& services) { setValue(command, services); });
          },
          // The descriptions say it all; what the store holds has no part in it.
          [&](const SchemaCommand& command) {
            onStore(Access::Writing, [&](linux::Services& services) {
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
