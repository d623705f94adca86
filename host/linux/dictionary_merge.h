// SPDX-License-Identifier: MIT
#pragma once

#include <optional>

#include "platform/value.h"

namespace quellar::host::linux {

/// Which of two changes of one entry counts.
enum class Precedence { Ours, Theirs };

/// What is to be stored where `base` was changed to `ours` here, and to `stored` by another program meanwhile.
///
/// Of two dictionaries the entries are merged: those that changed here alone become ours, all others stay as stored.
/// Values of other types are taken as a whole. `precedence` decides where both sides changed the same.
[[nodiscard]] std::optional<platform::Value> mergedValue(const std::optional<platform::Value>& base,
                                                         const std::optional<platform::Value>& ours,
                                                         const std::optional<platform::Value>& stored,
                                                         Precedence precedence);

}  // namespace quellar::host::linux
