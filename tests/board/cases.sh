# The cases of one boot. CASES names them, with commas; ROUNDS and SEED are for the random ones.
# shellcheck shell=dash disable=SC3028 # BusyBox knows RANDOM
CONFIG=/etc/quenvel/config/system
FILE=$CONFIG/devtype_info.cfg
OUTPUT=/var/log/app_config_manager.log
SEGMENT=/dev/shm/CONF_AUTO_SAVE_MEM
RANDOM=${SEED:-1}
COLD=/etc/quenvel/cold
failures=0

wrong() {
    echo "WRONG: $*"
    failures=$((failures + 1))
}

# await COMMAND...: until it succeeds, for at most twenty seconds.
await() {
    tries=1000
    until "$@" 2>/dev/null; do
        tries=$((tries - 1))
        if [ $tries = 0 ]; then wrong "waited 20 s for: $*" && return 1; fi
        sleep 0.02
    done
}

# Its file is loaded and published: from then on it sleeps and looks.
is_polling() { awk '/^voluntary/ { exit $2 < 20 }' /proc/"$1"/status; }
recorded() { sed -n 's/^DEV_INFORMATION=//p' $FILE; }

# What the file says at the next start: an identity, or none as it is delivered.
record() { printf "[PROCESSED_DEV_INFORMATION]\n${1:+DEV_INFORMATION=$1\n}" >$FILE; }

# A cold program loads its code from the disk page by page while it runs, as on a board with flash.
install_cold() {
    mkdir -p $COLD
    cp /usr/bin/"$1" /lib/lib* $COLD
    sync
}
run_cold() {
    program=$1
    shift
    echo 3 >/proc/sys/vm/drop_caches
    LD_LIBRARY_PATH=$COLD "$COLD/$program" "$@"
}

publish() {
    case $1 in
        shmconf) shmconf set CNF_DEV_TYP_MEM "$2" >/dev/null ;;
        shmconf_cold) run_cold shmconf set CNF_DEV_TYP_MEM "$2" >/dev/null ;;
        foreign) board_peer CNF_DEV_TYP_MEM "$2" ;;
        foreign_stopped) board_peer CNF_DEV_TYP_MEM "$2" $((RANDOM / 64)) ;;
    esac
}

# pick NUMBER CHOICE...: the choices in turn.
pick() {
    shift $(($1 % ($# - 1) + 1))
    echo "$1"
}

# The daemon waits, a peer publishes, the file has the published text: one round each, with the
# segment of the round before or a new one, and the peer at any moment of the daemon's polling. A
# stopped one has half of the text written for up to half a second.
case_identities() {
    install_cold shmconf
    round=0
    wrong_rounds=0
    while [ $round -lt "${ROUNDS:-100}" ]; do
        peer=$(pick $round shmconf foreign shmconf_cold foreign_stopped)
        text=$(pick $round 35_VOLTS_DEV_1CH 35_VOLTS_DEV_2CH 100_VOLTS_DEV_1CH 100_VOLTS_DEV_2CH \
            KOL_35_VOLTS_DEV_2CH)
        round=$((round + 1))
        case $((RANDOM % 3)) in
            0) rm -f $SEGMENT && record '' ;;
            1) rm -f $SEGMENT && record UNKNOWN ;;
            2) record UNKNOWN ;;
        esac
        rm -f $OUTPUT
        app_config_manager >$OUTPUT 2>&1 &
        await grep -q '^Process COnfigHandler' $OUTPUT
        await is_polling $!
        usleep $((RANDOM * 6))
        publish $peer $text || wrong "$peer ends with $?"
        await grep -q '^Dev Type' $OUTPUT
        kill $! && wait $! 2>/dev/null
        if [ "$(recorded)" = $text ]; then continue; fi
        wrong "round $round: $peer published $text, recorded $(recorded)"
        wrong_rounds=$((wrong_rounds + 1))
    done
    echo "$round rounds, $wrong_rounds wrong"
}

# Processes die at any moment of their accesses, on one core.
case_kills() {
    rm -f $SEGMENT
    install_cold shared_memory_tests
    export APP_CONFIG_PRIVATE_ROOT=1 APP_CONFIG_KILLS=${ROUNDS:-100} APP_CONFIG_SEED=$SEED
    run_cold shared_memory_tests --gtest_filter='RandomKills.*' >$OUTPUT ||
        wrong "the test ends with $?"
    grep ' kills' $OUTPUT
}

for case in $(echo "$CASES" | tr , ' '); do
    echo "== $case"
    case_"$case"
done
echo "$failures failures"
[ $failures = 0 ]
