# shellcheck shell=bash
# Completion of quollctl in bash. What is no option completes as a file name.
_quollctl() {
  local word=${COMP_WORDS[COMP_CWORD]} offered
  local -A options=(
    [doctor]="--fix --json"
    [forget]="--json"
    [show]="--json"
    [url]="--json"
    [accounts]="--json"
    [contacts]="--json"
    [date]="--json"
    [render]="--json"
    [launch]="--background --json"
    [call]=""
    [sample-container]="--form"
  )
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    offered="${!options[*]} --version -h --help"
  elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --form ]]; then
    offered="xml binary old"
  elif [[ $word == -* ]]; then
    offered="${options[${COMP_WORDS[1]}]-} -h --help"
  elif [[ ${COMP_WORDS[1]} == launch ]] && ((COMP_CWORD == 2)); then
    offered="archive delete reply message compose send open"
  else
    return 0
  fi
  mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$word")
}
complete -o bashdefault -o default -F _quollctl quollctl
