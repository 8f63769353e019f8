#!/usr/bin/env bash
# Runs one of the README's set-up commands in a minimal Debian 12 (bash, apt
# and coreutils: no make, compiler or git), as a new user's machine would be.
#   scripts/try-bare-debian.sh ROOT "./make.sh test"
# ROOT is made with debootstrap when it does not exist yet. The working tree's
# committed state is cloned into it. X clients reach the caller's displays
# through /tmp/.X11-unix, so `DISPLAY=:99 ./make.sh run` shows the window on an
# Xvfb started outside. Needs root, debootstrap and git on the calling machine.
set -euo pipefail
root=$1
command=$2
here=$(cd "$(dirname "$0")/.." && pwd)

[ -d "$root" ] || debootstrap --variant=minbase bookworm "$root" http://deb.debian.org/debian
rm -rf "$root/root/importdata"
git clone -q "$here" "$root/root/importdata"
cp /etc/resolv.conf "$root/etc/resolv.conf"

mkdir -p /tmp/.X11-unix "$root/tmp/.X11-unix"
mounts=(proc sys dev tmp/.X11-unix)
for m in "${mounts[@]}"; do mount --bind "/$m" "$root/$m"; done
trap 'for m in "${mounts[@]}"; do umount "$root/$m"; done' EXIT

start=$(date +%s)
status=0
chroot "$root" /usr/bin/env -i HOME=/root TERM=dumb "DISPLAY=${DISPLAY:-}" \
  PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
  /bin/bash -c "cd /root/importdata && $command" || status=$?
echo "'$command' exited $status after $(( $(date +%s) - start )) s"
exit "$status"
