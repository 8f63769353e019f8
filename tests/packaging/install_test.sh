#!/bin/sh
# install_test.sh BUILD_DIR APP_ID VERSION: installs the build into a fresh prefix and checks what a desktop
# finds there; validator hints count as faults.
set -eu
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$1" --prefix "$prefix" >/dev/null
cd "$prefix"
ls share/icons/hicolor/48x48/apps/$2.png share/icons/hicolor/256x256/apps/$2.png >/dev/null
hints=$(desktop-file-validate share/applications/$2.desktop 2>&1) && [ -z "$hints" ] || { echo "$hints"; exit 1; }
appstreamcli validate --no-net share/metainfo/$2.metainfo.xml
# The installed program runs from its prefix, and answers --version without a display.
[ "$(env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM bin/torvex --version)" = "torvex $3" ]
