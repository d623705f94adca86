// SPDX-License-Identifier: MIT
#include "host/window/pictures.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QImageWriter>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QStyleHints>
#include <QThreadPool>
#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>

#include "cells/backdrop_picker.h"
#include "frame/names.h"
#include "host/window/opening.h"
#include "host/window/sample_page.h"
#include "host/window/sample_wallpaper.h"
#include "host/window/settings_window.h"

namespace quellar::host::window {

using platform::Dictionary;
using platform::Value;

namespace {

struct Form {
  const char* name = nullptr;
  QSize size;
  Idiom idiom = Idiom::phone;
};

constexpr std::array kForms{Form{"phone", {390, 844}, Idiom::phone}, Form{"wide", {1180, 820}, Idiom::pad}};

// Another way to show the same, of which a few pages give an idea.
struct Manner {
  const char* name = nullptr;
  const char* language = nullptr;
  int textSize = 100;
};

constexpr std::array kManners{Manner{"ar-XB", "ar-XB", 100}, Manner{"en-XA", "en-XA", 100},
                              Manner{"large-text", nullptr, 200}};
constexpr std::array kFewPages{"Quellar", "Status Bar", "Home Screen", "Icons"};

Options inManner(Options options, const Manner& manner) {
  if (manner.language) options.language = manner.language;
  options.textSize = manner.textSize;
  return options;
}

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

bool isLoading(const QQuickItem& item) {
  constexpr int kLoading = 2;  // QQuickImageBase::Loading
  if (item.inherits("QQuickImage") && item.property("status").toInt() == kLoading) return true;
  const auto children = item.childItems();
  return std::ranges::any_of(children, [](const QQuickItem* child) { return isLoading(*child); });
}

// Writes pictures while the next ones are drawn: to pack one takes longer than to draw it.
class Album {
 public:
  explicit Album(std::filesystem::path folder) : folder_(std::move(folder)) {}
  Album(const Album&) = delete;
  Album& operator=(const Album&) = delete;
  ~Album() { threads_.waitForDone(); }

  void add(const std::string& name, const QImage& image) {
    const auto file = folder_ / (name + ".png");
    files_.push_back(file);
    threads_.start([this, file, image] {
      QImageWriter writer(QString::fromStdString(file.string()), "png");
      // To pack them well takes most of the time, and saves little.
      writer.setCompression(20);
      if (writer.write(image)) return;
      const std::lock_guard guard(mutex_);
      trouble_ = file.string() + ": the picture can't be written";
    });
  }
  // Waits for all files, and returns them in the order in which they were added.
  std::vector<std::filesystem::path> finish() {
    threads_.waitForDone();
    if (!trouble_.empty()) throw std::runtime_error(trouble_);
    return std::move(files_);
  }

 private:
  const std::filesystem::path folder_;
  std::vector<std::filesystem::path> files_;
  std::mutex mutex_;
  std::string trouble_;
  QThreadPool threads_;
};

// The pictures of one form, in one manner.
class Studio {
 public:
  // Takes what the names of the pictures end with.
  Studio(const Options& options, const Form& form, double scale, std::string ending, Album& album)
      : ending_(std::move(ending)),
        album_(album),
        panel_({.deviceRoot = options.deviceRoot,
                .language = options.language,
                .idiom = options.idiom.value_or(form.idiom),
                .scale = scale,
                .width = static_cast<double>(form.size.width()),
                .throwaway = true,
                .wallpaperStandIn = sampleWallpaper,
                .onTrouble = {}}),
        window_(panel_.navigation(), panel_.resources(), scale,
                {.textScale = options.textSize / 100.0, .reducedMotion = true, .rightToLeft = panel_.isRightToLeft()}) {
    // As the program starts: the first page is there before the window is shown.
    window_.resize(form.size);
    openPage(panel_.platform(), panel_.pages(), panel_.pages().entries().front());
    window_.start();
  }

  void close() { window_.window().hide(); }

  void takeAll() {
    for (const auto& entry : panel_.pages().entries()) take(entry);
    takeBackdropPicker();
    takeSamples();
    takeNotices();
    takePressed();
  }

  void takeFew() {
    for (const char* name : kFewPages) takeOpen(*panel_.pages().find(name));
    // It has no text but numbers.
    if (panel_.isRightToLeft()) takeBackdropPicker();
    openSample(Sample::plain);
    save("rows");
  }

