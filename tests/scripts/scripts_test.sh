#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# shellcheck disable=SC2016,SC2317  # Programs are written as texts; the tests are called by their names.
#
# usage: scripts_test.sh TEST: runs one of the functions below, in a folder of its own with a copy of the scripts.
set -euo pipefail

project=$(dirname "$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")")
folder=$(readlink -f "$(mktemp -d)")
server=
trap 'if [[ -n $server ]]; then kill "$server"; fi; rm -rf "$folder"' EXIT
cp -r "$project/scripts" "$project/run" "$project/test" "$folder"

# expect_equal EXPECTED ACTUAL
expect_equal() {
  if [[ $1 != "$2" ]]; then
    printf 'expected:\n%s\nfound:\n%s\n' "$1" "$2" >&2
    exit 1
  fi
}

# program NAME: puts a program in front of the machine's own; its text comes from the standard input. What it is called
# with can be written to $folder/calls.
program() {
  mkdir -p "$folder/bin"
  { printf '#!/bin/bash\ncalls=%q\n' "$folder/calls" && cat; } >"$folder/bin/$1"
  chmod +x "$folder/bin/$1"
}

# with_scripts COMMAND...: runs a function of the scripts; its output and errors go to $folder/out, its exit status is
# returned.
with_scripts() {
  PATH=$folder/bin:$PATH bash -c 'set -euo pipefail; source "$0/scripts/common.sh"; "$@"' "$folder" "$@" \
    >"$folder/out" 2>&1 </dev/null
}

# A machine on which g++ is installed, cmake was removed, and ninja-build is not known.
machine() {
  program dpkg-query <<<'echo "installed g++"; echo "config-files cmake"; exit 1'
  program apt-get <<<'echo "${DEBIAN_FRONTEND:-} $*" >>"$calls"; cat'
  program id <<<'echo 0'
  program sudo <<<'echo "sudo" >>"$calls"; shift; exec "$@"'
}

