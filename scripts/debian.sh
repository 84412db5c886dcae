# SPDX-License-Identifier: MIT
# Functions for a minimal Debian in a folder; they require root. Source scripts/common.sh first.

# create_debian RELEASE ARCH ROOT: replaces the folder.
create_debian() {
    as_root rm -rf "$3"
    echo "Creating a minimal Debian $1 for $2 in $3"
    quietly as_root debootstrap --variant=minbase --arch="$2" "$1" "$3"
}

# in_debian ROOT COMMAND...: runs the command in the minimal Debian, whose root is a mount point, since
# unshare(1) requires one.
in_debian() {
    as_root unshare --mount sh -ec 'root=$1; shift; mount --bind "$root" "$root"
        mount -t proc proc "$root/proc"; mkdir -p "$root/dev/pts"
        mount -t devpts -o newinstance,ptmxmode=666 devpts "$root/dev/pts"
        mount --bind "$root/dev/pts/ptmx" "$root/dev/ptmx"
        exec chroot "$root" /usr/bin/env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"' sh "$@"
}
