// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>

#include "host/linux/property_list/property_list.h"
#include "store_files.h"

namespace quellar::tests {
namespace property_list_file_test {

using host::linux::encodePropertyList;
using host::linux::parsePropertyList;
using host::linux::PropertyListDictionary;
using host::linux::PropertyListError;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Value;
using namespace std::string_literals;

/// What parsing says against some bytes; "" where it takes them.
std::string complaint(std::string_view bytes) {
  try {
    static_cast<void>(parsePropertyList(bytes));
    return "";
  } catch (const PropertyListError& error) {
    return error.what();
  }
}

std::string domainComplaint(std::string_view bytes) {
  try {
    static_cast<void>(PropertyListDictionary(bytes));
    return "";
  } catch (const PropertyListError& error) {
    return error.what();
  }
}

std::string storingComplaint(const Value& value) {
  try {
    PropertyListDictionary dictionary;
    dictionary.set("key", value);
    return "";
  } catch (const PropertyListError& error) {
    return error.what();
  }
}

std::string xml(const std::string& body) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">" +
         body + "</plist>\n";
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

/// Arrays in one another, by hand.
std::string nestedBinary(std::size_t levels) {
  std::vector<std::string> objects;
  for (std::size_t level = 1; level < levels; ++level) objects.push_back('\xA1' + reference(level));
  objects.emplace_back("\xA0");
  return binaryPlist(objects);
}

std::string nestedXml(int levels) {
  return xml(repeated("<array>", levels) + repeated("</array>", levels));
}

Value nestedValue(int levels) {
  Value value = Array{};
  for (int level = 1; level < levels; ++level) value = Array{std::move(value)};
  return value;
}

const Dictionary kAllTypes = {
    {"array", Array{true, 1, 1.0, "1"}},
    {"data", Data{{0, 255, 127}}},
    {"date", Date{762524.0}},
    {"false", false},
    {"integer", -42},
    {"real", -12.5},
    {"text", "Grüße, 😀 <&>"},
    {"true", true},
};

TEST(PropertyListFile, WritesTheBinaryFormAndReadsItBack) {
  const auto encoded = encodePropertyList(kAllTypes);
  EXPECT_EQ(encoded.bytes().substr(0, 8), "bplist00");
  EXPECT_EQ(parsePropertyList(encoded.bytes()), Value(kAllTypes));
}

TEST(PropertyListFile, WritesTheBytesOfTheFormatWithEqualScalarsOnce) {
  const Value value =
      Array{true, "same", Dictionary{{"same", -2}, {"ü", "😀"}}, 256, Data{{1}}, Date{1.0}, 0.5, "same"};
  const std::vector<std::string> objects = {
      "\x09",
      "\x54same",
      "\x13" + std::string(7, '\xFF') + "\xFE",
      "\x61" + "\0\xFC"s,
      "\x62\xD8\x3D\xDE\x00"s,
      "\xD2\x01\x03\x02\x04",
      "\x11\x01\x00"s,
      "\x41\x01",
      "\x33\x3F\xF0"s + std::string(6, '\0'),
      "\x23\x3F\xE0"s + std::string(6, '\0'),
      "\xA8\x00\x01\x05\x06\x07\x08\x09\x01"s,
  };
  std::string file = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += static_cast<char>(file.size());
    file += object;
  }
  const auto start = static_cast<char>(file.size());
  file += table + std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') + "\x0B" + std::string(7, '\0') + "\x0A" +
          std::string(7, '\0') + start;
  EXPECT_EQ(encodePropertyList(value).bytes(), file);
}

TEST(PropertyListFile, WritesCountsOffsetsAndReferencesOfAnyWidth) {
  for (const int count : {14, 15, 255, 256, 257, 70000}) {
    Dictionary dictionary;
    for (int number = 0; number < count; ++number) {
      dictionary["key" + std::to_string(number)] = std::string(static_cast<std::size_t>(number) % 300, 'x');
    }
    dictionary["array"] = Array(static_cast<std::size_t>(count), Value(count));
    dictionary["text"] = repeated("ü", count);
    EXPECT_EQ(parsePropertyList(encodePropertyList(dictionary).bytes()), Value(dictionary)) << count;
  }
}

TEST(PropertyListFile, WritesADictionaryAnewAfterEachChange) {
  PropertyListDictionary dictionary;
  Dictionary expected;
  const auto check = [&] { EXPECT_EQ(parsePropertyList(dictionary.encode().bytes()), Value(expected)); };
  const auto set = [&](const std::string& key, const Value& value) {
    dictionary.set(key, value);
    expected[key] = value;
    check();
  };
  check();
  set("a", Dictionary{{"x", 1}, {"y", Array{"x", 1}}});
  set("b", Dictionary{{"x", 1}});
  set("a", Dictionary{{"x", 2}});
  set("ü", "x");
  dictionary.remove("b");
  expected.erase("b");
  check();
  set("b", false);
  for (int number = 0; number < 300; ++number) set("page" + std::to_string(number), Dictionary{{"x", number}});
}

TEST(PropertyListFile, ReadsXml) {
  const std::string document =
      xml("<dict><!-- a comment --><key>array</key><array><true/><integer>1</integer><real>1</real><string>1</string>"
          "</array>\n<key>data</key><data>\n AP9/ \n</data><key>date</key><date>2001-01-09T19:48:44Z</date>"
          "<key>false</key><false></false><key>integer</key><integer> -42 </integer><key>real</key><real>-1.25e1</real>"
          "<key>text</key><string>Gr&#xFC;&#223;e, <![CDATA[😀 <]]>&amp;&gt;</string><key>true</key><true/></dict>");
  EXPECT_EQ(parsePropertyList(document), Value(kAllTypes));
}

TEST(PropertyListFile, ReadsXmlWithAByteOrderMarkAndWithoutAProlog) {
  EXPECT_EQ(parsePropertyList("\xEF\xBB\xBF<plist><true/></plist>"), Value(true));
  EXPECT_EQ(parsePropertyList("\n <plist version='1.0'><string/></plist>"), Value(""));
}

TEST(PropertyListFile, ReadsTheIntegersThatXmlCanHold) {
  const std::string document =
      xml("<array><integer>-9223372036854775808</integer><integer>9223372036854775807</integer>"
          "<integer>+5</integer><integer>0x1F</integer></array>");
  const Array expected = {std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::int64_t>::max(), 5, 31};
  EXPECT_EQ(parsePropertyList(document), Value(expected));
}

TEST(PropertyListFile, ReadsRealsOfXmlWhateverTheLocale) {
  const TemporaryFolder folder;
  const std::string locale = (folder.path() / "de_DE.UTF-8").string();
  if (std::system(("localedef -i de_DE -f UTF-8 '" + locale + "' >/dev/null 2>&1").c_str()) != 0) {
    GTEST_SKIP() << "no localedef to make a locale with a decimal comma";
  }
  const ScopedVariable path("LOCPATH", folder.path().c_str());
  ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr);
  ASSERT_DOUBLE_EQ(std::strtod("1,5", nullptr), 1.5) << "the locale has no decimal comma";
  const Value read = parsePropertyList(xml("<real>1.5</real>"));
  const std::string comma = complaint(xml("<real>1,5</real>"));
  std::setlocale(LC_ALL, "C");
  EXPECT_EQ(read, Value(1.5));
  EXPECT_EQ(comma, "a real is no number");
}

