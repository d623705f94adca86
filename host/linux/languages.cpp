// SPDX-License-Identifier: MIT
#include "host/linux/languages.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <iterator>
#include <utility>

#include "host/linux/utf8.h"

namespace quellar::host::linux {

namespace {

// Without its codeset, "-" written "_"; "" for the locales that stand for no language.
std::string canonicalLocale(std::string_view name) {
  std::string locale(name.substr(0, name.find_first_of(".@")));
  std::ranges::replace(locale, '-', '_');
  if (locale == "C" || locale == "POSIX") return {};
  if (const auto modifier = name.find('@'); modifier != std::string_view::npos && !locale.empty()) {
    locale += name.substr(modifier);
  }
  return locale;
}

void addLocale(std::vector<std::string>& languages, std::string_view name) {
  std::string locale = canonicalLocale(name);
  if (!locale.empty() && std::ranges::find(languages, locale) == languages.end()) {
    languages.push_back(std::move(locale));
  }
}

std::string languageOf(std::string_view locale) {
  return std::string(locale.substr(0, locale.find_first_of("_@")));
}

// What accents turn each letter into; letters that are not here stay.
constexpr std::array<std::pair<char, std::string_view>, 46> kAccents = {{
    {'A', "Å"}, {'B', "Ɓ"}, {'C', "Ç"}, {'D', "Ð"}, {'E', "É"}, {'F', "Ƒ"}, {'G', "Ĝ"}, {'H', "Ĥ"},
    {'I', "Î"}, {'J', "Ĵ"}, {'K', "Ķ"}, {'L', "Ļ"}, {'N', "Ñ"}, {'O', "Ö"}, {'P', "Þ"}, {'R', "Ŕ"},
    {'S', "Š"}, {'T', "Ţ"}, {'U', "Û"}, {'W', "Ŵ"}, {'Y', "Ý"}, {'Z', "Ž"}, {'a', "å"}, {'b', "ƀ"},
    {'c', "ç"}, {'d', "ð"}, {'e', "é"}, {'f', "ƒ"}, {'g', "ĝ"}, {'h', "ĥ"}, {'i', "î"}, {'j', "ĵ"},
    {'k', "ķ"}, {'l', "ļ"}, {'n', "ñ"}, {'o', "ö"}, {'p', "þ"}, {'q', "ɋ"}, {'r', "ŕ"}, {'s', "š"},
    {'t', "ţ"}, {'u', "û"}, {'w', "ŵ"}, {'x', "ẋ"}, {'y', "ý"}, {'z', "ž"},
}};

// The length of a printf placeholder at the start of the text, 0 where there is none. A percent sign before a space is
// one in a sentence ("20 % of").
std::size_t placeholderLength(std::string_view text) {
  if (!text.starts_with('%')) return 0;
  constexpr std::string_view kFlagsWidthPrecisionLength = "0123456789$#+-.*'hlqLztj";
  constexpr std::string_view kConversions = "@%dDiuUxXoOfFeEgGaAcCsSp";
  const std::size_t conversion = text.find_first_not_of(kFlagsWidthPrecisionLength, 1);
  if (conversion == std::string_view::npos || kConversions.find(text[conversion]) == std::string_view::npos) return 0;
  return conversion + 1;
}

std::size_t characterCount(std::string_view text) {
  std::size_t count = 0;
  for (; !text.empty(); text.remove_prefix(firstCharacter(text).length)) ++count;
  return count;
}

std::string accented(std::string_view english) {
  std::string text = "[";
  for (std::string_view rest = english; !rest.empty();) {
    if (const std::size_t length = placeholderLength(rest); length > 0) {
      text += rest.substr(0, length);
      rest.remove_prefix(length);
      continue;
    }
    const auto accent = std::ranges::find(kAccents, rest.front(), [](const auto& entry) { return entry.first; });
    if (accent != kAccents.end()) {
      text += accent->second;
    } else {
      text += rest.front();
    }
    rest.remove_prefix(1);
  }
  constexpr std::array<std::string_view, 10> kPadding = {"one", "two",   "three", "four", "five",
                                                         "six", "seven", "eight", "nine", "ten"};
  const std::size_t wanted = (characterCount(english) * 14 + 9) / 10;
  // The closing bracket counts.
  for (std::size_t i = 0, count = characterCount(text) + 1; count < wanted; ++i) {
    const std::string_view word = kPadding[i % kPadding.size()];
    text += ' ';
    text += word;
    count += 1 + word.size();
  }
  return text + "]";
}

// A right-to-left override around each line (a line feed ends an override) and none around placeholders, whose
// replacements have a direction of their own.
std::string mirrored(std::string_view english) {
  constexpr std::string_view kOverride = "\u202E";
  constexpr std::string_view kPop = "\u202C";
  constexpr std::string_view kMark = "\u200F";
  std::string text(kMark);
  bool overriding = false;
  const auto setOverriding = [&](bool on) {
    if (on != overriding) text += on ? kOverride : kPop;
    overriding = on;
  };
  for (std::string_view rest = english; !rest.empty();) {
    const std::size_t length = placeholderLength(rest);
    const bool plain = length == 0 && rest.front() != '\n';
    setOverriding(plain);
    const std::size_t taken = std::max<std::size_t>(length, 1);
    text += rest.substr(0, taken);
    if (rest.front() == '\n') text += kMark;
    rest.remove_prefix(taken);
  }
  setOverriding(false);
  return text + std::string(kMark);
}

}  // namespace

Environment processEnvironment() {
  return [](const std::string& name) -> std::optional<std::string> {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
  };
}

std::vector<std::string> userLanguages(const std::optional<std::string>& option, const Environment& environment) {
  std::vector<std::string> languages;
  if (option) {
    addLocale(languages, *option);
    return languages;
  }
  std::string messages;
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    messages = environment(variable).value_or("");
    if (!messages.empty()) break;
  }
  if (messages == "C" || messages == "POSIX") return languages;