shellcheck_finds_nothing() {
  cd "$project"
  shellcheck --external-sources run test .ci/run scripts/*.sh tests/scripts/*.sh
}

installed_packages_leave_apt_get_alone() {
  machine
  with_scripts install_packages g++
  expect_equal "" "$(<"$folder/out")"
  if [[ -e $folder/calls ]]; then exit 1; fi
}

missing_packages_are_installed_without_asking() {
  machine
  with_scripts install_packages ninja-build g++ cmake
  expect_equal "==> installing 2 packages with apt-get, which may take some minutes: cmake ninja-build" \
    "$(<"$folder/out")"
  expect_equal "noninteractive -y -q -o DPkg::Lock::Timeout=300 update
noninteractive -y -q -o DPkg::Lock::Timeout=300 install --no-install-recommends cmake ninja-build" "$(<"$folder/calls")"
}

a_user_who_is_not_root_installs_through_sudo() {
  machine
  program id <<<'echo 1000'
  with_scripts install_packages cmake
  expect_equal "sudo
noninteractive -y -q -o DPkg::Lock::Timeout=300 update
sudo
noninteractive -y -q -o DPkg::Lock::Timeout=300 install --no-install-recommends cmake" "$(<"$folder/calls")"
}

without_root_and_sudo_the_command_is_named() {
  machine
  # A PATH that holds nothing but what the scripts use, and no sudo.
  local tool
  for tool in bash comm dirname env mkdir readlink sed sort; do ln -s "$(command -v "$tool")" "$folder/bin/"; done
  program id <<<'echo 1000'
  rm "$folder/bin/sudo"
  if PATH=$folder/bin bash -c 'source "$0/scripts/common.sh"; install_packages cmake' "$folder" >"$folder/out" 2>&1; then
    exit 1
  fi
  expect_equal "$(basename "$folder"): error: packages are missing; install them as root: \
apt-get install --no-install-recommends cmake" "$(<"$folder/out")"
  if [[ -e $folder/calls ]]; then exit 1; fi
}

a_failing_apt_get_is_told_in_one_line() {
  machine
  program apt-get <<<'if [[ $* == *install* ]]; then echo "E: Unable to locate package cmake"; exit 100; fi'
  if with_scripts install_packages cmake; then exit 1; fi
  expect_equal "==> installing 1 packages with apt-get, which may take some minutes: cmake
$(basename "$folder"): error: apt-get could not install the packages (E: Unable to locate package cmake); \
its whole output is in $folder/build/apt-get.log" "$(<"$folder/out")"
}

without_apt_get_the_packages_are_taken_as_there() {
  mkdir "$folder/bin"
  local tool
  for tool in bash dirname readlink; do ln -s "$(command -v "$tool")" "$folder/bin/"; done
  expect_equal "==> no apt-get here: taking it that what scripts/packages.sh lists is installed" \
    "$(PATH=$folder/bin bash -c 'source "$0/scripts/common.sh"; install_packages cmake' "$folder" 2>&1)"
}

a_display_is_one_that_answers() {
  export XDG_RUNTIME_DIR=$folder
  unset DISPLAY WAYLAND_DISPLAY
  if with_scripts display_answers; then exit 1; fi
  export WAYLAND_DISPLAY=wayland-7
  if with_scripts display_answers; then exit 1; fi
  # A server that is ready, then one that was killed and has left its socket.
  coproc perl -MSocket -e 'socket(S, AF_UNIX, SOCK_STREAM, 0); bind(S, pack_sockaddr_un($ARGV[0])) or die; listen(S, 9);
    syswrite(STDOUT, "ready\n"); sleep' "$folder/wayland-7"
  server=$COPROC_PID
  local ready
  read -r ready <&"${COPROC[0]}"
  expect_equal ready "$ready"
  with_scripts display_answers
  WAYLAND_DISPLAY=$folder/wayland-7 with_scripts display_answers
  kill "$server"
  wait "$server" || true
  server=
  if with_scripts display_answers; then exit 1; fi
}

help_needs_no_set_up() {
  # Neither apt-get nor cmake can be found here.
  mkdir "$folder/bin"
  local tool
  for tool in bash cat dirname readlink; do ln -s "$(command -v "$tool")" "$folder/bin/"; done
  local usage
  for script in run test; do
    usage=$(PATH=$folder/bin "$folder/$script" --help 2>&1)
    expect_equal "usage: ./$script " "${usage:0:$((10 + ${#script}))}"
  done
}

wrong_arguments_are_refused() {
  local out
  if out=$("$folder/test" --everything 2>&1); then exit 1; fi
  expect_equal "test: error: unknown option --everything; see ./test --help" "$out"
  if out=$("$folder/test" one two 2>&1); then exit 1; fi
  expect_equal "test: error: one argument at most; see ./test --help" "$out"
  if out=$("$folder/run" --build --page 2>&1); then exit 1; fi
  expect_equal "run: error: --build stands alone; see ./run --help" "$out"
}

the_proofs_run_in_their_long_form_one_after_another() {
  # Without apt-get nothing is installed; what is built and run is told.
  mkdir "$folder/bin"
  local tool
  for tool in bash dirname readlink; do ln -s "$(command -v "$tool")" "$folder/bin/"; done
  program cmake <<<'echo "cmake $1" >>"$calls"'
  program ctest <<<'echo "ctest ${QUELLAR_TRUST:-short} ${*:3}" >>"$calls"; exit 7'
  # One that fails keeps none of the others from running.
  program quellar_monkey <<<'echo "quellar_monkey $*" >>"$calls"'
  mkdir -p "$folder/build/release"
  ln -s "$folder/bin" "$folder/build/release/bin"
  program fuzz.sh <<<'echo "fuzz.sh $*" >>"$calls"'
  mv "$folder/bin/fuzz.sh" "$folder/scripts/"
  local status=0
  PATH=$folder/bin "$folder/bin/bash" "$folder/test" --trust >/dev/null || status=$?
  expect_equal 7 "$status"
  expect_equal "cmake -S
cmake --build
cmake -S
cmake --build
cmake --build
cmake -S
cmake --build
ctest long --verbose --no-tests=error -R ^(trust|monkey)_test
quellar_monkey 100000
fuzz.sh 600" "$(<"$folder/calls")"
}

# repository: makes the folder a repository with one commit.
repository() {
  cd "$folder"
  export GIT_CONFIG_GLOBAL=/dev/null GIT_CONFIG_SYSTEM=/dev/null
  export GIT_AUTHOR_NAME=T GIT_AUTHOR_EMAIL=t@example.org GIT_COMMITTER_NAME=T GIT_COMMITTER_EMAIL=t@example.org
  unset GIT_DIR GIT_WORK_TREE GIT_INDEX_FILE
  git init -q -b main
  mkdir platform build
  touch platform/a.h platform/a.cpp platform/b.cpp platform/gone.cpp build/generated.cpp .clang-tidy
  echo /build/ >.gitignore
  commit first
}

commit() {
  git add -A
  git commit -q -m "$1"
}

# changed_files: what the checks take as changed in the repository.
changed_files() {
  bash -c 'source "$0/scripts/lint.sh"; changed_files' "$folder"
}

all_sources_have_changed_where_there_is_no_history() {
  repository
  rm platform/gone.cpp
  touch platform/new.h
  local all=$'platform/a.cpp\nplatform/a.h\nplatform/b.cpp\nplatform/new.h'
  expect_equal "$all" "$(changed_files)"
  rm -rf .git
  expect_equal "$all" "$(changed_files)"
}

changes_are_counted_from_the_commit_before() {
  repository
  echo "// later" >platform/a.cpp
  rm platform/gone.cpp
  touch README.md
  commit second
  expect_equal platform/a.cpp "$(changed_files)"
  echo "// not committed" >platform/b.cpp
  touch platform/new.h
  expect_equal $'platform/a.cpp\nplatform/b.cpp\nplatform/new.h' "$(changed_files)"
}

changes_are_counted_from_where_the_branch_left() {
  repository
  git update-ref refs/remotes/origin/main HEAD
  echo "// second" >platform/a.cpp
  commit second
  echo "// third" >platform/b.cpp
  commit third
  expect_equal $'platform/a.cpp\nplatform/b.cpp' "$(changed_files)"
}

changed_checks_look_at_everything() {
  repository
  echo "Checks: bugprone-*" >.clang-tidy
  commit second
  expect_equal $'platform/a.cpp\nplatform/a.h\nplatform/b.cpp\nplatform/gone.cpp' "$(changed_files)"
}

a_changed_header_is_seen_through_one_unit() {
  # Headers are named from the root, beside the file or from a folder in between; system headers and generated sources
  # are not ours.
  cd "$folder"
  mkdir -p platform frame tests/support build/lint
  printf '#include "platform/a.h"\n#include <cstdio>\n' >platform/a.cpp
  printf '#include "platform/a.h"\n' >frame/b.h
  printf '#include "frame/b.h"\n' >frame/b.cpp
  printf '#include "b.h"\n#include "support/files.h"\n' >frame/c.cpp
  touch platform/a.h tests/support/files.h frame/lonely.h
  for unit in platform/a.cpp frame/b.cpp frame/c.cpp build/debug/host/moc.cpp; do
    printf '  "file": "%s"\n' "$folder/$unit"
  done >build/lint/compile_commands.json
  units() {
    bash -c 'source "$0/scripts/lint.sh"; units_to_tidy "$@" | cut -f 1' "$folder" "$@"
  }
  expect_equal platform/a.cpp "$(units platform/a.cpp)"
  expect_equal frame/b.cpp "$(units platform/a.h)"
  expect_equal frame/b.cpp "$(units frame/b.h)"
  expect_equal platform/a.cpp "$(units platform/a.h platform/a.cpp)"
  expect_equal $'frame/c.cpp\nplatform/a.cpp' "$(units platform/a.h frame/b.h frame/c.cpp platform/a.cpp)"
  expect_equal frame/c.cpp "$(units tests/support/files.h)"
  expect_equal "" "$(units frame/lonely.h)"
}

"$1"
