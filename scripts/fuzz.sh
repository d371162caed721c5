#!/usr/bin/env bash
# fuzz.sh [--runs N] [--seconds N] [--jobs N] BUILD [NAME...]
#
# Runs the fuzzers in the build folder BUILD, all of them or those named, each for so many runs or
# seconds, whichever are over first (10,000,000 and 1,800), N of them at a time (1). Says of each
# one, as it ends, how many runs it made, in what time, and how many findings it has.
#
# Inputs that go new ways are kept in BUILD/tests/fuzz/found/NAME, so the next run begins where this
# one ended. An input that broke something is BUILD/tests/fuzz/findings/NAME-...; to see it again:
#     BUILD/bin/fuzz_NAME FILE
#
# Exit status: 0 without a finding, 1 with one, 2 usage.
set -u
root=$(cd "$(dirname "$0")/.." && pwd)
runs=10000000
seconds=1800
jobs=1
while [[ ${1:-} == --* && $# -gt 1 ]]; do
    case $1 in
        --runs) runs=$2 ;;
        --seconds) seconds=$2 ;;
        --jobs) jobs=$2 ;;
        *) break ;;
    esac
    shift 2
done
list=${1:-}/tests/fuzz/fuzzers.txt
if [[ $# -lt 1 || ! -f $list ]]; then
    echo "usage: $0 [--runs N] [--seconds N] [--jobs N] BUILD [NAME...]" >&2
    exit 2
fi
build=$(cd "$1" && pwd)
list=$build/tests/fuzz/fuzzers.txt
shift
names=("$@")
[ $# -gt 0 ] || mapfile -t names < <(cut -d ' ' -f 1 "$list")

work=$build/tests/fuzz
logs=$(mktemp -d)
trap 'rm -rf "$logs"' EXIT

# Memory that was given back is watched for a while; a little of it is enough, and much faster. Leaks
# are looked for at the end.
export ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=5${ASAN_OPTIONS:+:$ASAN_OPTIONS}

# run NAME: what the fuzzer says goes into NAME.log
run() {
    local name=$1 begin=$SECONDS status=0 made found
    local longest
    longest=$(sed -n "s/^$name //p" "$list")
    mkdir -p "$work/found/$name" "$work/findings"
    touch "$logs/$name.begin"
    "$build/bin/fuzz_$name" -runs="$runs" -max_total_time="$seconds" -max_len="${longest:-4096}" \
        -timeout=10 -detect_leaks=0 -verbosity=0 -print_final_stats=1 \
        -artifact_prefix="$work/findings/$name-" \
        "$work/found/$name" "$root/tests/fuzz/corpus/$name" >"$logs/$name.log" 2>&1 || status=$?
    made=$(sed -n 's/^stat::number_of_executed_units: *//p' "$logs/$name.log")
    found=$(find "$work/findings" -name "$name-*" ! -name '*-slow-unit-*' \
        -newer "$logs/$name.begin" | wc -l)
    [ "$status" -eq 0 ] || [ "$found" -gt 0 ] || found=1  # it did not even run
    printf '%-10s %10d runs %6d s %8d runs/s %3d findings\n' "$name" "${made:-0}" \
        $((SECONDS - begin)) $((${made:-0} / (SECONDS > begin ? SECONDS - begin : 1))) "$found"
    if [ "$found" -gt 0 ]; then
        tail -n 60 "$logs/$name.log" >&2
        touch "$logs/failed"
    fi
}

for name in "${names[@]}"; do
    while [ "$(jobs -rp | wc -l)" -ge "$jobs" ]; do
        wait -n
    done
    run "$name" &
done
wait
[ ! -e "$logs/failed" ]
