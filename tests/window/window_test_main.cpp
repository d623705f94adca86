// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <cstdio>
#include <utility>

#include "host/window/settings_window.h"
#include "toolkit_messages.h"

#if defined(__SANITIZE_ADDRESS__)
// The toolkit and the font library keep what they made until the process ends.
extern "C" const char* __asan_default_options() {
  return "detect_leaks=0";
}
#endif

namespace quellar::tests {

namespace {

std::vector<std::string>& messages() {
  static std::vector<std::string> all;
  return all;
}

void collect(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtFatalMsg) std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
  if (type != QtDebugMsg && type != QtInfoMsg) messages().push_back(message.toStdString());
}

// A view that complains is broken, also where it goes on working.
class NoToolkitMessages final : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override { takeToolkitMessages(); }
  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    for (const std::string& message : takeToolkitMessages()) ADD_FAILURE() << message;
  }
};

}  // namespace

std::vector<std::string> takeToolkitMessages() {
  return std::exchange(messages(), {});
}

void collectToolkitMessages() {
  qInstallMessageHandler(collect);
  testing::UnitTest::GetInstance()->listeners().Append(new NoToolkitMessages);
}

}  // namespace quellar::tests

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qunsetenv("XDG_RUNTIME_DIR");
  quellar::host::window::chooseRenderer();
  const QGuiApplication application(argc, argv);
  quellar::host::window::prepareApplication();
  quellar::tests::collectToolkitMessages();
  return RUN_ALL_TESTS();
}
