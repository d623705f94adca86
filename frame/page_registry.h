// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "frame/list_controller.h"
#include "frame/page.h"
#include "platform/platform.h"

namespace quellar::frame {

/// The page and cell classes by their names. Pages stand in the order in which they were added, the root page first.
class PageRegistry : public platform::Classes {
 public:
  /// A page's description, which is built when it is first looked at: a start needs one of them, and all take longer
  /// than the rest of a short command.
  class Description {
   public:
    explicit Description(const Page& (*page)()) : page_(page) {}
    const Page& operator*() const { return page_(); }
    const Page* operator->() const { return &page_(); }

   private:
    const Page& (*page_)();
  };

  struct Entry {
    Description page;
    /// The English name that users know the page by: the label of the link that opens it.
    std::string name;
    std::function<std::shared_ptr<platform::ViewController>(platform::Platform&)> make;
  };
  using MakeCell = std::function<std::shared_ptr<platform::PSTableCell>(platform::Platform&, platform::PSSpecifier&,
                                                                        const platform::Rect&)>;

  /// Adds a page class: `T::page()` is its description, and a T is made from the platform alone.
  template <typename T>
  void add(std::string name) {
    entries_.push_back({Description(&T::page), std::move(name),
                        [](platform::Platform& platform) { return std::make_shared<T>(platform); }});
  }
  /// Adds a class that is no page of its own.
  void addClass(std::string className,
                std::function<std::shared_ptr<platform::ViewController>(platform::Platform&)> make);
  void addCell(std::string className, MakeCell make);

  [[nodiscard]] const std::vector<Entry>& entries() const { return entries_; }
  /// The page of a class name, or of a page's name in any case with spaces or dashes; nullptr where there is none.
  [[nodiscard]] const Entry* find(std::string_view classOrName) const;

  /// Must be called before classes are looked up.
  void setPlatform(platform::Platform& platform) { platform_ = &platform; }
  std::shared_ptr<platform::ViewController> makeViewController(std::string_view className) override;
  /// A new page, under its name.
  [[nodiscard]] std::shared_ptr<platform::ViewController> makeViewController(const Entry& entry) const;
  std::shared_ptr<platform::PSTableCell> makeCell(std::string_view className, platform::PSSpecifier& specifier,
                                                  const platform::Rect& frame) override;

 private:
  platform::Platform* platform_ = nullptr;
  std::vector<Entry> entries_;
  std::map<std::string, std::function<std::shared_ptr<platform::ViewController>(platform::Platform&)>, std::less<>>
      classes_;
  std::map<std::string, MakeCell, std::less<>> cells_;
};

}  // namespace quellar::frame
