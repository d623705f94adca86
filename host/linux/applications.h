// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "host/linux/languages.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// The folders that may hold data of applications, the user's own first: XDG_DATA_HOME (~/.local/share) and those of
/// XDG_DATA_DIRS (/usr/local/share, /usr/share). Relative ones are left out, as the XDG Base Directory Specification
/// says.
[[nodiscard]] std::vector<std::filesystem::path> dataFolders(const Environment& environment = processEnvironment());

/// The applications of the desktop entries in the "applications" folders of data folders, after the Desktop Entry
/// Specification: the entry of an earlier folder replaces one of the same id in a later one, also where it only hides
/// it; Hidden and NoDisplay entries and those that are no applications are left out, and so are files that can't be
/// read as a desktop entry. Sorted by name as the user's language sorts,
/// without regard to case, then by id. The folders are read with each call.
class DesktopApplications final : public platform::Applications {
 public:
  /// Takes the data folders, the first one counting most, and the user's languages as `userLanguages` gives them.
  DesktopApplications(std::vector<std::filesystem::path> dataFolders, const std::vector<std::string>& languages);

  [[nodiscard]] std::vector<platform::Application> installedApplications() override;

 private:
  std::vector<std::filesystem::path> dataFolders_;
  /// The user's first language, whose order of words is that of the list.
  std::string language_;
  /// The names of localised keys, best first: "Name[pt_BR]", "Name[pt]", "Name".
  std::vector<std::string> nameKeys_;
};

}  // namespace quellar::host::linux
