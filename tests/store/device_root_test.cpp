// SPDX-License-Identifier: MIT
#include "host/linux/device_root.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "store_files.h"

namespace quellar::tests {
namespace device_root_test {

using host::linux::ConfinedFolder;
using host::linux::DeviceRoot;
using host::linux::FileError;
namespace fs = std::filesystem;

constexpr std::size_t kLimit = 4096;

/// Every rule of confinement holds whoever follows the paths.
class DeviceRootPaths : public testing::TestWithParam<ConfinedFolder::Resolution> {
 protected:
  [[nodiscard]] DeviceRoot root(const std::vector<fs::path>& bundleFolders = {}) const {
    return DeviceRoot(rootFolder(), bundleFolders, GetParam());
  }
  [[nodiscard]] fs::path rootFolder() const { return folder_.path() / "root"; }
  [[nodiscard]] const TemporaryFolder& folder() const { return folder_; }
  [[nodiscard]] fs::path outside() const { return folder_.path() / "outside"; }
  void writeInRoot(const std::string& path, std::string_view bytes) const { writeFile(rootFolder() / path, bytes); }
  void link(const std::string& target, const std::string& path) const {
    fs::create_directories((rootFolder() / path).parent_path());
    fs::create_symlink(target, rootFolder() / path);
  }

  /// What a path reads as: the file's bytes, "nothing", or the refusal.
  [[nodiscard]] std::string read(const std::string& path) const {
    try {
      return root().contents(path, kLimit).value_or("nothing");
    } catch (const FileError& error) {
      return error.cause();
    }
  }

