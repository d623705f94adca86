// SPDX-License-Identifier: MIT
#include "host/linux/languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

namespace quellar::host::linux {
namespace languages_test {

using testing::ElementsAre;

Environment environment(const std::map<std::string, std::string>& variables) {
  return [variables](const std::string& name) -> std::optional<std::string> {
    const auto found = variables.find(name);
    return found == variables.end() ? std::nullopt : std::optional(found->second);
  };
}

TEST(UserLanguages, AreTheOptionAloneWhereItIsGiven) {
  const Environment german = environment({{"LANGUAGE", "de"}, {"LANG", "de_DE.UTF-8"}});
  EXPECT_THAT(userLanguages("pt-BR", german), ElementsAre("pt_BR"));
  EXPECT_THAT(userLanguages("sr_RS.UTF-8@latin", german), ElementsAre("sr_RS@latin"));
  EXPECT_THAT(userLanguages("C", german), ElementsAre());
  EXPECT_THAT(userLanguages("", german), ElementsAre());
}

TEST(UserLanguages, AreNoneWhereTheEnvironmentNamesNone) {
  EXPECT_THAT(userLanguages({}, environment({})), ElementsAre());
  EXPECT_THAT(userLanguages({}, environment({{"LANG", "C.UTF-8"}})), ElementsAre());
  EXPECT_THAT(userLanguages({}, environment({{"LANG", "POSIX"}, {"LANGUAGE", "de"}})), ElementsAre());
  EXPECT_THAT(userLanguages({}, environment({{"LC_ALL", "C"}, {"LANGUAGE", "de"}, {"LANG", "fr_FR"}})), ElementsAre());
}

TEST(UserLanguages, FollowTheOrderOfTheLocaleVariables) {
  EXPECT_THAT(userLanguages({}, environment({{"LC_ALL", "de_DE.UTF-8"}, {"LC_MESSAGES", "fr_FR"}, {"LANG", "it_IT"}})),
              ElementsAre("de_DE"));
  EXPECT_THAT(userLanguages({}, environment({{"LC_ALL", ""}, {"LC_MESSAGES", "fr_FR"}, {"LANG", "it_IT"}})),
              ElementsAre("fr_FR"));
  EXPECT_THAT(userLanguages({}, environment({{"LANG", "it_IT@euro"}})), ElementsAre("it_IT@euro"));
}

TEST(UserLanguages, PutTheListOfLanguagesFirst) {
  EXPECT_THAT(userLanguages({}, environment({{"LANGUAGE", "pt_BR::pt:es"}, {"LANG", "pt_BR.UTF-8"}})),
              ElementsAre("pt_BR", "pt", "es"));
  EXPECT_THAT(userLanguages({}, environment({{"LANGUAGE", "de"}, {"LANG", "C.UTF-8"}})), ElementsAre("de"));
  EXPECT_THAT(userLanguages({}, environment({{"LANGUAGE", "de"}})), ElementsAre("de"));
}

TEST(UserLanguages, EndWithEnglish) {
  EXPECT_THAT(userLanguages({}, environment({{"LANGUAGE", "de:en_GB:fr"}, {"LANG", "it_IT"}})),
              ElementsAre("de", "en_GB"));
}

TEST(LocaleVariants, GoFromTheMostToTheLeastSpecific) {
  EXPECT_THAT(localeVariants("sr_RS@latin"), ElementsAre("sr_RS@latin", "sr_RS", "sr@latin", "sr"));
  EXPECT_THAT(localeVariants("pt_BR"), ElementsAre("pt_BR", "pt"));
  EXPECT_THAT(localeVariants("sr@latin"), ElementsAre("sr@latin", "sr"));
  EXPECT_THAT(localeVariants("de"), ElementsAre("de"));
}

TEST(PseudoLanguages, AreTwo) {
  EXPECT_EQ(pseudoLanguage("en_XA"), PseudoLanguage::Accented);
  EXPECT_EQ(pseudoLanguage("ar_XB"), PseudoLanguage::Mirrored);
  EXPECT_EQ(pseudoLanguage("en"), std::nullopt);
  EXPECT_EQ(pseudoLanguage("ar"), std::nullopt);
}

TEST(AccentedLanguage, IsAccentedAndLonger) {
  EXPECT_EQ(pseudoLocalized("Settings", PseudoLanguage::Accented), "[Šéţţîñĝš one]");
  EXPECT_EQ(pseudoLocalized("On", PseudoLanguage::Accented), "[Öñ]");
  EXPECT_EQ(pseudoLocalized("Hide Battery (+ Bolt)", PseudoLanguage::Accented), "[Ĥîðé Ɓåţţéŕý (+ Ɓöļţ) one two]");
  EXPECT_EQ(pseudoLocalized("“Größe” → 1", PseudoLanguage::Accented), "[“Ĝŕößé” → 1 one]");
  EXPECT_EQ(pseudoLocalized("", PseudoLanguage::Accented), "");
}

TEST(AccentedLanguage, IsAtLeastFortyPercentLongerForAnyLength) {
  for (std::size_t length = 1; length < 300; ++length) {
    const std::size_t longer = pseudoLocalized(std::string(length, '.'), PseudoLanguage::Accented).size();
    EXPECT_GE(longer * 10, length * 14);
    EXPECT_LE(longer, length * 14 / 10 + 7);
  }
}

TEST(AccentedLanguage, LeavesPlaceholdersAsTheyAre) {
  EXPECT_EQ(pseudoLocalized("%d of %1$@ is %.01f%% (%-5ld, %s)", PseudoLanguage::Accented),
            "[%d öƒ %1$@ îš %.01f%% (%-5ld, %s) one two three]");
  EXPECT_EQ(pseudoLocalized("20 %", PseudoLanguage::Accented), "[20 %]");
  EXPECT_EQ(pseudoLocalized("5%\n", PseudoLanguage::Accented), "[5%\n]");
}

TEST(MirroredLanguage, RunsFromRightToLeftLineByLineAroundPlaceholders) {
  EXPECT_EQ(pseudoLocalized("Settings", PseudoLanguage::Mirrored), "\u200F\u202ESettings\u202C\u200F");
  EXPECT_EQ(pseudoLocalized("one\ntwo", PseudoLanguage::Mirrored),
            "\u200F\u202Eone\u202C\n\u200F\u202Etwo\u202C\u200F");
  EXPECT_EQ(pseudoLocalized("%d of %@", PseudoLanguage::Mirrored), "\u200F%d\u202E of \u202C%@\u200F");
  EXPECT_EQ(pseudoLocalized("", PseudoLanguage::Mirrored), "");
}

TEST(RightToLeft, IsKnownByTheLanguage) {
  EXPECT_TRUE(isRightToLeft("ar"));
  EXPECT_TRUE(isRightToLeft("he_IL"));
  EXPECT_TRUE(isRightToLeft("ar_XB"));
  EXPECT_FALSE(isRightToLeft("de_DE"));
  EXPECT_FALSE(isRightToLeft("en_XA"));
  EXPECT_FALSE(isRightToLeft(""));
}

}  // namespace languages_test
}  // namespace quellar::host::linux
