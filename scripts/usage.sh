# shellcheck shell=bash
# Sourced by the other scripts. The help text of a script is the comment at its head.

# usage FILE: prints the help text of FILE.
usage() {
    sed -n '2,/^[^#]/s/^#\( \|$\)//p' "$1"
}

# answer_help FILE ARGUMENTS: prints the help text and exits when the first argument is --help (status 0) or another
# option (status 2).
answer_help() {
    local file=$1
    shift
    case "${1:-}" in
        --help | -h) usage "$file"; exit ;;
        -*) usage "$file" >&2; exit 2 ;;
    esac
}
