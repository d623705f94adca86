// SPDX-License-Identifier: MIT

// The least that a Qt Quick window can be: one rectangle, as large as the settings window.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  QQmlApplicationEngine engine;
  engine.loadData(R"(
    import QtQuick
    Window {
      width: 390
      height: 800
      visible: true
      Rectangle {
        anchors.fill: parent
        color: "#f2f2f7"
      }
    }
  )");
  return QGuiApplication::exec();
}
