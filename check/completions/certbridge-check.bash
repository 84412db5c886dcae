# SPDX-License-Identifier: MIT
# Completion of certbridge-check for bash.

_certbridge_check() {
    local cur prev words cword split
    _init_completion -s || return
    local options='--request --include --exclude --repeat --fuzz --seed --low-memory --timeout
        --in-process --only-failed --json --junit --tap --list --help --version'
    case $prev in
    --request)
        _filedir
        return
        ;;
    --include | --exclude)
        # The last of the ids, which are separated by commas.
        local ids first=
        ids=$(certbridge-check --list 2>/dev/null | cut -d ' ' -f 1)
        if [[ $cur == *,* ]]; then first=${cur%,*},; fi
        mapfile -t COMPREPLY < <(compgen -P "$first" -W "$ids" -- "${cur##*,}")
        return
        ;;
    --repeat | --fuzz | --seed | --timeout) return ;;
    esac
    if $split; then return; fi
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
    else
        _filedir '@(so|dll)'
    fi
} && complete -F _certbridge_check certbridge-check