TEST(PropertyListFile, RefusesWhatIsNoPropertyList) {
  EXPECT_EQ(complaint(""), "not a property list");
  EXPECT_EQ(complaint("hello"), "not a property list");
  EXPECT_EQ(complaint("{ \"json\": 1 }"), "not a property list");
  EXPECT_EQ(complaint("<html></html>"), "not a property list");
  EXPECT_EQ(complaint(std::string(4096, '\0')), "not a property list");
}

TEST(PropertyListFile, RefusesADomainWithoutADictionaryAtItsTop) {
  const std::string array = xml("<array/>");
  EXPECT_EQ(domainComplaint(array), "its top is not a dictionary");
  EXPECT_EQ(domainComplaint(encodePropertyList(Array{}).bytes()), "its top is not a dictionary");
  EXPECT_EQ(domainComplaint(encodePropertyList("text").bytes()), "its top is not a dictionary");
  EXPECT_EQ(parsePropertyList(array), Value(Array{}));
}

TEST(PropertyListFile, RefusesEachCutOffBinaryFile) {
  const auto encoded = encodePropertyList(kAllTypes);
  for (std::size_t size = 0; size < encoded.bytes().size(); ++size) {
    EXPECT_NE(domainComplaint(encoded.bytes().substr(0, size)), "") << size;
  }
}

