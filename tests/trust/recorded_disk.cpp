// SPDX-License-Identifier: MIT
#include "recorded_disk.h"

#include <fcntl.h>
#include <linux/btrfs.h>
#include <linux/fuse.h>
#include <linux/loop.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <random>
#include <span>
#include <system_error>
#include <thread>
#include <utility>

#include "writing.h"

namespace quellar::tests {

using host::linux::FileDescriptor;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBlock = 4096;
constexpr std::size_t kLargestWrite = 1024 * 1024;
/// What begins a binary property list, in the first block of its file.
constexpr std::string_view kListStart = "bplist00";

[[noreturn]] void throwDiskError(const std::string& doing) {
  throw std::system_error(errno, std::generic_category(), doing);
}

FileDescriptor opened(const fs::path& path, int flags) {
  FileDescriptor descriptor(::open(path.c_str(), flags | O_CLOEXEC, 0600));
  if (!descriptor) throwDiskError(path);
  return descriptor;
}

void writeAt(int file, std::string_view bytes, std::uint64_t offset) {
  while (!bytes.empty()) {
    const ssize_t count = ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count <= 0) throwDiskError("pwrite");
    bytes.remove_prefix(static_cast<std::size_t>(count));
    offset += static_cast<std::uint64_t>(count);
  }
}

/// A copy that leaves holes where there is no data.
void copySparsely(const fs::path& from, const fs::path& to) {
  const FileDescriptor source = opened(from, O_RDONLY);
  const FileDescriptor target = opened(to, O_WRONLY | O_CREAT | O_TRUNC);
  struct stat status{};
  if (::fstat(source.get(), &status) != 0 || ::ftruncate(target.get(), status.st_size) != 0) throwDiskError(to);
  std::string part(kLargestWrite, '\0');
  for (off_t data = 0;;) {
    data = ::lseek(source.get(), data, SEEK_DATA);
    if (data < 0) return;
    const off_t end = ::lseek(source.get(), data, SEEK_HOLE);
    while (data < end) {
      const auto size = std::min<std::size_t>(part.size(), static_cast<std::size_t>(end - data));
      if (::pread(source.get(), part.data(), size, data) != static_cast<ssize_t>(size)) throwDiskError(from);
      writeAt(target.get(), std::string_view(part).substr(0, size), static_cast<std::uint64_t>(data));
      data += static_cast<off_t>(size);
    }
  }
}

/// A loop device on a file. It goes when nobody has it open or mounted.
struct Loop {
  FileDescriptor device;
  fs::path path;
};

