// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "host/cli/panel_host.h"
#include "host/linux/file_descriptor.h"
#include "host/linux/services.h"
#include "suite.h"
#include "support/temporary_folder.h"

namespace quellar::benches {

/// The panel with its real store, on a device root of its own that is removed at the end.
class PanelOnFile {
 public:
  /// Takes where the device root is made, for how many pages the domain file holds settings already (the status bar
  /// page and others of its size), and the address of the bus; "" for none.
  explicit PanelOnFile(const Place& place, int pagesStored = 1, const std::string& busAddress = "");
  PanelOnFile(const PanelOnFile&) = delete;
  PanelOnFile& operator=(const PanelOnFile&) = delete;

  /// The folder that stands for the device.
  [[nodiscard]] const std::filesystem::path& deviceRoot() const { return folder_.path(); }
  [[nodiscard]] std::filesystem::path domainFile() const;

  [[nodiscard]] platform::Platform& platform() { return host_->platform(); }
  /// The services of another process, on the same device root and without a bus.
  [[nodiscard]] std::unique_ptr<host::linux::Services> makeOtherStore() const;
  /// Puts other bytes into the domain file's place.
  void replaceDomain(std::string_view bytes) const;

  /// A new status bar page.
  [[nodiscard]] std::shared_ptr<platform::PSListController> makePage();
  /// Does what a tap on a switch of a page does: on becomes off and off becomes on.
  static void flip(platform::PSListController& page, platform::PSSpecifier& row);

 private:
  tests::TemporaryFolder folder_;
  std::unique_ptr<host::linux::Services> services_;
  std::unique_ptr<host::cli::PanelHost> host_;
};

/// The least that a safe replacement of a file takes: the bytes of a domain file, written under a temporary name in its
/// folder and renamed over another file there. Nothing is flushed to the device, as within a write of the store.
class BareWrite {
 public:
  explicit BareWrite(const std::filesystem::path& domainFile);
  void run();

 private:
  std::string bytes_;
  host::linux::FileDescriptor folder_;
};

}  // namespace quellar::benches
