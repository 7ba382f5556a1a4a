#!/usr/bin/env bash
# share.sh SOURCE_FOLDER: lines of tests and fuzz targets against the lines of everything else that is compiled or run.
# Recorded data counts on neither side: the fuzzers' corpora, digests, lists of symbols. Exit status 77 (skipped)
# without a checkout.
set -euo pipefail
cd "$1"
most=35 # percent

# lines PATHSPEC...: of what is tracked and still there
lines() {
    git -c safe.directory='*' ls-files -z --deduplicate -- ':!*.md' "$@" | { xargs -0 cat 2>/dev/null || true; } | wc -l
}

git -c safe.directory='*' ls-files >/dev/null 2>&1 || { echo "skipped: not a git checkout"; exit 77; }
tests=$(lines tests fuzz ':!fuzz/corpus' ':!tests/digests/*' ':!tests/contract/[a-z]*.txt')
code=$(lines . ':!tests' ':!fuzz' ':!docs' ':!photos' ':!LICENSE' ':!.git*' ':!.clang*')
share=$((1000 * tests / code))
echo "$tests lines of tests to $code of code: $((share / 10)).$((share % 10)) %, at most $most %"
[ $((100 * tests)) -le $((most * code)) ]
