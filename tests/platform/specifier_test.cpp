// SPDX-License-Identifier: MIT
#include "platform/specifier.h"

#include <gtest/gtest.h>

#include <limits>

namespace quellar::tests {
namespace specifier_test {

using platform::PSCellType;
using platform::PSSpecifier;
using platform::Value;

TEST(Value, TellsBooleanIntegerAndRealApart) {
  EXPECT_NE(Value(true), Value(1));
  EXPECT_NE(Value(1), Value(1.0));
  EXPECT_NE(Value("1"), Value(1));
  EXPECT_EQ(platform::typeName(Value(true)), "boolean");
  EXPECT_EQ(platform::typeName(Value(1)), "integer");
  EXPECT_EQ(platform::typeName(Value(1.0)), "real");
  EXPECT_EQ(platform::typeName(Value("x")), "string");
  EXPECT_EQ(platform::typeName(Value(platform::Data{})), "data");
  EXPECT_EQ(platform::typeName(Value(platform::Date{})), "date");
  EXPECT_EQ(platform::typeName(Value(platform::Array{})), "array");
  EXPECT_EQ(platform::typeName(Value(platform::Dictionary{})), "dictionary");
}

TEST(Value, ReadsNumbersAsEachOther) {
  EXPECT_TRUE(Value(2).boolValue());
  EXPECT_TRUE(Value(0.5).boolValue());
  EXPECT_FALSE(Value(0.0).boolValue());
  EXPECT_FALSE(Value("1").boolValue());
  EXPECT_EQ(Value(-2.9).integerValue(), -2);
  EXPECT_EQ(Value(1e300).integerValue(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(Value(-1e300).integerValue(), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).integerValue(), 0);
  EXPECT_EQ(Value(true).integerValue(), 1);
  EXPECT_EQ(Value("7").integerValue(), 0);
  EXPECT_EQ(Value(7).doubleValue(), 7.0);
  EXPECT_EQ(Value(true).doubleValue(), 1.0);
}

TEST(Specifier, TakesItsNameAsItsLabelProperty) {
  const auto row = PSSpecifier::preferenceSpecifierNamed("Name", nullptr, {}, {}, "", PSCellType::PSSwitchCell);
  EXPECT_EQ(row->stringForKey("label"), "Name");
  EXPECT_TRUE(PSSpecifier::emptyGroupSpecifier()->properties().empty());
  EXPECT_EQ(PSSpecifier::groupSpecifierWithName("Title")->stringForKey("label"), "Title");
}

TEST(Specifier, AnswersToItsKeyUnlessItHasAnIdentifierOfItsOwn) {
  const auto row = PSSpecifier::preferenceSpecifierNamed("Name", nullptr, {}, {}, "", PSCellType::PSSwitchCell);
  EXPECT_EQ(row->identifier(), std::nullopt);
  row->setProperty("key", Value("key"));
  EXPECT_EQ(row->identifier(), "key");
  row->setProperty("id", Value("id"));
  EXPECT_EQ(row->identifier(), "id");
}

TEST(Specifier, IsEnabledUnlessItsPropertySaysNo) {
  const auto row = PSSpecifier::emptyGroupSpecifier();
  EXPECT_TRUE(row->enabled());
  row->setProperty("enabled", Value(false));
  EXPECT_FALSE(row->enabled());
  row->setProperty("enabled", Value(0));
  EXPECT_FALSE(row->enabled());
  row->setProperty("enabled", Value(true));
  EXPECT_TRUE(row->enabled());
}

TEST(Specifier, FindsTheFirstChoiceOfAValueThatStandsTwice) {
  const auto row = PSSpecifier::preferenceSpecifierNamed("P", nullptr, {}, {}, "", PSCellType::PSLinkListCell);
  row->setValues({9, 16, 1.2, 16, "s"}, {"a", "b", "c", "d", "e"}, {});
  EXPECT_EQ(row->indexOfValue(16), 1U);
  EXPECT_EQ(row->indexOfValue(16.0), 1U);
  EXPECT_EQ(row->indexOfValue(1.2), 2U);
  EXPECT_EQ(row->indexOfValue("s"), 4U);
  EXPECT_EQ(row->indexOfValue(10), std::nullopt);
  EXPECT_EQ(row->indexOfValue(true), std::nullopt);
}

TEST(Specifier, NamesEveryRowKindByThePlatformsNumber) {
  const std::pair<int, const char*> kinds[] = {{0, "PSGroupCell"},    {2, "PSLinkListCell"}, {3, "PSListItemCell"},
                                               {5, "PSSliderCell"},   {6, "PSSwitchCell"},   {7, "PSStaticTextCell"},
                                               {8, "PSEditTextCell"}, {9, "PSSegmentCell"},  {13, "PSButtonCell"}};
  for (const auto& [number, name] : kinds) {
    EXPECT_EQ(platform::cellTypeName(static_cast<PSCellType>(number)), name);
    EXPECT_EQ(platform::cellTypeNamed(name), static_cast<PSCellType>(number));
  }
  EXPECT_EQ(platform::cellTypeNamed("PSWheelCell"), std::nullopt);
}

}  // namespace specifier_test
}  // namespace quellar::tests
