// SPDX-License-Identifier: MIT
#pragma once

#include <QHash>
#include <QQmlAbstractUrlInterceptor>
#include <QQmlEngine>
#include <QQmlNetworkAccessManagerFactory>
#include <QString>

namespace quellar::host::window {

/// Where the program's own views are.
inline const QString kViewAddress = QStringLiteral("qrc:/qt/qml/Quellar/Window/");

/// The engine of the view. It loads the program's own views, the toolkit's modules and the images of its own providers,
/// and has no network. The view is not made to load anything else; this holds where it does so by mistake.
class ConfinedEngine {
 public:
  /// Takes the providers of images by their names, which the engine then owns.
  explicit ConfinedEngine(const QHash<QString, QQmlImageProviderBase*>& imageProviders);

  [[nodiscard]] QQmlEngine& get() { return engine_; }

 private:
  class NoNetwork final : public QQmlNetworkAccessManagerFactory {
   public:
    QNetworkAccessManager* create(QObject* parent) override;
  };
  // Is asked on several threads.
  class OwnAddresses final : public QQmlAbstractUrlInterceptor {
   public:
    explicit OwnAddresses(QList<QString> imageProviders);
    QUrl intercept(const QUrl& address, DataType type) override;

   private:
    [[nodiscard]] bool isOwn(const QUrl& address, DataType type) const;

    const QList<QString> imageProviders_;
    const QString toolkitModules_;
  };

  NoNetwork noNetwork_;
  OwnAddresses ownAddresses_;
  // Last, so that it goes before what it asks.
  QQmlEngine engine_;
};

}  // namespace quellar::host::window
