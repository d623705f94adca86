// SPDX-License-Identifier: MIT
#include <fontconfig/fontconfig.h>
#include <malloc.h>

#include <QGuiApplication>
#include <QQuickWindow>
#include <QScreen>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>

#include "host/linux/process_start.h"
#include "host/window/opening.h"
#include "host/window/options.h"
#include "host/window/pictures.h"
#include "host/window/settings_window.h"
#include "host/window/wayland_seat.h"
#include "host/window/window_platform.h"
#include "platform/printable.h"

namespace {

using namespace quellar::host::window;
using quellar::platform::printable;

// The toolkit aborts where it has no display to work on; a user gets one clear line instead.
void tellNoDisplay(QtMsgType type, const QMessageLogContext& /*context*/, const QString& /*message*/) {
  if (type != QtFatalMsg) return;
  std::fputs("quellar-settings: there is no display to open a window on (--pictures DIR works without one)\n", stderr);
  std::_Exit(1);
}

// One heap for all threads: a thread's own one grows by a page at a time, with a system call for each, and the toolkit
// loads the view on a thread of its own.
void chooseHeap() {
#if defined(__GLIBC__)
  constexpr int kGrowth = 1 << 20;
  ::mallopt(M_ARENA_MAX, 1);
  ::mallopt(M_TOP_PAD, kGrowth);
#endif
}

// Reads the system's list of typefaces, which the first text waits for, while the toolkit starts. The library is made
// for several threads, and the toolkit finds the list read.
std::jthread readTypefaces() {
  try {
    return std::jthread([] { ::FcInit(); });
  } catch (const std::system_error&) {
    // The system has no thread left: the list is read when it is needed.
    return {};
  }
}

void chooseScale(double scale) {
  qputenv("QT_ENABLE_HIGHDPI_SCALING", "0");
  qputenv("QT_SCALE_FACTOR", QByteArray::number(scale));
}

int drawPictures(const Options& options) {
  try {
    const auto files = writePictures(options, *options.pictures);
    std::cout << files.size() << " pictures in " << *options.pictures << std::endl;
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "quellar-settings: " << printable(error.what()) << std::endl;
    return 1;
  }
}

QSize windowSize(const QScreen& screen) {
  constexpr QSize kUsual(390, 800);
  return kUsual.boundedTo(screen.availableSize());
}

int runWindow(const Options& options) {
  const QScreen& screen = *QGuiApplication::primaryScreen();
  SettingsWindow* shown = nullptr;
  const auto tell = [&shown](const quellar::host::linux::StoreTrouble& trouble) {
    using Kind = quellar::host::linux::StoreTrouble::Kind;
    const std::string text = trouble.file + ": " + (trouble.kind == Kind::Resolved ? "all is saved" : trouble.cause);
    std::cerr << "quellar-settings: " << printable(text) << std::endl;
    // The store tells some troubles before the window is there.
    QMetaObject::invokeMethod(
        qApp,
        [&shown, trouble] {
          if (shown) shown->trouble().tell(trouble);
        },
        Qt::QueuedConnection);
  };

  WindowPlatform panel({.deviceRoot = options.deviceRoot,
                        .language = options.language,
                        .idiom = options.idiom.value_or(Idiom::phone),
                        .scale = screen.devicePixelRatio(),
                        .width = static_cast<double>(screen.size().width()),
                        .throwaway = false,
                        .onTrouble = tell});
  const Appearance appearance{.textScale = options.textSize / 100.0,
                              .reducedMotion = options.reducedMotion,
                              .rightToLeft = panel.isRightToLeft()};
  SettingsWindow window(panel.navigation(), panel.resources(), screen.devicePixelRatio(), appearance);
  shown = &window;
  window.resize(windowSize(screen));

  const auto& pages = panel.pages();
  const auto& entry = options.page ? *pages.find(*options.page) : pages.entries().front();
  openPage(panel.platform(), panel.pages(), entry);
  std::optional<quellar::frame::FoundRow> row;
  if (options.key) {
    auto found = rowToOpen(panel.platform(), pages, *options.key);
    if (const auto* wrong = std::get_if<std::string>(&found)) {
      std::cerr << "quellar-settings: " << *wrong << std::endl;
      return 2;
    }
    row = std::get<quellar::frame::FoundRow>(std::move(found));
  }

  // What the pages have put off is done before the program ends.
  QGuiApplication::setQuitOnLastWindowClosed(false);
  auto& queue = panel.mainQueue();
  QObject::connect(qApp, &QGuiApplication::lastWindowClosed, [&queue] {
    QObject::connect(&queue, &QtMainQueue::becameIdle, qApp, &QCoreApplication::quit);
    if (queue.idle()) QCoreApplication::quit();
  });

  window.start();
  if (row) window.leadTo(*row);
  const int code = QGuiApplication::exec();
  shown = nullptr;
  return code;
}

}  // namespace

int main(int argc, char** argv) {
  quellar::host::linux::prepareProcess();
  const auto parsed = parseOptions(argc, argv);
  if (const int* code = std::get_if<int>(&parsed)) return *code;
  const auto& options = std::get<Options>(parsed);

  if (options.pictures) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    chooseScale(options.scale.value_or(kPictureScale));
  } else if (options.scale) {
    chooseScale(*options.scale);
  }
  chooseRenderer();
  chooseInputMethod();
  chooseHeap();
  const std::jthread typefaces = readTypefaces();
  // The arguments are all ours.
  int ownArgc = 1;
  const QtMessageHandler usual = qInstallMessageHandler(tellNoDisplay);
  const QGuiApplication application(ownArgc, argv);
  qInstallMessageHandler(usual);
  prepareApplication();
  return options.pictures ? drawPictures(options) : runWindow(options);
}