 private:
  void take(const frame::PageRegistry::Entry& entry) {
    const std::string name = fileName(entry.name);
    const auto keys = keysThatShowBlocks(*entry.page);

    open(entry, false);
    save(name);
    if (window_.navigation().top()->controller()->navigationItem().rightBarButtonItem()) {
      window_.navigation().pressBar("right");
      saveDialog(name);
    }
    if (keys.empty()) {
      saveColorDialog(name);
      return;
    }
    takeOpen(entry);
    if (const int text = firstRow("text"); text >= 0) {
      QMetaObject::invokeMethod(&window_.window(), "revealRow", Q_ARG(QVariant, text));
      window_.navigation().top()->rows()->setEditingText(text, "Quellar");
      save(name + "-typing");
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

  // With its blocks, and the dialogs that they lead to.
  void takeOpen(const frame::PageRegistry::Entry& entry) {
    const std::string name = fileName(entry.name);
    const auto keys = keysThatShowBlocks(*entry.page);
    open(entry, true);
    if (!keys.empty()) window_.revealRow(QString::fromStdString(keys.front()));
    save(name + "-open");
    saveColorDialog(name);
    if (const int slider = firstRow("typedSlider"); slider >= 0) {
      window_.navigation().top()->rows()->enterValue(slider);
      saveDialog(name + "-entry");
      window_.navigation().top()->rows()->enterValue(slider, "1000000");
      window_.navigation().dialog()->accept();
      saveDialog(name + "-refused");
    }
  }

  // It is no page of its own; a page opens it.
  void takeBackdropPicker() {
    open(*panel_.pages().find("Notification Center"), false);
    panel_.navigation().pushViewController(
        std::make_shared<cells::KVQuellarBackdropPickerViewController>(panel_.platform(), "style", "Picture_Defaults"));
    window_.navigation().settle();
    save("backdrop-styles");
    press(Qt::Key_End);
    save("backdrop-styles-end");
  }

  void takeSamples() {
    openSample(Sample::plain);
    save("rows");
    press(Qt::Key_Down);
    save("rows-focus");
    revealLastRow();
    save("rows-end");
    openSample(Sample::disabled);
    save("rows-disabled");
    revealLastRow();
    save("rows-disabled-end");
    openSample(Sample::lengthy);
    save("rows-lengthy");
    revealLastRow();
    save("rows-lengthy-end");
  }

  // A row with a mouse button held down on it. It is let go of beside the window, so that it does nothing.
  void takePressed() {
    openSample(Sample::plain);
    settle();
    const QQuickItem* const link = rowItem(*window_.window().contentItem(), "Link");
    if (!link) throw std::runtime_error("the sample page has no link");
    const QPointF middle = link->mapToScene(QPointF(link->width() / 2, link->height() / 2));
    const QPointF beside(-link->width(), middle.y());
    const auto* const card = link->property("card").value<QQuickItem*>();
    const QVariant atRest = card->property("color");
    send(QEvent::MouseButtonPress, middle, Qt::LeftButton, Qt::LeftButton);
    // The row takes the colour of its state by and by.
    QElapsedTimer steady;
    QVariant color = atRest;
    wait([&] {
      const QVariant now = card->property("color");
      if (now != color) steady.start();
      color = now;
      return color == atRest || steady.elapsed() < 100;
    });
    save("rows-pressed");
    send(QEvent::MouseMove, beside, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, beside, Qt::LeftButton, Qt::NoButton);
  }

  // A row that is in sight; nullptr where there is none of the label.
  static QQuickItem* rowItem(QQuickItem& among, const QString& label) {
    if (!among.isVisible()) return nullptr;
    if (among.property("rowEnabled").isValid() && among.property("label").toString() == label) return &among;
    const auto children = among.childItems();
    for (QQuickItem* child : children) {
      if (QQuickItem* found = rowItem(*child, label)) return found;
    }
    return nullptr;
  }

  void revealLastRow() {
    const int last = window_.navigation().top()->rows()->rowCount() - 1;
    QMetaObject::invokeMethod(&window_.window(), "revealRow", Q_ARG(QVariant, last));
  }

  void takeNotices() {
    const auto& entry = *panel_.pages().find("Dock");
    open(entry, false);
    panel_.throwaway()->setAppValue(entry.page->defaultsKey, Value(Dictionary{{"userDisablesBackgroundBlur", true}}),
                                    frame::kSettingsDomain);
    ElsewhereWatch& elsewhere = *panel_.resources().elsewhere;
    elsewhere.checkSoon();
    wait([&elsewhere] { return !elsewhere.changed(); });
    save("notice");
    open(entry, false);
    using Kind = linux::StoreTrouble::Kind;
    const std::string file = "/mnt/device/com.vantorick.quellar2.plist";
    window_.trouble().tell({Kind::Write, file, "No space left on device"});
    save("trouble");
    window_.trouble().tell({Kind::Resolved, file, {}});
  }

  void open(const frame::PageRegistry::Entry& entry, bool blocksOpen) {
    // The first page stays, where it has come to rest already.
    const bool isFirst = &entry == &panel_.pages().entries().front();
    popTo(isFirst ? 0 : 1);
    panel_.throwaway()->clear();
    openPage(panel_.platform(), panel_.pages(), entry);
    window_.navigation().settle();
    auto* const page = dynamic_cast<platform::PSListController*>(panel_.navigation().topViewController().get());
    showBlocks(*page, blocksOpen);
    window_.navigation().settle();
  }

  void openSample(Sample sample) {
    popTo(1);
    panel_.navigation().pushViewController(makeSamplePage(panel_.platform(), sample));
    window_.navigation().settle();
  }

  void popTo(std::size_t depth) {
    while (panel_.navigation().viewControllers().size() > depth) panel_.navigation().popViewController(false);
  }

  // Runs the event loop while it holds, a minute at the most.
  template <typename Condition>
  static void wait(const Condition& holds) {
    QElapsedTimer clock;
    clock.start();
    do {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    } while (holds() && clock.elapsed() < 60000);
  }

  // Lets the page come to rest: a title picture fades in some time after its page has come up, and some images are
  // drawn on other threads.
  void settle() {
    wait([this] {
      const PageModel* page = window_.navigation().top();
      const auto& title = page->controller()->navigationItem().titleView();
      return (title && title->alpha < 1) || isLoading(*window_.window().contentItem());
    });
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }

  void press(Qt::Key key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(&window_.window(), &event);
  }

  void send(QEvent::Type type, QPointF place, Qt::MouseButton button, Qt::MouseButtons held) {
    QMouseEvent event(type, place, window_.window().mapToGlobal(place), button, held, Qt::NoModifier);
    QCoreApplication::sendEvent(&window_.window(), &event);
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
    if (dialog && dialog->color && colorDialogs_.insert(dialog->color->showAlpha).second) {
      window_.navigation().dialog()->color()->setProperty("hue", 200);
      QMetaObject::invokeMethod(window_.navigation().dialog()->color(), "setShade", Q_ARG(double, 0.7),
                                Q_ARG(double, 0.8));
      save(pageName + "-color");
    }
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
    album_.add(name + ending_, window_.window().grabWindow());
  }

  const std::string ending_;
  Album& album_;
  WindowPlatform panel_;
  SettingsWindow window_;
  std::set<std::string> dialogs_;
  std::set<bool> colorDialogs_;
};

}  // namespace

std::vector<std::filesystem::path> writePictures(const Options& options, const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::runtime_error(folder.string() + ": " + error.message());
  // A cursor that blinks would not be in every picture.
  QGuiApplication::styleHints()->setCursorFlashTime(0);
  const double scale = options.scale.value_or(kPictureScale);
  Album album(folder);
  // Each window stays until all pictures are taken: the toolkit ends animations by an event, and complains where that
  // comes after a window has gone.
  std::vector<std::unique_ptr<Studio>> studios;
  const auto open = [&](const Options& wanted, const Form& form, const std::string& ending) -> Studio& {
    if (!studios.empty()) studios.back()->close();
    return *studios.emplace_back(std::make_unique<Studio>(wanted, form, scale, ending, album));
  };
  for (const Form& form : kForms) {
    const std::string ending = std::string("-") + form.name;
    open(options, form, ending).takeAll();
    for (const Manner& manner : kManners) {
      open(inManner(options, manner), form, std::string("-") + manner.name + ending).takeFew();
    }
  }
  return album.finish();
}

}  // namespace quellar::host::window