TEST(PropertyListFile, SurvivesEachChangedByteOfABinaryFile) {
  const auto encoded = encodePropertyList(kAllTypes);
  for (std::size_t at = 0; at < encoded.bytes().size(); ++at) {
    for (const unsigned flip : {0x01U, 0x10U, 0x80U, 0xFFU}) {
      std::string changed(encoded.bytes());
      changed[at] = static_cast<char>(static_cast<unsigned char>(changed[at]) ^ flip);
      // Whether it can be read or not, what is read can be written and read again.
      try {
        const Value value = parsePropertyList(changed);
        EXPECT_EQ(parsePropertyList(encodePropertyList(value).bytes()), value) << at;
      } catch (const PropertyListError& error) {
        EXPECT_STRNE(error.what(), "");
      }
    }
  }
}

TEST(PropertyListFile, RefusesBrokenXml) {
  EXPECT_EQ(complaint("<plist><true/>"), "damaged XML property list: line 1: it is cut off");
  EXPECT_EQ(complaint("<plist>\n<string>a</plist>"), "damaged XML property list: line 2: mismatched tag");
  EXPECT_EQ(complaint("<plist><string>a"), "damaged XML property list: line 1: it is cut off");
  EXPECT_EQ(complaint("<plist><!-- <true/></plist>"), "damaged XML property list: line 1: it is cut off");
  EXPECT_EQ(complaint("<plist><true/></plist>x"), "damaged XML property list: line 1: junk after document element");
  EXPECT_EQ(complaint("<plist>x<true/></plist>"), "text stands where none may be");
  EXPECT_EQ(complaint("<plist><true</plist>"), "damaged XML property list: line 1: not well-formed (invalid token)");
  EXPECT_EQ(complaint(xml("<true/><true/>")), "holds more than one value");
  EXPECT_EQ(complaint(xml("")), "</plist> stands for a value");
  EXPECT_EQ(complaint(xml("<string>&nbsp;</string>")), "damaged XML property list: line 3: an entity is not known");
  EXPECT_EQ(complaint(xml("<string>&#0;</string>")),
            "damaged XML property list: line 3: reference to invalid character number");
  EXPECT_EQ(complaint(xml("<string>&#xD800;</string>")),
            "damaged XML property list: line 3: reference to invalid character number");
  EXPECT_EQ(complaint(xml("<number>1</number>")), "<number> is no property-list element");
  EXPECT_EQ(complaint(xml("<dict><string>a</string></dict>")), "a dictionary entry has no key");
  EXPECT_EQ(complaint(xml("<dict><key>a</key></dict>")), "</dict> stands for a value");
  EXPECT_EQ(complaint(xml("<array><dict></array></dict>")), "damaged XML property list: line 3: mismatched tag");
  EXPECT_EQ(complaint(xml("<string><true/></string>")), "<string> holds an element");
  EXPECT_EQ(complaint(xml("<integer>12abc</integer>")), "an integer is no number");
  EXPECT_EQ(complaint(xml("<integer/>")), "an integer is no number");
  EXPECT_EQ(complaint(xml("<integer>18446744073709551616</integer>")), "an integer has more than 64 bits");
  EXPECT_EQ(complaint(xml("<integer>-9223372036854775809</integer>")), "an integer has more than 64 bits");
  EXPECT_EQ(complaint(xml("<real>1.5x</real>")), "a real is no number");
  EXPECT_EQ(complaint(xml("<real>0x1p3</real>")), "a real is no number");
  EXPECT_EQ(complaint(xml("<data>AP9</data>")), "data is not base64");
  EXPECT_EQ(complaint(xml("<data>A=9/</data>")), "data is not base64");
  EXPECT_EQ(complaint(xml("<date>yesterday</date>")), "a date is not of the form YYYY-MM-DDThh:mm:ssZ");
  EXPECT_EQ(complaint(xml("<date>2023-02-29T00:00:00Z</date>")), "a date is none of the calendar");
}

