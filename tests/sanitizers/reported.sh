#!/usr/bin/env bash
# reported.sh STATUS PATTERN... -- COMMAND...: COMMAND ends with STATUS and its output has, in this order, a line for
# each PATTERN (extended regular expressions). Without patterns nothing is to be reported.
set -euo pipefail

status=$1 patterns=()
shift
while [ "$1" != -- ]; do
    patterns+=("$1")
    shift
done
shift

code=0
output=$("$@" 2>&1) || code=$?

fail() {
    printf '%s\n%s\n' "$output" "$*" >&2
    exit 1
}

[ "$code" = "$status" ] || fail "ended with $code, not $status"
grep -q '^making ' <<<"$output" || fail "the fault was never made"
if [ ${#patterns[@]} = 0 ]; then
    [ "$(wc -l <<<"$output")" = 2 ] || fail "more was said than that nothing was made"
fi
rest=$output
for pattern in "${patterns[@]}"; do
    line=$(grep -n -m 1 -E "$pattern" <<<"$rest" | cut -d: -f1) || fail "no line like: $pattern"
    rest=$(tail -n "+$((line + 1))" <<<"$rest")
done
echo "reported as it should be"
