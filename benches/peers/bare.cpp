// SPDX-License-Identifier: MIT

// The least that a safe write with a notification takes: the bytes of a domain file with one switch, written under a
// temporary name and renamed, signals by the bus library alone, and in the other process one read of the file.
//
// usage: quellar-bench-bare write|read FOLDER SIGNALS

#include <fcntl.h>
#include <sdbus-c++/sdbus-c++.h>
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "host/linux/file_descriptor.h"
#include "host/linux/property_list/property_list.h"
#include "peer.h"

namespace {

using quellar::host::linux::FileDescriptor;

std::string domainWith(bool value) {
  using quellar::platform::Dictionary;
  const Dictionary domain = {{"StatusBar_Defaults", Dictionary{{"disablesCarrierSTBIcon", value}}}};
  return std::string(quellar::host::linux::encodePropertyList(domain).bytes());
}

FileDescriptor openFolder(const char* path) {
  FileDescriptor folder(::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) throw std::runtime_error("can't open the folder");
  return folder;
}

void replace(int folder, std::string_view bytes) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
  const FileDescriptor file(::openat(folder, "bare.tmp", kFlags, S_IRUSR | S_IWUSR));
  const bool isWritten = file && ::write(file.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  if (!isWritten || ::renameat(folder, "bare.tmp", folder, "bare.plist") != 0) {
    throw std::runtime_error("can't write bare.plist");
  }
}

std::string contents(int folder) {
  const FileDescriptor file(::openat(folder, "bare.plist", O_RDONLY | O_CLOEXEC));
  std::array<char, 4096> bytes{};
  const ssize_t size = file ? ::read(file.get(), bytes.data(), bytes.size()) : 0;
  return {bytes.data(), static_cast<std::size_t>(size < 0 ? 0 : size)};
}

int run(std::string_view role, const char* path, int signals) {
  const FileDescriptor folder = openFolder(path);
  const auto connection = sdbus::createSessionBusConnection();
  const std::array<std::string, 2> domains = {domainWith(false), domainWith(true)};
  if (role == "read") {
    int received = 0;
    const auto match = connection->addMatch(
        "type='signal',path='/com/vantorick/Notifications',interface='com.vantorick.Notifications1'",
        [&](sdbus::Message& message) {
          std::string name;
          message >> name;
          if (++received % signals == 0) quellar::benches::tellRead(contents(folder.get()) == domains[1]);
        });
    quellar::benches::printLine("ready");
    connection->enterEventLoop();
    return 0;
  }
  const auto object = sdbus::createObject(*connection, "/com/vantorick/Notifications");
  // Waits until the bus has answered; until then the library only queues.
  static_cast<void>(connection->getUniqueName());
  const auto write = [&](bool value) {
    replace(folder.get(), domains[value ? 1 : 0]);
    for (int number = 0; number < signals; ++number) {
      sdbus::Signal signal = object->createSignal("com.vantorick.Notifications1", "Darwin");
      signal << std::string("com.vantorick.quellar2.settings");
      object->emitSignal(signal);
    }
  };
  const auto flush = [&] {
    const FileDescriptor file(::openat(folder.get(), "bare.plist", O_RDONLY | O_CLOEXEC));
    if (::fsync(file.get()) != 0 || ::fsync(folder.get()) != 0) throw std::runtime_error("can't flush");
  };
  return quellar::benches::serveWrites(write, flush);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  try {
    return run(argv[1], argv[2], std::stoi(argv[3]));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quellar-bench-bare: %s\n", error.what());
    return 1;
  }
}
