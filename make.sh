#!/bin/sh
# `./make.sh run` and `./make.sh test` on a machine that may have no make yet:
# a minimal Debian has apt but neither make nor a compiler. The project's own
# package list (which brings make) is installed first, then make takes over,
# so `make run` / `make test` stay the commands for everyone who has make.
set -eu
cd "$(dirname "$0")"

if [ "$(id -u)" -eq 0 ]; then
    bash scripts/install-deps.sh
elif command -v sudo >/dev/null 2>&1; then
    sudo bash scripts/install-deps.sh
else
    echo "make.sh: installing the build packages needs root: run it as root or install sudo" >&2
    exit 1
fi

exec make "$@"
