#!/bin/sh
# Installs those of the named Debian packages that are missing. Usage: scripts/packages.sh PACKAGE...
# "programs" stands for those that library, server and client are built with.
set -eu
programs="g++ cmake ninja-build pkgconf libxml2-dev libmount-dev libudev-dev libsystemd-dev libcli11-dev
    libtomlplusplus-dev nlohmann-json3-dev"
if [ "${1-}" = programs ]; then
    shift
    # Words of $programs are package names: they are to be split.
    # shellcheck disable=SC2086
    set -- $programs "$@"
fi
missing=
for package in "$@"; do
    case $(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null || true) in
    ii*) ;;
    *) missing="$missing $package" ;;
    esac
done
[ -n "$missing" ] || exit 0

if [ "$(id -u)" -eq 0 ]; then
    as_root=
elif command -v sudo >/dev/null; then
    as_root=sudo
else
    echo "packages.sh: these packages are missing, and installing them takes root:$missing" >&2
    exit 1
fi
echo "installing:$missing"
export DEBIAN_FRONTEND=noninteractive
# Words of $missing are package names: they are to be split.
# shellcheck disable=SC2086
{ $as_root apt-get update && $as_root apt-get install -y --no-install-recommends $missing; } >/tmp/tavisys-packages.$$ 2>&1 || {
    cat /tmp/tavisys-packages.$$ >&2
    exit 1
}
rm -f /tmp/tavisys-packages.$$
