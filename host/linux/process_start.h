// SPDX-License-Identifier: MIT
#pragma once

namespace quellar::host::linux {

/// What each program does before anything else. A limit of the size of files is an error of the write (EFBIG) instead
/// of the program's end. Standard descriptors that are closed are opened on /dev/null, so that no file of ours gets
/// their numbers and then what others print; a write to them fails as it does to a closed one.
void prepareProcess();

}  // namespace quellar::host::linux
