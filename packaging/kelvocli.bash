# Completion of kelvocli's options in bash. The options are the ones that the program at hand lists itself.
# shellcheck shell=bash

# Every option, an option that takes a value with its "=".
_kelvocli_options() {
  "$1" --help 2>/dev/null | sed -n 's/^ *[^ -]*\(--[a-z-]*=\{0,1\}\).*/\1/p'
}

_kelvocli() {
  local current=${COMP_WORDS[COMP_CWORD]} option=""
  COMPREPLY=()
  # Bash takes "=" for a word of its own: --save-file=out arrives as "--save-file", "=", "out".
  if [[ $current == "=" ]]; then
    option=${COMP_WORDS[COMP_CWORD - 1]}
    current=""
  elif ((COMP_CWORD >= 2)) && [[ ${COMP_WORDS[COMP_CWORD - 1]} == "=" ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  fi
  case $option in
    *-file)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -f -- "$current")
      ;;
    "")
      mapfile -t COMPREPLY < <(compgen -W "$(_kelvocli_options "$1")" -- "$current")
      [[ ${COMPREPLY[*]} == *= ]] && compopt -o nospace 2>/dev/null
      ;;
  esac
}

complete -F _kelvocli kelvocli
