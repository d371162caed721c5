#!/usr/bin/env bash
# bare_root.sh root|user TARGET...
#
# Makes a bare Debian 12 with git and make under build/bare-root, clones what is committed here into
# it, and runs `make TARGET` there for each target as a stranger would: as root, or as a user without
# sudo. Where the user can't go on, root does what the last line told, and the user tries again.
#
# The system without the clone stays in build/bare-root/base for the next run, and a machine on which
# a target failed in build/bare-root/ROLE, to be looked at. Package sources and the way to them are
# those of this machine. Mounts and processes are in namespaces that end with this script.
#
# Exit status: 0 all targets succeeded, 1 one failed, 2 usage, 3 no bare root can be had here.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$PWD/build/bare-root
base=$folder/base

cannot() {
    echo "No bare root: $*" >&2
    exit 3
}

# "URI SUITE COMPONENT" of each of this machine's package sources that is Debian 12's.
debian_sources() {
    apt-get indextargets --format '$(ORIGIN) $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' | sed -n 's/^Debian \(.* bookworm.*\)/\1/p' | sort -u
}

make_base() {
    local sources mirror
    sources=$(debian_sources)
    if [ -z "$sources" ]; then
        apt-get -q update >/dev/null || cannot "apt-get update failed"
        sources=$(debian_sources)
    fi
    mirror=$(sed -n 's/ bookworm main$//p' <<<"$sources" | head -n 1)
    [ -n "$mirror" ] || cannot "this machine has no package source for Debian 12"
    rm -rf "$base.part"
    debootstrap --variant=minbase --include=git,make bookworm "$base.part" "$mirror" \
        >"$folder/debootstrap.log" 2>&1 ||
        cannot "debootstrap failed: $(tail -n 1 "$folder/debootstrap.log")"
    sed 's/^/deb /' <<<"$sources" >"$base.part/etc/apt/sources.list"
    {
        apt-config dump | grep '^Acquire::'
        echo 'APT::Get::Assume-Yes "true";'
    } >"$base.part/etc/apt/apt.conf.d/99machine"
    cp /etc/hosts "$base.part/etc/hosts"
    rm -rf "$base.part"/var/lib/apt/lists/* "$base.part"/var/cache/apt/archives/*.deb
    chroot "$base.part" useradd --create-home --shell /bin/bash user
    mv "$base.part" "$base"
}

# enter_machine ROLE: makes the base with a clone of this project's present commit the root folder.
enter_machine() {
    local root=$folder/$1
    rm -rf "$root"
    cp -a "$base" "$root"
    # Without its history, which a clone of the clone does not need.
    git clone -q --bare --depth 1 "file://$PWD" "$root/quennet.git"
    chroot "$root" chown -R "$1:" /quennet.git
    mount --bind "$root" "$root"
    cd "$root"
    mount -t proc proc proc
    mount --rbind /sys sys
    mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts dev/pts
    mount --bind dev/pts/ptmx dev/ptmx
    mount -t tmpfs -o mode=1777 tmpfs dev/shm
    # Not chroot, within which nobody may make namespaces, as some tests do.
    pivot_root . mnt || cannot "its folder can't become the root folder"
    PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin
    cd /
    umount -l /mnt
}

# as ROLE COMMAND...: in the role's home, with nothing of this environment but the way to the
# network.
as() {
    local role=$1 name kept=()
    shift
    for name in http_proxy https_proxy no_proxy; do
        [ -z "${!name:-}" ] || kept+=("$name=${!name}")
    done
    setpriv --reuid "$role" --regid "$role" --init-groups \
        env -i "${kept[@]}" "HOME=$(eval echo "~$role")" "PATH=$PATH" TERM=dumb \
        bash -c 'cd && exec "$@"' bash "$@" </dev/null
}

run_target() {
    local role=$1 target=$2 make_log told
    make_log=$(mktemp)
    echo "== $role: make $target"
    as "$role" make -C quennet "$target" 2>&1 | tee "$make_log" && return 0
    told=$(sed -n 's/^Missing: as root, //p' "$make_log" | tail -n 1)
    [ "$role" = user ] && [ -n "$told" ] || return 1
    echo "== root: $told"
    as root sh -c "$told" >/dev/null
    as "$role" make -C quennet "$target"
}

if [ "${1:-}" = --in-namespaces ]; then
    role=$2
    shift 2
    [ -d "$base" ] || make_base
    enter_machine "$role"
    as "$role" git clone -q /quennet.git quennet
    for target; do
        run_target "$role" "$target" || exit 1
    done
    exit 0
fi

if [ $# -lt 2 ] || [[ $1 != root && $1 != user ]]; then
    echo "usage: $0 root|user TARGET..." >&2
    exit 2
fi
[ "$(id -u)" -eq 0 ] || cannot "it takes root"
type -P debootstrap >/dev/null || cannot "as root, apt-get install debootstrap"
unshare --mount --pid --fork true 2>/dev/null || cannot "namespaces are not allowed here"
mkdir -p "$folder"
unshare --mount --pid --fork --kill-child "$0" --in-namespaces "$@" &
trap 'kill -KILL $! 2>/dev/null || true' EXIT
trap 'exit 1' INT TERM HUP
wait $!
rm -rf "${folder:?}/$1"
