# shellcheck shell=bash
# bash completion for Norvane and norvane-keychain: their options, as --help lists them when it is asked.

_norvane() {
  # shellcheck disable=SC2034 # words and cword belong to _init_completion
  local cur prev words cword split
  _init_completion -s || return
  case $prev in
    --platform) mapfile -t COMPREPLY < <(compgen -W 'gtk headless' -- "$cur") ;;
    --ui) mapfile -t COMPREPLY < <(compgen -W 'bundle explorer console' -- "$cur") ;;
    --desktop) _filedir json ;;
    --data-dir | --ui-bundle) _filedir -d ;;
    *)
      $split && return
      mapfile -t COMPREPLY < <(compgen -W "$(_parse_help "$1")" -- "$cur")
      [[ ${COMPREPLY-} != *= ]] || compopt -o nospace
      ;;
  esac
} && complete -F _norvane Norvane norvane-keychain
