// SPDX-License-Identifier: MIT

// Names that others chose, in every place that the window takes a name from: they are shown as they are written, and
// nothing that they name is fetched, opened or drawn.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QImage>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QTest>
#include <QUrl>
#include <array>
#include <fstream>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "cells/backdrop_picker.h"
#include "frame/names.h"
#include "host/linux/file_descriptor.h"
#include "host/linux/string_table.h"
#include "host/window/opening.h"
#include "host/window/sample_page.h"
#include "host/window/settings_window.h"
#include "host/window/window_platform.h"
#include "support/temporary_folder.h"
#include "toolkit_messages.h"

namespace quellar::tests::hostile_names_test {
namespace {

using host::linux::FileDescriptor;
using host::window::Idiom;
using host::window::SettingsWindow;
using host::window::WindowPlatform;
using platform::Dictionary;
using platform::Value;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;
using testing::IsSupersetOf;
namespace fs = std::filesystem;

[[noreturn]] void fail(const char* call) {
  throw std::system_error(errno, std::generic_category(), call);
}

/// A server on this machine that waits for anybody to call.
class Server {
 public:
  Server() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const generic = reinterpret_cast<sockaddr*>(&address);
    if (!socket_ || ::bind(socket_.get(), generic, size) != 0 || ::listen(socket_.get(), 16) != 0 ||
        ::getsockname(socket_.get(), generic, &size) != 0) {
      fail("socket");
    }
    address_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  }

  [[nodiscard]] const std::string& address() const { return address_; }
  /// Whether anybody has called since it was asked last.
  [[nodiscard]] bool wasCalled() const {
    const FileDescriptor caller(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    return static_cast<bool>(caller);
  }

 private:
  FileDescriptor socket_;
  std::string address_;
};

/// A picture and a pipe that are nobody's business, and who opened them.
class Private {
 public:
  Private() : watch_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), picture_(folder_.path() / "private.png") {
    QImage drawing(29, 29, QImage::Format_ARGB32);
    drawing.fill(Qt::black);
    if (!drawing.save(QString::fromStdString(picture_.string()))) throw std::runtime_error("can't write the picture");
    pipe_ = folder_.path() / "private.pipe";
    if (!watch_ || ::mkfifo(pipe_.c_str(), 0600) != 0) fail("mkfifo");
    for (const fs::path& each : {picture_, pipe_}) {
      if (::inotify_add_watch(watch_.get(), each.c_str(), IN_OPEN) < 0) fail("inotify_add_watch");
    }
  }

  [[nodiscard]] const fs::path& picture() const { return picture_; }
  [[nodiscard]] const fs::path& pipe() const { return pipe_; }
  /// Whether anybody has opened one since it was asked last.
  [[nodiscard]] bool wereOpened() const {
    std::array<char, 4096> events{};
    return ::read(watch_.get(), events.data(), events.size()) > 0;
  }

 private:
  TemporaryFolder folder_;
  FileDescriptor watch_;
  fs::path picture_;
  fs::path pipe_;
};

std::string xml(const std::string& text) {
  std::string result;
  for (const char each : text) {
    if (each == '&') {
      result += "&amp;";
    } else if (each == '<') {
      result += "&lt;";
    } else {
      result += each;
    }
  }
  return result;
}

std::string propertyList(const std::string& content) {
  return "<plist version=\"1.0\">" + content + "</plist>";
}

using Fields = std::vector<std::pair<std::string, std::string>>;

std::string dictionary(const Fields& fields) {
  std::string content;
  for (const auto& [key, text] : fields) content += "<key>" + key + "</key><string>" + xml(text) + "</string>";
  return content;
}

std::string items(const std::vector<std::string>& dictionaries) {
  std::string content;
  for (const auto& each : dictionaries) content += "<dict>" + each + "</dict>";
  return propertyList("<dict><key>items</key><array>" + content + "</array></dict>");
}

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char each : text) {
    if (each == '"' || each == '\\') result += '\\';
    result += each == '\n' ? std::string("\\n") : std::string(1, each);
  }
  return result + "\"";
}

