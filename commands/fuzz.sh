# ./quill fuzz. Sourced by ./quill.
# shellcheck shell=bash

fuzz_targets() {
    local source
    for source in "$root"/fuzz/corpus/*/; do basename "$source"; done
}

# fuzz_target TARGET SECONDS: what it finds anew goes to build/, never into the checked-in corpus.
fuzz_target() {
    local dir=$root/build/fuzz status=0
    local corpus=$dir/corpus/$1 crashes=$dir/crashes/$1
    mkdir -p "$corpus" "$crashes"
    # A small quarantine: freed memory is used again soon, which saves most of the time of targets with large buffers.
    ASAN_OPTIONS=quarantine_size_mb=16 ASAN_SYMBOLIZER_PATH=/usr/bin/llvm-symbolizer-14 \
        "$dir/bin/fuzz_$1" -max_total_time="$2" -timeout=20 -print_final_stats=1 -artifact_prefix="$crashes/" \
        "$corpus" "$root/fuzz/corpus/$1" >"$dir/$1.log" 2>&1 || status=$?
    echo "$status" >"$dir/$1.status"
}

# fuzz_number LOG PATTERN: the number behind the last match.
fuzz_number() {
    grep -o "$2 *[0-9]*" "$1" | tail -n 1 | grep -o '[0-9]*$' || echo -
}

# One line of the table; fails for a target that did.
fuzz_result() {
    local log=$root/build/fuzz/$1.log result=ok
    [ "$(cat "$root/build/fuzz/$1.status")" = 0 ] || result=FAILED
    printf '%-14s %12s %9s %9s %7s  %s\n' "$1" "$(fuzz_number "$log" number_of_executed_units:)" \
        "$(fuzz_number "$log" average_exec_per_sec:)" "$(fuzz_number "$log" ' ft:')" \
        "$(find "$root/build/fuzz/corpus/$1" "$root/fuzz/corpus/$1" -type f | wc -l)" "$result"
    [ $result = ok ] && return
    echo "  $(grep -m 1 -E 'broken:|runtime error:|ERROR:' "$log" || echo "see $log")"
    sed -n "s|.*Test unit written to \(.*\)|  again: $root/build/fuzz/bin/fuzz_$1 \1|p" "$log"
    return 1
}

fuzz() {
    local seconds=60 target failed=0
    if [[ ${1:-} =~ ^[0-9]+$ ]]; then
        seconds=$1
        shift
    fi
    local known
    known=$(fuzz_targets)
    # shellcheck disable=SC2086
    [ $# -gt 0 ] || set -- $known
    for target in "$@"; do
        grep -qx -- "$target" <<<"$known" || die "no such fuzz target: $target; there are: ${known//$'\n'/ }"
    done
    build fuzz "${@/#/fuzz_}"
    echo "Fuzzing, $seconds s each: $*" >&2
    for target in "$@"; do
        while [ "$(jobs -rp | wc -l)" -ge "$(nproc)" ]; do wait -n || true; done
        fuzz_target "$target" "$seconds" &
    done
    wait
    printf '%-14s %12s %9s %9s %7s  %s\n' target executions exec/s features corpus result
    for target in "$@"; do fuzz_result "$target" || failed=1; done
    [ $failed = 0 ]
}
