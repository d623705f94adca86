// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quellar::host::linux {

/// The value of an environment variable; nothing where it is not set.
using Environment = std::function<std::optional<std::string>(const std::string& name)>;
/// The environment of this process.
[[nodiscard]] Environment processEnvironment();

/// The user's languages, best first, as POSIX locale names without a codeset ("pt_BR", "sr@latin"): the option alone
/// where it is given, else those of LANGUAGE, a list with colons, then the locale for messages: the first of LC_ALL,
/// LC_MESSAGES and LANG that is set and not empty. The locales "C" and "POSIX", with a codeset or without, stand for no
/// language; as the locale for messages, without a codeset, they also make LANGUAGE count for nothing. A dash is as
/// good as an underscore. What follows English is left out, since untranslated texts are English; English itself is not
/// added.
[[nodiscard]] std::vector<std::string> userLanguages(const std::optional<std::string>& option,
                                                     const Environment& environment = processEnvironment());

/// The names under which texts of a locale may be found, best first: "sr_RS@latin", "sr_RS", "sr@latin", "sr", as the
/// Desktop Entry specification matches localised keys.
[[nodiscard]] std::vector<std::string> localeVariants(std::string_view locale);

/// A language that is no language: English made visibly different, for finding texts that are not translated, cut off
/// or laid out for one direction alone.
enum class PseudoLanguage {
  /// en-XA: accented letters, 40 % longer, in brackets.
  Accented,
  /// ar-XB: written from right to left.
  Mirrored,
};

/// The pseudo-language of a locale name ("en_XA", "ar_XB"), or nothing.
[[nodiscard]] std::optional<PseudoLanguage> pseudoLanguage(std::string_view locale);

/// The English text in a pseudo-language; format placeholders ("%d", "%.01f", "%1$@", "%%") stay as they are, and an
/// empty text empty.
[[nodiscard]] std::string pseudoLocalized(std::string_view english, PseudoLanguage language);

/// True where a locale's script runs from right to left.
[[nodiscard]] bool isRightToLeft(std::string_view locale);

}  // namespace quellar::host::linux