TEST(PropertyListFile, RefusesXmlThatIsNotWellFormed) {
  const std::vector<std::string> documents = {
      "<plist x x =><true/></plist>",
      "<plist><dict a\"b\"c></dict></plist>",
      "<plist version=1.0><true/></plist>",
      "<plist version='1.0' version='1.0'><true/></plist>",
      "<plist><true/ ></plist>",
      "<plist><true/></plist version='1.0'>",
      "<plist><!-- two -- hyphens --><true/></plist>",
      "<plist><string>]]></string></plist>",
      "<plist><string>&</string></plist>",
      "<plist><string>\x01</string></plist>",
      "<plist><string>\xEF\xBF\xBF</string></plist>",
      "<plist><array></dict></array></plist>",
      " <?xml version=\"1.0\"?><plist><true/></plist>",
      "<?xml encoding=\"UTF-8\"?><plist><true/></plist>",
      "<plist><true/></plist><plist><true/></plist>",
  };
  for (const std::string& document : documents) EXPECT_NE(complaint(document), "") << document;
}

TEST(PropertyListFile, RefusesXmlThatDeclaresOrNamesEntities) {
  const std::string text = "<plist><string>&e;</string></plist>";
  EXPECT_NE(complaint("<!DOCTYPE plist [<!ENTITY e \"text\">]>" + text), "");
  EXPECT_NE(complaint("<!DOCTYPE plist [<!ENTITY e \"text\">]><plist><true/></plist>"), "");
  EXPECT_NE(complaint("<!DOCTYPE plist [<!ENTITY e SYSTEM \"file:///etc/hostname\">]>" + text), "");
  EXPECT_NE(complaint("<!DOCTYPE plist [<!ENTITY % e \"text\">]><plist><true/></plist>"), "");
  EXPECT_NE(complaint("<!DOCTYPE plist [<!ATTLIST plist version CDATA \"1.0\">]><plist><true/></plist>"), "");
  EXPECT_NE(complaint(text), "");
  EXPECT_NE(complaint(xml("<string>&e;</string>")), "");
}

