# shellcheck shell=bash
# Debian packages for the scripts that need them; to be sourced.

# What every build of product, tools and tests needs.
# shellcheck disable=SC2034 # the scripts that source this file read it
BUILD_PACKAGES=(cmake g++ ninja-build libboost-dev libgtest-dev libcli11-dev nlohmann-json3-dev)

# Installs those of the named packages that are missing, as root or through sudo.
install_packages() {
    local missing=() package
    for package in "$@"; do
        if [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
            missing+=("$package")
        fi
    done
    if ((${#missing[@]} == 0)); then return; fi

    local run=(env DEBIAN_FRONTEND=noninteractive)
    if ((EUID != 0)); then run=(sudo "${run[@]}"); fi
    echo "installing: ${missing[*]}"
    "${run[@]}" apt-get -qq update </dev/null
    "${run[@]}" apt-get -qq -o DPkg::Lock::Timeout=300 install --no-install-recommends -y "${missing[@]}" </dev/null
}
