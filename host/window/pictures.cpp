// SPDX-License-Identifier: MIT
#include "host/window/pictures.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QQuickItem>
#include <QStyleHints>
#include <algorithm>
#include <array>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>

#include "cells/backdrop_picker.h"
#include "frame/names.h"
#include "host/window/opening.h"
#include "host/window/settings_window.h"

namespace quellar::host::window {

using frame::Dependent;
using frame::Row;
using platform::Dictionary;
using platform::Value;

namespace {

struct Form {
  const char* name = nullptr;
  QSize size;
  Idiom idiom = Idiom::phone;
};

constexpr std::array kForms{Form{"phone", {390, 844}, Idiom::phone}, Form{"wide", {1180, 820}, Idiom::pad}};

// "Status Bar" as a file name: "status-bar".
std::string fileName(const std::string& pageName) {
  std::string name;
  for (const char each : pageName) {
    const bool upper = each >= 'A' && each <= 'Z';
    const char lower = upper ? static_cast<char>(each - 'A' + 'a') : each;
    const bool plain = (lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9');
    name += plain ? lower : '-';
  }
  return name;
}

void collectControllingKeys(const std::vector<Row>& rows, std::vector<std::string>& keys) {
  for (const Row& row : rows) {
    const auto* block = std::get_if<Dependent>(&row.row);
    if (!block) continue;
    if (!block->onlyInserted) keys.push_back(block->shownBy);
    collectControllingKeys(block->rows, keys);
  }
}

bool isLoading(const QQuickItem& item) {
  constexpr int kLoading = 2;  // QQuickImageBase::Loading
  if (item.inherits("QQuickImage") && item.property("status").toInt() == kLoading) return true;
  const auto children = item.childItems();
  return std::ranges::any_of(children, [](const QQuickItem* child) { return isLoading(*child); });
}

// All pictures in one form.
class Studio {
 public:
  Studio(const Options& options, const Form& form, double scale, std::filesystem::path folder)
      : form_(form),
        folder_(std::move(folder)),
        panel_({.deviceRoot = options.deviceRoot,
                .language = options.language,
                .idiom = options.idiom.value_or(form.idiom),
                .scale = scale,
                .width = static_cast<double>(form.size.width()),
                .throwaway = true,
                .onTrouble = {}}),
        window_(panel_.navigation(), panel_.resources(), scale,
                {.textScale = options.textSize / 100.0, .reducedMotion = true, .rightToLeft = panel_.isRightToLeft()}) {
    window_.show(form.size);
    window_.window().requestActivate();
  }

  std::vector<std::filesystem::path> takeAll() {
    for (const auto& entry : panel_.pages().entries()) take(entry);
    takeBackdropPicker();
    // The toolkit ends its animations by an event, and complains where that comes after their window has gone.
    settle();
    return std::move(files_);
  }

 private:
  void take(const frame::PageRegistry::Entry& entry) {
    const std::string name = fileName(entry.name);
    std::vector<std::string> keys;
    collectControllingKeys(entry.page->rows, keys);

    open(entry, keys, false);
    save(name);
    if (window_.navigation().top()->controller()->navigationItem().rightBarButtonItem()) {
      window_.navigation().pressBar("right");
      saveDialog(name);
    }
    if (keys.empty()) {
      saveColorDialog(name);
      return;
    }
    open(entry, keys, true);
    window_.revealRow(QString::fromStdString(keys.front()));
    save(name + "-open");
    saveColorDialog(name);
    if (const int text = firstRow("text"); text >= 0) {
      QMetaObject::invokeMethod(&window_.window(), "revealRow", Q_ARG(QVariant, text));
      save(name + "-typing");
    }
    if (const int slider = firstRow("typedSlider"); slider >= 0) {
      window_.navigation().top()->rows()->enterValue(slider);
      saveDialog(name + "-entry");
    }
    if (const int picker = firstRow("picker"); picker >= 0) {
      window_.navigation().top()->rows()->activate(picker);
      window_.navigation().settle();
      RowModel& choices = *window_.navigation().top()->rows();
      choices.activate(choices.nextFocusable(choices.nextFocusable(-1, 1), 1));
      save(name + "-choices");
      panel_.navigation().popViewController(false);
    }
  }

  // It is no page of its own; a page opens it.
  void takeBackdropPicker() {
    open(*panel_.pages().find("Notification Center"), {}, false);
    panel_.navigation().pushViewController(
        std::make_shared<cells::KVQuellarBackdropPickerViewController>(panel_.platform(), "style", "Picture_Defaults"));
    window_.navigation().settle();
    save("backdrop-styles");
  }

  void open(const frame::PageRegistry::Entry& entry, const std::vector<std::string>& keys, bool blocksOpen) {
    // The first page stays, where it has come to rest already.
    const bool isFirst = &entry == &panel_.pages().entries().front();
    while (panel_.navigation().viewControllers().size() > (isFirst ? 0U : 1U)) {
      panel_.navigation().popViewController(false);
    }
    panel_.throwaway()->clear();
    if (!keys.empty()) {
      const auto stored = panel_.throwaway()->copyAppValue(entry.page->defaultsKey, frame::kSettingsDomain);
      const auto* dictionary = stored ? stored->as<Dictionary>() : nullptr;
      Dictionary values = dictionary ? *dictionary : Dictionary();
      for (const std::string& key : keys) values.insert_or_assign(key, Value(blocksOpen));
      panel_.throwaway()->setAppValue(entry.page->defaultsKey, Value(values), frame::kSettingsDomain);
    }
    openPage(panel_.platform(), panel_.pages(), entry);
    window_.navigation().settle();
  }

  // Lets the page come to rest: a title picture fades in some time after its page has come up, and some images are
  // drawn on other threads.
  void settle() {
    QElapsedTimer clock;
    clock.start();
    const auto moving = [this] {
      const PageModel* page = window_.navigation().top();
      const auto& title = page->controller()->navigationItem().titleView();
      return (title && title->alpha < 1) || isLoading(*window_.window().contentItem());
    };
    do {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    } while (moving() && clock.elapsed() < 60000);
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }

  // The first row of a kind on the page; -1 where there is none.
  int firstRow(const char* kind) {
    const auto& rows = window_.navigation().top()->rows()->rows();
    const auto found = std::ranges::find(rows, QString(kind), &ShownRow::kind);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
  }

  // With its first colour. The dialogs are alike but for the slider for the opacity, so one of each kind will do.
  void saveColorDialog(const std::string& pageName) {
    const int row = firstRow("color");
    if (row < 0) return;
    window_.navigation().top()->rows()->activate(row);
    const auto& dialog = panel_.navigation().dialog();
    if (dialog && dialog->color && colorDialogs_.insert(dialog->color->showAlpha).second) save(pageName + "-color");
    panel_.navigation().dismiss();
  }

  // Dialogs that several pages show are drawn once.
  void saveDialog(const std::string& pageName) {
    const auto& dialog = panel_.navigation().dialog();
    if (!dialog) return;
    if (dialogs_.insert(dialog->title + "\n" + dialog->message).second) save(pageName + "-dialog");
    panel_.navigation().dismiss();
  }

  void save(const std::string& name) {
    settle();
    const auto file = folder_ / (name + "-" + form_.name + ".png");
    const QImage image = window_.window().grabWindow();
    if (image.isNull() || !image.save(QString::fromStdString(file.string()))) {
      throw std::runtime_error(file.string() + ": the picture can't be written");
    }
    files_.push_back(file);
  }

  const Form& form_;
  std::filesystem::path folder_;
  WindowPlatform panel_;
  SettingsWindow window_;
  std::set<std::string> dialogs_;
  std::set<bool> colorDialogs_;
  std::vector<std::filesystem::path> files_;
};

}  // namespace

std::vector<std::filesystem::path> writePictures(const Options& options, const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::runtime_error(folder.string() + ": " + error.message());
  // A cursor that blinks would not be in every picture.
  QGuiApplication::styleHints()->setCursorFlashTime(0);
  std::vector<std::filesystem::path> files;
  for (const Form& form : kForms) {
    auto taken = Studio(options, form, options.scale.value_or(kPictureScale), folder).takeAll();
    files.insert(files.end(), taken.begin(), taken.end());
  }
  return files;
}

}  // namespace quellar::host::window
