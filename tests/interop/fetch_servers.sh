#!/usr/bin/env bash
# fetch_servers.sh FOLDER
#
# Puts the FTP servers of the interop tests under FOLDER: vsftpd, pure-ftpd and proftpd, each
# unpacked into a folder of its own, because as installed packages they exclude each other. Nothing
# of them is installed but the libraries that they need, and pyftpdlib, for which root is needed.
#
# Quick when all is there. A server that can't be had is named, with what would help, and its tests
# are skipped; the exit status is 0 all the same. With QUENNET_REQUIRE_INTEROP=1 it is 1 then.
set -u

if [ $# -ne 1 ]; then
    echo "usage: $0 FOLDER" >&2
    exit 2
fi
folder=$1
export DEBIAN_FRONTEND=noninteractive

# server : package : program within the package
servers=(
    "vsftpd:vsftpd:usr/sbin/vsftpd"
    "pure-ftpd:pure-ftpd:usr/sbin/pure-ftpd"
    "proftpd:proftpd-core:usr/sbin/proftpd"
)

missing=0
indexRefreshed=no

unavailable() {
    echo "$1 can't be had: $2" >&2
    missing=1
}

# Package indexes may be absent or old on a fresh machine: one refresh, then a second try.
with_fresh_index() {
    "$@" && return 0
    [ "$(id -u)" -eq 0 ] && [ $indexRefreshed = no ] || return 1
    indexRefreshed=yes
    apt-get -q update >/dev/null && "$@"
}

install_packages() {
    [ "$(id -u)" -eq 0 ] || return 1
    with_fresh_index apt-get -qq -o DPkg::Lock::Timeout=120 install -y --no-install-recommends "$@" >/dev/null
}

download_package() {
    (cd "$folder/packages" && rm -f "$1"_*.deb && apt-get -qq -o APT::Sandbox::User=root download "$1" 2>/dev/null)
}

libraries_found() {
    ! ldd "$1" 2>&1 | grep -q 'not found'
}

# The libraries that a package names among its dependencies.
libraries_of() {
    dpkg -f "$1" Depends | grep -oE '\blib[a-z0-9.+-]+'
}

fetch_unpacked() {
    local server package program libraries target
    IFS=: read -r server package program <<<"$1"
    target=$folder/$server
    if [ ! -x "$target/$program" ]; then
        if ! with_fresh_index download_package "$package"; then
            unavailable "$server" "apt-get download $package failed"
            return
        fi
        rm -rf "$target.part"
        if ! dpkg -x "$folder/packages/${package}"_*.deb "$target.part"; then
            unavailable "$server" "the package does not unpack"
            return
        fi
        rm -rf "$target"
        mv "$target.part" "$target"
    fi
    if ! libraries_found "$target/$program"; then
        mapfile -t libraries < <(libraries_of "$folder/packages/${package}"_*.deb)
        install_packages "${libraries[@]}"
        if ! libraries_found "$target/$program"; then
            unavailable "$server" "as root: apt-get install ${libraries[*]}"
        fi
    fi
}

# Debian's own interpreter, whatever else is called python3 on the path.
pyftpdlib_found() {
    [ -x /usr/bin/python3 ] && /usr/bin/python3 -c 'import pyftpdlib' 2>/dev/null
}

mkdir -p "$folder/packages" || exit 1
exec {lock}>"$folder/lock"
flock "$lock"

for server in "${servers[@]}"; do
    fetch_unpacked "$server"
done
if ! pyftpdlib_found; then
    install_packages python3 python3-pyftpdlib
    pyftpdlib_found || unavailable pyftpdlib "as root: apt-get install python3-pyftpdlib"
fi

if [ $missing -ne 0 ] && [ "${QUENNET_REQUIRE_INTEROP:-0}" = 1 ]; then
    exit 1
fi
exit 0
