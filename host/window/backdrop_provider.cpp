// SPDX-License-Identifier: MIT
#include "host/window/backdrop_provider.h"

#include <QRunnable>
#include <QStringList>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <mutex>
#include <utility>

#include "cells/backdrop_picker.h"
#include "host/window/backdrop_looks.h"
#include "host/window/backdrop_preview.h"

namespace quellar::host::window {

// The wallpaper as all previews of a showing have it beneath them.
class BackdropProvider::Grounds {
 public:
  explicit Grounds(WallpaperFinder wallpaper) : wallpaper_(std::move(wallpaper)) {}

  QImage ground(const QString& showing, QSize pixels) {
    // Whoever comes while it is being read waits for it.
    const std::lock_guard guard(mutex_);
    if (showing != showing_ || ground_.size() != pixels) {
      ground_ = wallpaper_(pixels);
      showing_ = showing;
    }
    return ground_;
  }

 private:
  const WallpaperFinder wallpaper_;
  std::mutex mutex_;
  QString showing_;
  QImage ground_;
};

namespace {

// One preview on its way. The engine owns it and deletes it some time after it has finished.
class Response final : public QQuickImageResponse, public QRunnable {
 public:
  using Draw = std::function<QImage()>;

  explicit Response(Draw draw) : draw_(std::move(draw)) { setAutoDelete(false); }

  void run() override {
    // Nobody waits for a preview that has scrolled or slid away; to finish is a duty all the same.
    if (!cancelled_) image_ = draw_();
    emit finished();
  }
  void cancel() override { cancelled_ = true; }
  [[nodiscard]] QQuickTextureFactory* textureFactory() const override {
    return QQuickTextureFactory::textureFactoryForImage(image_);
  }

 private:
  const Draw draw_;
  std::atomic<bool> cancelled_ = false;
  QImage image_;
};

}  // namespace

BackdropProvider::BackdropProvider(WallpaperFinder wallpaper)
    : grounds_(std::make_shared<Grounds>(std::move(wallpaper))) {
  // One thread is the view's.
  threads_.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
}

BackdropProvider::~BackdropProvider() {
  threads_.waitForDone();
}

QString BackdropProvider::address(int showing, std::int64_t style) {
  return QString("image://backdrop/%1/%2").arg(showing).arg(style);
}

QQuickImageResponse* BackdropProvider::requestImageResponse(const QString& id, const QSize& requestedSize) {
  const QStringList parts = id.split('/');
  const BackdropLook* look = backdropLook(parts.back().toLongLong());
  auto* response = new Response([grounds = grounds_, showing = parts.front(), look, size = requestedSize]() -> QImage {
    if (!look || size.isEmpty()) return {};
    const double scale = size.height() / cells::KVQuellarBackdropPickerCollectionView::kItemHeight;
    return drawBackdrop(grounds->ground(showing, size), *look, scale);
  });
  threads_.start(response);
  return response;
}

}  // namespace quellar::host::window
