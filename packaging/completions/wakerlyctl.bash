# Completion of wakerlyctl for bash (bash(1), "Programmable Completion").

_wakerlyctl() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local offered words='explain doctor prefs lock log ids --help --version'
  COMPREPLY=()
  if ((COMP_CWORD > 1)); then
    # Their values are nothing that a list could offer.
    [[ $previous == --at || $previous == --runs ]] && return
    case $command in
      explain) words='--scheduled --at --json --help' ;;
      doctor) words='--load-library --json --help' ;;
      # compgen expands its words: a key with any other character could be a command to run.
      prefs) words="--json --help $(wakerlyctl prefs --json 2>/dev/null | sed -n 's/^ *"key": "\([[:alnum:]_.-]*\)",\{0,1\}$/\1/p')" ;;
      lock) words='--clear --yes --json --help' ;;
      log) words='--runs --follow --json --help' ;;
      ids) words='--json --help' ;;
      *) return ;;
    esac
  fi
  # The bash of macOS has no mapfile.
  while read -r offered; do COMPREPLY+=("$offered"); done < <(compgen -W "$words" -- "$word")
}

complete -F _wakerlyctl wakerlyctl
