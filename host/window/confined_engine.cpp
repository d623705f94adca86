// SPDX-License-Identifier: MIT
#include "host/window/confined_engine.h"

#include <QLibraryInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>
#include <utility>

namespace quellar::host::window {

namespace {

const QString kToolkitResources = QStringLiteral("/qt-project.org/imports/");

/// The answer to every request.
class Refusal final : public QNetworkReply {
 public:
  Refusal(QNetworkAccessManager::Operation operation, const QNetworkRequest& request, QObject* parent)
      : QNetworkReply(parent) {
    setOperation(operation);
    setRequest(request);
    setUrl(request.url());
    setError(ContentAccessDenied, QStringLiteral("the window has no network"));
    setFinished(true);
    // Whoever asked listens once this returns.
    QMetaObject::invokeMethod(this, &Refusal::tell, Qt::QueuedConnection);
  }

  void abort() override {}

 protected:
  qint64 readData(char* /*data*/, qint64 /*most*/) override { return -1; }

 private:
  void tell() {
    emit errorOccurred(error());
    emit finished();
  }
};

class RefusingManager final : public QNetworkAccessManager {
 public:
  using QNetworkAccessManager::QNetworkAccessManager;

 protected:
  QNetworkReply* createRequest(Operation operation, const QNetworkRequest& request, QIODevice* /*data*/) override {
    return new Refusal(operation, request, this);
  }
};

}  // namespace

QNetworkAccessManager* ConfinedEngine::NoNetwork::create(QObject* parent) {
  return new RefusingManager(parent);
}

ConfinedEngine::OwnAddresses::OwnAddresses(QList<QString> imageProviders)
    : imageProviders_(std::move(imageProviders)),
      toolkitModules_(QLibraryInfo::path(QLibraryInfo::QmlImportsPath) + "/") {}

bool ConfinedEngine::OwnAddresses::isOwn(const QUrl& address, DataType type) const {
  const QUrl plain = address.adjusted(QUrl::NormalizePathSegments);
  const QString path = plain.path();
  if (address.scheme() == "qrc") {
    return plain.toString().startsWith(kViewAddress) || (type != UrlString && path.startsWith(kToolkitResources));
  }
  if (type == UrlString) return address.scheme() == "image" && imageProviders_.contains(address.host());
  // What a module consists of.
  return address.isLocalFile() && path.startsWith(toolkitModules_);
}

QUrl ConfinedEngine::OwnAddresses::intercept(const QUrl& address, DataType type) {
  return isOwn(address, type) ? address : QUrl();
}

ConfinedEngine::ConfinedEngine(const QHash<QString, QQmlImageProviderBase*>& imageProviders)
    : ownAddresses_(imageProviders.keys()) {
  // Without those that the environment and the folder of the program add.
  engine_.setImportPathList({QLibraryInfo::path(QLibraryInfo::QmlImportsPath), "qrc:/qt-project.org/imports"});
  engine_.setNetworkAccessManagerFactory(&noNetwork_);
  engine_.addUrlInterceptor(&ownAddresses_);
  for (auto provider = imageProviders.begin(); provider != imageProviders.end(); ++provider) {
    engine_.addImageProvider(provider.key(), provider.value());
  }
}

}  // namespace quellar::host::window
