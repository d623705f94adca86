#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: scripts/lint.sh changed|all
#
# Checks the formatting of all source files, then runs clang-tidy: over what changed since the branch left origin/main
# (on main itself: since the commit before) and what is not committed yet, or over all. Without a history to compare
# with, everything has changed. "changed" ends after some minutes and tells how much was left; "all" takes its time.
# clang-tidy needs no build, only to be told how each file is compiled: build/lint is configured for that. What passed is
# not looked at again until it changes.
set -euo pipefail
# shellcheck source=scripts/common.sh
source "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/common.sh"

readonly changed_seconds=60
readonly build=$root/build/lint

# Paths are relative to the root from here on.
cd "$root"

# existing_files: passes on the paths of files that are there, each once.
existing_files() {
  local path
  LC_ALL=C sort -u | while IFS= read -r path; do
    if [[ -f $path ]]; then printf '%s\n' "$path"; fi
  done
}

has_history() {
  [[ $(git rev-parse --show-toplevel 2>/dev/null) == "$root" ]]
}

# source_files: prints our sources, whether committed or not.
source_files() {
  if has_history; then
    git ls-files --cached --others --exclude-standard -- '*.h' '*.cpp'
  else
    find . -path ./build -prune -o \( -name '*.h' -o -name '*.cpp' \) -printf '%P\n'
  fi | existing_files
}

# base_commit: prints the commit to compare with; fails where there is none.
base_commit() {
  local base
  if base=$(git merge-base HEAD origin/main 2>/dev/null) && [[ $base != $(git rev-parse HEAD) ]]; then
    echo "$base"
  else
    git rev-parse --verify --quiet 'HEAD~1'
  fi
}

# changed_files: prints our sources that changed; all of them where there is nothing to compare with or where the checks
# themselves changed.
changed_files() {
  local base changed
  if ! has_history || ! base=$(base_commit); then
    source_files
    return
  fi
  changed=$(git diff --name-only "$base" -- && git ls-files --others --exclude-standard)
  if grep -q '\.clang-tidy$' <<<"$changed"; then
    source_files
  else
    grep -E '\.(h|cpp)$' <<<"$changed" | existing_files
  fi
}

# units: prints, for each of our translation units, its path and the paths of our headers that it includes, directly or
# not, tab-separated on one line. A header is found beside the file that includes it, or by the end of its path.
units() {
  local files
  mapfile -t files < <(source_files)
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" | LC_ALL=C sort -u |
    awk -v root="$root/" '
      BEGIN { for (i = 2; i < ARGC; ++i) is_ours[ARGV[i]] }
      function found(from, path,   beside, end) {
        beside = from
        sub(/[^\/]*$/, "", beside)
        if ((beside path) in is_ours) return beside path
        if (path in is_ours) return path
        for (end in is_ours) if (substr(end, length(end) - length(path)) == "/" path) return end
        return ""
      }
      function add(file,   i) {
        if (file in taken) return
        taken[file]
        line = line "\t" file
        for (i = 1; i <= included[file]; ++i) add(includes[file, i])
      }
      FILENAME == "-" { if (index($0, root) == 1) unit[++units] = substr($0, length(root) + 1); next }
      /^#include "/ { split($0, part, "\""); wanted[FILENAME, ++count[FILENAME]] = part[2] }
      END {
        for (file in is_ours)
          for (i = 1; i <= count[file]; ++i) {
            header = found(file, wanted[file, i])
            if (header != "") includes[file, ++included[file]] = header
          }
        for (i = 1; i <= units; ++i)
          if (unit[i] in is_ours) {
            split("", taken)
            line = ""
            add(unit[i])
            print substr(line, 2)
          }
      }' - "${files[@]}"
}

