// SPDX-License-Identifier: MIT
#pragma once

#include <QImage>
#include <QQuickAsyncImageProvider>
#include <QString>
#include <QThreadPool>
#include <cstdint>
#include <functional>
#include <memory>

namespace quellar::host::window {

/// Gives the wallpaper that fills a size in pixels; may be called from any thread.
using WallpaperFinder = std::function<QImage(QSize pixels)>;

/// The previews of the backdrop picker, "image://backdrop/<showing>/<style>", at the size that is asked for, drawn on
/// threads of their own. Those of one showing and size are made from one wallpaper, which is read once.
class BackdropProvider final : public QQuickAsyncImageProvider {
 public:
  explicit BackdropProvider(WallpaperFinder wallpaper);
  ~BackdropProvider() override;

  /// The address of a preview. A showing is one opening of the picker: another one reads the wallpaper anew.
  [[nodiscard]] static QString address(int showing, std::int64_t style);

  QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

 private:
  class Grounds;

  std::shared_ptr<Grounds> grounds_;
  QThreadPool threads_;
};

}  // namespace quellar::host::window
