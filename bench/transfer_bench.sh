#!/usr/bin/env bash
# transfer_bench.sh BUILD_FOLDER [ROUNDS]
#
# Compares this client with curl and lftp on one vsftpd on 127.0.0.1, in one run: 1 GiB down into
# memory and up from there, 2,000 files of 1 KiB each way over one connection, a search of 1,000
# folders, and the memory that a listing of 100,000 entries takes. Prints medians, ratios and whether
# the limits are kept.
#
# Exit status: 0 when all limits are kept, 1 when one is exceeded, 3 when something can't be run.
set -u

if [ $# -lt 1 ] || [ $# -gt 2 ]; then
    echo "usage: $0 BUILD_FOLDER [ROUNDS]" >&2
    exit 2
fi
build=$(readlink -f "$1")
rounds=${2:-7}
here=$(dirname "$(readlink -f "$0")")
bin=$build/bin

for client in curl lftp; do
    if ! command -v $client >/dev/null; then
        echo "$client is not installed: nothing to compare with" >&2
        exit 3
    fi
done

folder=$(mktemp -d /dev/shm/transfer-bench-XXXXXX) || exit 3
server=
finish() {
    [ -n "$server" ] && kill "$server" 2>/dev/null && wait "$server"
    rm -rf "$folder"
}
trap finish EXIT
trap 'exit 3' INT TERM

served=$folder/served
incoming=$served/incoming
mkdir -p "$served/small" "$served/many" "$folder/local"
chmod 755 "$folder" "$served" "$served/small" "$served/many"
head -c 1073741824 /dev/zero >"$served/gibibyte"
for ((number = 1; number <= 2000; ++number)); do
    head -c 1024 /dev/zero >"$served/small/file-$number"
done
for ((number = 1; number <= 1000; ++number)); do
    mkdir -p "$served/tree/$((number % 10))/folder-$number"
    touch "$served/tree/$((number % 10))/folder-$number/"{one,two,three}.txt
done
(cd "$served/many" && seq -f 'entry-number-%06g.dat' 100000 | xargs touch)

"$here/../tests/interop/serve.sh" "$build" vsftpd "$served" >"$folder/ready" &
server=$!
for ((tries = 0; tries < 600; ++tries)); do
    grep -q '^ready' "$folder/ready" && break
    kill -0 "$server" 2>/dev/null || exit 3
    sleep 0.1
done
port=$(sed -n 's/^port //p' "$folder/ready")
url=ftp://127.0.0.1:$port

status=0
compare() {
    "$bin/side_by_side" --rounds "$rounds" \
        --before "rm -rf '$folder/local' '$incoming' && mkdir '$folder/local' && mkdir -m 777 '$incoming'" "$@"
    local result=$?
    [ $result -gt $status ] && status=$result
}

export HOME=$folder XDG_CONFIG_HOME=$folder/settings
cd "$folder" || exit 3

echo "1 GiB from vsftpd into memory, medians of $rounds rounds"
compare --cpu-limit 1.25 --wall-limit 1.1 \
    quennet "exec '$bin/quennet' get $url/gibibyte -o local/file" \
    curl "exec curl -sS -o local/file $url/gibibyte" \
    lftp "exec lftp -c 'set ftp:ssl-allow no; get $url/gibibyte -o local/file'"

echo "1 GiB from memory to vsftpd"
compare --cpu-limit 1.5 --wall-limit 1.25 \
    quennet "exec '$bin/quennet' put served/gibibyte $url/incoming/file" \
    curl "exec curl -sS -T served/gibibyte $url/incoming/file" \
    lftp "exec lftp -c 'set ftp:ssl-allow no; open $url; put -O incoming served/gibibyte -o file'"

echo "2,000 files of 1 KiB over one connection"
compare --wall-limit 1.25 \
    quennet "exec '$bin/quennet' get -r -o local/ $url/small" \
    lftp "exec lftp -c 'set ftp:ssl-allow no; open $url; cd small; mget -O local *'"

# Without what else lftp does for each file: the server refuses both to anonymous clients.
echo "2,000 files of 1 KiB up over one connection"
compare --wall-limit 1.25 \
    quennet "exec '$bin/quennet' put -r served/small $url/incoming/" \
    lftp "exec lftp -c 'set ftp:ssl-allow no; set ftp:use-site-utime no; set ftp:use-site-utime2 no;
        open $url; mirror -R --no-perms served/small incoming'"

echo "search of 1,000 folders"
compare --wall-limit 1.25 \
    quennet "exec '$bin/quennet' find $url/tree >/dev/null" \
    lftp "exec lftp -c 'set ftp:ssl-allow no; open $url; find tree' >/dev/null"

echo "listing of 100,000 entries"
"$bin/listing_memory" "127.0.0.1:$port" many
result=$?
[ $result -gt $status ] && status=$result

exit $status
