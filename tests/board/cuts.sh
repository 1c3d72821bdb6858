# Changes settings for cuts.py; the second disk gets the versions of all files.
# shellcheck shell=dash
mkdir /tmp/versions && cd /tmp/versions && board_changes >/dev/null && tar -cf /dev/vdb .
