#!/bin/sh
# install_test.sh BUILD_DIR APP_ID VERSION: installs the build into a fresh
# prefix and checks what a desktop finds there.
set -eu
build=$1 id=$2 version=$3
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null

for file in bin/torvex share/applications/$id.desktop share/metainfo/$id.metainfo.xml \
            share/icons/hicolor/48x48/apps/$id.png share/icons/hicolor/256x256/apps/$id.png; do
  [ -s "$prefix/$file" ] || { echo "missing: $file"; exit 1; }
done
# Hints count as faults: a clean file gives no output at all.
out=$(desktop-file-validate "$prefix/share/applications/$id.desktop" 2>&1)
[ -z "$out" ] || { echo "$out"; exit 1; }
appstreamcli validate --no-net "$prefix/share/metainfo/$id.metainfo.xml"
# The installed program runs from its prefix, and without a display for --version.
got=$(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$prefix/bin/torvex" --version)
[ "$got" = "torvex $version" ] || { echo "torvex --version said: $got"; exit 1; }
