# shellcheck shell=bash
# For the scripts to source: what they say about themselves is the comment at their head.

# usage FILE: prints it.
usage() {
    sed -n '2,/^[^#]/s/^#\( \|$\)//p' "$1"
}

# answer_help FILE ARGUMENTS: prints it and ends when the first argument is --help, or is an option at all.
answer_help() {
    local file=$1
    shift
    case "${1:-}" in
        --help | -h) usage "$file"; exit ;;
        -*) usage "$file" >&2; exit 2 ;;
    esac
}
