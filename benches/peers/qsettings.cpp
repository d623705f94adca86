// SPDX-License-Identifier: MIT

// A boolean in a file of QSettings, with a signal by QtDBus after each write.
//
// usage: quellar-bench-qsettings write|read FILE

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QObject>
#include <QSettings>
#include <string_view>

#include "peer.h"

namespace {

const QString kPath = QStringLiteral("/com/vantorick/Notifications");
const QString kInterface = QStringLiteral("com.vantorick.Notifications1");
const QString kSignal = QStringLiteral("Darwin");
const QString kKey = QStringLiteral("page/flag");

class Reader : public QObject {
  Q_OBJECT

 public:
  explicit Reader(QSettings& settings) : settings_(settings) {}

 public slots:
  void receive(const QString& /*name*/) {
    settings_.sync();
    quellar::benches::tellRead(settings_.value(kKey).toBool());
  }

 private:
  QSettings& settings_;
};

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc != 3) return 2;
  QSettings settings(QString::fromLocal8Bit(argv[2]), QSettings::IniFormat);
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return 1;
  if (std::string_view(argv[1]) == "read") {
    Reader reader(settings);
    if (!bus.connect(QString(), kPath, kInterface, kSignal, &reader, SLOT(receive(QString)))) return 1;
    // The answer to any call comes after that to the subscription, which nobody waits for.
    static_cast<void>(bus.interface()->isServiceRegistered(bus.baseService()));
    quellar::benches::printLine("ready");
    return QCoreApplication::exec();
  }
  const auto write = [&](bool value) {
    settings.setValue(kKey, value);
    settings.sync();
    QDBusMessage signal = QDBusMessage::createSignal(kPath, kInterface, kSignal);
    signal << QStringLiteral("com.vantorick.quellar2.settings");
    bus.send(signal);
  };
  return quellar::benches::serveWrites(write, [&] { settings.sync(); });
}

#include "qsettings.moc"