 private:
  TemporaryFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Kernel, DeviceRootPaths, testing::Values(ConfinedFolder::Resolution::Kernel));
INSTANTIATE_TEST_SUITE_P(Walk, DeviceRootPaths, testing::Values(ConfinedFolder::Resolution::Walk));

TEST_P(DeviceRootPaths, MapsAPlatformPathIntoTheFolder) {
  writeInRoot("usr/lib/libtessaly.dylib", "library");
  EXPECT_EQ(read("/usr/lib/libtessaly.dylib"), "library");
  EXPECT_EQ(read("//usr/./lib//libtessaly.dylib"), "library");
  EXPECT_EQ(read("/usr/lib/libflipcontrolcenter.dylib"), "nothing");
  EXPECT_TRUE(root().exists("/usr/lib/libtessaly.dylib"));
  EXPECT_TRUE(root().exists("/usr/lib"));
  EXPECT_FALSE(root().exists("/usr/lib/libflipcontrolcenter.dylib"));
  EXPECT_FALSE(root().exists("/usr/lib/libtessaly.dylib/more"));
  EXPECT_EQ(root().realPath("/usr/lib/libtessaly.dylib"), rootFolder() / "usr/lib/libtessaly.dylib");
  EXPECT_EQ(root().realPath("/usr/none"), std::nullopt);
  EXPECT_EQ(root().realPath("/"), rootFolder());
}

TEST_P(DeviceRootPaths, ReadsNothingFromARootThatIsNotThereAndDoesNotMakeIt) {
  EXPECT_EQ(read("/usr/lib/libtessaly.dylib"), "nothing");
  EXPECT_FALSE(root().exists("/"));
  EXPECT_EQ(root().realPath("/"), std::nullopt);
  EXPECT_FALSE(root().placeForWriting("/var/mobile/file"));
  EXPECT_FALSE(fs::exists(rootFolder()));
}

TEST_P(DeviceRootPaths, RefusesDotsThatLeadOutAndFollowsThoseThatDoNot) {
  writeFile(outside(), "secret");
  writeInRoot("etc/file", "inside");
  EXPECT_EQ(read("/../outside"), "leads out of the device root");
  EXPECT_EQ(read("/etc/../../outside"), "leads out of the device root");
  EXPECT_EQ(read("../root/etc/file"), "leads out of the device root");
  EXPECT_EQ(read("/etc/../etc/file"), "inside");
  EXPECT_FALSE(root().exists("/../outside"));
  EXPECT_THROW(static_cast<void>(root().realPath("/../outside")), FileError);
  EXPECT_THROW(static_cast<void>(root().makePlaceForWriting("/../outside")), FileError);
}

TEST_P(DeviceRootPaths, RefusesLinksThatLeadOut) {
  writeFile(outside(), "secret");
  link(outside().string(), "absolute");
  link("../outside", "relative");
  link("..", "above");
  link("folder/link", "first");
  link("../../outside", "folder/link");
  link("/proc/self/cwd", "magic");
  link((outside().string() + "-new"), "dangling");
  for (const char* path : {"/absolute", "/relative", "/above/outside", "/first", "/magic", "/dangling"}) {
    EXPECT_EQ(read(path), "leads out of the device root") << path;
    EXPECT_FALSE(root().exists(path)) << path;
    EXPECT_THROW(static_cast<void>(root().realPath(path)), FileError) << path;
    EXPECT_THROW(static_cast<void>(root().makePlaceForWriting(path)), FileError) << path;
  }
}

TEST_P(DeviceRootPaths, RefusesALinkToASiblingWhoseNameBeginsAlike) {
  writeFile(rootFolder().string() + "-other/file", "secret");
  link(rootFolder().string() + "-other/file", "link");
  EXPECT_EQ(read("/link"), "leads out of the device root");
}

TEST_P(DeviceRootPaths, FollowsLinksThatStayWithin) {
  writeInRoot("real/file", "inside");
  link("real", "relative");
  link((rootFolder() / "real/file").string(), "absolute");
  link("../relative/file", "folder/twice");
  link((rootFolder() / "relative/../real/file").string(), "dots");
  EXPECT_EQ(read("/relative/file"), "inside");
  EXPECT_EQ(read("/absolute"), "inside");
  EXPECT_EQ(read("/folder/twice"), "inside");
  EXPECT_EQ(read("/dots"), "inside");
  EXPECT_EQ(root().realPath("/folder/twice"), rootFolder() / "real/file");
  EXPECT_EQ(root().realPath("/absolute"), rootFolder() / "real/file");
}

TEST_P(DeviceRootPaths, WorksThroughARootThatIsItselfALink) {
  writeInRoot("real/file", "inside");
  link((rootFolder() / "real/file").string(), "absolute");
  fs::create_symlink(rootFolder(), folder().path() / "alias");
  const DeviceRoot alias(folder().path() / "alias", {}, GetParam());
  EXPECT_EQ(alias.contents("/real/file", kLimit), "inside");
  EXPECT_EQ(alias.contents("/absolute", kLimit), "inside");
  EXPECT_EQ(alias.realPath("/absolute"), rootFolder() / "real/file");
}

TEST_P(DeviceRootPaths, EndsInALoopOfLinks) {
  link("b", "a");
  link("a", "b");
  EXPECT_EQ(read("/a"), "Too many levels of symbolic links");
  EXPECT_FALSE(root().exists("/a"));
}

TEST_P(DeviceRootPaths, TakesTheWholeFileSystemAsARoot) {
  writeInRoot("real/file", "inside");
  link((rootFolder() / "real/file").string(), "link");
  const DeviceRoot whole("/", {}, GetParam());
  EXPECT_EQ(whole.contents((rootFolder() / "real/file").string(), kLimit), "inside");
  EXPECT_EQ(whole.contents((rootFolder() / "link").string(), kLimit), "inside");
  EXPECT_EQ(whole.contents("/../.." + (rootFolder() / "real/file").string(), kLimit), "inside");
  EXPECT_EQ(whole.realPath((rootFolder() / "link").string()), rootFolder() / "real/file");
  EXPECT_EQ(whole.hostPath("/usr/lib/file"), "/usr/lib/file");
  EXPECT_TRUE(whole.exists("/"));
}

TEST_P(DeviceRootPaths, DoesNotReadFoldersPipesAndLargeFiles) {
  fs::create_directories(rootFolder() / "folder");
  ASSERT_EQ(::mkfifo((rootFolder() / "pipe").c_str(), 0600), 0);
  writeInRoot("full", std::string(kLimit, 'x'));
  writeInRoot("large", std::string(kLimit + 1, 'x'));
  EXPECT_EQ(read("/folder"), "is not a regular file");
  EXPECT_EQ(read("/pipe"), "is not a regular file");
  EXPECT_EQ(read("/full"), std::string(kLimit, 'x'));
  EXPECT_EQ(read("/large"), "is larger than 4096 bytes");
}

TEST_P(DeviceRootPaths, MakesVarInAFreshRootForItsOwnerAloneWhateverTheUmask) {
  const mode_t umask = ::umask(0777);
  {
    const ConfinedFolder::Place place = root().makePlaceForWriting("/private/var/mobile/Library/file");
    EXPECT_EQ(place.name, "file");
  }
  ::umask(0);
  {
    const ConfinedFolder::Place place = root().makePlaceForWriting("/var/mobile/Other/file");
  }
  ::umask(umask);
  EXPECT_EQ(namesIn(rootFolder()), (std::vector<std::string>{"private", "var"}));
  EXPECT_EQ(fs::read_symlink(rootFolder() / "var"), "private/var");
  for (const char* made :
       {"", "private", "private/var", "private/var/mobile", "private/var/mobile/Library", "private/var/mobile/Other"}) {
    EXPECT_EQ(modeOf(rootFolder() / made), 0700U) << made;
  }
  EXPECT_EQ(namesIn(rootFolder() / "var/mobile/Library"), std::vector<std::string>{});
}

TEST_P(DeviceRootPaths, LinksVarToAPrivateVarThatIsThere) {
  writeInRoot("private/var/mobile/file", "there");
  EXPECT_EQ(read("/var/mobile/file"), "there");
  {
    const ConfinedFolder::Place place = root().makePlaceForWriting("/var/mobile/Library/file");
  }
  EXPECT_EQ(fs::read_symlink(rootFolder() / "var"), "private/var");
  EXPECT_TRUE(fs::is_directory(rootFolder() / "private/var/mobile/Library"));
}

TEST_P(DeviceRootPaths, LeavesAVarThatIsARealFolderAsItIs) {
  fs::create_directories(rootFolder() / "var");
  {
    const ConfinedFolder::Place place = root().makePlaceForWriting("/var/mobile/file");
  }
  EXPECT_EQ(namesIn(rootFolder()), (std::vector<std::string>{"var"}));
}

TEST_P(DeviceRootPaths, ReadsFromTheVarThatHasTheFileWhereBothAreReal) {
  writeInRoot("var/mobile/one", "var");
  writeInRoot("private/var/mobile/two", "private");
  writeInRoot("var/mobile/both", "var");
  writeInRoot("private/var/mobile/both", "private");
  for (const std::string folder : {"/var/mobile/", "/private/var/mobile/"}) {
    EXPECT_EQ(read(folder + "one"), "var");
    EXPECT_EQ(read(folder + "two"), "private");
    EXPECT_EQ(read(folder + "both"), "var");
    EXPECT_EQ(root().realPath(folder + "two"), rootFolder() / "private/var/mobile/two");
    EXPECT_EQ(root().hostPath(folder + "two"), rootFolder() / "var/mobile/two");
  }
  {
    const ConfinedFolder::Place place = root().makePlaceForWriting("/private/var/mobile/New/file");
  }
  EXPECT_TRUE(fs::is_directory(rootFolder() / "var/mobile/New"));
  EXPECT_FALSE(fs::exists(rootFolder() / "private/var/mobile/New"));
}

TEST_P(DeviceRootPaths, FindsThePlaceThatALinkLeadsTo) {
  writeInRoot("real/file", "inside");
  link("../real/file", "links/link");
  link("../real/new", "links/dangling");
  const auto place = root().placeForWriting("/links/link");
  ASSERT_TRUE(place);
  EXPECT_EQ(place->name, "file");
  struct stat found{};
  ASSERT_EQ(::fstatat(place->folder.get(), place->name.c_str(), &found, 0), 0);
  EXPECT_EQ(found.st_ino, inodeOf(rootFolder() / "real/file"));
  const auto missing = root().placeForWriting("/links/dangling");
  ASSERT_TRUE(missing);
  EXPECT_EQ(missing->name, "new");
}

TEST_P(DeviceRootPaths, TakesEachBundleFileFromTheFirstFolderThatHasIt) {
  const std::string bundle(host::linux::kSettingsBundlePath);
  const fs::path installed = folder().path() / "installed";
  const fs::path source = folder().path() / "source";
  writeInRoot(bundle.substr(1) + "/one", "root");
  for (const char* name : {"/one", "/images/two"}) writeFile(installed.string() + name, "installed");
  for (const char* name : {"/one", "/images/two", "/en.lproj/three"}) writeFile(source.string() + name, "source");
  const DeviceRoot device = root({folder().path() / "missing", installed, source});
  EXPECT_EQ(device.contents(bundle + "/one", kLimit), "root");
  EXPECT_EQ(device.contents(bundle + "/images/two", kLimit), "installed");
  EXPECT_EQ(device.contents(bundle + "/en.lproj/three", kLimit), "source");
  EXPECT_EQ(device.contents(bundle + "/four", kLimit), std::nullopt);
  EXPECT_EQ(device.realPath(bundle + "/images/two"), installed / "images/two");
  EXPECT_TRUE(device.exists(bundle + "/en.lproj"));
  EXPECT_FALSE(device.exists(bundle + "/fr.lproj"));
  EXPECT_FALSE(device.exists("/Library/PreferenceBundles/Quellar.bundle2/one"));
}

TEST_P(DeviceRootPaths, TakesTheWholeBundleFromTheFoldersWhereTheRootIsNotThere) {
  const std::string bundle(host::linux::kSettingsBundlePath);
  const fs::path source = folder().path() / "source";
  writeFile(source / "one", "source");
  EXPECT_TRUE(root({source}).exists(bundle));
  EXPECT_EQ(root({source}).contents(bundle + "/one", kLimit), "source");
  EXPECT_FALSE(root().exists(bundle));
}

TEST_P(DeviceRootPaths, KeepsBundleFilesWithinTheirFolders) {
  const std::string bundle(host::linux::kSettingsBundlePath);
  const fs::path source = folder().path() / "source";
  writeFile(outside(), "secret");
  writeInRoot("Library/PreferenceBundles/secret", "secret");
  writeInRoot(bundle.substr(1) + "/one", "root");
  writeFile(source / "sub/file", "source");
  fs::create_symlink("../outside", source / "link");
  const DeviceRoot device = root({source});
  EXPECT_EQ(device.contents(bundle + "/sub/../sub/file", kLimit), "source");
  for (const std::string path : {"/../secret", "/../../outside", "/sub/../../outside", "/link"}) {
    EXPECT_THROW(static_cast<void>(device.contents(bundle + path, kLimit)), FileError) << path;
    EXPECT_FALSE(device.exists(bundle + path)) << path;
  }
}

TEST(DeviceRoot, IsChosenByOptionThenVariableThenDataFolder) {
  const ScopedVariable home("HOME", "/home/someone");
  const ScopedVariable variable("QUELLAR_DEVICE_ROOT", "/by/variable");
  const ScopedVariable data("XDG_DATA_HOME", "/by/data");
  EXPECT_EQ(DeviceRoot::chooseFolder("/by/option"), "/by/option");
  EXPECT_EQ(DeviceRoot::chooseFolder("/"), "/");
  EXPECT_EQ(DeviceRoot::chooseFolder(std::nullopt), "/by/variable");
  {
    const ScopedVariable empty("QUELLAR_DEVICE_ROOT", "");
    EXPECT_EQ(DeviceRoot::chooseFolder(std::nullopt), "/by/data/quellar/device");
  }
  const ScopedVariable none("QUELLAR_DEVICE_ROOT", nullptr);
  EXPECT_EQ(DeviceRoot::chooseFolder(std::nullopt), "/by/data/quellar/device");
  const ScopedVariable relative("XDG_DATA_HOME", "data");
  EXPECT_EQ(DeviceRoot::chooseFolder(std::nullopt), "/home/someone/.local/share/quellar/device");
  const ScopedVariable noData("XDG_DATA_HOME", nullptr);
  EXPECT_EQ(DeviceRoot::chooseFolder(std::nullopt), "/home/someone/.local/share/quellar/device");
}

TEST(DeviceRoot, StaysTheSameFolderWhenTheWorkingFolderChanges) {
  const TemporaryFolder folder;
  writeFile(folder.path() / "root/file", "inside");
  const fs::path former = fs::current_path();
  fs::current_path(folder.path());
  const DeviceRoot root("root/");
  fs::current_path(former);
  EXPECT_EQ(root.folder(), folder.path() / "root");
  EXPECT_EQ(root.contents("/file", kLimit), "inside");
}

}  // namespace device_root_test
}  // namespace quellar::tests
