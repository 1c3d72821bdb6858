# shellcheck shell=bash
# Sizes of built programs; to be sourced.

# stripped_size STRIP PROGRAM: its bytes without symbols, as it goes to a board.
stripped_size() {
    local copy
    copy=$(mktemp)
    "$1" -o "$copy" "$2"
    stat -c %s "$copy"
    rm -f "$copy"
}

# built_programs DIRECTORY: the daemon and the tools of a build tree.
built_programs() {
    find "$1/src" "$1/tools" -maxdepth 1 -type f -executable | sort
}
