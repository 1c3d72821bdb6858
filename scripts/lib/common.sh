# shellcheck shell=bash
# What the scripts share; to be sourced first. Answers -h with the comment at the script's head.

SCRIPT=$(realpath "$0")
# shellcheck disable=SC2034 # for the scripts
TOP=$(realpath "${BASH_SOURCE[0]%/*}/../..")

usage() { sed -n '2,/^[^#]/s/^# \?//p' "$SCRIPT"; }
wrong_usage() {
    usage >&2
    exit 2
}

FAILURE=1 # another one where that may be the status of what the script runs
fail() {
    echo "${SCRIPT##*/}: $*" >&2
    exit $FAILURE
}

if [[ ${1-} == -h || ${1-} == --help ]]; then
    usage
    exit 0
fi

# What every build of product, tools and tests needs.
BUILD_PACKAGES=(cmake g++ ninja-build libboost-dev libgtest-dev libcli11-dev nlohmann-json3-dev)

# install_packages PACKAGE...: those that a build needs and these, unless they are there, as root or
# through sudo.
install_packages() {
    local package missing=() run=(env DEBIAN_FRONTEND=noninteractive)
    for package in "${BUILD_PACKAGES[@]}" "$@"; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then return; fi
    if ((EUID != 0)); then run=(sudo "${run[@]}"); fi
    echo "installing: ${missing[*]}"
    "${run[@]}" apt-get -qq update </dev/null
    "${run[@]}" apt-get -qq -o DPkg::Lock::Timeout=300 install --no-install-recommends -y \
        "${missing[@]}" </dev/null
}

# build PRESET [OPTION...]: with options of `cmake --build`, such as the only targets to build.
build() {
    cmake --preset "$1"
    cmake --build --preset "$@"
}

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
