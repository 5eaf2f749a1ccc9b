#!/usr/bin/env bash
# Makes a copy of this machine's root, installs packages there and becomes systemd in that root.
# Runs as the first process in namespaces of its own: tests/systemd/boot.sh PACKAGES WORK
set -euo pipefail

packages=$1
work=$2

mount -t tmpfs tmpfs "$work"
mkdir "$work/upper" "$work/work" "$work/root"
# Writes go to `upper`; the machine's root is unchanged.
mount -t overlay overlay -o "lowerdir=/,upperdir=$work/upper,workdir=$work/work" "$work/root"
root=$work/root
mount -t proc proc "$root/proc"
mount --rbind /sys "$root/sys"
mount -t tmpfs tmpfs "$root/sys/fs/cgroup"
mount -t cgroup2 none "$root/sys/fs/cgroup"
mount --rbind /dev "$root/dev"
mount -t tmpfs tmpfs "$root/run"
mount -t tmpfs tmpfs "$root/tmp"
mkdir -p "$root/run/packages" "$root/run/systemd/system"
cp "$packages"/*.deb "$root/run/packages"
# Starts none of this machine's services except the journal.
printf '[Unit]\nWants=systemd-journald.service\n' >"$root/run/systemd/system/test.target"

cd "$root"
rm -f "$root/usr/sbin/policy-rc.d" # in containers, forbids packages to start services
chroot "$root" sh -c 'dpkg --install /run/packages/*.deb'
chroot "$root" boardctl sim create /run/board
# The service's profile is in /etc, so relative paths must name the simulated board's folder.
mkdir -p "$root/etc/boarddrivers"
sed 's,^\(device\|path\|file\|info\) = ",&/run/board/,' "$root/run/board/board.toml" \
    >"$root/etc/boarddrivers/board.toml"
# Not chroot: the kernel then refuses user namespaces, so no service with PrivateUsers= can start.
pivot_root . mnt
umount --lazy /mnt
exec env -i container=test PATH=/usr/sbin:/usr/bin:/sbin:/bin \
    /lib/systemd/systemd --system --unit=test.target --show-status=0
