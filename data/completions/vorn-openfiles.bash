# bash completion for vorn-openfiles

_vorn_openfiles_values() { # COLUMN
    vorn-openfiles --timeout 2 --print0 "$1" 2>/dev/null | sort -zu | tr '\0\n' '\n?'
}

_vorn_openfiles() {
    local cur prev words cword split
    _init_completion -s -n = || return
    local columns='service pid user host path filename time full_path hidden folder deleted share command owner login unit started fd mode size space modified inode device locks'
    local command=list
    case ${words[1]-} in services | check | metrics | busy | idle | disconnect | events | help) command=${words[1]} ;; esac

    case $prev in
        --by) COMPREPLY=($(compgen -W 'share volume' -- "$cur")) && return ;;
        --hidden | --folders | --deleted) COMPREPLY=($(compgen -W 'yes no only' -- "$cur")) && return ;;
        --source) COMPREPLY=($(compgen -W 'auto iterator walk' -- "$cur")) && return ;;
        --schema) COMPREPLY=($(compgen -W '1 2' -- "$cur")) && return ;;
        --format) COMPREPLY=($(compgen -W 'table json jsonl csv' -- "$cur")) && return ;;
        --print0 | --group-by) COMPREPLY=($(compgen -W "$columns" -- "$cur")) && return ;;
        -o | --columns | --count-by | --sort | --sum)
            [[ $prev == --sum ]] && columns='size space'
            local before=
            [[ $cur == *,* ]] && before=${cur%,*},
            COMPREPLY=($(compgen -P "$before" -W "$columns" -- "${cur##*,}"))
            compopt -o nospace
            return
            ;;
        --where | --match | --not-where | --not-match)
            if [[ $cur == service=* || $cur == user=* ]]; then
                local IFS=$'\n'
                COMPREPLY=($(compgen -W "$(_vorn_openfiles_values "${cur%%=*}")" -- "${cur#*=}"))
                COMPREPLY=("${COMPREPLY[@]// /\\ }")
                [[ $COMP_WORDBREAKS == *=* ]] || COMPREPLY=("${COMPREPLY[@]/#/${cur%%=*}=}")
            else
                COMPREPLY=($(compgen -S = -W "$columns" -- "$cur"))
                compopt -o nospace
            fi
            return
            ;;
        --output) _filedir && return ;;
        --limit | --timeout | --jobs | --wait | --since | --grace | --heartbeat) return ;;
    esac

    if [[ $cur == -* ]]; then
        local options='--help --version -h -V'
        case $command in
            services) options+=' --json --schema' ;;
            check) options+=' --json --schema --timeout' ;;
            metrics) options+=' --by --timeout --jobs --source --sum --no-user --output' ;;
            events) options+=' --journal --interval --heartbeat' ;;
            busy | idle) options+=' --wait --inside --source --json --schema --pids --quiet -q --timeout' ;;
            disconnect) options+=' --by --timeout --jobs --source --where --match --not-where --not-match --since --hidden
                --folders --deleted --json --yes --dry-run --grace --force' ;;
            *) options+=' --by --timeout --jobs --source --time --where --match --not-where --not-match --since --hidden --folders
                --deleted --sort --reverse --group-by --limit --format --json --schema --header --print0 --pids --columns -o --wide --no-header
                --count-by --sum --watch --quiet -q --strict' ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    [[ $command == list || $command == busy || $command == idle || $command == disconnect || $command == events ]] && _filedir
    [[ $command == help ]] && COMPREPLY=($(compgen -W 'list services check metrics busy idle disconnect events' -- "$cur"))
    ((cword == 1)) && COMPREPLY+=($(compgen -W 'list services check metrics busy idle disconnect events help' -- "$cur"))
} && complete -F _vorn_openfiles vorn-openfiles
