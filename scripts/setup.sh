#!/usr/bin/env bash
# setup.sh demo|test|bench|fuzz|ci
#
# Sees to it that what is needed to build and run that much is there: installs the missing Debian
# packages as root or with a sudo that asks for no password, and otherwise says which ones are
# missing. Does nothing, quickly, when all is there.
#
# Exit status: 0 when the build can go on, 1 when something that it can't do without is missing,
# 2 usage. Tests whose servers or tools are missing are skipped, so those are named only.
set -u

# package : what serves as well when it came from elsewhere (a command, a path that begins with a
# slash, or - for nothing else)
needed=(g++:g++ cmake:cmake ninja-build:ninja googletest:/usr/src/googletest/CMakeLists.txt)
# Without ncurses there are no dialogs in the terminal, without the MIME database no types of files.
useful=(libncurses-dev:/usr/include/ncurses.h shared-mime-info:/usr/share/mime/globs2)
case "${1:-}" in
    demo) ;;
    test) useful+=(tmux:tmux iproute2:ip python3:/usr/bin/python3) ;;
    bench) useful+=(libbenchmark-dev:/usr/include/benchmark/benchmark.h curl:curl lftp:lftp) ;;
    fuzz) needed+=(clang:clang++ libclang-rt-14-dev:-) ;;
    ci)
        needed+=(g++-multilib:- g++-mingw-w64-i686-posix:i686-w64-mingw32-g++-posix
            clang:clang++ libclang-rt-14-dev:- clang-format-14:clang-format-14 git:git
            debootstrap:debootstrap)
        useful+=(tmux:tmux iproute2:ip python3:/usr/bin/python3
            libbenchmark-dev:/usr/include/benchmark/benchmark.h curl:curl lftp:lftp)
        ;;
    *)
        echo "usage: $0 demo|test|bench|fuzz|ci" >&2
        exit 2
        ;;
esac

is_installed() {
    [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

is_there() {
    is_installed "${1%%:*}" && return 0
    case "${1#*:}" in
        /*) [ -e "${1#*:}" ] ;;
        *) type -P -- "${1#*:}" >/dev/null ;;
    esac
}

missing() {
    local entry
    for entry in "$@"; do
        is_there "$entry" || echo "${entry%%:*}"
    done
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo -n "$@"
    fi
}

may_install() {
    command -v apt-get >/dev/null || return 1
    [ "$(id -u)" -eq 0 ] || { command -v sudo >/dev/null && sudo -n true 2>/dev/null; }
}

install_packages() {
    as_root env DEBIAN_FRONTEND=noninteractive \
        apt-get -qq -o DPkg::Lock::Timeout=300 install -y --no-install-recommends "$@" >/dev/null
}

mapfile -t wanted < <(missing "${needed[@]}" "${useful[@]}")
if [ ${#wanted[@]} -eq 0 ]; then
    exit 0
fi
if may_install; then
    echo "Installing ${wanted[*]}" >&2
    # Package lists may be absent or old on a fresh machine; only the second try's errors count.
    install_packages "${wanted[@]}" 2>/dev/null ||
        { as_root apt-get -q update >/dev/null && install_packages "${wanted[@]}"; }
    mapfile -t wanted < <(missing "${needed[@]}" "${useful[@]}")
fi
if [ ${#wanted[@]} -eq 0 ]; then
    exit 0
fi
echo "Missing: as root, apt-get update && apt-get install --no-install-recommends ${wanted[*]}" >&2
[ -z "$(missing "${needed[@]}")" ]
