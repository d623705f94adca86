// SPDX-License-Identifier: MIT
#include "host/linux/bundles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "host/linux/property_list/property_list.h"
#include "support/temporary_folder.h"

namespace quellar::host::linux {

void PrintTo(const BundleResources::ImageFile& file, std::ostream* stream) {
  *stream << file.file << " at " << file.scale;
}

namespace bundles_test {

using platform::Array;
using platform::Dictionary;
using platform::Image;
using platform::Value;
using testing::ElementsAre;

const std::string kBundle = "/Library/PreferenceBundles/Quellar.bundle";

// A device root, and an installed bundle and one of a source tree beneath it.
class BundleResourcesTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(inDevice(""));
    std::filesystem::create_directories(installed(""));
    std::filesystem::create_directories(source(""));
  }

  [[nodiscard]] std::filesystem::path inDevice(const std::string& name) const {
    return folder_.path() / ("device" + kBundle) / name;
  }
  [[nodiscard]] std::filesystem::path installed(const std::string& name) const {
    return folder_.path() / "installed" / name;
  }
  [[nodiscard]] std::filesystem::path source(const std::string& name) const { return folder_.path() / "source" / name; }

  void write(const std::filesystem::path& file, std::string_view bytes = "x") const {
    folder_.write(file.lexically_relative(folder_.path()), bytes);
  }
  void writeList(const std::filesystem::path& file, const Value& value) const {
    write(file, encodePropertyList(value).bytes());
  }

  BundleResources resources(const std::vector<std::string>& languages = {}) {
    return {root_, languages, [this](const std::string& message) { reported_.push_back(message); }};
  }
  std::string localized(const std::vector<std::string>& languages, const std::string& key,
                        const std::string& value = "", const std::optional<std::string>& table = {}) {
    return resources(languages).localizedString(kBundle, key, value, table);
  }

  tests::TemporaryFolder folder_;
  DeviceRoot root_{folder_.path() / "device", {folder_.path() / "installed", folder_.path() / "source"}};
  std::vector<std::string> reported_;
};

using LocalizedString = BundleResourcesTest;
using BundleImages = BundleResourcesTest;
using RowFiles = BundleResourcesTest;
using DeviceFiles = BundleResourcesTest;

TEST_F(LocalizedString, IsTheKeyOrTheValueWhereNoTableHasIt) {
  EXPECT_EQ(localized({"de"}, "Status Bar"), "Status Bar");
  EXPECT_EQ(localized({"de"}, "Status Bar", "fallback"), "fallback");
  EXPECT_EQ(localized({}, ""), "");
  EXPECT_THAT(reported_, ElementsAre());
}

TEST_F(LocalizedString, ComesFromTheBestLanguageThatHasIt) {
  write(installed("pt-BR.lproj/Localizable.strings"), "a = brazil;");
  write(installed("pt.lproj/Localizable.strings"), "a = portugal; b = portugal;");
  write(installed("es.lproj/Localizable.strings"), "a = spain; b = spain; c = spain;");
  write(installed("en.lproj/Localizable.strings"), "a = england; b = england; c = england; d = england; e = \"\";");
  const std::vector<std::string> languages = {"pt_BR", "es"};
  EXPECT_EQ(localized(languages, "a"), "brazil");
  EXPECT_EQ(localized(languages, "b"), "portugal");
  EXPECT_EQ(localized(languages, "c"), "spain");
  EXPECT_EQ(localized(languages, "d"), "england");
  EXPECT_EQ(localized(languages, "e", "fallback"), "");
  EXPECT_EQ(localized(languages, "f"), "f");
  EXPECT_EQ(localized({"de"}, "a"), "england");
  EXPECT_EQ(localized({}, "a"), "england");
}

TEST_F(LocalizedString, FindsAFolderWithAnUnderscoreToo) {
  write(installed("zh_TW.lproj/Localizable.strings"), "a = taiwan;");
  EXPECT_EQ(localized({"zh_TW"}, "a"), "taiwan");
}

TEST_F(LocalizedString, ComesFromTheTableThatIsNamed) {
  write(installed("en.lproj/Localizable.strings"), "a = default;");
  write(installed("en.lproj/Music.strings"), "a = music;");
  EXPECT_EQ(localized({}, "a"), "default");
  EXPECT_EQ(localized({}, "a", "", "Music"), "music");
  EXPECT_EQ(localized({}, "a", "", "Missing"), "a");
}

