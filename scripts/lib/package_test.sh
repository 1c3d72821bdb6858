# shellcheck shell=bash
# Tests of the Debian packages and of the BusyBox script, for scripts/throw-away-root: the first
# command that fails ends them and is shown.
# usage: bash package_test.sh service BUILD-FOLDER DEB OTHER-DEB | busybox BUILD-FOLDER
set -eEuo pipefail

CONFIG=/etc/quenvel/config/system
DELIVERED=/usr/share/app-config-manager
UNIT=app-config-manager.service
STATE=(conf_auto_save conf_preset correction_current devtype_info system_config)

step() { echo "== $*"; }
trap '((BASH_SUBSHELL)) || echo "FAILED: line ${BASH_LINENO[0]}, $LINENO: $BASH_COMMAND" >&2' ERR

# soon COMMAND...: it succeeds, at the latest after ten seconds.
soon() {
    local end=$((SECONDS + 10))
    until "$@"; do
        ((SECONDS < end))
        sleep 0.1
    done
}
not() { ! "$@"; }
# shellcheck disable=SC2120 # the test without a package names another program
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
is_gone() {
    soon not running
    [[ -z $(find /etc/systemd -xtype l) ]] # no link dangles
}
is_purged() {
    is_gone
    [[ ! -e /etc/quenvel ]]
    rm /dev/shm/* # as after a power cycle: an identity in there counts, and is not recorded
}

test_upgrade() {
    step "An upgrade of files that the daemon has written asks nothing and keeps them"
    make_first_release
    install_package /tmp/first.deb
    local name
    for name in "${STATE[@]}"; do echo "# written" >>"$CONFIG/$name.cfg"; done
    install_package "$1"
    for name in "${STATE[@]}"; do
        [[ $(tail -n 1 "$CONFIG/$name.cfg") == "# written" ]]
    done
    # Nobody had changed it.
    grep -qxF '[SETTING_SERVICE]' $CONFIG/dev_var_system_config.cfg
    soon service_is active

    step "An upgrade that stopped at a question leaves nothing when it is purged"
    echo "# changed by hand" >>$CONFIG/dev_var_system_config.cfg
    dpkg-deb -R "$1" /tmp/next
    sed -i 's/^Version: .*/&.1/' /tmp/next/DEBIAN/control
    echo "# delivered anew" >>/tmp/next$CONFIG/dev_var_system_config.cfg
    dpkg-deb -b /tmp/next /tmp/next.deb
    not install_package /tmp/next.deb
    running
    dpkg -P app-config-manager
    is_purged
}

test_other_package() {
    step "The package of the other family and handlers takes over, and says what is kept"
    install_package "$1"
    install_package "$2" | tee /tmp/said
    [[ $(dpkg-query -W -f '${db:Status-Status}' app-config-manager) == config-files ]]
    soon service_is active
    cmp deploy$CONFIG/conf_preset.cfg $CONFIG/conf_preset.cfg
    grep -q "Kept .* conf_preset.cfg" /tmp/said
    grep -q "not those of this package's model family" /tmp/said
    cmp deploy/families/KOL/conf_preset.cfg $DELIVERED/conf_preset.cfg
    shmconf set CNF_DEV_TYP_MEM KOL_35_VOLTS_DEV_2CH
    soon grep -qx STATE=1 $CONFIG/conf_auto_save.cfg # its other handlers run

    step "A purge of the one before takes nothing from it"
    dpkg -P app-config-manager
    soon service_is active
    enabled_is enabled
    [[ $(find $CONFIG -name '*.cfg' | wc -l) == 6 ]]

    step "And back"
    install_package "$1"
    dpkg -P app-config-manager-kol
    soon service_is active
    identity_is KOL_35_VOLTS_DEV_2CH
    [[ -e $CONFIG/dev_var_system_config.cfg ]]
    dpkg -P app-config-manager
    is_purged
}

test_installation() {
    step "An installation delivers the files, enables the service and starts it"
    install_package "$1"
    diff -r $DELIVERED $CONFIG
    systemd-analyze verify $UNIT 2>&1 | tee /tmp/verify
    [[ ! -s /tmp/verify ]]
    soon enabled_is enabled
    soon service_is active
    man -w 8 app_config_manager 1 confcheck shmconf

    step "It takes an identity from a peer outside, in spite of its confinement"
    soon test -e /dev/shm/CONF_AUTO_SAVE_MEM
    shmconf set CNF_DEV_TYP_MEM KOL_35_VOLTS_DEV_2CH
    soon identity_is KOL_35_VOLTS_DEV_2CH
    soon eval 'journalctl -q -t app_config_manager | grep -q "Dev Type 3 Chn Count : 2"'
    local inside=(nsenter -t "$(main_pid)" -m -r) place
    for place in $CONFIG /dev/shm; do
        "${inside[@]}" touch "$place/mark"
        rm "$place/mark"
    done
    for place in /etc /etc/quenvel /usr /var /root; do
        not "${inside[@]}" touch "$place/mark"
    done
    not test "/proc/$(main_pid)/ns/net" -ef /proc/self/ns/net # no network
    grep -qx $'NoNewPrivs:\t1' "/proc/$(main_pid)/status"
}

