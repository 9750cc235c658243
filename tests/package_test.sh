#!/bin/sh
# The Debian packages are made, need each other and what they are linked with, and have no errors for lintian.
# usage: package_test.sh BUILD_DIRECTORY VERSION; exit status 77 where lintian isn't installed
set -eu
command -v lintian >/dev/null || exit 77
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cpack -G DEB -B "$work" --config "$1/CPackConfig.cmake" >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    exit 1
}

library="libtavisys1 (= $2-1)"
for need in "libtavisys1: libxml2 (" "libtavisys-dev: $library" "tavisys-server: $library" "tavisys-server: libudev1 (" \
    "tavisys-client: $library"; do
    depends=$(dpkg-deb -f "$work/${need%%:*}_$2-1_$(dpkg --print-architecture).deb" Depends)
    case "$depends" in
    *"${need#*: }"*) ;;
    *)
        echo "$need is not among: $depends" >&2
        exit 1
        ;;
    esac
done
dpkg-deb -I "$work"/libtavisys1_*.deb shlibs | grep '(>= ' # what others' packages need
# As an ordinary user, and not what it only warns of.
set -- --fail-on error --tag-display-limit 0 "$work"/*.deb
if [ "$(id -u)" -eq 0 ]; then
    chmod 755 "$work"
    setpriv --reuid 65534 --regid 65534 --clear-groups env HOME="$work" lintian "$@"
else
    lintian "$@"
fi
