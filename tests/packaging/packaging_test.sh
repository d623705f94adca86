#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: packaging_test.sh SOURCE_FOLDER BUILD_FOLDER TEST
#
# Looks at what `cmake --install` has put into BUILD_FOLDER/installed.
set -euo pipefail

source_folder=$1
build_folder=$2
installed=$build_folder/installed
application=com.vantorick.QuellarSettings
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QUELLAR_DEVICE_ROOT=$work/device
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORM

fail() {
  printf 'failed: %s\n' "$*" >&2
  exit 1
}

programs_bundle_and_desktop_files_are_installed() {
  local path
  for path in bin/quellar bin/quellar-settings share/applications/$application.desktop \
    share/metainfo/$application.metainfo.xml share/icons/hicolor/scalable/apps/$application.svg \
    share/bash-completion/completions/quellar share/bash-completion/completions/quellar-settings \
    share/quellar/Quellar.bundle/en.lproj/Localizable.strings share/quellar/Quellar.bundle/QuellarMusic.plist; do
    [[ -f $installed/$path ]] || fail "$path is not installed"
  done
  diff -r "$build_folder/Quellar.bundle" "$installed/share/quellar/Quellar.bundle" ||
    fail "the installed bundle is not the one that was built"
}

the_desktop_entry_is_valid() {
  desktop-file-validate "$installed/share/applications/$application.desktop"
  # The program and the icon that it names are the installed ones.
  grep -qx 'Exec=quellar-settings' "$installed/share/applications/$application.desktop" || fail "another program"
  grep -qx "Icon=$application" "$installed/share/applications/$application.desktop" || fail "another icon"
}

the_metainfo_is_valid_and_tells_the_version() {
  local metainfo=$installed/share/metainfo/$application.metainfo.xml
  appstreamcli validate --no-net "$metainfo"
  grep -q "<release version=\"$VERSION\"" "$metainfo" || fail "not version $VERSION"
  grep -q ">$application.desktop<" "$metainfo" || fail "another desktop entry"
}

the_installed_window_needs_no_source_tree() {
  local traced=$work/trace icon=$installed/share/quellar/Quellar.bundle/images/statusbarimages window deadline
  mkdir "$work/elsewhere"
  cd "$work/elsewhere"
  touch "$traced"
  QT_QPA_PLATFORM=offscreen strace -D -f -qq -e trace=open,openat,openat2,stat,newfstatat,access -o "$traced" \
    "$installed/bin/quellar-settings" --page "Status Bar" >"$work/said" 2>&1 &
  window=$!
  deadline=$((SECONDS + 60))
  until grep -qF "$(basename "$icon")" "$traced" || ((SECONDS > deadline)) || ! kill -0 "$window"; do sleep 0.1; done
  kill "$window" 2>/dev/null || true
  wait "$window" || true
  grep -qF "$(basename "$icon")" "$traced" || fail "no icon of the bundle was read: $(tail -n 3 "$work/said")"
  grep -F "\"$source_folder/" "$traced" | grep -vF "\"$build_folder/installed/" >"$work/outside" || true
  [[ ! -s $work/outside ]] || fail "files of the source tree are read: $(head -n 3 "$work/outside")"
  [[ ! -s $work/said ]] || fail "$(<"$work/said")"
}

the_installed_command_lists_its_pages() {
  "$installed/bin/quellar" pages >"$work/installed"
  "$build_folder/bin/quellar" pages >"$work/built"
  diff "$work/built" "$work/installed" || fail "other pages than the built command has"
}

# complete WORD...: prints what completion offers for the last word.
complete_words() {
  COMP_WORDS=("$@")
  COMP_CWORD=$(($# - 1))
  COMPREPLY=()
  _quellar
  printf '%s\n' "${COMPREPLY[@]}"
}

completion_offers_commands_pages_and_keys() {
  PATH=$installed/bin:$PATH
  # shellcheck source=packaging/quellar.bash
  source "$installed/share/bash-completion/completions/quellar"
  [[ $(complete_words quellar s) == $'set\nschema\nsession' ]] || fail "commands: $(complete_words quellar s)"
  [[ $(complete_words quellar rows status) == status-bar ]] || fail "pages: $(complete_words quellar rows status)"
  [[ $(complete_words quellar --device-root /x rows quell) == quellar ]] || fail "the first page"
  [[ $(complete_words quellar set status-bar usesLower) == usesLowercaseAMPM ]] ||
    fail "keys: $(complete_words quellar set status-bar usesLower)"
  [[ $(complete_words quellar session --idiom p) == $'phone\npad' ]] || fail "values of an option"
}

"$3"
