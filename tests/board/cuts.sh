# Changes settings for tests/board/cuts.py; the second disk gets the versions of all files.
# shellcheck shell=dash
mkdir /tmp/versions
board_changes /dev/vda /tmp/versions "$ROUNDS"
cd /tmp/versions && tar -cf /dev/vdb .
