// SPDX-License-Identifier: MIT
#include "host/linux/dictionary_merge.h"

#include <gtest/gtest.h>

namespace quellar::tests::dictionary_merge_test {

using host::linux::mergedValue;
using host::linux::Precedence;
using platform::Dictionary;
using platform::Value;

constexpr auto kNone = std::nullopt;

TEST(DictionaryMerge, TakesOursWhereNobodyElseChangedIt) {
  const Value base(Dictionary{{"a", 1}});
  const Value ours(Dictionary{{"b", 2}});
  EXPECT_EQ(mergedValue(base, ours, base, Precedence::Theirs), ours);
  EXPECT_EQ(mergedValue(base, kNone, base, Precedence::Theirs), kNone);
  EXPECT_EQ(mergedValue(kNone, ours, kNone, Precedence::Theirs), ours);
}

TEST(DictionaryMerge, KeepsEntriesThatChangedElsewhere) {
  const Value base(Dictionary{{"changed", 1}, {"kept", 1}, {"removed here", 1}, {"removed there", 1}});
  const Value ours(Dictionary{{"changed", 2}, {"kept", 1}, {"new here", 1}, {"removed there", 1}});
  const Value stored(Dictionary{{"changed", 1}, {"kept", 5}, {"new there", 1}, {"removed here", 1}});
  const Value merged(Dictionary{{"changed", 2}, {"kept", 5}, {"new here", 1}, {"new there", 1}});
  EXPECT_EQ(mergedValue(base, ours, stored, Precedence::Ours), merged);
  EXPECT_EQ(mergedValue(base, ours, stored, Precedence::Theirs), merged);
}

TEST(DictionaryMerge, LetsThePrecedenceDecideWhereBothChangedTheSame) {
  const Value base(Dictionary{{"a", 1}, {"b", 1}});
  const Value ours(Dictionary{{"a", 2}});
  const Value stored(Dictionary{{"a", 3}, {"b", 4}});
  EXPECT_EQ(mergedValue(base, ours, stored, Precedence::Ours), Value(Dictionary{{"a", 2}}));
  EXPECT_EQ(mergedValue(base, ours, stored, Precedence::Theirs), stored);
  EXPECT_EQ(mergedValue(Value(1), Value(2), Value(3), Precedence::Ours), Value(2));
  EXPECT_EQ(mergedValue(Value(1), Value(2), Value(3), Precedence::Theirs), Value(3));
}

TEST(DictionaryMerge, MakesTheOwnChangesWhereTheDictionaryWasRemoved) {
  const Value base(Dictionary{{"a", 1}, {"b", 1}});
  const Value ours(Dictionary{{"a", 2}, {"b", 1}});
  EXPECT_EQ(mergedValue(base, ours, kNone, Precedence::Ours), Value(Dictionary{{"a", 2}}));
}

TEST(DictionaryMerge, TakesADictionaryThatCouldNotBeReadForUnchanged) {
  const Value ours(Dictionary{{"a", 2}});
  const Value stored(Dictionary{{"a", 1}, {"b", 1}});
  EXPECT_EQ(mergedValue(kNone, ours, stored, Precedence::Ours), Value(Dictionary{{"a", 2}, {"b", 1}}));
}

TEST(DictionaryMerge, TakesValuesThatAreNoDictionariesAsAWhole) {
  const Value ours(Dictionary{{"a", 2}});
  EXPECT_EQ(mergedValue(kNone, ours, Value("odd"), Precedence::Ours), ours);
  EXPECT_EQ(mergedValue(kNone, ours, Value("odd"), Precedence::Theirs), Value("odd"));
}

}  // namespace quellar::tests::dictionary_merge_test