  const std::string list = environment("LANGUAGE").value_or("");
  for (std::size_t begin = 0; begin < list.size();) {
    const std::size_t end = std::min(list.find(':', begin), list.size());
    addLocale(languages, std::string_view(list).substr(begin, end - begin));
    begin = end + 1;
  }
  addLocale(languages, messages);
  // Untranslated texts are English, so that no language after English is ever reached.
  const auto english = std::ranges::find(languages, "en", languageOf);
  if (english != languages.end()) languages.erase(std::next(english), languages.end());
  return languages;
}

std::vector<std::string> localeVariants(std::string_view locale) {
  const std::string language = languageOf(locale);
  const auto modifierAt = std::min(locale.find('@'), locale.size());
  const std::string modifier(locale.substr(modifierAt));
  const std::string languageAndCountry(locale.substr(0, modifierAt));
  std::vector<std::string> variants;
  for (const std::string& variant :
       {languageAndCountry + modifier, languageAndCountry, language + modifier, language}) {
    if (std::ranges::find(variants, variant) == variants.end()) variants.push_back(variant);
  }
  return variants;
}

std::optional<PseudoLanguage> pseudoLanguage(std::string_view locale) {
  if (locale == "en_XA") return PseudoLanguage::Accented;
  if (locale == "ar_XB") return PseudoLanguage::Mirrored;
  return std::nullopt;
}

std::string pseudoLocalized(std::string_view english, PseudoLanguage language) {
  if (english.empty()) return {};
  switch (language) {
    case PseudoLanguage::Accented:
      return accented(english);
    case PseudoLanguage::Mirrored:
      return mirrored(english);
  }
  return std::string(english);
}

bool isRightToLeft(std::string_view locale) {
  constexpr std::array<std::string_view, 9> kLanguages = {"ar", "ckb", "dv", "fa", "he", "ps", "ug", "ur", "yi"};
  return std::ranges::find(kLanguages, languageOf(locale)) != kLanguages.end();
}

}  // namespace quellar::host::linux
