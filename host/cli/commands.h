// SPDX-License-Identifier: MIT
#pragma once

#include "host/cli/command_line.h"
#include "host/cli/panel_host.h"
#include "host/linux/services.h"

// The commands of the program. Each prints what it has to tell and throws a UsageError for a wrong call or a Failure
// for what went wrong; troubles of the store are told by its listener.

namespace quellar::host::cli {

void printPages(const PagesCommand& command, PanelHost& host);
void printRows(const RowsCommand& command, PanelHost& host);
void printValue(const GetCommand& command, PanelHost& host);
void printSchema(const SchemaCommand& command, PanelHost& host);

/// Changes a row as its control in the window does, and waits until all that follows is done and on the bus.
void setValue(const SetCommand& command, linux::Services& services);

/// Runs until SIGINT or SIGTERM. Throws a Failure where there is no bus, or once it is gone.
void watch(const WatchCommand& command);

/// Runs the commands of standard input until it ends.
void runSession(const SessionCommand& command, linux::Services& services);

}  // namespace quellar::host::cli
