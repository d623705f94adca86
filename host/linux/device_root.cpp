// SPDX-License-Identifier: MIT
#include "host/linux/device_root.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace quellar::host::linux {

namespace {

/// The path as the host writes it: one slash before each name, no "." and nothing at its end; ".." stays.
std::string tidied(std::string_view path) {
  std::string result;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string_view name = path.substr(0, end);
    if (!name.empty() && name != ".") result.append("/").append(name);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return result;
}

/// What of `path` lies below `folder` ("" for the folder itself), or nothing. Both are tidied.
std::optional<std::string> partBelow(std::string_view path, std::string_view folder) {
  if (!path.starts_with(folder)) return std::nullopt;
  path.remove_prefix(folder.size());
  if (!path.empty() && path.front() != '/') return std::nullopt;
  return std::string(path);
}

/// The part of a tidied path below /var, by either of its two names; nothing for another path.
std::optional<std::string> partBelowVar(const std::string& path) {
  const std::optional<std::string> part = partBelow(path, "/var");
  return part ? part : partBelow(path, "/private/var");
}

/// Whether a path goes above its start at any point.
bool climbsOut(std::string_view path) {
  const std::filesystem::path names(path);
  int depth = 0;
  return std::any_of(names.begin(), names.end(), [&](const std::filesystem::path& name) {
    if (name == "/") return false;
    depth += name == ".." ? -1 : 1;
    return depth < 0;
  });
}

std::filesystem::path homeFolder() {
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return home;
  const passwd* user = ::getpwuid(::getuid());
  return user != nullptr ? user->pw_dir : "/";
}

}  // namespace

DeviceRoot::DeviceRoot(const std::filesystem::path& folder, const std::vector<std::filesystem::path>& bundleFolders,
                       ConfinedFolder::Resolution resolution)
    : root_(folder, resolution) {
  for (const std::filesystem::path& bundleFolder : bundleFolders) bundleFolders_.emplace_back(bundleFolder, resolution);
}

std::filesystem::path DeviceRoot::chooseFolder(const std::optional<std::string>& option) {
  if (option && !option->empty()) return *option;
  const char* variable = std::getenv("QUELLAR_DEVICE_ROOT");
  if (variable != nullptr && *variable != '\0') return variable;
  // A relative XDG_DATA_HOME is to be ignored (XDG Base Directory Specification).
  const char* data = std::getenv("XDG_DATA_HOME");
  const bool isDataGiven = data != nullptr && *data == '/';
  const std::filesystem::path dataFolder = isDataGiven ? std::filesystem::path(data) : homeFolder() / ".local/share";
  return dataFolder / "quellar/device";
}

std::vector<DeviceRoot::Candidate> DeviceRoot::candidates(std::string_view platformPath) const {
  const std::string path = tidied(platformPath);
  if (const std::optional<std::string> part = partBelowVar(path)) {
    return {{&root_, "var" + *part}, {&root_, "private/var" + *part}};
  }
  std::vector<Candidate> result = {{&root_, path}};
  if (const std::optional<std::string> part = partBelow(path, kSettingsBundlePath)) {
    if (climbsOut(*part)) throw FileError(hostPath(platformPath), "leads out of the settings bundle");
    for (const ConfinedFolder& folder : bundleFolders_) result.push_back({&folder, *part});
  }
  return result;
}

std::optional<FileDescriptor> DeviceRoot::openForReading(std::string_view platformPath) const {
  for (const Candidate& candidate : candidates(platformPath)) {
    std::optional<FileDescriptor> file = candidate.folder->open(candidate.path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
    if (file) return file;
  }
  return std::nullopt;
}

std::optional<std::string> DeviceRoot::contents(std::string_view platformPath, std::size_t limit) const {
  const std::optional<FileDescriptor> file = openForReading(platformPath);
  if (!file) return std::nullopt;
  const std::filesystem::path name = hostPath(platformPath);
  struct stat status{};
  if (retried([&] { return ::fstat(file->get(), &status); }) != 0) throwErrno(name);
  if (!S_ISREG(status.st_mode)) throw FileError(name, "is not a regular file");
  std::optional<std::string> bytes = readWhole(file->get(), limit, name);
  if (!bytes) throw FileError(name, "is larger than " + std::to_string(limit) + " bytes");
  return bytes;
}

bool DeviceRoot::exists(std::string_view platformPath) const {
  try {
    const std::vector<Candidate> places = candidates(platformPath);
    return std::any_of(places.begin(), places.end(), [](const Candidate& candidate) {
      return candidate.folder->open(candidate.path, O_PATH).has_value();
    });
  } catch (const FileError&) {
    return false;
  }
}

std::optional<std::filesystem::path> DeviceRoot::realPath(std::string_view platformPath) const {
  for (const Candidate& candidate : candidates(platformPath)) {
    std::optional<std::filesystem::path> path = candidate.folder->realPath(candidate.path);
    if (path) return path;
  }
  return std::nullopt;
}

std::filesystem::path DeviceRoot::hostPath(std::string_view platformPath) const {
  std::string path = tidied(platformPath);
  if (const std::optional<std::string> part = partBelowVar(path)) path = "/var" + *part;
  return path.empty() ? root_.path() : root_.path() / path.substr(1);
}

std::optional<ConfinedFolder::Place> DeviceRoot::placeForWriting(std::string_view platformPath) const {
  return root_.locate(candidates(platformPath).front().path);
}

ConfinedFolder::Place DeviceRoot::makePlaceForWriting(std::string_view platformPath) const {
  std::optional<ConfinedFolder::Place> place = placeForWriting(platformPath);
  if (!place) {
    const std::string path = candidates(platformPath).front().path;
    if (path.starts_with("var/")) makeVar();
    root_.makeFolder(std::filesystem::path(path).parent_path().string());
    place = placeForWriting(platformPath);
  }
  if (!place) throw FileError(hostPath(platformPath), "its folder was removed");
  return *std::move(place);
}

void DeviceRoot::makeVar() const {
  if (root_.open("var", O_PATH)) return;
  root_.makeFolder("private/var");
  const std::optional<FileDescriptor> root = root_.open(".", O_PATH | O_DIRECTORY);
  if (!root) return;
  // Another process may just have made it.
  if (retried([&] { return ::symlinkat("private/var", root->get(), "var"); }) != 0 && errno != EEXIST) {
    throwErrno(root_.path() / "var", "can't create it");
  }
}

}  // namespace quellar::host::linux
