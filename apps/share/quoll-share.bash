# shellcheck shell=bash
# Completion of quoll-share in bash. What is no option completes as a file name.
_quoll_share() {
  local word=${COMP_WORDS[COMP_CWORD]} i options
  COMPREPLY=()
  for ((i = 1; i < COMP_CWORD; ++i)); do
    [[ ${COMP_WORDS[i]} != -- ]] || return 0
  done
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --to | --cc | --bcc | --subject | --title | --text | --html | --descriptor | --progress) return 0 ;;
  esac
  [[ $word == -* ]] || return 0
  options=(
    --to
    --cc
    --bcc
    --subject
    --title
    --text
    --html
    -0 --null
    --descriptor
    --clipboard
    --print
    --json
    --verbose
    --notify
    --progress
    --version
    -h --help
  )
  mapfile -t COMPREPLY < <(compgen -W "${options[*]}" -- "$word")
}
complete -o bashdefault -o default -F _quoll_share quoll-share
