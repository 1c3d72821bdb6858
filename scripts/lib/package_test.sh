# shellcheck shell=bash
# Tests of the Debian package and of the BusyBox script, to be run in scripts/throw-away-root.
# usage: bash package_test.sh service DEB BUILD-FOLDER | busybox BUILD-FOLDER
set -euo pipefail

CONFIG=/etc/quenvel/config/system
UNIT=app-config-manager.service
STATE=(conf_auto_save conf_preset correction_current devtype_info system_config)

step() { echo "== $*"; }
fail() {
    echo "package_test: FAILED: $*" >&2
    exit 1
}
# expect WHAT COMMAND...: the command succeeds, at the latest after ten seconds.
expect() {
    local what=$1 end=$((SECONDS + 10))
    shift
    until "$@"; do
        if ((SECONDS >= end)); then fail "$what"; fi
        sleep 0.1
    done
}
not() { ! "$@"; }
running() { pgrep -f "^${1-/usr/sbin/app_config_manager}\$" >/dev/null; }

# Nobody is there to answer a question.
install_package() { DEBIAN_FRONTEND=noninteractive dpkg -i "$1" </dev/null; }

# The first release as it was delivered: all files configuration files, and no scripts.
make_first_release() {
    local tree=/tmp/first
    mkdir -p $tree/DEBIAN $tree$CONFIG
    cp deploy$CONFIG/*.cfg $tree$CONFIG/
    echo DEV_INFORMATION=UNKNOWN >>$tree$CONFIG/devtype_info.cfg
    sed -i '/^\[SETTING_SERVICE\]/,$d' $tree$CONFIG/dev_var_system_config.cfg
    (cd $tree && find etc -type f -printf '/%p\n') >$tree/DEBIAN/conffiles
    cat >$tree/DEBIAN/control <<'EOF'
Package: app-config-manager
Version: 1.0.0
Architecture: all
Maintainer: The maintainers <maintainers@example.invalid>
Description: first release
EOF
    dpkg-deb --root-owner-group -b $tree /tmp/first.deb
}

service_is() { [[ $(systemctl is-active $UNIT) == "$1" ]]; }
enabled_is() { [[ $(systemctl is-enabled $UNIT 2>&1) == "$1" ]]; }
identity_is() { grep -qx "DEV_INFORMATION=$1" $CONFIG/devtype_info.cfg; }
main_pid() { systemctl show --value -p MainPID $UNIT; }
nothing_dangles() { [[ -z $(find /etc/systemd -xtype l) ]]; }

test_upgrade() {
    step "An upgrade of files that the daemon has written asks nothing and keeps them"
    make_first_release
    install_package /tmp/first.deb
    local name
    for name in "${STATE[@]}"; do echo "# written" >>"$CONFIG/$name.cfg"; done
    install_package "$1"
    for name in "${STATE[@]}"; do
        [[ $(tail -n 1 "$CONFIG/$name.cfg") == "# written" ]] || fail "$name.cfg was overwritten"
    done
    grep -qxF '[SETTING_SERVICE]' $CONFIG/dev_var_system_config.cfg ||
        fail "a file that nobody had changed is still the old one"
    expect "the service runs after an upgrade" service_is active
    dpkg -P app-config-manager
    expect "nothing runs after a purge" not running
    [[ ! -e /etc/quenvel ]] || fail "a purge left $(find /etc/quenvel)"
}

test_installation() {
    step "An installation delivers the files, enables the service and starts it"
    install_package "$1"
    diff -r /usr/share/app-config-manager $CONFIG || fail "the files are not as delivered"
    systemd-analyze verify $UNIT 2>&1 | tee /tmp/verify
    [[ ! -s /tmp/verify ]] || fail "systemd-analyze has found something"
    expect "enabled" enabled_is enabled
    expect "started" service_is active
    man -w 8 app_config_manager 1 confcheck shmconf >/dev/null || fail "no manual pages"

    step "It takes an identity from a peer outside, in spite of its confinement"
    expect "its segment is everybody's" test -e /dev/shm/CONF_AUTO_SAVE_MEM
    shmconf set CNF_DEV_TYP_MEM KOL_35_VOLTS_DEV_2CH
    expect "the identity is recorded" identity_is KOL_35_VOLTS_DEV_2CH
    expect "its lines are in the journal" eval \
        'journalctl -q -t app_config_manager | grep -q "Dev Type 3 Chn Count : 2"'
    local inside=(nsenter -t "$(main_pid)" -m -r) place
    for place in $CONFIG /dev/shm; do
        "${inside[@]}" touch "$place/mark" || fail "it cannot write in $place"
        rm "$place/mark"
    done
    for place in /etc /etc/quenvel /usr /var /root; do
        ! "${inside[@]}" touch "$place/mark" || fail "it can write in $place"
    done
    [[ ! "/proc/$(main_pid)/ns/net" -ef /proc/self/ns/net ]] || fail "it has a network"
    grep -qx $'NoNewPrivs:\t1' "/proc/$(main_pid)/status" || fail "it can get new privileges"
}

test_life() {
    step "Ten ends in a few seconds do not put an end to it"
    mkdir -p /run/systemd/system/$UNIT.d
    printf '[Service]\nRestartSec=100ms\n' >/run/systemd/system/$UNIT.d/fast.conf
    systemctl daemon-reload
    local end
    for end in {1..10}; do
        expect "it runs before end $end" service_is active
        systemctl kill -s KILL $UNIT
        expect "end $end" not service_is active
    done
    expect "it runs again" service_is active

    step "Another installation starts the new program and keeps the identity"
    local before
    before=$(main_pid)
    install_package "$1"
    expect "it runs" service_is active
    [[ $(main_pid) != "$before" ]] || fail "the old program still runs"
    identity_is KOL_35_VOLTS_DEV_2CH || fail "the identity is lost"
}

test_removal() {
    step "A removal stops it, leaves no dangling link, and keeps what the instrument knows"
    dpkg -r app-config-manager
    expect "nothing runs" not running
    nothing_dangles || fail "dangling: $(find /etc/systemd -xtype l)"
    identity_is KOL_35_VOLTS_DEV_2CH || fail "the identity is lost"
    install_package "$1"
    expect "enabled again" enabled_is enabled
    expect "started again" service_is active
    identity_is KOL_35_VOLTS_DEV_2CH || fail "the identity is lost"

    step "Who has disabled it finds it disabled after another installation"
    systemctl disable --now $UNIT
    dpkg -r app-config-manager
    install_package "$1"
    enabled_is disabled || fail "it is enabled"
    not running || fail "it was started"

    step "A purge leaves nothing"
    systemctl enable --now $UNIT
    dpkg -P app-config-manager
    expect "nothing runs" not running
    nothing_dangles || fail "dangling: $(find /etc/systemd -xtype l)"
    [[ ! -e /etc/quenvel ]] || fail "left: $(find /etc/quenvel)"
    [[ -z $(find /var/lib/systemd -name 'app-config*') ]] || fail "the service is remembered"
}

test_cmake_install() {
    step "Without a package it is enabled by hand, and runs from where it is"
    cmake --install "$1" --prefix /usr/local >/dev/null
    systemctl daemon-reload
    systemctl enable --now app-config-manager
    expect "it runs" running /usr/local/sbin/app_config_manager
    expect "the service runs" service_is active
}

SCRIPT=/etc/init.d/S20app_config_manager
PROGRAM=/usr/local/sbin/app_config_manager
PIDFILE=/var/run/app_config_manager.pid

# script STATUS ACTION: by BusyBox's shell, which finds nothing but BusyBox's programs.
script() {
    local status=0
    env -i PATH=/tmp/busybox /bin/busybox sh $SCRIPT "$2" || status=$?
    ((status == $1)) || fail "$2 ended with status $status instead of $1"
}
count_is() { [[ $(pgrep -c -f "^$PROGRAM\$") == "$1" ]]; }

test_busybox() {
    mkdir /tmp/busybox
    /bin/busybox --install -s /tmp/busybox
    ln -sf busybox /bin/sh
    cmake --install "$1" --prefix /usr/local >/dev/null

    step "BusyBox: started once, however often it is asked"
    script 3 status
    script 0 start
    script 0 start
    script 0 status
    rm $PIDFILE
    script 0 start
    count_is 1 || fail "a second daemon runs"
    grep -qx 'App Config Manager' /var/log/app_config_manager.log || fail "no log"

    step "BusyBox: restarted and stopped"
    local before
    before=$(pgrep -f "^$PROGRAM\$")
    script 0 restart
    count_is 1 || fail "not one daemon after a restart"
    [[ $(<$PIDFILE) == "$(pgrep -f "^$PROGRAM\$")" ]] || fail "the pid file names another process"
    [[ $(<$PIDFILE) != "$before" ]] || fail "not restarted"
    script 0 stop
    count_is 0 || fail "not stopped"
    [[ ! -e $PIDFILE ]] || fail "the pid file is left"
    script 0 stop
    script 3 status

    step "BusyBox: a stale pid file harms nobody"
    local foreign
    for foreign in "sleep 1000" "/bin/sh -c 'sleep 1000; :'"; do
        eval "$foreign &"
        echo $! >$PIDFILE
        script 3 status
        script 0 stop
        kill -0 $! || fail "a foreign process was killed"
        echo $! >$PIDFILE
        script 0 start
        count_is 1 || fail "not started"
        echo $! >$PIDFILE
        script 0 stop
        count_is 0 || fail "not stopped"
        kill -0 $! || fail "a foreign process was killed"
    done

    step "BusyBox: one that does not run is told"
    script 2 reload
    rm $PROGRAM
    script 5 start
    printf '#!/bin/sh\nexit 1\n' >$PROGRAM
    chmod +x $PROGRAM
    script 1 start
}

[[ -n ${APP_CONFIG_THROW_AWAY_ROOT-} ]] || fail "this is for scripts/throw-away-root"
case $1 in
service)
    test_upgrade "$2"
    test_installation "$2"
    test_life "$2"
    test_removal "$2"
    test_cmake_install "$3"
    ;;
busybox) test_busybox "$2" ;;
esac
step "done"
