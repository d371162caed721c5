#!/usr/bin/env bash
# serve.sh BUILD_FOLDER KIND ROOT [PORT]
#
# Serves ROOT with one real FTP server on 127.0.0.1, in the foreground, until it is interrupted.
# KIND is vsftpd, pure-ftpd, proftpd or pyftpdlib. Prints port, user, password and "ready", a line
# each. The server is fetched first if it is not there yet.
set -eu

if [ $# -lt 3 ] || [ $# -gt 4 ]; then
    echo "usage: $0 BUILD_FOLDER KIND ROOT [PORT]" >&2
    exit 2
fi
here=$(dirname "$(readlink -f "$0")")
servers=$(sed -n 's/^QUENNET_INTEROP_SERVERS:PATH=//p' "$1/CMakeCache.txt")
"$here/fetch_servers.sh" "$servers"
exec /usr/bin/python3 "$here/interop_server.py" ${4:+--port "$4"} "$servers" "$2" "$3"