# units_to_tidy FILE...: prints the lines of `units` that show what is in these files: theirs, and for each header that
# none of them includes one that does.
units_to_tidy() {
  awk -F '\t' '
    NR == FNR { wanted[$1]; next }
    { lines[++count] = $0 }
    function take(line,   i) {
      split(line, fields, "\t")
      if (fields[1] in taken) return
      taken[fields[1]]
      for (i in fields) delete wanted[fields[i]]
      print line
    }
    END {
      for (i = 1; i <= count; ++i) { split(lines[i], fields, "\t"); if (fields[1] in wanted) take(lines[i]) }
      for (i = 1; i <= count; ++i) {
        split(lines[i], fields, "\t")
        for (j in fields) if (fields[j] in wanted) { take(lines[i]); break }
      }
    }' <(printf '%s\n' "$@") <(units | LC_ALL=C sort -u)
}

# tidy_unit DEADLINE UNIT_LINE: runs clang-tidy over one unit unless it has passed already as it stands. Prints what is
# wrong. Past the deadline it counts the unit as left over instead.
tidy_unit() {
  local deadline=$1 files checks unit output stamp sum
  IFS=$'\t' read -r -a files <<<"$2"
  unit=${files[0]}
  stamp=$build/tidy/${unit//\//+}
  checks=(.clang-tidy)
  if [[ $unit == tests/* ]]; then checks+=(tests/.clang-tidy); fi
  sum=$(cat "${checks[@]}" "${files[@]}" | sha256sum)
  if [[ -f $stamp && $(<"$stamp") == "$sum" ]]; then return; fi
  if ((EPOCHSECONDS >= deadline)); then
    echo "$unit" >>"$build/tidy/left_over"
    return
  fi
  # The time limit is one for clang-tidy's own endless loops.
  if output=$(timeout 600 clang-tidy-19 -p "$build" --quiet "$unit" 2>&1); then
    echo "$sum" >"$stamp"
  else
    printf '%s: clang-tidy finds\n%s\n' "$unit" \
      "$(grep -v -e '^[0-9].* generated\.$' -e '^Error while processing ' <<<"$output")" >&2
    return 1
  fi
}

check_formatting() {
  local files
  mapfile -t files < <(source_files)
  say "formatting: ${#files[@]} files"
  clang-format-19 --dry-run -Werror "${files[@]}"
}

# tidy DEADLINE FILE...: runs clang-tidy over the files until the deadline (seconds since the epoch); returns 1 where
# something is wrong.
tidy() {
  local deadline=$1 selected not_built status=0
  shift
  mapfile -t selected < <(units_to_tidy "$@")
  say "clang-tidy: ${#selected[@]} translation units for $# files"
  not_built=$(LC_ALL=C comm -23 <(printf '%s\n' "$@" | grep '\.cpp$' | LC_ALL=C sort) \
    <(printf '%s\n' "${selected[@]}" | cut -f 1 | LC_ALL=C sort))
  if [[ -n $not_built ]]; then say "clang-tidy: not in the build, so not looked at: ${not_built//$'\n'/ }"; fi
  mkdir -p "$build/tidy"
  rm -f "$build/tidy/left_over"
  if ((${#selected[@]} == 0)); then return; fi
  export build
  export -f tidy_unit
  printf '%s\0' "${selected[@]}" |
    xargs -0 -n 1 -P "$(nproc)" bash -c 'tidy_unit "$@"' tidy_unit "$deadline" || status=1
  if [[ -f $build/tidy/left_over ]]; then
    say "clang-tidy: time is up, $(wc -l <"$build/tidy/left_over") units not looked at; ./test --lint looks at all"
  fi
  return "$status"
}

main() {
  local status=0 files deadline
  local log=$build/configure.log
  mkdir -p "$build"
  if ! cmake -S . --preset lint >"$log" 2>&1; then fail "build/lint can't be configured; the reasons are in $log"; fi
  case ${1:-} in
    changed)
      mapfile -t files < <(changed_files)
      deadline=$((EPOCHSECONDS + changed_seconds))
      ;;
    all)
      mapfile -t files < <(source_files)
      deadline=$((EPOCHSECONDS + 24 * 60 * 60))
      ;;
    *) fail "usage: scripts/lint.sh changed|all" ;;
  esac
  check_formatting || status=1
  tidy "$deadline" "${files[@]}" || status=1
  return "$status"
}

if [[ ${BASH_SOURCE[0]} == "$0" ]]; then main "$@"; fi
