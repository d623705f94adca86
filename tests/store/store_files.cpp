// SPDX-License-Identifier: MIT
#include "store_files.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "host/linux/property_list/property_list.h"

namespace quellar::tests {

namespace {

std::string bigEndian(std::uint64_t number, int bytes) {
  std::string result;
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
    result += static_cast<char>(static_cast<std::uint8_t>(number >> shift));
  }
  return result;
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "quellar-store-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::system_error(errno, std::generic_category(), name);
  path_ = std::filesystem::canonical(name);
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

ScopedVariable::ScopedVariable(const char* name, const char* value) : name_(name) {
  const char* former = std::getenv(name);
  wasSet_ = former != nullptr;
  if (wasSet_) former_ = former;
  if (value != nullptr) {
    ::setenv(name, value, 1);
  } else {
    ::unsetenv(name);
  }
}

ScopedVariable::~ScopedVariable() {
  if (wasSet_) {
    ::setenv(name_.c_str(), former_.c_str(), 1);
  } else {
    ::unsetenv(name_.c_str());
  }
}

void writeFile(const std::filesystem::path& file, std::string_view bytes) {
  std::filesystem::create_directories(file.parent_path());
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream.close();
  if (!stream) throw std::runtime_error("can't write " + file.string());
}

void replaceFile(const std::filesystem::path& file, std::string_view bytes) {
  const std::filesystem::path next = file.string() + ".next";
  writeFile(next, bytes);
  std::filesystem::rename(next, file);
}

std::string readFile(const std::filesystem::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("can't read " + file.string());
  std::ostringstream bytes;
  bytes << stream.rdbuf();
  return bytes.str();
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

mode_t modeOf(const std::filesystem::path& file) {
  struct stat status{};
  if (::lstat(file.c_str(), &status) != 0) throw std::system_error(errno, std::generic_category(), file.string());
  return status.st_mode & 07777U;
}

ino_t inodeOf(const std::filesystem::path& file) {
  struct stat status{};
  if (::lstat(file.c_str(), &status) != 0) throw std::system_error(errno, std::generic_category(), file.string());
  return status.st_ino;
}

std::string plist(const platform::Dictionary& dictionary) {
  return std::string(host::linux::encodePropertyList(dictionary).bytes());
}

std::string binaryPlist(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::vector<std::size_t> offsets;
  for (const std::string& object : objects) {
    offsets.push_back(bytes.size());
    bytes += object;
  }
  const std::size_t table = bytes.size();
  for (const std::size_t offset : offsets) bytes += bigEndian(offset, 4);
  bytes += std::string(6, '\0') + '\x04' + '\x02';
  return bytes + bigEndian(objects.size(), 8) + bigEndian(0, 8) + bigEndian(table, 8);
}

std::string reference(std::size_t object) {
  return bigEndian(object, 2);
}

}  // namespace quellar::tests
