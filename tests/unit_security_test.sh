#!/bin/sh
# The systemd unit keeps its exposure at 2.0 or lower, as `systemd-analyze security` scores it (of 10).
# Usage: unit_security_test.sh UNIT_FILE. Exits with 77, which CTest takes for skipped, without systemd-analyze.
set -eu
command -v systemd-analyze >/dev/null || {
    echo "skipped: there is no systemd-analyze"
    exit 77
}
systemd-analyze security --no-pager --offline=true --threshold=20 "$1"
