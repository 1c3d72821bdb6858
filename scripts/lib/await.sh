# shellcheck shell=bash
# To be sourced.

# await COMMAND...: until it succeeds, for at most 20 seconds.
await() {
    local end=$((SECONDS + 20))
    until "$@"; do
        if ((SECONDS >= end)); then
            echo "waited 20 s in vain for: $*" >&2
            return 1
        fi
        sleep 0.02
    done
}