TEST_F(LocalizedString, ATableOfTheDeviceRootReplacesTheInstalledOneAndThatTheOneOfTheSourceTree) {
  write(source("en.lproj/Localizable.strings"), "a = source;");
  EXPECT_EQ(localized({}, "a"), "source");
  write(installed("en.lproj/Localizable.strings"), "a = installed;");
  EXPECT_EQ(localized({}, "a"), "installed");
  write(inDevice("en.lproj/Localizable.strings"), "a = device;");
  EXPECT_EQ(localized({}, "a"), "device");
}

TEST_F(LocalizedString, ATableIsReadOnce) {
  write(installed("en.lproj/Localizable.strings"), "a = before;");
  BundleResources bundles = resources();
  EXPECT_EQ(bundles.localizedString(kBundle, "a", "", {}), "before");
  write(installed("en.lproj/Localizable.strings"), "a = after;");
  EXPECT_EQ(bundles.localizedString(kBundle, "a", "", {}), "before");
}

TEST_F(LocalizedString, TheSoundPartOfABrokenTableServesAndTheRestIsReported) {
  write(inDevice("en.lproj/Localizable.strings"), "a = one;\nb = ;\nc = three;\n");
  BundleResources bundles = resources();
  EXPECT_EQ(bundles.localizedString(kBundle, "a", "", {}), "one");
  EXPECT_EQ(bundles.localizedString(kBundle, "b", "", {}), "b");
  EXPECT_EQ(bundles.localizedString(kBundle, "c", "", {}), "three");
  EXPECT_THAT(reported_, ElementsAre(inDevice("en.lproj/Localizable.strings").string() + ":2: a text is missing"));
}

TEST_F(LocalizedString, ATableThatCannotBeReadIsReportedAndTheOthersServe) {
  std::filesystem::create_directories(installed("de.lproj/Localizable.strings"));
  write(installed("en.lproj/Localizable.strings"), "a = one;");
  EXPECT_EQ(localized({"de"}, "a"), "one");
  EXPECT_THAT(reported_, ElementsAre(inDevice("de.lproj/Localizable.strings").string() + ": is not a regular file"));
}

TEST_F(LocalizedString, TableNamesDoNotLeaveTheBundle) {
  write(folder_.path() / "device/Library/PreferenceBundles/outside.strings", "a = leaked;");
  write(inDevice("en.lproj/Localizable.strings"), "a = inside;");
  EXPECT_EQ(localized({}, "a", "", "../../outside"), "a");
  EXPECT_EQ(localized({}, "a", "", "/../outside"), "a");
  EXPECT_EQ(localized({}, "a", "", ""), "a");
  EXPECT_EQ(localized({"../../x/en"}, "a"), "inside");
}

TEST_F(LocalizedString, PseudoLanguagesChangeTheEnglishText) {
  write(installed("en.lproj/Localizable.strings"), "key = Settings;");
  write(installed("ar.lproj/Localizable.strings"), "key = arabic;");
  EXPECT_EQ(localized({"en_XA"}, "key"), "[Šéţţîñĝš one]");
  EXPECT_EQ(localized({"en_XA"}, "Dock"), "[Ðöçķ]");
  EXPECT_EQ(localized({"ar_XB"}, "key"), "\u200F\u202ESettings\u202C\u200F");
}

TEST_F(LocalizedString, KnowsTheDirectionOfTheLanguageThatIsShown) {
  write(installed("ar.lproj/Localizable.strings"), "a = b;");
  write(installed("en.lproj/Localizable.strings"), "a = b;");
  EXPECT_TRUE(resources({"ar_EG"}).isRightToLeft());
  EXPECT_TRUE(resources({"ar_XB"}).isRightToLeft());
  EXPECT_FALSE(resources({"he"}).isRightToLeft()) << "there are no Hebrew texts, so English is shown";
  EXPECT_FALSE(resources({"en_XA"}).isRightToLeft());
  EXPECT_FALSE(resources({}).isRightToLeft());
}

