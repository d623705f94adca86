// SPDX-License-Identifier: MIT

// Fault injection: each single allocation of reading and editing property lists fails in turn. The result is complete,
// or std::bad_alloc; a list with entries missing would be written over the file, and PropertyListError would have the
// file set aside.

#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "failing_allocations.h"
#include "host/linux/property_list/property_list.h"

namespace quellar::tests {
namespace allocation_test {

using host::linux::EncodedPropertyList;
using host::linux::encodePropertyList;
using host::linux::parsePropertyList;
using host::linux::PropertyListDictionary;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;

struct File {
  std::string name;
  std::string bytes;
};

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int number = 0; number < times; ++number) result += text;
  return result;
}

std::vector<File> files() {
  Dictionary pages;
  for (int page = 0; page < 4; ++page) {
    Dictionary entries;
    for (int key = 0; key < 12; ++key) {
      entries["a key of the page, number " + std::to_string(key)] =
          key % 2 == 0 ? Value(key) : Value("a text that needs memory of its own " + std::to_string(page * key));
    }
    pages["Page" + std::to_string(page) + "_Defaults"] = entries;
  }
  pages["all types"] =
      Array{true, -7, 0.5, "Grüße, 😀", Data{{1, 2, 3}}, Date{762524.0}, Array{}, Dictionary{{"x", Array{1, 2}}}};
  const std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
      "<plist version=\"1.0\"><dict>\n<!-- a comment --><key>page</key><dict><key>a key that needs memory of its own"
      "</key><string>Gr&#xFC;&amp;e <![CDATA[<]]></string><key>real</key><real>0.5</real><key>date</key>"
      "<date>2001-01-09T19:48:44Z</date><key>data</key><data>AP9/AP9/AP9/AP9/AP9/AP9/AP9/AP9/</data></dict>"
      "<key>wide</key><integer>18446744073709551615</integer><key>array</key><array>" +
      repeated("<integer>12</integer><true/>", 20) + "</array><key>deep</key>" + repeated("<array>", 30) +
      repeated("</array>", 30) + "<key>wide</key><integer>18446744073709551614</integer></dict></plist>";
  std::string wideXml = "\xFE\xFF";
  for (const char character : xml.substr(xml.find("<!DOCTYPE"))) wideXml += {'\0', character};
  return {{"binary", std::string(encodePropertyList(pages).bytes())},
          {"binary with a UID and a wide integer",
           "bplist00"
           "\xD2\x01\x02\x03\x04"
           "\x51\x61"
           "\x51\x62"
           "\xA2\x05\x06"
           "\x80\x07" +
               ("\x14" + std::string(8, '\0') + std::string(8, '\xFF')) +
               "\x5F\x10\x11twenty characters"
               // The table and the trailer.
               + std::string("\x08\x0D\x0F\x11\x14\x16\x27", 7) + std::string(6, '\0') + "\x01\x01" +
               std::string(7, '\0') + "\x07" + std::string(8, '\0') + std::string(7, '\0') + "\x3B"},
          {"XML", xml},
          {"XML in UTF-16", wideXml}};
}

/// Runs an operation once for each of its allocations, which fails, and once more without. Where it throws it must be
/// std::bad_alloc, and `check` must find what was there before.
template <typename Result>
void failEachAllocation(const std::function<Result()>& operation, const Result& expected,
                        const std::function<void()>& check) {
  long failures = 0;
  for (long number = 0;; ++number) {
    std::optional<Result> result;
    std::exception_ptr thrown;
    failAllocationAfter(number);
    try {
      result = operation();
    } catch (...) {
      thrown = std::current_exception();
    }
    const bool hasFailed = stopFailing();
    if (thrown) {
      EXPECT_TRUE(hasFailed) << number;
      EXPECT_THROW(std::rethrow_exception(thrown), std::bad_alloc) << number;
      ++failures;
      check();
    } else {
      EXPECT_EQ(result, expected) << number;
      if (!hasFailed) break;
    }
    if (testing::Test::HasFailure()) return;
  }
  // Few operations need no memory.
  EXPECT_GT(failures, 3);
  static long allFailures = 0;
  allFailures += failures;
  testing::Test::RecordProperty("failures", std::to_string(allFailures));
}

const std::function<void()> kNothingToCheck = [] {};

TEST(PropertyListMemory, RunsOutWhereAFileIsReadAndNothingIsLost) {
  for (const File& file : files()) {
    SCOPED_TRACE(file.name);
    const Value whole = parsePropertyList(file.bytes);
    failEachAllocation<Value>([&] { return parsePropertyList(file.bytes); }, whole, kNothingToCheck);
    failEachAllocation<Value>(
        [&] {
          const PropertyListDictionary domain(file.bytes);
          Dictionary entries;
          for (const std::string& key : domain.keys()) entries.insert_or_assign(key, *domain.value(key));
          return Value(std::move(entries));
        },
        whole, kNothingToCheck);
  }
}

TEST(PropertyListMemory, RunsOutWhereAFileIsWrittenAndNothingIsLost) {
  for (const File& file : files()) {
    SCOPED_TRACE(file.name);
    const Value whole = parsePropertyList(file.bytes);
    const std::string encoded(encodePropertyList(whole).bytes());
    failEachAllocation<std::string>([&] { return std::string(encodePropertyList(whole).bytes()); }, encoded,
                                    kNothingToCheck);
    const PropertyListDictionary domain(file.bytes);
    const std::string domainBytes(PropertyListDictionary(file.bytes).encode().bytes());
    failEachAllocation<std::string>(
        [&] {
          const PropertyListDictionary copy = domain;
          return std::string(copy.encode().bytes());
        },
        domainBytes, [&] { EXPECT_EQ(PropertyListDictionary(domain).encode().bytes(), domainBytes); });
  }
}

TEST(PropertyListMemory, RunsOutWhereADomainIsEditedAndTheDomainIsWhole) {
  for (const File& file : files()) {
    SCOPED_TRACE(file.name);
    const Value before = parsePropertyList(file.bytes);
    Dictionary edited = *before.as<Dictionary>();
    const std::string changedKey = edited.begin()->first;
    const Value changed =
        Dictionary{{"a key that needs memory of its own", Array{1, "a text that does too, being long"}}};
    edited.insert_or_assign(changedKey, changed);
    const std::string newKey = "an entry that was not there before";
    edited.insert_or_assign(newKey, true);
    PropertyListDictionary domain(file.bytes);
    const auto stored = [&] { return parsePropertyList(domain.encode().bytes()); };
    failEachAllocation<bool>(
        [&] {
          // Each edit that was made is made as a whole.
          domain.set(changedKey, changed);
          domain.set(newKey, true);
          return true;
        },
        true,
        [&] {
          for (const auto& [key, value] : edited) {
            const Value* former = platform::find(*before.as<Dictionary>(), key);
            const std::optional<Value> now = domain.value(key);
            if (now == value) continue;
            EXPECT_EQ(now, former == nullptr ? std::nullopt : std::optional<Value>(*former)) << key;
          }
          domain = PropertyListDictionary(file.bytes);
          EXPECT_EQ(stored(), before);
        });
    EXPECT_EQ(stored(), Value(edited));
    failEachAllocation<std::string>([&] { return std::string(domain.encode().bytes()); },
                                    std::string(PropertyListDictionary(domain).encode().bytes()),
                                    [&] { EXPECT_EQ(domain.keys().size(), edited.size()); });
  }
}

}  // namespace allocation_test
}  // namespace quellar::tests
