// SPDX-License-Identifier: MIT

// What a settings window would be otherwise: the toolkit's own controls, in a window as large as the settings window,
// compiled ahead of time as that is.
//
// usage: quellar-bench-switches-window [list]
//        list: the rows that can be seen alone

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <string_view>

int main(int argc, char** argv) {
  const bool isList = argc > 1 && std::string_view(argv[1]) == "list";
  // As the settings window chooses.
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(argc, argv);
  QQuickStyle::setStyle("Basic");
  QQmlApplicationEngine engine;
  engine.load(isList ? "qrc:/qt/qml/Quellar/Bench/List.qml" : "qrc:/qt/qml/Quellar/Bench/Rows.qml");
  return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
