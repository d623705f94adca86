// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/linux/device_root.h"
#include "host/linux/languages.h"
#include "platform/ports.h"

namespace quellar::host::linux {

/// Larger pictures are not read.
inline constexpr std::size_t kImageSizeLimit = std::size_t{16} * 1024 * 1024;

/// Files of the device root and what bundles hold: images, string tables, row files. Files are read only.
class BundleResources final : public platform::Bundles, public platform::Files {
 public:
  /// Is told, in one line that names the file, what of it could not be used.
  using Report = std::function<void(const std::string& message)>;

  /// Takes the device root, which outlives this object, and the user's languages as `userLanguages` gives them.
  BundleResources(const DeviceRoot& root, const std::vector<std::string>& languages, Report report = {});

  /// Looks the key up in `<language>.lproj/<table>.strings` of the bundle, in the user's languages from the best one on
  /// ("pt-BR", "pt"), then in English. A pseudo-language changes what English gives. A table is read once.
  [[nodiscard]] std::string localizedString(std::string_view bundlePath, std::string_view key, std::string_view value,
                                            const std::optional<std::string>& table) override;
  [[nodiscard]] std::optional<platform::Array> rowFileItems(std::string_view bundlePath,
                                                            std::string_view name) override;
  void reportRowFile(std::string_view name, std::string_view problem) override;

  [[nodiscard]] bool fileExists(std::string_view path) override;
  /// An image is there when its file is, or one for a finer screen: "x@2x.png" or "x@3x.png" for "x.png".
  [[nodiscard]] std::optional<platform::Image> imageWithContentsOfFile(std::string_view path) override;
  [[nodiscard]] std::optional<platform::Image> imageNamed(std::string_view name, std::string_view bundlePath) override;
  [[nodiscard]] std::optional<platform::Value> propertyListWithContentsOfFile(std::string_view path) override;

  /// A picture in the host's file system.
  struct ImageFile {
    std::filesystem::path file;
    /// Pixels of the file a point: 1, 2 or 3.
    int scale;
    bool operator==(const ImageFile&) const = default;
  };
  /// The file of an image that suits a screen of `scale` pixels a point: the one of that scale, else the next finer,
  /// else the finest; nothing where there is none.
  [[nodiscard]] std::optional<ImageFile> imageFile(const platform::Image& image, double scale) const;
  /// The bytes of that file; nothing, and a report, where it can't be read or is larger than kImageSizeLimit. Nothing
  /// outside of the device root and the bundle's folders is opened, whatever happens to the path meanwhile.
  [[nodiscard]] std::optional<std::string> imageBytes(const platform::Image& image, double scale) const;

  /// True where the settings bundle's texts run from right to left.
  [[nodiscard]] bool isRightToLeft();

 private:
  using Texts = std::map<std::string, std::string, std::less<>>;
  struct Table {
    /// Of `languageFolders_`, for those that have this table, in their order.
    std::vector<Texts> texts;
    /// The first of these.
    std::string language;
  };

  const Table& tableOf(std::string_view bundlePath, std::string_view name);
  [[nodiscard]] std::optional<Texts> readTable(const std::string& path) const;
  [[nodiscard]] std::optional<std::string> contents(const std::string& path, std::size_t limit) const;
  void report(const std::string& message) const;

  const DeviceRoot& root_;
  Report report_;
  /// What stands before ".lproj", best first.
  std::vector<std::string> languageFolders_;
  std::optional<PseudoLanguage> pseudoLanguage_;
  /// By bundle path and name.
  std::map<std::pair<std::string, std::string>, Table> tables_;
};

}  // namespace quellar::host::linux
