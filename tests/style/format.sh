#!/usr/bin/env bash
# format.sh SOURCE_FOLDER: every tracked C++ file is laid out as .clang-format says. Exit status 77 (skipped) where
# clang-format or the checkout is missing.
set -euo pipefail
cd "$1"

skip() {
    echo "skipped: $*"
    exit 77
}

command -v clang-format >/dev/null || skip "clang-format is not installed"
# safe.directory: the checkout may be another user's than the one who runs the tests.
tracked=$(git -c safe.directory='*' ls-files -- '*.cpp' '*.h') || skip "not a git checkout"
present=()
while read -r file; do
    [ ! -e "$file" ] || present+=("$file") # a file removed but not yet committed is still listed
done <<<"$tracked"
[ ${#present[@]} -gt 0 ] || { echo "no C++ file is tracked" >&2; exit 1; }
clang-format --dry-run -Werror "${present[@]}" || {
    echo "clang-format -i FILE puts a file right" >&2
    exit 1
}
