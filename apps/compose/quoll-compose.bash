# shellcheck shell=bash
# Completion of quoll-compose in bash. What is no option completes as a file name.
_quoll_compose() {
  local word=${COMP_WORDS[COMP_CWORD]} options
  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --idle | --client) return 0 ;;
  esac
  [[ $word == -* ]] || return 0
  options=(
    --service
    --idle
    --resume
    --list
    --show
    --clients
    --client
    --check
    --version
    -h --help
  )
  mapfile -t COMPREPLY < <(compgen -W "${options[*]}" -- "$word")
}
complete -o bashdefault -o default -F _quoll_compose quoll-compose
