// SPDX-License-Identifier: MIT
#include "host/linux/bundles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "host/linux/property_list/property_list.h"
#include "host/linux/string_table.h"

namespace quellar::host::linux {

namespace {

using platform::Array;
using platform::Dictionary;
using platform::Image;
using platform::Value;

constexpr std::array<int, 3> kScales = {1, 2, 3};

// Names come from row files and tables that anybody may have written; none may name a file outside of its bundle.
bool staysInside(std::string_view name) {
  if (name.empty() || name.starts_with('/') || name.find('\0') != std::string_view::npos) return false;
  return std::ranges::none_of(std::filesystem::path(name), [](const auto& part) { return part == ".."; });
}

std::string joined(std::string_view bundlePath, std::string_view name) {
  return std::string(bundlePath) + "/" + std::string(name);
}

// "images/x.png" at scale 2 is "images/x@2x.png".
std::string pathAtScale(const std::string& path, int scale) {
  if (scale == 1) return path;
  const std::string extension = std::filesystem::path(path).extension();
  return path.substr(0, path.size() - extension.size()) + "@" + std::to_string(scale) + "x" + extension;
}

}  // namespace

BundleResources::BundleResources(const DeviceRoot& root, const std::vector<std::string>& languages, Report report)
    : root_(root), report_(std::move(report)) {
  const auto add = [&](const std::string& name) {
    if (std::ranges::find(languageFolders_, name) == languageFolders_.end()) languageFolders_.push_back(name);
  };
  if (!languages.empty()) pseudoLanguage_ = pseudoLanguage(languages.front());
  if (!pseudoLanguage_) {
    for (const std::string& language : languages) {
      for (const std::string& variant : localeVariants(language)) {
        std::string dashed = variant;
        std::ranges::replace(dashed, '_', '-');
        // A locale comes from the environment.
        if (!staysInside(dashed) || dashed.find('/') != std::string::npos) continue;
        add(dashed);
        add(variant);
      }
    }
  }
  add("en");
}

std::string BundleResources::localizedString(std::string_view bundlePath, std::string_view key, std::string_view value,
                                             const std::optional<std::string>& table) {
  std::string_view text = value.empty() ? key : value;
  for (const Texts& texts : tableOf(bundlePath, table ? *table : "Localizable").texts) {
    if (const auto entry = texts.find(key); entry != texts.end()) {
      text = entry->second;
      break;
    }
  }
  return pseudoLanguage_ ? pseudoLocalized(text, *pseudoLanguage_) : std::string(text);
}

const BundleResources::Table& BundleResources::tableOf(std::string_view bundlePath, std::string_view name) {
  const auto [entry, isNew] = tables_.try_emplace({std::string(bundlePath), std::string(name)});
  Table& table = entry->second;
  if (!isNew || !staysInside(name)) return table;
  for (const std::string& language : languageFolders_) {
    const std::string file = language + ".lproj/" + std::string(name) + ".strings";
    if (std::optional<Texts> texts = readTable(joined(bundlePath, file))) {
      if (table.texts.empty()) table.language = language;
      table.texts.push_back(std::move(*texts));
    }
  }
  return table;
}

std::optional<BundleResources::Texts> BundleResources::readTable(const std::string& path) const {
  const std::optional<std::string> bytes = contents(path, kStringTableSizeLimit);
  if (!bytes) return std::nullopt;
  StringTable table = parseStringTable(*bytes);
  for (const StringTable::Problem& problem : table.problems) {
    report(root_.hostPath(path).string() + ":" + std::to_string(problem.line) + ": " + problem.what);
  }
  return std::move(table.entries);
}

bool BundleResources::isRightToLeft() {
  if (pseudoLanguage_) return pseudoLanguage_ == PseudoLanguage::Mirrored;
  return linux::isRightToLeft(tableOf(kSettingsBundlePath, "Localizable").language);
}

std::optional<Array> BundleResources::rowFileItems(std::string_view bundlePath, std::string_view name) {
  if (!staysInside(name)) {
    report(std::string(name) + ": leads out of its bundle");
    return std::nullopt;
  }
  const std::string path = joined(bundlePath, std::string(name) + ".plist");
  std::optional<Value> list = propertyListWithContentsOfFile(path);
  if (!list) return std::nullopt;
  if (Dictionary* dictionary = list->as<Dictionary>()) {
    if (const auto items = dictionary->find("items"); items != dictionary->end()) {
      if (Array* array = items->second.as<Array>()) return std::move(*array);
    }
  }
  report(root_.hostPath(path).string() + ": is no dictionary with an array \"items\"");
  return std::nullopt;
}

void BundleResources::reportRowFile(std::string_view name, std::string_view problem) {
  report(std::string(name) + ".plist: " + std::string(problem));
}

bool BundleResources::fileExists(std::string_view path) {
  return root_.exists(path);
}

std::optional<Image> BundleResources::imageWithContentsOfFile(std::string_view path) {
  Image image{.path = std::string(path), .flatColor = {}};
  if (!imageFile(image, 1)) return std::nullopt;
  return image;
}

std::optional<Image> BundleResources::imageNamed(std::string_view name, std::string_view bundlePath) {
  if (!staysInside(name)) return std::nullopt;
  return imageWithContentsOfFile(joined(bundlePath, std::string(name) + ".png"));
}

std::optional<Value> BundleResources::propertyListWithContentsOfFile(std::string_view path) {
  const std::optional<std::string> bytes = contents(std::string(path), kMaxPropertyListBytes);
  if (!bytes) return std::nullopt;
  try {
    return parsePropertyList(*bytes);
  } catch (const PropertyListError& error) {
    report(root_.hostPath(path).string() + ": " + error.what());
    return std::nullopt;
  }
}

std::optional<BundleResources::ImageFile> BundleResources::imageFile(const Image& image, double scale) const {
  // Finer files look better than coarser ones, the nearest finer one best.
  std::array<int, 3> order = kScales;
  std::ranges::stable_sort(
      order, {}, [&](int fileScale) { return fileScale >= scale ? fileScale : 2 * kScales.back() - fileScale; });
  for (const int fileScale : order) {
    try {
      const auto file = root_.realPath(pathAtScale(image.path, fileScale));
      std::error_code error;
      if (file && std::filesystem::is_regular_file(*file, error)) return ImageFile{*file, fileScale};
    } catch (const FileError& error) {
      report(error.what());
    }
  }
  return std::nullopt;
}

std::optional<std::string> BundleResources::imageBytes(const Image& image, double scale) const {
  const auto file = imageFile(image, scale);
  return file ? contents(pathAtScale(image.path, file->scale), kImageSizeLimit) : std::nullopt;
}

std::optional<std::string> BundleResources::contents(const std::string& path, std::size_t limit) const {
  try {
    return root_.contents(path, limit);
  } catch (const FileError& error) {
    report(error.what());
    return std::nullopt;
  }
}

void BundleResources::report(const std::string& message) const {
  if (report_) report_(message);
}

}  // namespace quellar::host::linux
