// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "platform/value.h"

// Another program, which knows nothing of this system but the path of a domain file. It reads and writes property
// lists by a library of its own, so that no reader or recovery of ours judges what ours left.

namespace quellar::tests {

/// The dictionary at the top; nothing where there is no file or no whole property list.
[[nodiscard]] std::optional<platform::Dictionary> parseAsStranger(const std::string& bytes);
[[nodiscard]] std::optional<platform::Dictionary> readAsStranger(const std::filesystem::path& file);

[[nodiscard]] std::string encodeAsStranger(const platform::Dictionary& entries);

/// How much another program cares for power cuts.
enum class Care { FlushesAll, FlushesNothing };

/// Puts a new file into the place of one: written beside it, flushed, renamed, and the folder flushed. No lock is
/// taken. Ends the process where that fails.
void replaceAsStranger(const std::filesystem::path& file, const platform::Dictionary& entries,
                       Care care = Care::FlushesAll);

/// The entry of a page in a domain; nothing where it is not there.
[[nodiscard]] std::optional<platform::Value> pageEntry(const std::optional<platform::Dictionary>& domain,
                                                       std::string_view page, std::string_view key);

}  // namespace quellar::tests
