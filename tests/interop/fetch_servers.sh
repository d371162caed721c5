#!/usr/bin/env bash
# fetch_servers.sh FOLDER
#
# Puts the FTP servers of the interop tests under FOLDER: vsftpd, pure-ftpd, proftpd and pyftpdlib,
# each unpacked into a folder of its own with the libraries that this machine lacks. Nothing is
# installed: as installed packages they exclude each other, and it takes no root.
#
# Quick when all is there. A server that can't be had is named, with what would help, here and in
# FOLDER/SERVER.why, and its tests are skipped; the exit status is 0 all the same. With
# QUENNET_REQUIRE_INTEROP=1 it is 1 then.
set -u

if [ $# -ne 1 ]; then
    echo "usage: $0 FOLDER" >&2
    exit 2
fi
folder=$1

# server : package : what it is run from, within the package
servers=(
    "vsftpd:vsftpd:usr/sbin/vsftpd"
    "pure-ftpd:pure-ftpd:usr/sbin/pure-ftpd"
    "proftpd:proftpd-core:usr/sbin/proftpd"
    "pyftpdlib:python3-pyftpdlib:usr/lib/python3/dist-packages/pyftpdlib/servers.py"
)

missing=0
indexRefreshed=no

unavailable() {
    echo "$1 can't be had here: $2" | tee "$folder/$1.why" >&2
    missing=1
}

# Package indexes may be absent or old on a fresh machine: one refresh, then a second try.
with_fresh_index() {
    "$@" && return 0
    [ "$(id -u)" -eq 0 ] && [ $indexRefreshed = no ] || return 1
    indexRefreshed=yes
    apt-get -q update >/dev/null && "$@"
}

# A package and the libraries that would be installed with it, a line each.
package_and_libraries() {
    echo "$1"
    apt-get -qq -s --no-install-recommends install "$1" 2>/dev/null |
        sed -n "s/^Inst \(lib[^ ]*\) .*/\1/p"
}

# Downloads a package and the libraries that it lacks into a folder of their own.
download() {
    local packages
    mapfile -t packages < <(package_and_libraries "$2")
    rm -rf "$1"
    mkdir -p "$1"
    (cd "$1" && apt-get -qq -o APT::Sandbox::User=root download "${packages[@]}" 2>/dev/null)
}

# Whether a server is there and finds its libraries, among those unpacked with it or the machine's.
can_run() {
    [ -e "$1/$2" ] || return 1
    case "$2" in
        # By Debian's own interpreter, whatever else is called python3 on the path.
        *.py) PYTHONPATH=$1/${2%/*/*} /usr/bin/python3 -c 'import pyftpdlib.servers' ;;
        *) ! LD_LIBRARY_PATH=$(printf '%s:' "$1"{,/usr}/lib/*-linux-gnu) ldd "$1/$2" |
            grep -q 'not found' ;;
    esac 2>/dev/null
}

fetch() {
    local server package program target archive
    IFS=: read -r server package program <<<"$1"
    target=$folder/$server
    rm -f "$target.why"
    if [ "$server" = pure-ftpd ] && [ "$(id -u)" -ne 0 ]; then
        unavailable "$server" "it runs as root only"
        return
    fi
    can_run "$target" "$program" && return
    if ! with_fresh_index download "$folder/packages/$server" "$package"; then
        unavailable "$server" "apt-get download $package failed; as root, apt-get update may help"
        return
    fi
    rm -rf "$target.part"
    for archive in "$folder/packages/$server"/*.deb; do
        if ! dpkg -x "$archive" "$target.part"; then
            unavailable "$server" "$archive does not unpack"
            return
        fi
    done
    rm -rf "$target"
    mv "$target.part" "$target"
    can_run "$target" "$program" ||
        unavailable "$server" "it lacks what it stands on; as root, apt-get install $(dpkg -f \
            "$folder/packages/$server/${package}_"*.deb Depends | grep -oE '\b(lib|python3)[a-z0-9.+-]*' | xargs)"
}

mkdir -p "$folder/packages" || exit 1
exec {lock}>"$folder/lock"
flock "$lock"

for server in "${servers[@]}"; do
    fetch "$server"
done

if [ $missing -ne 0 ] && [ "${QUENNET_REQUIRE_INTEROP:-0}" = 1 ]; then
    exit 1
fi
exit 0
