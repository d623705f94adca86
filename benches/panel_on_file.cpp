// SPDX-License-Identifier: MIT
#include "panel_on_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "frame/names.h"

namespace quellar::benches {

namespace {

constexpr const char* kPage = "KVQuellarStatusBarListController";
constexpr const char* kBusVariable = "DBUS_SESSION_BUS_ADDRESS";

/// The services of a device root, on a bus of an address.
std::unique_ptr<host::linux::Services> makeServices(const std::filesystem::path& deviceRoot,
                                                    const std::string& busAddress) {
  // They take the bus of the environment.
  ::setenv(kBusVariable, busAddress.c_str(), 1);
  auto services = std::make_unique<host::linux::Services>(
      host::linux::ServiceOptions{.deviceRoot = deviceRoot.string(), .language = "en"});
  ::unsetenv(kBusVariable);
  if (!busAddress.empty() && !services->bus.waitUntilConnected(std::chrono::seconds(10))) {
    throw std::runtime_error("the message bus does not answer");
  }
  return services;
}

/// What a page stores once all of its switches were used.
platform::Dictionary settingsOf(platform::PSListController& page) {
  platform::Dictionary settings;
  for (const auto& row : page.specifiers()) {
    if (row->cellType() == platform::PSCellType::PSSwitchCell) settings[row->stringForKey("key")] = false;
  }
  return settings;
}

std::string contentsOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace

PanelOnFile::PanelOnFile(const Place& place, int pagesStored, const std::string& busAddress)
    : folder_(place.folder),
      services_(makeServices(folder_.path(), busAddress)),
      host_(std::make_unique<host::cli::PanelHost>(*services_, host::cli::PanelHost::Detail::Full)) {
  const platform::Dictionary settings = settingsOf(*makePage());
  for (int page = 0; page < pagesStored; ++page) {
    const std::string key = page == 0 ? "StatusBar_Defaults" : "Page" + std::to_string(page) + "_Defaults";
    services_->preferences.setAppValue(key, settings, frame::kSettingsDomain);
  }
}

std::filesystem::path PanelOnFile::domainFile() const {
  return services_->deviceRoot.hostPath("/var/mobile/Library/Preferences/" + std::string(frame::kSettingsDomain) +
                                        ".plist");
}

std::unique_ptr<host::linux::Services> PanelOnFile::makeOtherStore() const {
  return makeServices(folder_.path(), "");
}

void PanelOnFile::replaceDomain(std::string_view bytes) const {
  const std::filesystem::path file = domainFile();
  const std::filesystem::path next = file.string() + ".next";
  std::ofstream stream(next, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) throw std::runtime_error("can't write " + next.string());
  std::filesystem::rename(next, file);
}

std::shared_ptr<platform::PSListController> PanelOnFile::makePage() {
  return host_->makePage(host_->entryNamed(kPage));
}

void PanelOnFile::flip(platform::PSListController& page, platform::PSSpecifier& row) {
  const auto stored = row.getter()(row);
  page.userSetsValue(row, !(stored && stored->boolValue()));
}

BareWrite::BareWrite(const std::filesystem::path& domainFile)
    : bytes_(contentsOf(domainFile)),
      folder_(::open(domainFile.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (!folder_) throw std::system_error(errno, std::generic_category(), domainFile.parent_path());
}

void BareWrite::run() {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  const host::linux::FileDescriptor file(::openat(folder_.get(), "bare.tmp", kFlags, S_IRUSR | S_IWUSR));
  const bool isWritten =
      file && ::write(file.get(), bytes_.data(), bytes_.size()) == static_cast<ssize_t>(bytes_.size());
  if (!isWritten || ::renameat(folder_.get(), "bare.tmp", folder_.get(), "bare.plist") != 0) {
    throw std::system_error(errno, std::generic_category(), "bare.plist");
  }
}

}  // namespace quellar::benches
