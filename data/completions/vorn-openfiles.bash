# bash completion for vorn-openfiles

_vorn_openfiles_values() { # COLUMN
    vorn-openfiles --timeout 2 --print0 "$1" 2>/dev/null | sort -zu | tr '\0\n' '\n?'
}

_vorn_openfiles() {
    local cur prev words cword split
    _init_completion -s -n = || return
    local columns='service pid user host path filename time full_path hidden folder deleted'
    local command=list
    case ${words[1]-} in services | check | metrics | help) command=${words[1]} ;; esac

    case $prev in
        --by) COMPREPLY=($(compgen -W 'share volume' -- "$cur")) && return ;;
        --hidden | --folders | --deleted) COMPREPLY=($(compgen -W 'yes no only' -- "$cur")) && return ;;
        --format) COMPREPLY=($(compgen -W 'table json jsonl csv' -- "$cur")) && return ;;
        --sort) COMPREPLY=($(compgen -W 'service pid user host path filename' -- "$cur")) && return ;;
        --print0) COMPREPLY=($(compgen -W "$columns" -- "$cur")) && return ;;
        --columns | --count-by)
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
                COMPREPLY=($(compgen -S = -W 'service pid user host path filename time' -- "$cur"))
                compopt -o nospace
            fi
            return
            ;;
        --output) _filedir && return ;;
        --limit | --timeout) return ;;
    esac

    if [[ $cur == -* ]]; then
        local options='--help --version -h -V'
        case $command in
            services) options+=' --json' ;;
            check) options+=' --json --timeout' ;;
            metrics) options+=' --by --timeout --output' ;;
            *) options+=' --by --timeout --time --where --match --not-where --not-match --hidden --folders
                --deleted --sort --reverse --limit --format --json --print0 --pids --columns --no-header
                --count-by --watch --quiet -q --strict' ;;
        esac
        COMPREPLY=($(compgen -W "$options" -- "$cur"))
        return
    fi
    [[ $command == list ]] && _filedir
    [[ $command == help ]] && COMPREPLY=($(compgen -W 'list services check metrics' -- "$cur"))
    ((cword == 1)) && COMPREPLY+=($(compgen -W 'list services check metrics help' -- "$cur"))
} && complete -F _vorn_openfiles vorn-openfiles
