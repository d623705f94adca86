// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "report.h"
#include "suite.h"

int main(int argc, char** argv) {
  using namespace quellar::benches;
  // Nothing here reaches the user's own bus; what needs one starts it.
  ::unsetenv("DBUS_SESSION_BUS_ADDRESS");
  ::unsetenv("XDG_RUNTIME_DIR");

  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  Suite suite;
  addPageRows(suite);
  addSwitchWrite(suite);
  addSwatch(suite);
  addBackdrops(suite);
  addDragFrames(suite);
  addListFrames(suite);
  Report report(suite);
  benchmark::RunSpecifiedBenchmarks(&report);
  benchmark::Shutdown();
  return report.hasErrors() ? 1 : 0;
}