std::string contents(const fs::path& file) {
  const std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

/// A device on which every name is hostile, each with the word for the door that it came through.
class HostileDevice {
 public:
  HostileDevice() {
    for (const char* table : {"Localizable", "Window"}) writeTable(table);
    writeRowFiles();
    writeSwitches();
    std::string accounts;
    for (const char* door : {"account", "account-two"}) accounts += "<string>" + xml(hostile(door)) + "</string>";
    root_.write("var/mobile/Library/Accounts/twitter.plist", propertyList("<array>" + accounts + "</array>"));
    root_.write("data/applications/org.example.Hostile.desktop",
                "[Desktop Entry]\nType=Application\nExec=true\nName=" + hostile("application") + "\n");
    qputenv("XDG_DATA_HOME", QByteArray::fromStdString((root_.path() / "data").string()));
    qputenv("XDG_DATA_DIRS", QByteArray::fromStdString((root_.path() / "no-data").string()));
  }
  HostileDevice(const HostileDevice&) = delete;
  HostileDevice& operator=(const HostileDevice&) = delete;
  ~HostileDevice() {
    qunsetenv("XDG_DATA_HOME");
    qunsetenv("XDG_DATA_DIRS");
  }

  [[nodiscard]] std::string hostile(const std::string& door) const {
    return "[" + door + "]<b>bold</b>&lt;<img src=\"" + server.address() + "/" + door + "\"><img src=\"file://" +
           files.picture().string() + "\"><img src='file://" + files.pipe().string() + "'><a href='" +
           server.address() + "'>x</a>";
  }
  [[nodiscard]] fs::path root() const { return root_.path(); }

  Server server;
  Private files;

 private:
  void writeTable(const std::string& name) {
    const std::string bytes = contents(fs::path(QUELLAR_RESOURCES) / "en.lproj" / (name + ".strings"));
    std::string text;
    for (const auto& [key, value] : host::linux::parseStringTable(bytes).entries) {
      text += quoted(key) + " = " + quoted(value + hostile("table-" + name)) + ";\n";
    }
    root_.write(kBundle + "/en.lproj/" + name + ".strings", text);
  }

  void writeRowFiles() {
    const std::string rows = items(
        {dictionary({{"cell", "PSGroupCell"}, {"label", hostile("row-group")}, {"footerText", hostile("row-footer")}}),
         dictionary({{"cell", "PSSwitchCell"},
                     {"label", hostile("row-switch")},
                     {"key", "one"},
                     {"iconImage", "file://" + files.picture().string()}}),
         dictionary({{"cell", "PSEditTextCell"},
                     {"label", hostile("row-text")},
                     {"key", "two"},
                     {"placeholder", hostile("row-placeholder")},
                     {"iconImage", "../../../../private.png"}}),
         dictionary({{"cell", "PSButtonCell"}, {"label", hostile("row-button")}}),
         dictionary({{"cell", "PSLinkListCell"},
                     {"label", hostile("row-picker")},
                     {"key", "three"},
                     {"default", "a"},
                     {"detail", "KVQuellarListItemsController"}}) +
             "<key>validValues</key><array><string>a</string></array><key>validTitles</key><array><string>" +
             xml(hostile("row-choice")) + "</string></array>",
         dictionary({{"cell", "PSSegmentCell"}, {"label", ""}, {"key", "four"}, {"default", "a"}}) +
             "<key>validValues</key><array><string>a</string></array><key>validTitles</key><array><string>" +
             xml(hostile("row-segment")) + "</string></array>"});
    for (const auto& entry : fs::directory_iterator(QUELLAR_RESOURCES)) {
      const std::string name = entry.path().filename();
      // The one that lists the applications stays as it is.
      if (name.ends_with(".plist") && name != "QuellarAppHide.plist") root_.write(kBundle + "/" + name, rows);
    }
  }

  void writeSwitches() {
    const std::string folder = "Library/Switches/";
    root_.write(folder + "markup.svg",
                "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><image href='file://" +
                    files.picture().string() + "'/></svg>");
    fs::create_symlink(files.picture(), root_.path() / folder / "link.png");
    fs::create_symlink(files.pipe(), root_.path() / folder / "pipe.png");
    std::string switches;
    int count = 0;
    for (const std::string& glyph :
         {server.address() + "/glyph.png", "file://" + files.picture().string(), files.picture().string(),
          files.pipe().string(), "file://" + files.pipe().string(), "/../../../../.." + files.picture().string(),
          std::string("/Library/Switches/link.png"), std::string("/Library/Switches/pipe.png"),
          std::string("/Library/Switches/markup.svg"), std::string("image://platform/x"),
          "qrc:/../" + files.picture().string(), "data:image/svg+xml,<image href='" + server.address() + "'/>"}) {
      switches +=
          "<dict>" +
          dictionary(
              {{"identifier", "switch" + std::to_string(++count)}, {"title", hostile("switch")}, {"glyph", glyph}}) +
          "</dict>";
    }
    root_.write(folder + "switches.plist", propertyList("<array>" + switches + "</array>"));
  }

  static inline const std::string kBundle = "Library/PreferenceBundles/Quellar.bundle";
  TemporaryFolder root_;
};

/// What the items of a window show and say.
class Look {
 public:
  void at(QQuickItem& item) {
    const QVariant format = item.property("textFormat");
    const std::string text = item.property("text").toString().toStdString();
    if (format.isValid()) {
      ++texts;
      if (format.toInt() != Qt::PlainText) notPlain.insert(text.substr(0, 60));
      seen(text);
    } else if (item.inherits("QQuickTextInput")) {
      seen(text);
    }
    if (QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(&item)) {
      for (const auto kind : {QAccessible::Name, QAccessible::Description}) {
        const std::string said = interface->text(kind).toStdString();
        // What is said of a name is the name as it is written.
        if (said.find("]bold") != std::string::npos) notPlain.insert("said: " + said.substr(0, 60));
      }
    }
    const auto children = item.childItems();
    for (QQuickItem* child : children) at(*child);
  }

  std::size_t texts = 0;
  std::set<std::string> notPlain;
  std::set<std::string> doors;

 private:
  void seen(const std::string& text) {
    static const std::regex mark(R"(\[([a-zA-Z-]+)\]<b>bold</b>&lt;<img)");
    for (auto each = std::sregex_iterator(text.begin(), text.end(), mark); each != std::sregex_iterator(); ++each) {
      doors.insert((*each)[1]);
    }
  }
};

/// The window on a device, laid out without being shown, so high that all rows are there.
class Stage {
 public:
  explicit Stage(const fs::path& root)
      : panel_({.deviceRoot = root.string(),
                .language = "en",
                .idiom = Idiom::phone,
                .scale = 1,
                .width = 390,
                .throwaway = true,
                .onTrouble = {}}),
        window_(panel_.navigation(), panel_.resources(), 1,
                {.textScale = 1, .reducedMotion = true, .rightToLeft = false}) {}
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  // Animations end by an event, for which their window has to be there.
  ~Stage() { QTest::qWait(60); }

  void look(Look& look) {
    QQuickItem* const root = window_.window().contentItem();
    constexpr int kAllRows = 30000;
    root->setSize(QSize(390, kAllRows));
    for (int turn = 0; turn < 3; ++turn) {
      polish(*root);
      QCoreApplication::processEvents();
    }
    look.at(*root);
  }
  void popTo(std::size_t depth) {
    while (panel_.navigation().viewControllers().size() > depth) panel_.navigation().popViewController(false);
  }
  [[nodiscard]] WindowPlatform& panel() { return panel_; }
  [[nodiscard]] SettingsWindow& window() { return window_; }
  [[nodiscard]] host::window::RowModel& rows() { return *window_.navigation().top()->rows(); }

 private:
  static void polish(QQuickItem& item) {
    const auto children = item.childItems();
    for (QQuickItem* child : children) polish(*child);
    item.ensurePolished();
  }

  WindowPlatform panel_;
  SettingsWindow window_;
};

/// Looks at a page with its blocks, the dialogs and lists that its rows open, and what is typed into it.
void lookAtPage(Stage& stage, const frame::PageRegistry::Entry& entry, const std::string& typed, Look& look) {
  stage.popTo(&entry == &stage.panel().pages().entries().front() ? 0 : 1);
  Dictionary values;
  for (const std::string& key : host::window::keysThatShowBlocks(*entry.page)) values.emplace(key, Value(true));
  if (!values.empty()) {
    stage.panel().throwaway()->setAppValue(entry.page->defaultsKey, Value(values), frame::kSettingsDomain);
  }
  host::window::openPage(stage.panel().platform(), stage.panel().pages(), entry);
  stage.window().navigation().settle();
  look.at(*stage.window().window().contentItem());
  stage.look(look);

  const std::size_t depth = stage.panel().navigation().viewControllers().size();
  std::set<QString> kinds;
  for (int index = 0; index < stage.rows().rowCount(); ++index) {
    const QString kind = stage.rows().kindAt(index);
    if (kind == "text") {
      stage.rows().beginEditing(index);
      stage.rows().setEditingText(index, QString::fromStdString(typed));
      stage.rows().endEditing(index);
    }
    // One of a kind, but every picker: each has titles of its own.
    const bool opens = kind == "picker" || kind == "color" || kind == "typedSlider" || kind == "button";
    if (!opens || (kind != "picker" && !kinds.insert(kind).second)) continue;
    if (kind == "typedSlider") {
      stage.rows().enterValue(index);
    } else {
      stage.rows().activate(index);
    }
    stage.window().navigation().settle();
    stage.look(look);
    stage.panel().navigation().dismiss();
    stage.popTo(depth);
  }
  stage.look(look);
  if (stage.window().navigation().top()->controller()->navigationItem().rightBarButtonItem()) {
    stage.window().navigation().pressBar("right");
    stage.look(look);
    stage.panel().navigation().dismiss();
  }
}

TEST(HostileNames, AreShownAsTheyAreWrittenThroughWhateverDoorTheyCome) {
  const HostileDevice device;
  Look look;
  {
    Stage stage(device.root());
    for (const auto& entry : stage.panel().pages().entries()) {
      lookAtPage(stage, entry, device.hostile("stored"), look);
    }
    stage.popTo(1);
    stage.panel().navigation().pushViewController(
        host::window::makeSamplePage(stage.panel().platform(), host::window::Sample::plain));
    stage.look(look);
    stage.popTo(1);
    stage.panel().navigation().pushViewController(
        std::make_shared<cells::KVQuellarBackdropPickerViewController>(stage.panel().platform(), "style", "S"));
    stage.look(look);
    stage.window().trouble().tell({host::linux::StoreTrouble::Kind::Write, "/file", device.hostile("banner")});
    stage.look(look);
    // What is drawn or fetched on other threads has been asked for by now, and is told to this one.
    QTest::qWait(300);
  }
  EXPECT_THAT(look.notPlain, IsEmpty());
  EXPECT_GT(look.texts, 3000U);
  EXPECT_THAT(look.doors, IsSupersetOf({"table-Localizable", "row-group", "row-footer", "row-switch", "row-text",
                                        "row-placeholder", "row-button", "row-picker", "row-choice", "row-segment",
                                        "switch", "account", "application", "stored", "banner"}));
  EXPECT_FALSE(device.server.wasCalled());
  EXPECT_FALSE(device.files.wereOpened());
}

TEST(HostileNames, HaveOneTypeOfTextInTheViewAndThatIsPlain) {
  // A text that may be rich, and every type that is one.
  const std::regex rich(R"((^|[^\w.])(Text|TextEdit|TextArea|TextDocument|Label|ToolTip|StyledText)\s*\{)");
  std::vector<std::string> files;
  std::vector<std::string> naming;
  for (const auto& entry : fs::directory_iterator(QUELLAR_VIEW)) {
    const std::string text = contents(entry.path());
    files.push_back(entry.path().filename());
    if (std::regex_search(text, rich) || text.find("textFormat") != std::string::npos) naming.push_back(files.back());
  }
  EXPECT_GT(files.size(), 30U);
  EXPECT_THAT(naming, ElementsAre("PlainText.qml"));
}

class ViewEngine : public testing::Test {
 protected:
  ViewEngine() : engine_(qmlEngine(&stage_.window().window())) {}

  /// What an image of the view with a source comes to: 1 where it is loaded.
  int statusOf(const std::string& source) {
    QQmlComponent component(engine_);
    component.setData("import QtQuick\nImage { cache: false; sourceSize: Qt.size(29, 29) }",
                      QUrl("qrc:/qt/qml/Quellar/Window/Own.qml"));
    const std::unique_ptr<QObject> image(component.create());
    EXPECT_TRUE(image) << component.errorString().toStdString();
    if (!image) return -1;
    image->setProperty("source", QUrl(QString::fromStdString(source)));
    constexpr int kLoading = 2;
    EXPECT_TRUE(QTest::qWaitFor([&] { return image->property("status").toInt() != kLoading; })) << source;
    return image->property("status").toInt();
  }

  TemporaryFolder root_;
  Server server_;
  Private files_;
  Stage stage_{root_.path()};
  QQmlEngine* engine_;
};

TEST_F(ViewEngine, DrawsTheImagesOfItsOwnProvidersAlone) {
  constexpr int kReady = 1;
  EXPECT_EQ(statusOf("image://glyph/chevron/0c6f9f"), kReady);
  EXPECT_EQ(statusOf("image://swatch/0c6f9f"), kReady);
  for (const std::string& source :
       {"file://" + files_.picture().string(), files_.picture().string(), "file://" + files_.pipe().string(),
        server_.address() + "/x.png", std::string("image://other/x"), std::string("qrc:/other.png"),
        std::string("data:image/png;base64,iVBORw0KGgo="), "ftp" + server_.address().substr(4) + "/x.png"}) {
    EXPECT_NE(statusOf(source), kReady) << source;
    EXPECT_THAT(takeToolkitMessages(), ElementsAre(EndsWith("the window has no network"))) << source;
  }
  EXPECT_FALSE(server_.wasCalled());
  EXPECT_FALSE(files_.wereOpened());
}

TEST_F(ViewEngine, LoadsNoViewButTheProgramsOwn) {
  const auto file = root_.write("Other.qml", "import QtQuick\nItem {}");
  for (const QUrl& url : {QUrl::fromLocalFile(QString::fromStdString(file.string())),
                          QUrl(QString::fromStdString(server_.address() + "/Other.qml"))}) {
    QQmlComponent component(engine_, url);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !component.isLoading(); }));
    EXPECT_TRUE(component.isError()) << url.toString().toStdString();
  }
  QQmlComponent importing(engine_);
  importing.setData(
      "import QtQuick\nimport \"" + QByteArray::fromStdString("file://" + root_.path().string()) + "\"\nOther {}",
      QUrl("qrc:/qt/qml/Quellar/Window/Own.qml"));
  EXPECT_TRUE(importing.isError());
  QQmlComponent own(engine_, QUrl("qrc:/qt/qml/Quellar/Window/FocusRing.qml"));
  EXPECT_TRUE(own.isReady()) << own.errorString().toStdString();
  EXPECT_FALSE(server_.wasCalled());
}

TEST_F(ViewEngine, HasNoNetwork) {
  QNetworkAccessManager* const network = engine_->networkAccessManager();
  for (const std::string& address :
       {server_.address() + "/x", "file://" + files_.picture().string(), std::string("qrc:/qt/qml/x")}) {
    const std::unique_ptr<QNetworkReply> reply(network->get(QNetworkRequest(QUrl(QString::fromStdString(address)))));
    ASSERT_TRUE(QTest::qWaitFor([&] { return reply->isFinished(); })) << address;
    EXPECT_EQ(reply->error(), QNetworkReply::ContentAccessDenied) << address;
  }
  EXPECT_FALSE(server_.wasCalled());
  EXPECT_FALSE(files_.wereOpened());
}

}  // namespace
}  // namespace quellar::tests::hostile_names_test