Loop makeLoop(const fs::path& file, const fs::path& folder) {
  const FileDescriptor control = opened("/dev/loop-control", O_RDWR);
  const FileDescriptor backing = opened(file, O_RDWR);
  constexpr int kTries = 50;
  for (int tries = 0;; ++tries) {
    const int number = ::ioctl(control.get(), LOOP_CTL_GET_FREE);
    if (number < 0) throwDiskError("LOOP_CTL_GET_FREE");
    // Not every /dev gets the devices that are new.
    const fs::path path = folder / ("loop" + std::to_string(number));
    constexpr unsigned kLoopMajor = 7;
    if (::mknod(path.c_str(), S_IFBLK | 0600, makedev(kLoopMajor, static_cast<unsigned>(number))) != 0 &&
        errno != EEXIST) {
      throwDiskError(path);
    }
    Loop loop{FileDescriptor(::open(path.c_str(), O_RDWR | O_CLOEXEC)), path};
    loop_config config{};
    config.fd = static_cast<std::uint32_t>(backing.get());
    config.info.lo_flags = LO_FLAGS_AUTOCLEAR;
    if (loop.device && ::ioctl(loop.device.get(), LOOP_CONFIGURE, &config) == 0) return loop;
    // Somebody else may have been faster.
    if (tries == kTries) throwDiskError("LOOP_CONFIGURE");
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

void forgetDevices() {
  const FileDescriptor control(::open("/dev/btrfs-control", O_RDWR | O_CLOEXEC));
  btrfs_ioctl_vol_args none{};
  if (control) ::ioctl(control.get(), BTRFS_IOC_FORGET_DEV, &none);
}

void mountImage(const FileSystemKind& kind, const fs::path& file, const fs::path& folder, const fs::path& at) {
  fs::create_directory(at);
  const Loop loop = makeLoop(file, folder);
  if (::mount(loop.path.c_str(), at.c_str(), kind.name.c_str(), MS_NOATIME, kind.options.c_str()) != 0) {
    throwDiskError("mount " + kind.name);
  }
}

void unmountImage(const FileSystemKind& kind, const fs::path& at) {
  constexpr int kTries = 500;
  for (int tries = 0; ::umount2(at.c_str(), 0) != 0; ++tries) {
    if (errno != EBUSY || tries == kTries) throwDiskError("umount");
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  // It would take an older state of the same file system for a stale device.
  if (kind.name == "btrfs") forgetDevices();
}

bool runsQuietly(const std::vector<std::string>& command) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (const int stream : {0, 1, 2}) ::dup2(nowhere, stream);
    std::vector<std::string> words = command;
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// A header of the log, with the bytes of a write after it.
struct Recorded {
  std::uint64_t isFlush = 0;
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
};

template <typename Object>
std::string_view bytesOfObject(const Object& object) {
  return {reinterpret_cast<const char*>(&object), sizeof object};
}

std::string programPath(const std::string& name) {
  for (const char* folder : {"/usr/sbin/", "/sbin/", "/usr/bin/", "/usr/local/sbin/"}) {
    if (::access((folder + name).c_str(), X_OK) == 0) return folder + name;
  }
  return {};
}

}  // namespace

void PrintTo(const FileSystemKind& kind, std::ostream* stream) {
  *stream << kind.name;
}

const std::vector<FileSystemKind>& fileSystemKinds() {
  constexpr std::uint64_t kMiB = 1024 * 1024;
  static const std::vector<FileSystemKind> kinds = {
      {"ext4",
       {"mkfs.ext4", "-q", "-F", "-b", "4096", "-N", "256", "-J", "size=4", "-E", "lazy_itable_init=0"},
       24 * kMiB,
       ""},
      {"xfs", {"mkfs.xfs", "-q", "-f", "-K"}, 320 * kMiB, "nouuid"},
      {"btrfs", {"mkfs.btrfs", "-q", "-f", "-K", "-m", "single"}, 128 * kMiB, ""},
  };
  return kinds;
}

std::string RecordedDisk::whyNot(const FileSystemKind& kind) {
  if (::geteuid() != 0) return "only root may mount file systems";
  for (const char* device : {"/dev/fuse", "/dev/loop-control"}) {
    if (::access(device, R_OK | W_OK) != 0) return std::string("there is no ") + device;
  }
  if (programPath(kind.maker.front()).empty()) return kind.maker.front() + " is not installed";
  std::ifstream known("/proc/filesystems");
  bool isKnown = false;
  bool isServed = false;
  for (std::string word; known >> word;) {
    isKnown = isKnown || word == kind.name;
    isServed = isServed || word == "fuse";
  }
  if (!isKnown) return "the kernel does not know " + kind.name;
  if (!isServed) return "the kernel does not know FUSE";
  // Once for the process: the mounts of two disks have different places.
  static const bool isApart =
      ::unshare(CLONE_NEWNS) == 0 && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return isApart ? "" : "no mount namespace may be made";
}

RecordedDisk::RecordedDisk(const FileSystemKind& kind) : kind_(kind), folder_(quickFolder()) {
  const fs::path image = folder_.path() / "current.img";
  {
    const FileDescriptor file = opened(image, O_RDWR | O_CREAT);
    if (::ftruncate(file.get(), static_cast<off_t>(kind.size)) != 0) throwDiskError(image);
  }
  std::vector<std::string> command = kind.maker;
  command.front() = programPath(command.front());
  command.push_back(image);
  if (!runsQuietly(command)) throw std::runtime_error(kind.maker.front() + " failed");
  copySparsely(image, firstImage());

  void* memory = ::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throwDiskError("mmap");
  shared_ = new (memory) Shared{};

  // The root of the file system is the one file.
  const fs::path served = folder_.path() / "disk.img";
  {
    const FileDescriptor place = opened(served, O_RDWR | O_CREAT);
  }
  {
    const FileDescriptor connection = opened("/dev/fuse", O_RDWR);
    const std::string options = "fd=" + std::to_string(connection.get()) + ",rootmode=100000,user_id=0,group_id=0";
    if (::mount("quellar-disk", served.c_str(), "fuse", MS_NOSUID, options.c_str()) != 0) throwDiskError("mount fuse");
    // The server alone has the connection, so that nobody waits for it when it is gone.
    server_ = ::fork();
    if (server_ < 0) throwDiskError("fork");
    if (server_ == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      try {
        serve(connection.get());
      } catch (const std::exception&) {
        ::_exit(1);
      }
      ::_exit(0);
    }
  }
  mountImage(kind_, served, folder_.path(), path());
}

RecordedDisk::~RecordedDisk() {
  ::umount2(path().c_str(), MNT_DETACH);
  ::umount2((folder_.path() / "disk.img").c_str(), MNT_DETACH);
  if (server_ > 0) {
    ::kill(server_, SIGKILL);
    ::waitpid(server_, nullptr, 0);
  }
  if (shared_ != nullptr) ::munmap(shared_, sizeof(Shared));
}

void RecordedDisk::synchronize() const {
  const FileDescriptor folder = opened(path(), O_RDONLY | O_DIRECTORY);
  if (::syncfs(folder.get()) != 0) throwDiskError("syncfs");
}

std::vector<DiskAction> RecordedDisk::takeActions() {
  const std::size_t all = count();
  unmountImage(kind_, path());
  std::vector<DiskAction> actions;
  std::ifstream log(folder_.path() / "log", std::ios::binary);
  Recorded header;
  while (actions.size() < all && log.read(reinterpret_cast<char*>(&header), sizeof header)) {
    DiskAction action{header.isFlush != 0 ? DiskAction::Kind::Flush : DiskAction::Kind::Write, header.offset, {}};
    action.bytes.resize(header.size);
    log.read(action.bytes.data(), static_cast<std::streamsize>(header.size));
    actions.push_back(std::move(action));
  }
  return actions;
}

void RecordedDisk::serve(int connection) const {
  const FileDescriptor image = opened(folder_.path() / "current.img", O_RDWR);
  const FileDescriptor log = opened(folder_.path() / "log", O_WRONLY | O_CREAT | O_APPEND);
  std::vector<char> request(kLargestWrite + 2 * kBlock);
  const auto reply = [&](std::uint64_t unique, int error, std::string_view body) {
    fuse_out_header header{};
    header.len = static_cast<std::uint32_t>(sizeof header + body.size());
    header.error = -error;
    header.unique = unique;
    const std::string answer = std::string(bytesOfObject(header)).append(body);
    // A request that was given up has nobody who waits for it.
    static_cast<void>(::write(connection, answer.data(), answer.size()));
  };
  const auto replyWith = [&](std::uint64_t unique, const auto& body) { reply(unique, 0, bytesOfObject(body)); };
  const auto record = [&](const Recorded& header, std::string_view bytes) {
    const std::string entry = std::string(bytesOfObject(header)).append(bytes);
    if (::write(log.get(), entry.data(), entry.size()) != static_cast<ssize_t>(entry.size())) throwDiskError("log");
    ++shared_->actions;
  };
  while (true) {
    const ssize_t got = ::read(connection, request.data(), request.size());
    if (got < 0 && (errno == EINTR || errno == ENOENT || errno == EAGAIN)) continue;
    // It was unmounted.
    if (got <= 0) return;
    fuse_in_header in{};
    std::memcpy(&in, request.data(), sizeof in);
    const char* const body = request.data() + sizeof in;
    switch (in.opcode) {
      case FUSE_INIT: {
        fuse_init_out out{};
        out.major = FUSE_KERNEL_VERSION;
        out.minor = FUSE_KERNEL_MINOR_VERSION;
        out.flags = FUSE_BIG_WRITES | FUSE_MAX_PAGES | FUSE_INIT_EXT;
        out.max_write = kLargestWrite;
        out.max_pages = kLargestWrite / kBlock;
        out.max_background = 16;
        out.congestion_threshold = 12;
        out.time_gran = 1;
        out.max_readahead = 0;
        replyWith(in.unique, out);
        break;
      }
      case FUSE_GETATTR: {
        fuse_attr_out out{};
        out.attr_valid = 3600;
        out.attr.ino = FUSE_ROOT_ID;
        out.attr.size = kind_.size;
        out.attr.blocks = kind_.size / 512;
        out.attr.mode = S_IFREG | 0600;
        out.attr.nlink = 1;
        out.attr.blksize = kBlock;
        replyWith(in.unique, out);
        break;
      }
      case FUSE_OPEN: {
        fuse_open_out out{};
        out.open_flags = FOPEN_DIRECT_IO;
        replyWith(in.unique, out);
        break;
      }
      case FUSE_READ: {
        fuse_read_in read{};
        std::memcpy(&read, body, sizeof read);
        std::string bytes(read.size, '\0');
        const ssize_t count = ::pread(image.get(), bytes.data(), bytes.size(), static_cast<off_t>(read.offset));
        if (count < 0) {
          reply(in.unique, EIO, {});
        } else {
          reply(in.unique, 0, std::string_view(bytes).substr(0, static_cast<std::size_t>(count)));
        }
        break;
      }
      case FUSE_WRITE: {
        fuse_write_in write{};
        std::memcpy(&write, body, sizeof write);
        const std::string_view bytes(body + sizeof write, write.size);
        bool isList = false;
        for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
          isList = isList || bytes.substr(at).starts_with(kListStart);
        }
        if (isList && shared_->failingWrites > 0) {
          --shared_->failingWrites;
          reply(in.unique, EIO, {});
          break;
        }
        writeAt(image.get(), bytes, write.offset);
        record({0, write.offset, bytes.size()}, bytes);
        fuse_write_out out{};
        out.size = write.size;
        replyWith(in.unique, out);
        break;
      }
      case FUSE_FSYNC:
        if (shared_->failingFlushes > 0) {
          --shared_->failingFlushes;
          reply(in.unique, EIO, {});
          break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(shared_->flushDelay));
        record({1, 0, 0}, {});
        reply(in.unique, 0, {});
        break;
      case FUSE_FLUSH:
      case FUSE_RELEASE:
      case FUSE_DESTROY:
        reply(in.unique, 0, {});
        break;
      case FUSE_FORGET:
      case FUSE_BATCH_FORGET:
      case FUSE_INTERRUPT:
        break;
      default:
        reply(in.unique, ENOSYS, {});
    }
  }
}

CutImages::CutImages(FileSystemKind kind, const fs::path& firstImage, std::vector<DiskAction> actions)
    : kind_(std::move(kind)), folder_(quickFolder()), actions_(std::move(actions)) {
  copySparsely(firstImage, folder_.path() / "flushed.img");
}

bool CutImages::hasRest(std::size_t count) const {
  return count > 0 && actions_.at(count - 1).kind == DiskAction::Kind::Write;
}

void CutImages::mount(std::size_t count, Rest rest, unsigned seed) {
  const auto writesFrom = [&](std::size_t first, std::size_t end, int image, auto&& lasts) {
    for (const DiskAction& action : std::span(actions_).subspan(first, end - first)) {
      for (std::size_t at = 0; at < action.bytes.size(); at += kBlock) {
        if (lasts()) writeAt(image, std::string_view(action.bytes).substr(at, kBlock), action.offset + at);
      }
    }
  };
  std::size_t flush = count;
  while (flush > flushed_ && actions_.at(flush - 1).kind != DiskAction::Kind::Flush) --flush;
  {
    const FileDescriptor image = opened(folder_.path() / "flushed.img", O_WRONLY);
    writesFrom(flushed_, flush, image.get(), [] { return true; });
  }
  flushed_ = flush;
  const fs::path cut = folder_.path() / "cut.img";
  copySparsely(folder_.path() / "flushed.img", cut);
  {
    std::mt19937 random(seed);
    const FileDescriptor image = opened(cut, O_WRONLY);
    writesFrom(flush, count, image.get(),
               [&] { return rest == Rest::All || (rest == Rest::Some && random() % 2 == 0); });
  }
  mountImage(kind_, cut, folder_.path(), mounted());
}

void CutImages::unmount() {
  unmountImage(kind_, mounted());
}

}  // namespace quellar::tests
