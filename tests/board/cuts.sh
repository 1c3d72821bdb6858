# One boot of the power-cut series: judges what the last cut left, then changes settings until the
# next one. With LAST it only judges.
# shellcheck shell=dash
CONFIG=/etc/quenvel/config/system
WHOLE=/etc/quenvel/whole
# What the peer and board_handlers write, as it stands in the files.
VALUES="1 7 1234 1,1 10,10 1.250000 123.500000 1.250000,1.250000 123.500000,123.500000
    net another-network 35_VOLTS_DEV_2CH KOL_35_VOLTS_DEV_2CH"

# judge FILE: it holds the whole file's lines in their order, each with its value or one that was
# written. From some line on they may be missing; the last one may be a beginning, and NUL
# characters may stand for what is missing. The blocks of a file reach the disk one by one, so the
# line across the border of two may be a mix, and lines beside it may be missing or there twice.
judge() {
    tr '\000' '\001' <"$CONFIG/$1" | awk -v name="$1" -v values="$VALUES" '
        # 2: the line is a written form of `whole`, 1: a beginning of one, 0: neither.
        function likeness(line, whole,   key, best, i) {
            if (line == whole) return 2
            best = index(whole, line) == 1
            key = whole
            if (!sub(/=.*/, "=", key)) return best
            for (i in written) {
                if (line == key written[i]) return 2
                if (index(key written[i], line) == 1) best = 1
            }
            return best
        }
        function resume(line,   skip) {
            for (skip = -3; skip <= 3 && likeness(line, whole[lines + 1 + skip]) < 2; ++skip);
            if (skip <= 3) lines += skip
            across = 0
        }
        BEGIN { split(values, written) }
        FILENAME == "-" { begin = end; end += length($0) + 1 }
        /^$/ { next }
        FILENAME != "-" { whole[++count] = $0; next }
        bad != "" { next }
        ended { bad = "goes on after line " lines ": " last; next }
        {
            last = $0
            if (begin < 4096 && end > 4096) {
                across = 1
                border = likeness($0, whole[++lines]) < 2 ? $0 : ""
                next
            }
            if (across) resume($0)
            nuls = sub(/\001+$/, "")
            if ($0 == "") { ended = 1; next }
            like = likeness($0, whole[++lines])
            if (like == 0) bad = "has " last " for " whole[lines]
            ended = nuls || like == 1
        }
        END {
            gsub(/\001/, "<NUL>", last)
            if (bad != "") print "WRONG: " name " " bad
            else if (ended || lines < count) print name " ends in line " lines " of " count ": " last
            if (border != "") print name " has a mix of two versions at its block border: " border
            exit bad != ""
        }' "$WHOLE/$1" - || od -c "$CONFIG/$1"
}

# Every file with every key, and the auto-save file to be seeded again at the next start.
make_whole() {
    printf '[PROCESSED_DEV_INFORMATION]\nDEV_INFORMATION=35_VOLTS_DEV_2CH\n' \
        >$CONFIG/devtype_info.cfg
    board_handlers >/dev/null 2>&1 &
    until grep -qx STATE=1 $CONFIG/conf_auto_save.cfg; do sleep 0.1; done
    kill $! && wait $! 2>/dev/null
    sed -i s/STATE=1/STATE=0/ $CONFIG/conf_auto_save.cfg
    cp -R $CONFIG $WHOLE
}

change() {
    shmconf set VOLTAGE_DATA_MEM "$1" "$1"
    shmconf set WLAN_SSID_MEM "$3"
    shmconf set CNF_PM1_DBL_MEM "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" "$1" \
        "$1" "$1" "$1"
    shmconf set OUTP_MODE_MEM "$2" "$2"
    shmconf set CNF_PM4_SEL_MEM "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" "$2" \
        "$2" "$2" "$2" "$2" "$2"
}

if [ -d $WHOLE ]; then
    for path in "$WHOLE"/*; do judge "${path##*/}"; done
    board_handlers >/dev/null 2>&1 &
    sleep 0.5
    kill $! || echo "WRONG: the handlers do not run on these files"
    wait $! 2>/dev/null
    rm -f /dev/shm/*
else
    make_whole
fi
if [ -n "$LAST" ]; then exit; fi
cp $WHOLE/* $CONFIG
sync
board_handlers write >/dev/null 2>&1 &
echo "changing settings"
while true; do
    change 1.25 1 net
    change 123.5 10 another-network
done >/dev/null 2>&1
