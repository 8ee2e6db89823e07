# shellcheck shell=bash
# For tests in shell: "source" it, then enter_sample_host "$@".

# Goes on in a sample host, where every write is private. Needs root.
enter_sample_host() { # ARG...
    [[ -z ${VORN_SAMPLE_HOST-} ]] || return 0
    if [[ $EUID -ne 0 ]]; then
        echo "skipped: a sample host needs root"
        exit 77
    fi
    exec "$(dirname "${BASH_SOURCE[0]}")/../../scripts/sample-host.sh" "$(realpath "$0")" "$@"
}
