// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>

#include "platform/ports.h"

// What every implementation of platform::Preferences does. An implementation joins with
//
//   struct Maker { platform::Preferences& preferences(); };  // made anew for each test
//   INSTANTIATE_TYPED_TEST_SUITE_P(Name, PreferencesContract, Maker);

namespace quellar::tests {

template <typename Maker>
class PreferencesContract : public testing::Test {
 protected:
  platform::Preferences& store() { return maker_.preferences(); }

  static constexpr const char* kDomain = "com.vantorick.quellar2";

 private:
  Maker maker_;
};

TYPED_TEST_SUITE_P(PreferencesContract);

TYPED_TEST_P(PreferencesContract, ReadsNothingForAKeyThatWasNeverSet) {
  EXPECT_EQ(this->store().copyAppValue("Dock_Defaults", this->kDomain), std::nullopt);
}

TYPED_TEST_P(PreferencesContract, ReadsBackWhatWasSet) {
  this->store().setAppValue("QLREnableKey", platform::Value(true), this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("QLREnableKey", this->kDomain), platform::Value(true));
}

TYPED_TEST_P(PreferencesContract, KeepsTheTypesApart) {
  using platform::Array;
  using platform::Data;
  using platform::Date;
  using platform::Dictionary;
  const Dictionary all = {
      {"array", Array{true, 1, 1.0, "1"}},
      {"data", Data{{0, 255, 127}}},
      {"date", Date{-0.5}},
      {"dictionary", Dictionary{{"", "an empty key"}, {"empty", Dictionary{}}}},
      {"empty array", Array{}},
      {"empty data", Data{}},
      {"empty string", ""},
      {"false", false},
      {"greatest", std::numeric_limits<std::int64_t>::max()},
      {"integer", 1},
      {"least", std::numeric_limits<std::int64_t>::min()},
      {"long ago", Date{-63114076800.0}},
      {"negative", -7},
      {"real", 1.0},
      {"tenth", 0.1},
      {"text", "Grüße, 😀 \n"},
      {"true", true},
  };
  this->store().setAppValue("all", platform::Value(all), this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("all", this->kDomain), platform::Value(all));
}

TYPED_TEST_P(PreferencesContract, ReplacesTheKeyThatIsSetAndNoOther) {
  using platform::Dictionary;
  this->store().setAppValue("Dock_Defaults", platform::Value(Dictionary{{"a", 1}, {"b", 2}}), this->kDomain);
  this->store().setAppValue("Icon_Defaults", platform::Value(Dictionary{{"c", 3}}), this->kDomain);
  this->store().setAppValue("Dock_Defaults", platform::Value(Dictionary{{"a", 9}}), this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("Dock_Defaults", this->kDomain), platform::Value(Dictionary{{"a", 9}}));
  EXPECT_EQ(this->store().copyAppValue("Icon_Defaults", this->kDomain), platform::Value(Dictionary{{"c", 3}}));
}

TYPED_TEST_P(PreferencesContract, ReplacesAValueByOneOfAnotherType) {
  this->store().setAppValue("key", platform::Value(1), this->kDomain);
  this->store().setAppValue("key", platform::Value(true), this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("key", this->kDomain), platform::Value(true));
  this->store().setAppValue("key", platform::Value(1.0), this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("key", this->kDomain), platform::Value(1.0));
}

TYPED_TEST_P(PreferencesContract, RemovesAKeyThatIsSetToNothingAndNoOther) {
  this->store().setAppValue("a", platform::Value(1), this->kDomain);
  this->store().setAppValue("b", platform::Value(2), this->kDomain);
  this->store().setAppValue("a", std::nullopt, this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("a", this->kDomain), std::nullopt);
  EXPECT_EQ(this->store().copyAppValue("b", this->kDomain), platform::Value(2));
}

TYPED_TEST_P(PreferencesContract, TakesTheRemovalOfAKeyThatIsNotThere) {
  this->store().setAppValue("a", platform::Value(1), this->kDomain);
  this->store().setAppValue("never set", std::nullopt, this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("a", this->kDomain), platform::Value(1));
}

TYPED_TEST_P(PreferencesContract, KeepsTheDomainsApart) {
  this->store().setAppValue("key", platform::Value("new"), "com.vantorick.quellar2");
  this->store().setAppValue("key", platform::Value("old"), "com.vantorick.quellar");
  EXPECT_EQ(this->store().copyAppValue("key", "com.vantorick.quellar2"), platform::Value("new"));
  EXPECT_EQ(this->store().copyAppValue("key", "com.vantorick.quellar"), platform::Value("old"));
  EXPECT_EQ(this->store().copyAppValue("key", "com.vantorick.glint2"), std::nullopt);
}

TYPED_TEST_P(PreferencesContract, HandsOutCopies) {
  using platform::Dictionary;
  Dictionary page = {{"a", 1}};
  this->store().setAppValue("Dock_Defaults", platform::Value(page), this->kDomain);
  page["a"] = 2;
  std::optional<platform::Value> read = this->store().copyAppValue("Dock_Defaults", this->kDomain);
  ASSERT_TRUE(read && read->template is<Dictionary>());
  (*read->template as<Dictionary>())["a"] = 3;
  EXPECT_EQ(this->store().copyAppValue("Dock_Defaults", this->kDomain), platform::Value(Dictionary{{"a", 1}}));
}

TYPED_TEST_P(PreferencesContract, ReadsTheSameAfterSynchronize) {
  this->store().setAppValue("key", platform::Value(0.5), this->kDomain);
  this->store().appSynchronize(this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("key", this->kDomain), platform::Value(0.5));
}

TYPED_TEST_P(PreferencesContract, SynchronizesADomainThatWasNeverSet) {
  this->store().appSynchronize(this->kDomain);
  EXPECT_EQ(this->store().copyAppValue("key", this->kDomain), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(PreferencesContract, ReadsNothingForAKeyThatWasNeverSet, ReadsBackWhatWasSet,
                            KeepsTheTypesApart, ReplacesTheKeyThatIsSetAndNoOther, ReplacesAValueByOneOfAnotherType,
                            RemovesAKeyThatIsSetToNothingAndNoOther, TakesTheRemovalOfAKeyThatIsNotThere,
                            KeepsTheDomainsApart, HandsOutCopies, ReadsTheSameAfterSynchronize,
                            SynchronizesADomainThatWasNeverSet);

}  // namespace quellar::tests
