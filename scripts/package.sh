#!/bin/sh
# Builds a release and makes the Debian packages of it: build/packages/*.deb. Usage: scripts/package.sh
set -eu
cd "$(dirname "$0")/.."
scripts/packages.sh programs dpkg-dev file doxygen lintian
out=build/packages
cmake -S . -B build/package -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DTAVISYS_BUILD_TESTS=OFF >/dev/null
cmake --build build/package -- --quiet
rm -rf "$out"
cpack -G DEB -B "$out" --config build/package/CPackConfig.cmake
rm -rf "$out/_CPack_Packages"
lintian --fail-on error "$out"/*.deb