/// The bytes of UTF-16 text, a byte order mark first.
std::string utf16(std::u16string_view text, bool isBigEndian) {
  std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
  for (const char16_t unit : text) {
    const auto high = static_cast<char>(unit >> 8);
    const auto low = static_cast<char>(unit & 0xFF);
    bytes += isBigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

TEST(PropertyListFile, ReadsXmlInUtf16) {
  constexpr std::u16string_view kDocument =
      u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>a\u00fc\U0001F600</string></plist>";
  for (const bool isBigEndian : {false, true}) {
    EXPECT_EQ(parsePropertyList(utf16(kDocument, isBigEndian)), Value("aü😀"));
  }
}

TEST(PropertyListFile, RefusesXmlInUtf16WithHalfOfASurrogatePair) {
  const std::u16string high(1, char16_t{0xD83D});
  const std::u16string low(1, char16_t{0xDE00});
  for (const std::u16string& text : {high + u"a", low, low + high, high + high + low, high}) {
    for (const bool isBigEndian : {false, true}) {
      EXPECT_NE(complaint(utf16(u"<plist><string>" + text + u"</string></plist>", isBigEndian)), "");
    }
  }
}

TEST(PropertyListFile, ReadsXmlWithRepeatedKeysInLinearTime) {
  // Each key once, and then all of them again in reverse order.
  const auto document = [](int keys) {
    std::string entries;
    const auto add = [&](int number) { entries += "<key>" + std::to_string(number) + "</key><integer>1</integer>"; };
    for (int number = 0; number < keys; ++number) add(number);
    for (int number = keys; number-- > 0;) add(number);
    return xml("<dict>" + entries + "</dict>");
  };
  const auto ticks = [](const std::string& bytes, std::size_t keys) {
    const std::clock_t start = std::clock();
    const Value value = parsePropertyList(bytes);
    const std::clock_t end = std::clock();
    EXPECT_EQ(value.as<Dictionary>()->size(), keys);
    return end - start;
  };
  constexpr int kFew = 2000;
  constexpr int kMany = 8 * kFew;
  // Eight times as long where the time is linear, 64 times where it is quadratic.
  const auto few = std::max(ticks(document(kFew), kFew), CLOCKS_PER_SEC / 1000);
  EXPECT_LT(ticks(document(kMany), kMany), 24 * few);
}

TEST(PropertyListFile, RefusesTextThatIsNotUtf8) {
  EXPECT_EQ(complaint(xml("<string>\xFF</string>")),
            "damaged XML property list: line 3: not well-formed (invalid token)");
  EXPECT_EQ(complaint(xml("<string>\xED\xA0\x80</string>")),
            "damaged XML property list: line 3: not well-formed (invalid token)");
  EXPECT_EQ(complaint(binaryPlist({"\x51\xE9"})), "text is not UTF-8");
  EXPECT_EQ(complaint(binaryPlist({"\x52\xC0\x80"})), "text is not UTF-8");
  EXPECT_EQ(complaint(binaryPlist({"\xD1" + reference(1) + reference(2), "\x51\xE9", "\x09"})), "text is not UTF-8");
  EXPECT_EQ(complaint(binaryPlist({"\x61\xD8\x3D"})), "text holds half of a surrogate pair");
  EXPECT_EQ(complaint(binaryPlist({"\x61\xDE\x00"s})), "text holds half of a surrogate pair");
  EXPECT_EQ(complaint(binaryPlist({"\x51\x00"s})), "text holds a null character");
  EXPECT_EQ(parsePropertyList(binaryPlist({"\x52\xC3\xA9"})), Value("é"));
  EXPECT_EQ(parsePropertyList(binaryPlist({"\x62\xD8\x3D\xDE\x00"s})), Value("😀"));
}

TEST(PropertyListFile, RefusesNumbersThatAreNotFinite) {
  for (const char* text : {"nan", "inf", "-infinity", "1e999"}) {
    EXPECT_EQ(complaint(xml("<real>"s + text + "</real>")), "a number is not finite") << text;
  }
  EXPECT_EQ(complaint(binaryPlist({"\x23\x7F\xF0\0\0\0\0\0\0"s})), "a number is not finite");
  EXPECT_EQ(complaint(binaryPlist({"\x22\x7F\xC0\0\0"s})), "a number is not finite");
  EXPECT_EQ(complaint(binaryPlist({"\x33\xFF\xF8\0\0\0\0\0\0"s})), "a number is not finite");
  EXPECT_EQ(parsePropertyList(xml("<real>1e-999</real>")), Value(0.0));
}

TEST(PropertyListFile, TakesADepthOf128AndNoMore) {
  EXPECT_EQ(parsePropertyList(nestedBinary(128)), nestedValue(128));
  EXPECT_EQ(parsePropertyList(nestedXml(128)), nestedValue(128));
  EXPECT_EQ(complaint(nestedBinary(129)), "deeper than 128 levels");
  EXPECT_EQ(complaint(nestedXml(129)), "deeper than 128 levels");
  EXPECT_EQ(complaint(nestedBinary(10'000)), "deeper than 128 levels");
  EXPECT_EQ(complaint(nestedXml(10'000)), "deeper than 128 levels");
  EXPECT_EQ(complaint(xml(repeated("<dict><key>a</key>", 100'000))), "deeper than 128 levels");
}

TEST(PropertyListFile, SeesTheDepthOfAnObjectThatIsReachedTwice) {
  // The top array holds a chain of 127 arrays first as a child and then one level deeper, where it is too deep.
  std::vector<std::string> objects = {"\xA2" + reference(2) + reference(1), "\xA1" + reference(2)};
  for (std::size_t level = 1; level < 127; ++level) objects.push_back("\xA1" + reference(objects.size() + 1));
  objects.emplace_back("\xA0");
  EXPECT_EQ(complaint(binaryPlist(objects)), "deeper than 128 levels");
}

TEST(PropertyListFile, RefusesAnObjectThatHoldsItself) {
  EXPECT_EQ(complaint(binaryPlist({"\xA1" + reference(0)})),
            "damaged binary property list: an array or dictionary holds itself");
  EXPECT_EQ(complaint(binaryPlist({"\xA1" + reference(1), "\xA1" + reference(0)})),
            "damaged binary property list: an array or dictionary holds itself");
}

TEST(PropertyListFile, RefusesAFileThatUnfoldsWithoutBound) {
  std::vector<std::string> objects;
  for (std::size_t level = 1; level < 100; ++level) objects.push_back("\xA2" + reference(level) + reference(level));
  objects.emplace_back("\x09");
  EXPECT_EQ(complaint(binaryPlist(objects)), "holds too many values");
}

TEST(PropertyListFile, RefusesTextAndDataThatUnfoldWithoutBound) {
  // One object of a mebibyte, named so many times.
  const auto shared = [](const std::string& object, std::size_t times) {
    std::string references;
    for (std::size_t number = 0; number < times; ++number) references += reference(1);
    return binaryPlist({"\xAF\x11" + reference(times) + references, object});
  };
  const std::string size = "\x12\x00\x10\x00\x00"s;
  const std::string bytes(std::size_t{1} << 20, 'a');
  EXPECT_EQ(complaint(shared("\x5F" + size + bytes, 16)), "");
  EXPECT_EQ(complaint(shared("\x5F" + size + bytes, 65)), "holds more than 64 MiB of text and data");
  EXPECT_EQ(complaint(shared("\x4F" + size + bytes, 65)), "holds more than 64 MiB of text and data");
  EXPECT_EQ(complaint(shared("\x6F" + size + bytes + bytes, 33)), "holds more than 64 MiB of text and data");
}

TEST(PropertyListFile, RefusesBinaryObjectsThatAreDamaged) {
  const auto damage = [](const std::vector<std::string>& objects) {
    const std::string text = complaint(binaryPlist(objects));
    const std::string start = "damaged binary property list: ";
    EXPECT_EQ(text.substr(0, start.size()), start);
    return text.substr(std::min(start.size(), text.size()));
  };
  EXPECT_EQ(damage({"\x00"s}), "an object is of an unknown type");
  EXPECT_EQ(damage({"\x70"}), "an object is of an unknown type");
  EXPECT_EQ(damage({"\xC1" + reference(0)}), "an object is of an unknown type");
  EXPECT_EQ(damage({"\x15"}), "an integer has a wrong size");
  EXPECT_EQ(damage({"\x21\x00\x00"s}), "a real has a wrong size");
  EXPECT_EQ(damage({"\x32\x00\x00\x00\x00"s}), "a date has a wrong size");
  EXPECT_EQ(damage({"\x82\x00\x00\x00"s}), "a UID has a wrong size");
  EXPECT_EQ(damage({"\x13\x00"s}), "an object is cut off");
  EXPECT_EQ(damage({"\x5F\x10\xFF"}), "an object is cut off");
  EXPECT_EQ(damage({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "an object is cut off");
  EXPECT_EQ(damage({"\xAF\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "an object is cut off");
  EXPECT_EQ(damage({"\x5F\x22\x00"s}), "a count is wrong");
  EXPECT_EQ(damage({"\xA1" + reference(9)}), "an object is missing");
  EXPECT_EQ(damage({"\xD1" + reference(1) + reference(1), "\x10\x01"}), "a key is no text");
}

TEST(PropertyListFile, RefusesAFileOfMoreThan16MiB) {
  const std::size_t limit = std::size_t{16} * 1024 * 1024;
  const std::string frame = xml("<string></string>");
  EXPECT_EQ(parsePropertyList(xml("<string>" + std::string(limit - frame.size(), 'a') + "</string>")),
            Value(std::string(limit - frame.size(), 'a')));
  EXPECT_EQ(complaint(xml("<string>" + std::string(limit - frame.size() + 1, 'a') + "</string>")),
            "larger than 16 MiB");
}

TEST(PropertyListFile, RefusesToStoreWhatItWouldNotRead) {
  EXPECT_EQ(storingComplaint("\xFF"), "text is not UTF-8");
  EXPECT_EQ(storingComplaint("a\0b"s), "text holds a null character");
  EXPECT_EQ(storingComplaint(Dictionary{{"\xFF", 1}}), "text is not UTF-8");
  EXPECT_EQ(storingComplaint(Array{std::numeric_limits<double>::quiet_NaN()}), "a number is not finite");
  EXPECT_EQ(storingComplaint(Date{std::numeric_limits<double>::infinity()}), "a number is not finite");
  EXPECT_EQ(storingComplaint(nestedValue(127)), "");
  EXPECT_EQ(storingComplaint(nestedValue(128)), "deeper than 128 levels");
  PropertyListDictionary dictionary;
  EXPECT_THROW(dictionary.set("a\0b"s, 1), PropertyListError);
  dictionary.set("large", std::string(std::size_t{16} * 1024 * 1024, 'a'));
  EXPECT_THROW(static_cast<void>(dictionary.encode()), PropertyListError);
}

TEST(PropertyListFile, RefusesToStoreWhatUnfoldsToMoreThanItWouldRead) {
  const Array many(3'000'000, true);
  EXPECT_EQ(storingComplaint(many), "holds too many values");
  EXPECT_THROW(static_cast<void>(encodePropertyList(many)), PropertyListError);
  const Array large(65, std::string(std::size_t{1} << 20, 'a'));
  EXPECT_EQ(storingComplaint(large), "holds more than 64 MiB of text and data");
  // Each entry alone could be read, both together could not.
  PropertyListDictionary dictionary;
  for (const char* key : {"a", "b"}) dictionary.set(key, Array(40, std::string(std::size_t{1} << 20, 'a')));
  EXPECT_THROW(static_cast<void>(dictionary.encode()), PropertyListError);
  dictionary.remove("a");
  EXPECT_EQ(complaint(dictionary.encode().bytes()), "");
}

TEST(PropertyListFile, LeavesADictionaryAsItIsWhereAValueCannotBeStored) {
  PropertyListDictionary dictionary;
  dictionary.set("key", Dictionary{{"a", 1}});
  EXPECT_THROW(dictionary.set("key", Dictionary{{"a", "\xFF"}}), PropertyListError);
  EXPECT_EQ(dictionary.value("key"), Value(Dictionary{{"a", 1}}));
}

TEST(PropertyListFile, LeavesACopyAsItIsWhereTheOriginalChanges) {
  const PropertyListDictionary original(encodePropertyList(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}).bytes());
  PropertyListDictionary copy = original;
  copy.set("a", Dictionary{{"x", 1}});
  copy.remove("b");
  copy.set("d", 4);
  EXPECT_EQ(parsePropertyList(original.encode().bytes()), Value(Dictionary{{"a", 1}, {"b", 2}, {"c", 3}}));
  const PropertyListDictionary second = copy;
  copy.set("a", 5);
  EXPECT_EQ(parsePropertyList(second.encode().bytes()),
            Value(Dictionary{{"a", Dictionary{{"x", 1}}}, {"c", 3}, {"d", 4}}));
  EXPECT_EQ(parsePropertyList(copy.encode().bytes()), Value(Dictionary{{"a", 5}, {"c", 3}, {"d", 4}}));
}

TEST(PropertyListFile, ListsTheKeysOfADictionaryInOrder) {
  PropertyListDictionary dictionary(xml("<dict><key>c</key><true/><key>a</key><true/><key>c</key><true/></dict>"));
  EXPECT_EQ(dictionary.keys(), (std::vector<std::string>{"a", "c"}));
  dictionary.set("b", 1);
  dictionary.remove("a");
  EXPECT_EQ(dictionary.keys(), (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(PropertyListDictionary().keys(), std::vector<std::string>());
}

TEST(PropertyListFile, TellsKeysApartThatShareAStart) {
  PropertyListDictionary dictionary;
  dictionary.set("a", 1);
  EXPECT_EQ(dictionary.value("a\0b"s), std::nullopt);
  dictionary.remove("a\0b"s);
  EXPECT_EQ(dictionary.value("a"), Value(1));
}

TEST(PropertyListFile, KeepsTheLastOfAKeyThatABinaryFileHoldsTwice) {
  // {"a": 1, "a": 2, "b": 3}; the second key in ASCII and in UTF-16.
  for (const std::string& second : {"\x51\x61"s, "\x61\0\x61"s}) {
    const std::string file =
        binaryPlist({"\xD3" + reference(1) + reference(2) + reference(3) + reference(4) + reference(5) + reference(6),
                     "\x51\x61", second, "\x51\x62", "\x10\x01", "\x10\x02", "\x10\x03"});
    EXPECT_EQ(parsePropertyList(file), Value(Dictionary{{"a", 2}, {"b", 3}}));
    PropertyListDictionary domain(file);
    EXPECT_EQ(domain.value("a"), Value(2));
    domain.set("a", 4);
    EXPECT_EQ(parsePropertyList(domain.encode().bytes()), Value(Dictionary{{"a", 4}, {"b", 3}}));
    domain.remove("a");
    EXPECT_EQ(domain.value("a"), std::nullopt);
    EXPECT_EQ(parsePropertyList(domain.encode().bytes()), Value(Dictionary{{"b", 3}}));
  }
}

TEST(PropertyListFile, SetsALargeValueOverALargeOneAsQuicklyAsOverNone) {
  Dictionary entries;
  Array items;
  for (int number = 0; number < 30'000; ++number) {
    entries.emplace("key " + std::to_string(number), number);
    items.emplace_back(number);
  }
  for (const Value& value : {Value(entries), Value(items)}) {
    const auto ticks = [&](PropertyListDictionary domain) {
      const std::clock_t start = std::clock();
      domain.set("page", value);
      EXPECT_EQ(domain.value("page"), value);
      return std::clock() - start;
    };
    const auto overNone = ticks(PropertyListDictionary());
    EXPECT_LT(ticks(PropertyListDictionary(encodePropertyList(Dictionary{{"page", value}}).bytes())), 4 * overNone);
  }
}

TEST(PropertyListFile, ReadsLargeUnsignedIntegersAsRealsAndUidsAsDictionaries) {
  EXPECT_EQ(parsePropertyList(xml("<integer>18446744073709551615</integer>")), Value(18446744073709551615.0));
  EXPECT_EQ(parsePropertyList(binaryPlist({"\x14" + std::string(8, '\0') + std::string(8, '\xFF')})),
            Value(18446744073709551615.0));
  EXPECT_EQ(parsePropertyList(binaryPlist({"\x13" + std::string(8, '\xFF')})), Value(-1));
  EXPECT_EQ(parsePropertyList(binaryPlist({"\x81\x01\x02"})), Value(Dictionary{{"CF$UID", 258}}));
}

TEST(PropertyListFile, KeepsEntriesThatAreNotTouchedAsTheyWere) {
  // 0: {"big": 2^64-1, "page": {"uid": UID 7, "n": 1}}
  const std::string bytes = binaryPlist({
      "\xD2" + reference(1) + reference(2) + reference(3) + reference(4),
      ("\x53"
       "big"),
      ("\x54"
       "page"),
      "\x14" + std::string(8, '\0') + std::string(8, '\xFF'),
      "\xD2" + reference(5) + reference(6) + reference(7) + reference(8),
      ("\x53"
       "uid"),
      ("\x51"
       "n"),
      "\x80\x07",
      "\x10\x01",
  });
  PropertyListDictionary dictionary(bytes);
  // The page is written whole, as it was read, with one entry changed.
  std::optional<Value> page = dictionary.value("page");
  ASSERT_TRUE(page && page->is<Dictionary>());
  (*page->as<Dictionary>())["n"] = 2;
  dictionary.set("page", *page);
  const std::string written(dictionary.encode().bytes());
  EXPECT_EQ(parsePropertyList(written),
            Value(Dictionary{{"big", 18446744073709551615.0},
                             {"page", Dictionary{{"n", 2}, {"uid", Dictionary{{"CF$UID", 7}}}}}}));
  EXPECT_NE(written.find("\x14" + std::string(8, '\0') + std::string(8, '\xFF')), std::string::npos);
  EXPECT_NE(written.find("\x80\x07"), std::string::npos);
}

TEST(PropertyListFile, WritesARealOverALargeUnsignedIntegerThatItDiffersFrom) {
  PropertyListDictionary dictionary(xml("<dict><key>a</key><integer>18446744073709551615</integer></dict>"));
  dictionary.set("a", 2.5);
  EXPECT_EQ(dictionary.value("a"), Value(2.5));
}

}  // namespace property_list_file_test
}  // namespace quellar::tests
