// SPDX-License-Identifier: MIT
#include "host/linux/applications.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "support/temporary_folder.h"

namespace quellar::platform {

bool operator==(const Application& left, const Application& right) {
  return left.identifier == right.identifier && left.name == right.name;
}
void PrintTo(const Application& application, std::ostream* stream) {
  *stream << application.identifier << " \"" << application.name << '"';
}

}  // namespace quellar::platform

namespace quellar::host::linux {
namespace applications_test {

using platform::Application;
using testing::ElementsAre;

class DesktopApplicationsTest : public testing::Test {
 protected:
  // Writes a desktop entry of the user ("user/a.desktop") or the system ("system/a.desktop").
  void entry(const std::string& file, const std::string& text) const {
    const std::size_t slash = file.find('/');
    folder_.write(file.substr(0, slash) + "/applications" + file.substr(slash), text);
  }
  void application(const std::string& file, const std::string& name, const std::string& more = "") const {
    entry(file, "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=true\n" + more);
  }
  [[nodiscard]] std::vector<Application> installed(const std::vector<std::string>& languages = {}) const {
    return DesktopApplications({folder_.path() / "user", folder_.path() / "system"}, languages).installedApplications();
  }

  tests::TemporaryFolder folder_;
};

TEST_F(DesktopApplicationsTest, AreNoneWhereThereAreNoFolders) {
  EXPECT_THAT(installed(), ElementsAre());
}

TEST_F(DesktopApplicationsTest, AreSortedByNameWithoutRegardToCaseThenById) {
  application("system/1.desktop", "banana");
  application("system/2.desktop", "Apple");
  application("user/3.desktop", "cherry");
  application("user/5.desktop", "Banana");
  application("system/4.desktop", "BANANA");
  application("system/6.desktop", "ÉTUDE");
  application("system/7.desktop", "Étape");
  application("system/8.desktop", "étude");
  EXPECT_THAT(installed(), ElementsAre(Application{"2.desktop", "Apple"}, Application{"1.desktop", "banana"},
                                       Application{"4.desktop", "BANANA"}, Application{"5.desktop", "Banana"},
                                       Application{"3.desktop", "cherry"}, Application{"7.desktop", "Étape"},
                                       Application{"6.desktop", "ÉTUDE"}, Application{"8.desktop", "étude"}));
}

TEST_F(DesktopApplicationsTest, AreSortedAsTheUsersLanguageSorts) {
  application("system/1.desktop", "User");
  application("system/2.desktop", "Zoom");
  application("system/3.desktop", "Été");
  application("system/4.desktop", "Öppna");
  const auto names = [this](const std::vector<std::string>& languages) {
    std::vector<std::string> list;
    for (const Application& each : installed(languages)) list.push_back(each.name);
    return list;
  };
  EXPECT_THAT(names({"fr_FR"}), ElementsAre("Été", "Öppna", "User", "Zoom"));
  EXPECT_THAT(names({"sv_SE", "fr"}), ElementsAre("Été", "User", "Zoom", "Öppna"));
  EXPECT_THAT(names({}), ElementsAre("Été", "Öppna", "User", "Zoom"));
}

TEST_F(DesktopApplicationsTest, HaveTheFolderInTheirId) {
  application("system/kde/org.kde.Camera.desktop", "Camera");
  application("system/a/b/c.desktop", "Deep");
  EXPECT_THAT(installed(),
              ElementsAre(Application{"kde-org.kde.Camera.desktop", "Camera"}, Application{"a-b-c.desktop", "Deep"}));
}

TEST_F(DesktopApplicationsTest, OfTheUserReplaceThoseOfTheSystem) {
  application("system/a.desktop", "System");
  application("user/a.desktop", "User");
  application("system/kde/b.desktop", "System B");
  application("user/kde-b.desktop", "User B");
  EXPECT_THAT(installed(), ElementsAre(Application{"a.desktop", "User"}, Application{"kde-b.desktop", "User B"}));
}

TEST_F(DesktopApplicationsTest, ThatAreHiddenAreLeftOutAlsoWhenTheUserHidesOneOfTheSystem) {
  application("system/hidden.desktop", "A", "Hidden=true\n");
  application("system/undisplayed.desktop", "B", "NoDisplay = true \n");
  application("system/shown.desktop", "C", "Hidden=false\nNoDisplay=false\n");
  application("system/both.desktop", "D", "Hidden=true\nNoDisplay=false\n");
  application("system/removed.desktop", "E");
  application("user/removed.desktop", "E", "Hidden=true\n");
  application("system/replaced.desktop", "F");
  entry("user/replaced.desktop", "[Desktop Entry]\nType=Link\nName=F\n");
  EXPECT_THAT(installed(), ElementsAre(Application{"shown.desktop", "C"}));
}

TEST_F(DesktopApplicationsTest, AreHiddenByAnEntryOfTheUserThatSaysNothingElse) {
  application("system/a.desktop", "A");
  application("system/b.desktop", "B");
  entry("user/a.desktop", "[Desktop Entry]\nHidden=true\n");
  EXPECT_THAT(installed(), ElementsAre(Application{"b.desktop", "B"}));
}

TEST_F(DesktopApplicationsTest, ThatAreNoApplicationsOrBrokenAreSkipped) {
  entry("system/link.desktop", "[Desktop Entry]\nType=Link\nName=Link\n");
  entry("system/typeless.desktop", "[Desktop Entry]\nName=Typeless\n");
  entry("system/nameless.desktop", "[Desktop Entry]\nType=Application\n");
  entry("system/empty.desktop", "");
  entry("system/groupless.desktop", "Type=Application\nName=Groupless\n");
  entry("system/other-group.desktop", "[Other]\nType=Application\nName=Other\n");
  entry("system/not-utf8.desktop", "[Desktop Entry]\nType=Application\nName=\xFF\n");
  entry("system/large.desktop", "[Desktop Entry]\nType=Application\nName=Large\n" + std::string(2'000'000, '#'));
  application("system/no-desktop-file.txt", "Text");
  application("system/good.desktop", "Good");
  std::filesystem::create_directories(folder_.path() / "system/applications/folder.desktop");
  std::filesystem::create_symlink("nowhere", folder_.path() / "system/applications/dangling.desktop");
  ASSERT_EQ(::mkfifo((folder_.path() / "system/applications/pipe.desktop").c_str(), 0600), 0);
  EXPECT_THAT(installed(), ElementsAre(Application{"good.desktop", "Good"}));
}

TEST_F(DesktopApplicationsTest, ABrokenEntryOfTheUserDoesNotTakeAwayTheOneOfTheSystem) {
  application("system/a.desktop", "System");
  entry("user/a.desktop", "nothing of use");
  EXPECT_THAT(installed(), ElementsAre(Application{"a.desktop", "System"}));
}

TEST_F(DesktopApplicationsTest, HaveTheirNameInTheUsersLanguage) {
  application("system/a.desktop", "Camera",
              "Name[pt]=Câmara\nName[pt_BR]=Câmera\nName[de]=Kamera\nName[sr@latin]=Kamera (sr)\nGenericName=No\n");
  EXPECT_EQ(installed({"pt_BR"}).at(0).name, "Câmera");
  EXPECT_EQ(installed({"pt_PT"}).at(0).name, "Câmara");
  EXPECT_EQ(installed({"sr_RS@latin"}).at(0).name, "Kamera (sr)");
  EXPECT_EQ(installed({"fr", "de_AT"}).at(0).name, "Kamera");
  EXPECT_EQ(installed({"fr"}).at(0).name, "Camera");
  EXPECT_EQ(installed({}).at(0).name, "Camera");
}

TEST_F(DesktopApplicationsTest, AreSortedByTheLocalisedName) {
  application("system/a.desktop", "Alpha", "Name[de]=Zeta\n");
  application("system/b.desktop", "Beta");
  EXPECT_THAT(installed({"de"}), ElementsAre(Application{"b.desktop", "Beta"}, Application{"a.desktop", "Zeta"}));
}

TEST_F(DesktopApplicationsTest, AreReadWithCommentsSpacesEscapesAndOtherGroups) {
  entry(
      "system/a.desktop",
      "# Comment\n\n[Desktop Entry]\r\nType = Application\r\n#Name=Wrong\r\nName =  One\\sTwo\\\\\\tThree\\q  \r\n\r\n"
      "[Desktop Action new]\nName=Action\nNoDisplay=true\n[Desktop Entry]\nName=Again");
  EXPECT_THAT(installed(), ElementsAre(Application{"a.desktop", "One Two\\\tThree\\q"}));
}

TEST_F(DesktopApplicationsTest, AreFoundThroughLinksAndAFolderThatContainsItselfIsReadOnce) {
  const auto target = folder_.write("elsewhere/real", "[Desktop Entry]\nType=Application\nName=Linked\n");
  application("system/a.desktop", "Own");
  const auto applications = folder_.path() / "system/applications";
  std::filesystem::create_symlink(target, applications / "linked.desktop");
  std::filesystem::create_directory_symlink(applications, applications / "loop");
  std::filesystem::create_directory_symlink(applications, applications / "loop2");
  EXPECT_THAT(installed(), ElementsAre(Application{"linked.desktop", "Linked"}, Application{"a.desktop", "Own"}));
}

TEST_F(DesktopApplicationsTest, ThatArriveLaterAreFound) {
  DesktopApplications applications({folder_.path() / "user"}, {});
  EXPECT_THAT(applications.installedApplications(), ElementsAre());
  application("user/new.desktop", "New");
  EXPECT_THAT(applications.installedApplications(), ElementsAre(Application{"new.desktop", "New"}));
}

TEST_F(DesktopApplicationsTest, ThousandsAreFast) {
  std::string translations;
  for (int i = 0; i < 100; ++i) translations += "Comment[x" + std::to_string(i) + "]=A comment in some language\n";
  for (int i = 0; i < 3000; ++i) {
    application("system/" + std::to_string(i) + ".desktop", "Application " + std::to_string(i), translations);
  }
  const auto began = std::chrono::steady_clock::now();
  EXPECT_EQ(installed({"de"}).size(), 3000u);
  EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(5));
}

TEST(DataFolders, AreThoseOfTheEnvironmentWithTheUsersFirst) {
  const auto folders = [](const std::map<std::string, std::string>& variables) {
    return dataFolders([&](const std::string& name) -> std::optional<std::string> {
      const auto found = variables.find(name);
      return found == variables.end() ? std::nullopt : std::optional(found->second);
    });
  };
  EXPECT_THAT(folders({{"XDG_DATA_HOME", "/data"}, {"XDG_DATA_DIRS", "/a:relative:/b"}, {"HOME", "/home/u"}}),
              ElementsAre("/data", "/a", "/b"));
  EXPECT_THAT(folders({{"HOME", "/home/u"}}), ElementsAre("/home/u/.local/share", "/usr/local/share", "/usr/share"));
  EXPECT_THAT(folders({{"XDG_DATA_HOME", "relative"}, {"XDG_DATA_DIRS", ""}, {"HOME", "/home/u"}}),
              ElementsAre("/home/u/.local/share", "/usr/local/share", "/usr/share"));
  EXPECT_THAT(folders({{"XDG_DATA_DIRS", "/a"}}), ElementsAre("/a"));
}

}  // namespace applications_test
}  // namespace quellar::host::linux