TEST_F(BundleImages, AreThereWhenAFileOfAnyScaleIs) {
  write(installed("images/one.png"));
  write(inDevice("images/two@2x.png"));
  write(source("images/three@3x.png"));
  std::filesystem::create_directories(inDevice("images/folder.png"));
  BundleResources files = resources();
  for (const std::string name : {"one", "two", "three"}) {
    const std::string path = std::string(kBundle).append("/images/").append(name).append(".png");
    EXPECT_EQ(files.imageWithContentsOfFile(path), (Image{.path = path, .flatColor = {}})) << name;
  }
  EXPECT_EQ(files.imageWithContentsOfFile(kBundle + "/images/four.png"), std::nullopt);
  EXPECT_EQ(files.imageWithContentsOfFile(kBundle + "/images/folder.png"), std::nullopt);
  EXPECT_EQ(files.imageWithContentsOfFile(""), std::nullopt);
}

TEST_F(BundleImages, AreFoundByNameInABundle) {
  write(folder_.path() / "device/System/Library/Phone.bundle/BarDialer@2x.png");
  BundleResources files = resources();
  EXPECT_EQ(files.imageNamed("BarDialer", "/System/Library/Phone.bundle"),
            (Image{.path = "/System/Library/Phone.bundle/BarDialer.png", .flatColor = {}}));
  EXPECT_EQ(files.imageNamed("BarMissing", "/System/Library/Phone.bundle"), std::nullopt);
  EXPECT_EQ(files.imageNamed("BarDialer", "/System/Library/Missing.bundle"), std::nullopt);
}

TEST_F(BundleImages, NamesDoNotLeaveTheBundle) {
  write(folder_.path() / "device/Library/PreferenceBundles/outside.png");
  write(folder_.path() / "outside.png");
  BundleResources files = resources();
  EXPECT_EQ(files.imageNamed("../outside", kBundle), std::nullopt);
  EXPECT_EQ(files.imageNamed("images/../../outside", kBundle), std::nullopt);
  EXPECT_EQ(files.imageNamed("/../outside", kBundle), std::nullopt);
  EXPECT_EQ(files.imageNamed("", kBundle), std::nullopt);
  EXPECT_EQ(files.imageWithContentsOfFile("/../outside.png"), std::nullopt);
  EXPECT_EQ(files.imageWithContentsOfFile(kBundle + "/../../../../outside.png"), std::nullopt);
}

TEST_F(BundleImages, ALinkThatLeavesTheDeviceRootIsNoImage) {
  write(folder_.path() / "outside.png");
  std::filesystem::create_directories(inDevice("images"));
  std::filesystem::create_symlink(folder_.path() / "outside.png", inDevice("images/link.png"));
  EXPECT_EQ(resources().imageWithContentsOfFile(kBundle + "/images/link.png"), std::nullopt);
}

TEST_F(BundleImages, TheFileSuitsTheScreen) {
  for (const std::string name : {"all.png", "all@2x.png", "all@3x.png", "coarse.png", "fine@3x.png"}) {
    write(installed("images/" + name));
  }
  const BundleResources files = resources();
  const auto fileOf = [&](const std::string& name, double scale) {
    return files.imageFile({.path = kBundle + "/images/" + name, .flatColor = {}}, scale);
  };
  using File = BundleResources::ImageFile;
  EXPECT_EQ(fileOf("all.png", 1), (File{installed("images/all.png"), 1}));
  EXPECT_EQ(fileOf("all.png", 1.25), (File{installed("images/all@2x.png"), 2}));
  EXPECT_EQ(fileOf("all.png", 2), (File{installed("images/all@2x.png"), 2}));
  EXPECT_EQ(fileOf("all.png", 3), (File{installed("images/all@3x.png"), 3}));
  EXPECT_EQ(fileOf("all.png", 4), (File{installed("images/all@3x.png"), 3}));
  EXPECT_EQ(fileOf("coarse.png", 3), (File{installed("images/coarse.png"), 1}));
  EXPECT_EQ(fileOf("fine.png", 1), (File{installed("images/fine@3x.png"), 3}));
  EXPECT_EQ(fileOf("none.png", 1), std::nullopt);
}

