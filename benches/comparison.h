// SPDX-License-Identifier: MIT
#pragma once

namespace quellar::benches {

// The parts of the comparison, each in the file of its name. Each prints what it found, and throws where a peer can't
// be measured.

/// A write until another process has its notification and has read the value again, beside other settings systems.
void compareNotified();
/// The command line beside those of other settings systems.
void compareCommands();
/// The window beside a Qt Quick Controls window and two desktops' settings windows.
void compareWindows();
/// What operations cost as domains, pages and listeners grow. Draws its pictures into a folder.
void measureGrowth(const char* pictures);

}  // namespace quellar::benches