test_life() {
    step "Ten ends in a few seconds do not put an end to it"
    mkdir -p /run/systemd/system/$UNIT.d
    printf '[Service]\nRestartSec=100ms\n' >/run/systemd/system/$UNIT.d/fast.conf
    systemctl daemon-reload
    local end
    for end in {1..10}; do
        soon service_is active
        systemctl kill -s KILL $UNIT
        soon not service_is active
        echo "end $end"
    done
    soon service_is active

    step "Another installation starts the new program and keeps the identity"
    local before
    before=$(main_pid)
    install_package "$1"
    soon service_is active
    [[ $(main_pid) != "$before" ]]
    identity_is KOL_35_VOLTS_DEV_2CH
}

test_removal() {
    step "A removal stops it, leaves no dangling link, and keeps what the instrument knows"
    dpkg -r app-config-manager
    is_gone
    identity_is KOL_35_VOLTS_DEV_2CH
    install_package "$1"
    soon enabled_is enabled
    soon service_is active
    identity_is KOL_35_VOLTS_DEV_2CH

    step "Who has disabled it finds it disabled after another installation"
    systemctl disable --now $UNIT
    dpkg -r app-config-manager
    install_package "$1"
    enabled_is disabled
    not running

    step "A purge leaves nothing"
    systemctl enable --now $UNIT
    dpkg -P app-config-manager
    is_purged
    [[ -z $(find /var/lib/systemd -name 'app-config*') ]]
}

test_cmake_install() {
    step "Without a package it is enabled by hand, and runs from where it is"
    cmake --install "$1" --prefix /usr/local >/dev/null
    systemctl daemon-reload
    systemctl enable --now app-config-manager
    soon running /usr/local/sbin/app_config_manager
    soon service_is active
}

SCRIPT=/etc/init.d/S20app_config_manager
PROGRAM=/usr/local/sbin/app_config_manager
PIDFILE=/var/run/app_config_manager.pid

# script STATUS ACTION: by BusyBox's shell, which finds nothing but BusyBox's programs.
script() {
    local status=0
    env -i PATH=/tmp/busybox /bin/busybox sh $SCRIPT "$2" || status=$?
    ((status == $1))
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
    count_is 1
    grep -qx 'App Config Manager' /var/log/app_config_manager.log

    step "BusyBox: restarted and stopped"
    local before
    before=$(pgrep -f "^$PROGRAM\$")
    script 0 restart
    count_is 1
    [[ $(<$PIDFILE) == "$(pgrep -f "^$PROGRAM\$")" ]]
    [[ $(<$PIDFILE) != "$before" ]]
    script 0 stop
    count_is 0
    [[ ! -e $PIDFILE ]]
    script 0 stop
    script 3 status

    step "BusyBox: a stale pid file harms nobody"
    local foreign
    for foreign in "sleep 1000" "/bin/sh -c 'sleep 1000; :'"; do
        eval "$foreign &"
        echo $! >$PIDFILE
        script 3 status
        script 0 stop
        kill -0 $!
        echo $! >$PIDFILE
        script 0 start
        count_is 1
        echo $! >$PIDFILE
        script 0 stop
        count_is 0
        kill -0 $!
    done

    step "BusyBox: one that does not run is told"
    script 2 reload
    rm $PROGRAM
    script 5 start
    printf '#!/bin/sh\nexit 1\n' >$PROGRAM
    chmod +x $PROGRAM
    script 1 start
}

if [[ -z ${APP_CONFIG_THROW_AWAY_ROOT-} ]]; then
    echo "package_test: this is for scripts/throw-away-root" >&2
    exit 1
fi
case $1 in
service)
    test_upgrade "$3"
    test_other_package "$3" "$4"
    test_installation "$3"
    test_life "$3"
    test_removal "$3"
    test_cmake_install "$2"
    ;;
busybox) test_busybox "$2" ;;
esac
step "done"
