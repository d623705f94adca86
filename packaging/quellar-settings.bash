# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# Completion of the command quellar-settings for bash.

_quellar_settings() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words=''
  COMPREPLY=()
  case $before in
    --device-root | --pictures)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
    --idiom) words='phone pad' ;;
    --page)
      words=$(quellar pages 2>/dev/null | sed -nE '1d; s/^(.*[^ ])  +KV[A-Za-z]+ .*/\1/p; s/^(Quellar)  +.*/\1/p' |
        tr 'A-Z ' 'a-z-')
      ;;
    --lang | --scale | --text-size) return ;;
    *) words='--device-root --page --idiom --lang --pictures --scale --text-size --reduced-motion --help --version' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -F _quellar_settings quellar-settings
