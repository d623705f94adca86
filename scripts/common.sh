# SPDX-License-Identifier: MIT
# shellcheck shell=bash

# What ./run and ./test have in common: the set-up, the build, and whether there is a display.

root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
# shellcheck source=scripts/packages.sh
source "$root/scripts/packages.sh"

say() {
  printf '==> %s\n' "$*"
}

fail() {
  printf '%s: error: %s\n' "${0##*/}" "$*" >&2
  exit 1
}

# missing_packages PACKAGE...: prints those that are not installed, one a line.
missing_packages() {
  # An unknown package is no error here, it is a missing one.
  LC_ALL=C comm -23 <(printf '%s\n' "$@" | LC_ALL=C sort -u) \
    <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "$@" 2>/dev/null | sed -n 's/^installed //p' | LC_ALL=C sort -u)
}

# install_packages PACKAGE...: installs those that are missing. It asks nothing (apart from a password, where sudo needs
# one and there is a terminal) and touches nothing when all are there.
install_packages() {
  if [[ -z $(command -v apt-get) || -z $(command -v dpkg-query) ]]; then
    say "no apt-get here: taking it that what scripts/packages.sh lists is installed"
    return
  fi
  local missing
  mapfile -t missing < <(missing_packages "$@")
  if ((${#missing[@]} == 0)); then return; fi

  local as_root=()
  if (($(id -u) != 0)); then
    if [[ -z $(command -v sudo) ]]; then
      fail "packages are missing; install them as root: apt-get install --no-install-recommends ${missing[*]}"
    fi
    as_root=(sudo)
    if [[ ! -t 0 ]]; then as_root+=(-n); fi
  fi

  mkdir -p "$root/build"
  local log=$root/build/apt-get.log
  local apt_get=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o DPkg::Lock::Timeout=300)
  say "installing ${#missing[@]} packages with apt-get, which may take some minutes: ${missing[*]}"
  if ! { "${apt_get[@]}" update && "${apt_get[@]}" install --no-install-recommends "${missing[@]}"; } \
    </dev/null >"$log" 2>&1; then
    local cause
    cause=$(grep -E '^(E:|sudo:)' "$log" | head -n 1) || cause="no reason given"
    fail "apt-get could not install the packages (${cause}); its whole output is in ${log}"
  fi
}

# build PRESET [CMAKE_ARGUMENT]...: configures build/PRESET where that is due, then builds it.
build() {
  local preset=$1 folder=$root/build/$1
  shift
  if [[ ! -e $folder/build.ninja || $root/CMakePresets.json -nt $folder/build.ninja ]]; then
    say "configuring build/$preset"
    cmake -S "$root" --preset "$preset" "$@"
  fi
  say "building build/$preset"
  cmake --build "$folder"
}

# socket_answers PATH: whether something listens on a socket. The file alone says little: it outlives a server that
# was killed.
socket_answers() {
  perl -MSocket -e 'socket(S, AF_UNIX, SOCK_STREAM, 0) && connect(S, pack_sockaddr_un($ARGV[0])) or exit 1' "$1" \
    2>/dev/null
}

# display_answers: whether WAYLAND_DISPLAY or DISPLAY leads to a display server.
display_answers() {
  if [[ -n ${WAYLAND_DISPLAY:-} ]]; then
    local socket=$WAYLAND_DISPLAY
    if [[ $socket != /* ]]; then socket=${XDG_RUNTIME_DIR:-}/$socket; fi
    if socket_answers "$socket"; then return 0; fi
  fi
  if [[ ${DISPLAY:-} != *:* ]]; then return 1; fi
  local host=${DISPLAY%:*} number=${DISPLAY##*:}
  number=${number%%.*}
  if [[ -z $host || $host == unix ]]; then
    socket_answers "/tmp/.X11-unix/X$number"
  else
    # X displays of other machines listen on TCP from port 6000 on.
    timeout 3 bash -c "exec 3<>'/dev/tcp/$host/$((6000 + number))'" 2>/dev/null
  fi
}
