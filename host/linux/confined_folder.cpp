// SPDX-License-Identifier: MIT
#include "host/linux/confined_folder.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <deque>
#include <system_error>
#include <utility>
#include <vector>

namespace quellar::host::linux {

namespace {

/// As many links as the kernel follows in one path.
constexpr int kMaxLinks = 40;
constexpr mode_t kFolderMode = 0700;
constexpr const char* kLeadsOut = "leads out of the device root";

std::vector<std::string> namesOf(std::string_view path) {
  std::vector<std::string> names;
  while (!path.empty()) {
    const std::size_t end = std::min(path.find('/'), path.size());
    const std::string_view name = path.substr(0, end);
    if (!name.empty() && name != ".") names.emplace_back(name);
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return names;
}

std::string joined(const std::vector<std::string>& names, std::size_t count) {
  std::string path;
  for (std::size_t index = 0; index < count; ++index) path += (index == 0 ? "" : "/") + names[index];
  return path.empty() ? "." : path;
}

std::string linkTarget(int link, const std::filesystem::path& file) {
  std::array<char, PATH_MAX> target{};
  const ssize_t size = retried([&] { return ::readlinkat(link, "", target.data(), target.size()); });
  if (size < 0) throwErrno(file);
  return {target.data(), static_cast<std::size_t>(size)};
}

/// Makes one folder; one that is there already is as good.
void makeOne(int parent, const std::string& name, const std::filesystem::path& file) {
  if (retried([&] { return ::mkdirat(parent, name.c_str(), kFolderMode); }) != 0) {
    if (errno == EEXIST) return;
    throwErrno(file, "can't create it");
  }
  // The umask took bits from the mode. Somebody may have put a link in the folder's place, which is not followed.
  if (retried([&] { return ::fchmodat(parent, name.c_str(), kFolderMode, AT_SYMLINK_NOFOLLOW); }) != 0) {
    throwErrno(file, "can't create it");
  }
}

}  // namespace

/// Where a walk ended.
struct ConfinedFolder::Walked {
  FileDescriptor folder;
  std::string name;
  /// What the name stands for, opened with O_PATH; none where it does not exist.
  FileDescriptor target;
  /// The names from this folder to the place, none of them a link.
  std::vector<std::string> names;
};

ConfinedFolder::ConfinedFolder(const std::filesystem::path& folder, Resolution resolution)
    : path_(std::filesystem::absolute(folder).lexically_normal()), resolution_(resolution) {
  if (!path_.has_filename() && path_.has_relative_path()) path_ = path_.parent_path();
}

std::filesystem::path ConfinedFolder::hostPath(std::string_view relative) const {
  const std::vector<std::string> names = namesOf(relative);
  return names.empty() ? path_ : path_ / joined(names, names.size());
}

FileDescriptor ConfinedFolder::openSelf() const {
  FileDescriptor self(retried([&] { return ::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC); }));
  if (!self && errno != ENOENT) throwErrno(path_);
  return self;
}

std::optional<std::string> ConfinedFolder::below(const std::string& target) const {
  const std::filesystem::path names(target);
  std::error_code error;
  for (const std::filesystem::path& self : {path_, std::filesystem::canonical(path_, error)}) {
    const auto [rest, part] = std::mismatch(self.begin(), self.end(), names.begin(), names.end());
    if (self.empty() || rest != self.end()) continue;
    std::filesystem::path result;
    for (auto name = part; name != names.end(); ++name) result /= *name;
    return result.string();
  }
  return std::nullopt;
}

std::optional<ConfinedFolder::Walked> ConfinedFolder::walk(std::string_view relative) const {
  const std::filesystem::path file = hostPath(relative);
  FileDescriptor self = openSelf();
  if (!self) return std::nullopt;

  // The folders that were entered, each below the one before, so that ".." goes back the way that was come.
  std::vector<FileDescriptor> folders;
  folders.push_back(std::move(self));
  std::vector<std::string> names;
  const std::vector<std::string> given = namesOf(relative);
  std::deque<std::string> ahead(given.begin(), given.end());
  int links = 0;

  while (!ahead.empty()) {
    const std::string name = std::move(ahead.front());
    ahead.pop_front();
    if (name == "..") {
      if (names.empty()) {
        // Above the root of the file system there is nothing to leave to.
        if (path_ == path_.root_path()) continue;
        throw FileError(file, kLeadsOut);
      }
      names.pop_back();
      folders.pop_back();
      continue;
    }

    const int parent = folders.back().get();
    FileDescriptor next(retried([&] { return ::openat(parent, name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC); }));
    if (!next) {
      if (errno != ENOENT) throwErrno(file);
      if (!ahead.empty()) return std::nullopt;
      names.push_back(name);
      return Walked{std::move(folders.back()), name, FileDescriptor(), std::move(names)};
    }
    struct stat status{};
    if (retried([&] { return ::fstat(next.get(), &status); }) != 0) throwErrno(file);

    if (S_ISLNK(status.st_mode)) {
      if (++links > kMaxLinks) throw FileError(file, errorText(ELOOP));
      std::string target = linkTarget(next.get(), file);
      if (target.starts_with('/')) {
        std::optional<std::string> inside = below(target);
        if (!inside) throw FileError(file, kLeadsOut);
        target = *std::move(inside);
        names.clear();
        folders.resize(1);
      }
      const std::vector<std::string> through = namesOf(target);
      ahead.insert(ahead.begin(), through.begin(), through.end());
    } else if (ahead.empty() && !S_ISDIR(status.st_mode)) {
      names.push_back(name);
      return Walked{std::move(folders.back()), name, std::move(next), std::move(names)};
    } else if (!S_ISDIR(status.st_mode)) {
      throw FileError(file, errorText(ENOTDIR));
    } else {
      names.push_back(name);
      folders.push_back(std::move(next));
    }
  }

  FileDescriptor target = std::move(folders.back());
  if (names.empty()) return Walked{openSelf(), ".", std::move(target), {}};
  return Walked{std::move(folders[folders.size() - 2]), names.back(), std::move(target), names};
}

std::optional<FileDescriptor> ConfinedFolder::open(std::string_view relative, int flags) const {
  const FileDescriptor self = openSelf();
  if (!self) return std::nullopt;
  if (resolution_ == Resolution::Kernel) {
    const std::vector<std::string> names = namesOf(relative);
    const std::string path = joined(names, names.size());
    open_how how{};
    how.flags = static_cast<std::uint64_t>(flags | O_CLOEXEC);
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
    FileDescriptor opened(
        static_cast<int>(retried([&] { return ::syscall(SYS_openat2, self.get(), path.c_str(), &how, sizeof how); })));
    if (opened) return opened;
    if (errno == ENOENT) return std::nullopt;
    // EXDEV: it leads out, or through an absolute link, which the kernel refuses even where it leads back in. EAGAIN:
    // the kernel can't be sure because something was just renamed. ENOSYS, EPERM: an old kernel, or a sandbox.
    if (errno != EXDEV && errno != EAGAIN && errno != ENOSYS && errno != EPERM) throwErrno(hostPath(relative));
  }

  const std::optional<Walked> walked = walk(relative);
  if (!walked || !walked->target) return std::nullopt;
  FileDescriptor opened(
      retried([&] { return ::openat(walked->folder.get(), walked->name.c_str(), flags | O_NOFOLLOW | O_CLOEXEC); }));
  if (opened) return opened;
  if (errno == ENOENT) return std::nullopt;
  throwErrno(hostPath(relative));
}

std::optional<ConfinedFolder::Place> ConfinedFolder::locate(std::string_view relative) const {
  const std::vector<std::string> names = namesOf(relative);
  if (!names.empty() && names.back() != "..") {
    // The usual case in two calls: the folder is there, and the name is no link.
    std::optional<FileDescriptor> folder = open(joined(names, names.size() - 1), O_RDONLY | O_DIRECTORY);
    if (!folder) return std::nullopt;
    struct stat status{};
    const int found =
        retried([&] { return ::fstatat(folder->get(), names.back().c_str(), &status, AT_SYMLINK_NOFOLLOW); });
    if (found != 0 && errno != ENOENT) throwErrno(hostPath(relative));
    if (found != 0 || !S_ISLNK(status.st_mode)) return Place{*std::move(folder), names.back()};
  }
  std::optional<Walked> walked = walk(relative);
  if (!walked) return std::nullopt;
  FileDescriptor folder(
      retried([&] { return ::openat(walked->folder.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder) throwErrno(hostPath(relative));
  return Place{std::move(folder), walked->name};
}

std::optional<std::filesystem::path> ConfinedFolder::realPath(std::string_view relative) const {
  const std::optional<Walked> walked = walk(relative);
  if (!walked || !walked->target) return std::nullopt;
  std::error_code error;
  const std::filesystem::path self = std::filesystem::canonical(path_, error);
  if (error) return std::nullopt;
  return walked->names.empty() ? self : self / joined(walked->names, walked->names.size());
}

void ConfinedFolder::makeFolder(std::string_view relative) const {
  if (!openSelf()) {
    std::filesystem::path above = path_.root_path();
    for (const std::filesystem::path& name : path_.relative_path()) {
      above /= name;
      makeOne(AT_FDCWD, above.string(), above);
    }
  }
  const std::vector<std::string> names = namesOf(relative);
  for (std::size_t count = 1; count <= names.size(); ++count) {
    const std::string path = joined(names, count);
    if (open(path, O_PATH | O_DIRECTORY)) continue;
    const std::optional<FileDescriptor> parent = open(joined(names, count - 1), O_PATH | O_DIRECTORY);
    if (parent) makeOne(parent->get(), names[count - 1], hostPath(path));
    if (!open(path, O_PATH | O_DIRECTORY)) throw FileError(hostPath(path), "is a link that leads nowhere");
  }
}

}  // namespace quellar::host::linux
