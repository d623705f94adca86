// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/confined_folder.h"

namespace quellar::host::linux {

/// The platform path of the settings bundle.
inline constexpr std::string_view kSettingsBundlePath = "/Library/PreferenceBundles/Quellar.bundle";

/// The folder that stands for the device's file system. Platform paths ("/usr/lib/libtessaly.dylib") are mapped into
/// it, and none leads out of it.
///
/// "/var" and "/private/var" are one folder: a fresh device root gets private/var and a link var to it. Where both are
/// real folders a file is read from the one that has it, var first, and written under var.
///
/// A file of the settings bundle that the device root does not have is taken from the bundle folders, in their order.
class DeviceRoot {
 public:
  /// Takes the folder, which need not exist, and the folders that hold files of the settings bundle.
  explicit DeviceRoot(const std::filesystem::path& folder, const std::vector<std::filesystem::path>& bundleFolders = {},
                      ConfinedFolder::Resolution resolution = ConfinedFolder::Resolution::Kernel);

  /// The folder that the user chose: the option where it is given, else QUELLAR_DEVICE_ROOT, else quellar/device in the
  /// user's data folder (XDG Base Directory Specification). An empty one counts as not given.
  [[nodiscard]] static std::filesystem::path chooseFolder(const std::optional<std::string>& option);

  [[nodiscard]] const std::filesystem::path& folder() const { return root_.path(); }

  /// Opens a file or folder for reading; nothing where there is none. A pipe or device is opened without waiting for
  /// its other side. Throws a FileError where it can't be opened or leads out.
  [[nodiscard]] std::optional<FileDescriptor> openForReading(std::string_view platformPath) const;

  /// The bytes of a regular file, or nothing where there is no file. Throws a FileError where it can't be read, is no
  /// regular file or has more than `limit` bytes.
  [[nodiscard]] std::optional<std::string> contents(std::string_view platformPath, std::size_t limit) const;

  /// Whether there is something at the path; false too for a path that leads out.
  [[nodiscard]] bool exists(std::string_view platformPath) const;

  /// Where in the host's file system the file is that openForReading() opens, free of links; nothing where there is
  /// none. Throws a FileError where the path leads out.
  [[nodiscard]] std::optional<std::filesystem::path> realPath(std::string_view platformPath) const;

  /// The path in the host's file system for messages, as it is mapped for writing; links are not followed.
  [[nodiscard]] std::filesystem::path hostPath(std::string_view platformPath) const;

  /// Where a file is written: its folder, open, and its name there, with all links followed. Nothing where its folder
  /// does not exist. Throws a FileError where the path leads out.
  [[nodiscard]] std::optional<ConfinedFolder::Place> placeForWriting(std::string_view platformPath) const;

  /// The same, and makes the folders that are missing, for their owner alone (0700).
  [[nodiscard]] ConfinedFolder::Place makePlaceForWriting(std::string_view platformPath) const;

 private:
  /// A folder and a path in it where a file may be.
  struct Candidate {
    const ConfinedFolder* folder;
    std::string path;
  };
  [[nodiscard]] std::vector<Candidate> candidates(std::string_view platformPath) const;
  void makeVar() const;

  ConfinedFolder root_;
  std::vector<ConfinedFolder> bundleFolders_;
};

}  // namespace quellar::host::linux
