// SPDX-License-Identifier: MIT

// A boolean in a file of KConfig, written with its notification.
//
// usage: quellar-bench-kconfig write|read NAME

#include <KConfigGroup>
#include <KConfigWatcher>
#include <KSharedConfig>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QObject>
#include <string_view>

#include "peer.h"

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  if (argc != 3 || !QDBusConnection::sessionBus().isConnected()) return 2;
  const KSharedConfig::Ptr config = KSharedConfig::openConfig(QString::fromLocal8Bit(argv[2]));
  KConfigGroup group = config->group("page");
  if (std::string_view(argv[1]) == "read") {
    const KConfigWatcher::Ptr watcher = KConfigWatcher::create(config);
    QObject::connect(watcher.data(), &KConfigWatcher::configChanged, watcher.data(),
                     [](const KConfigGroup& changed) { quellar::benches::tellRead(changed.readEntry("flag", false)); });
    // The answer to any call comes after that to the subscription, which nobody waits for.
    const QDBusConnection bus = QDBusConnection::sessionBus();
    static_cast<void>(bus.interface()->isServiceRegistered(bus.baseService()));
    quellar::benches::printLine("ready");
    return QCoreApplication::exec();
  }
  const auto write = [&](bool value) {
    group.writeEntry("flag", value, KConfig::Notify);
    config->sync();
  };
  return quellar::benches::serveWrites(write, [&] { config->sync(); });
}
