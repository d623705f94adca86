# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Completion of the command quellar for bash.

_quellar_pages() {
  # A page's name in lower case with dashes needs no quotes.
  quellar pages 2>/dev/null | sed -nE '1d; s/^(.*[^ ])  +KV[A-Za-z]+ .*/\1/p; s/^(Quellar)  +.*/\1/p' |
    tr 'A-Z ' 'a-z-'
}

_quellar() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' index arguments=0
  for ((index = 1; index < COMP_CWORD; ++index)); do
    case ${COMP_WORDS[index]} in
      --device-root | --exec | --idiom | --lang | --scale | --width) ((++index)) ;;
      -*) ;;
      *) if [[ -z $command ]]; then command=${COMP_WORDS[index]}; else ((++arguments)); fi ;;
    esac
  done

  COMPREPLY=()
  case $before in
    --device-root)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    --idiom)
      mapfile -t COMPREPLY < <(compgen -W 'phone pad none' -- "$word")
      return
      ;;
    --exec | --lang | --scale | --width) return ;;
  esac

  local words=''
  case $command:$arguments in
    :*) words='pages rows get set watch schema session --device-root --help --version' ;;
    pages:*) words='--json' ;;
    schema:*) words='--json --markdown' ;;
    watch:*) words='--json --exec' ;;
    session:*) words='--device-root --idiom --lang --scale --width --bus' ;;
    rows:0) words="$(_quellar_pages) --json" ;;
    rows:*) words='--json' ;;
    get:0 | set:0) words=$(_quellar_pages) ;;
    get:1 | set:1)
      words=$(quellar rows "$before" --json 2>/dev/null | grep -oE '"id":"[^" ]+"' | cut -d '"' -f 4)
      ;;
    set:2) words='on off' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _quellar quellar
