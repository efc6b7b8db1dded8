# shellcheck shell=bash
# Completion of quoll-compose in bash. What is no option completes as a file name.
_quoll_compose() {
  local word=${COMP_WORDS[COMP_CWORD]} options words
  COMPREPLY=()
  case ${COMP_WORDS[COMP_CWORD - 1]} in
    --idle) return 0 ;;
    --open | --ask | --files | --again | --delete)
      words=$(quoll-compose --list 2>/dev/null | cut -d ' ' -f 1)
      mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
      return 0
      ;;
    --client)
      words=$(quoll-compose --clients 2>/dev/null |
        sed -n '/cannot be given a draft/d; /in a sandbox that no draft/d; s/^..[^:]*(\(.*\)\.desktop): .*/\1/p')
      mapfile -t COMPREPLY < <(compgen -W "$words default" -- "$word")
      return 0
      ;;
  esac
  [[ $word == -* ]] || return 0
  options=(
    --service
    --idle
    --resume
    --list
    --json
    --open
    --ask
    --files
    --again
    --delete
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
