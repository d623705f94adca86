# SPDX-License-Identifier: MIT
# shellcheck shell=bash disable=SC2034  # The lists are for the scripts that read this file.

# The Debian 12 packages that this project needs, and for what. They are named here and nowhere else.

build_packages=(
  ccache
  cmake
  g++
  libcli11-dev
  libexpat1-dev
  libfontconfig-dev
  libgl-dev
  libicu-dev
  librsvg2-bin
  libsdbus-c++-dev
  libwayland-dev
  ninja-build
  nlohmann-json3-dev
  pkg-config
  qt6-base-dev
  qt6-declarative-dev
)

run_packages=(
  dbus
  fonts-inter
  libicu72
  qml6-module-qt-labs-qmlmodels
  qml6-module-qtqml
  qml6-module-qtqml-models
  qml6-module-qtqml-workerscript
  qml6-module-qtquick
  qml6-module-qtquick-controls
  qml6-module-qtquick-layouts
  qml6-module-qtquick-templates
  qml6-module-qtquick-window
  qt6-wayland
)

test_packages=(
  appstream
  at-spi2-core
  clang-format-19
  clang-tidy-19
  dbus-daemon
  desktop-file-utils
  e2fsprogs
  git
  libatspi2.0-dev
  libgmock-dev
  libgtest-dev
  libplist-dev
  shellcheck
  strace
  weston
  xvfb
)

bench_packages=(
  libbenchmark-dev
)

# The settings systems and windows that the panel is measured beside, and what measures.
peer_packages=(
  dconf-cli
  dconf-gsettings-backend
  dconf-service
  libglib2.0-bin
  libglib2.0-dev
  libkf5config-bin
  libkf5config-dev
  libxcb1-dev
  lxqt-config
  valgrind
  xfce4-settings
  xvfb
)

# For ./test --trust alone: libFuzzer, and what makes the file systems on which the power is cut.
trust_packages=(
  btrfs-progs
  clang-19
  libclang-rt-19-dev
  xfsprogs
)
