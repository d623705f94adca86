// SPDX-License-Identifier: MIT
#include "window_fixture.h"

#include <QGuiApplication>
#include <QPointingDevice>
#include <QTest>
#include <utility>

namespace quellar::tests {

using namespace std::chrono_literals;
using host::window::SettingsWindow;
using host::window::WindowPlatform;

namespace {

constexpr const char* kMarker = "the test's own";

QPoint centre(const QQuickItem* item) {
  return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}

}  // namespace

WindowTest::WindowTest() {
  qputenv("DBUS_SESSION_BUS_ADDRESS", QByteArray::fromStdString(bus_.address()));
  listener_ = std::make_unique<host::linux::Bus>(bus_.address());
  listener_->listen([this](const host::linux::BusNotification& each) { posts_.push_back(each.name); });
  if (!listener_->waitUntilConnected(10s)) throw std::runtime_error("the session bus does not answer");
}

WindowTest::~WindowTest() {
  closeWindow();
  panel_.reset();
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

WindowPlatform& WindowTest::panel() {
  if (!panel_) {
    panel_ = std::make_unique<WindowPlatform>(host::window::WindowPlatformOptions{
        .deviceRoot = root_.path().string(),
        .language = "en",
        .idiom = idiom_,
        .scale = 1,
        .width = 390,
        .throwaway = false,
        .store = {.file = {.lockLimit = 50ms}, .firstRetry = retryPause_, .lastRetry = 10 * retryPause_},
        .onTrouble = [this](const host::linux::StoreTrouble& trouble) {
          if (window_) {
            window_->trouble().tell(trouble);
          } else {
            early_.push_back(trouble);
          }
        }});
  }
  return *panel_;
}

void WindowTest::make(const Setup& setup) {
  idiom_ = setup.idiom;
  window_ = std::make_unique<SettingsWindow>(
      panel().navigation(), panel().resources(), 1,
      host::window::Appearance{
          .textScale = setup.textScale, .reducedMotion = setup.reducedMotion, .rightToLeft = setup.rightToLeft});
  for (const auto& trouble : std::exchange(early_, {})) window_->trouble().tell(trouble);
  window_->resize(setup.size);
}

void WindowTest::start() {
  window_->start();
  ASSERT_TRUE(eventually([this] { return view().isActive() && view().isExposed(); }));
  settle();
}

void WindowTest::open(const std::string& name, const Setup& setup) {
  make(setup);
  const auto* entry = panel().pages().find(name);
  ASSERT_NE(entry, nullptr) << name;
  host::window::openPage(panel().platform(), panel().pages(), *entry);
  start();
}

void WindowTest::open(std::shared_ptr<platform::PSListController> page, const Setup& setup) {
  make(setup);
  panel().navigation().pushViewController(std::move(page));
  start();
}

void WindowTest::closeWindow() {
  window_.reset();
}

platform::PSListController& WindowTest::page() {
  return dynamic_cast<platform::PSListController&>(*panel().navigation().topViewController());
}

bool WindowTest::eventually(const std::function<bool()>& holds) {
  return QTest::qWaitFor([&] { return holds(); }, 10000);
}

void WindowTest::settle() {
  window_->navigation().settle();
  const auto atRest = [this] {
    const QQuickItem* top = list() ? list()->parentItem() : nullptr;
    return panel().mainQueue().idle() && panel().preferences().isIdle() && top &&
           top->property("shift").toReal() == 0 && window_->navigation().rowCount() == window_->navigation().depth();
  };
  ASSERT_TRUE(eventually(atRest));
  // Positions are set before the next picture is drawn.
  (void)view().grabWindow();
}

QQuickItem* WindowTest::findItem(const std::function<bool(QQuickItem&)>& matches, QQuickItem* among) {
  QQuickItem* const start = among ? among : view().contentItem();
  if (!start->isVisible()) return nullptr;
  if (matches(*start)) return start;
  const auto children = start->childItems();
  for (QQuickItem* child : children) {
    if (QQuickItem* found = findItem(matches, child)) return found;
  }
  return nullptr;
}

QQuickItem* WindowTest::list() {
  QObject* const top = window_->navigation().top();
  QQuickItem* const page = findItem([top](QQuickItem& item) {
    return top && item.property("page").value<QObject*>() == top && item.property("list").isValid();
  });
  return page ? page->property("list").value<QQuickItem*>() : nullptr;
}

std::vector<std::string> WindowTest::shownLabels() {
  std::vector<std::string> labels;
  for (const auto& each : rows().rows()) {
    const std::string label = each.label.toStdString();
    labels.push_back(each.kind == "group" || each.kind == "footer" ? "[" + label + "]" : label);
  }
  return labels;
}

QQuickItem* WindowTest::row(const std::string& label, int nth) {
  int place = -1;
  for (const auto& each : rows().rows()) {
    ++place;
    if (each.kind == "group" || each.kind == "footer" || each.label.toStdString() != label || nth-- > 0) continue;
    QQuickItem* found = nullptr;
    const bool there = eventually([&] {
      QMetaObject::invokeMethod(list(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, found), Q_ARG(int, place));
      return found != nullptr;
    });
    if (!there) break;
    QMetaObject::invokeMethod(list(), "reveal", Q_ARG(QVariant, place));
    return found;
  }
  throw std::runtime_error("no row \"" + label + "\"");
}

QQuickItem* WindowTest::field(QQuickItem* row) {
  QQuickItem* found = findItem([](QQuickItem& item) { return item.inherits("QQuickTextInput"); }, row);
  if (!found) throw std::runtime_error("the row has no field");
  return found;
}

QQuickItem* WindowTest::barButton(const std::string& title) {
  return findItem(
      [&](QQuickItem& item) {
        return item.property("compact").isValid() && item.property("title").toString().toStdString() == title;
      },
      list()->parentItem());
}

QQuickItem* WindowTest::dialogButton(const std::string& title) {
  return findItem([&](QQuickItem& item) {
    return item.property("apart").isValid() && item.property("title").toString().toStdString() == title;
  });
}

void WindowTest::click(QQuickItem* item) {
  ASSERT_NE(item, nullptr);
  QTest::mouseClick(&view(), Qt::LeftButton, {}, centre(item));
}

void WindowTest::tap(QQuickItem* item) {
  ASSERT_NE(item, nullptr);
  static QPointingDevice* const screen = QTest::createTouchDevice();
  QTest::touchEvent(&view(), screen).press(0, centre(item), &view());
  QTest::touchEvent(&view(), screen).release(0, centre(item), &view());
}

void WindowTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QTest::keyClick(&view(), key, modifiers);
}

void WindowTest::type(const QString& text) {
  for (const QChar each : text) {
    QTest::sendKeyEvent(QTest::Click, &view(), Qt::Key_unknown, QString(each), Qt::NoModifier);
  }
}

std::string WindowTest::focusedRow() {
  for (QQuickItem* item = view().activeFocusItem(); item; item = item->parentItem()) {
    if (item->property("rowEnabled").isValid()) return item->property("label").toString().toStdString();
  }
  return "";
}

void WindowTest::store(const std::string& defaultsKey, const platform::Dictionary& values) {
  host::linux::FilePreferences((host::linux::DeviceRoot(root_.path())))
      .setAppValue(defaultsKey, platform::Value(values), "com.vantorick.quellar2");
}

platform::Dictionary WindowTest::stored(const std::string& defaultsKey) {
  if (!eventually([this] { return panel().preferences().isIdle(); }))
    throw std::runtime_error("a write takes for ever");
  host::linux::FilePreferences store((host::linux::DeviceRoot(root_.path())));
  const auto value = store.copyAppValue(defaultsKey, "com.vantorick.quellar2");
  const auto* dictionary = value ? value->as<platform::Dictionary>() : nullptr;
  return dictionary ? *dictionary : platform::Dictionary();
}

std::vector<std::string> WindowTest::takePosts() {
  if (!eventually([this] { return panel().mainQueue().idle(); })) throw std::runtime_error("works wait for ever");
  panel().platform().darwin.postNotification(kMarker, true);
  const bool arrived = eventually([this] {
    listener_->process();
    return !posts_.empty() && posts_.back() == kMarker;
  });
  if (!arrived) throw std::runtime_error("nothing comes over the bus");
  posts_.pop_back();
  return std::exchange(posts_, {});
}

}  // namespace quellar::tests