TEST_F(BundleImages, GiveTheBytesOfTheirFileWhereItLiesInsideAndIsNotTooLarge) {
  write(installed("images/one.png"), "installed");
  write(inDevice("images/two@2x.png"), "device");
  write(folder_.path() / "outside.png", "outside");
  std::filesystem::create_symlink(folder_.path() / "outside.png", inDevice("images/link.png"));
  write(inDevice("images/large.png"), "large");
  std::filesystem::resize_file(inDevice("images/large.png"), kImageSizeLimit + 1);
  const BundleResources files = resources();
  const auto bytesOf = [&](const std::string& name) {
    return files.imageBytes({.path = kBundle + "/images/" + name, .flatColor = {}}, 2);
  };
  EXPECT_EQ(bytesOf("one.png"), "installed");
  EXPECT_EQ(bytesOf("two.png"), "device");
  EXPECT_EQ(bytesOf("none.png"), std::nullopt);
  EXPECT_EQ(bytesOf("link.png"), std::nullopt);
  EXPECT_EQ(bytesOf("../../../../../outside.png"), std::nullopt);
  EXPECT_EQ(bytesOf("large.png"), std::nullopt);
  EXPECT_EQ(reported_.back(), inDevice("images/large.png").string() + ": is larger than 16777216 bytes");
}

TEST_F(DeviceFiles, ExistInTheDeviceRootAndInTheBundle) {
  write(folder_.path() / "device/usr/lib/libtessaly.dylib");
  write(source("images/logo.png"));
  BundleResources files = resources();
  EXPECT_TRUE(files.fileExists("/usr/lib/libtessaly.dylib"));
  EXPECT_TRUE(files.fileExists("/usr/lib"));
  EXPECT_TRUE(files.fileExists(kBundle + "/images/logo.png"));
  EXPECT_FALSE(files.fileExists("/usr/lib/libflipcontrolcenter.dylib"));
  EXPECT_FALSE(files.fileExists("/../installed"));
}

TEST_F(DeviceFiles, PropertyListsAreReadWholeAndBrokenOnesReported) {
  const std::string names = "/var/mobile/Library/Accounts/twitter.plist";
  const auto file = folder_.path() / ("device" + names);
  BundleResources files = resources();
  EXPECT_EQ(files.propertyListWithContentsOfFile(names), std::nullopt);
  EXPECT_THAT(reported_, ElementsAre());
  writeList(file, Array{"one", "two"});
  EXPECT_EQ(files.propertyListWithContentsOfFile(names), Value(Array{"one", "two"}));
  EXPECT_THAT(reported_, ElementsAre());
  write(file, "bplist00 and then nothing");
  EXPECT_EQ(files.propertyListWithContentsOfFile(names), std::nullopt);
  EXPECT_THAT(reported_, ElementsAre(testing::StartsWith(file.string() + ": ")));
}

TEST_F(RowFiles, GiveTheirItems) {
  writeList(installed("Restrictions.plist"), Dictionary{{"items", Array{Dictionary{{"cell", "PSSwitchCell"}}, 7}}});
  EXPECT_EQ(resources().rowFileItems(kBundle, "Restrictions"), (Array{Dictionary{{"cell", "PSSwitchCell"}}, 7}));
  EXPECT_EQ(resources().rowFileItems(kBundle, "Missing"), std::nullopt);
  EXPECT_THAT(reported_, ElementsAre());
}

TEST_F(RowFiles, OfAnotherShapeAreReported) {
  const auto file = inDevice("Rows.plist");
  const std::string message = file.string() + ": is no dictionary with an array \"items\"";
  const std::vector<Value> values = {Array{}, Dictionary{}, Dictionary{{"items", "text"}}, 5};
  for (const Value& value : values) {
    writeList(file, value);
    EXPECT_EQ(resources().rowFileItems(kBundle, "Rows"), std::nullopt);
    EXPECT_THAT(reported_, ElementsAre(message));
    reported_.clear();
  }
  write(file, "not a property list");
  EXPECT_EQ(resources().rowFileItems(kBundle, "Rows"), std::nullopt);
  EXPECT_THAT(reported_, ElementsAre(testing::StartsWith(file.string() + ": ")));
}

TEST_F(RowFiles, NamesDoNotLeaveTheBundle) {
  writeList(folder_.path() / "device/Library/PreferenceBundles/outside.plist", Dictionary{{"items", Array{}}});
  EXPECT_EQ(resources().rowFileItems(kBundle, "../outside"), std::nullopt);
  EXPECT_THAT(reported_, ElementsAre("../outside: leads out of its bundle"));
}

TEST_F(RowFiles, PassOnWhatTheirReaderSkips) {
  resources().reportRowFile("Restrictions", "item 3 has no cell");
  EXPECT_THAT(reported_, ElementsAre("Restrictions.plist: item 3 has no cell"));
}

}  // namespace bundles_test
}  // namespace quellar::host::linux
