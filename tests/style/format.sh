#!/usr/bin/env bash
# format.sh SOURCE_FOLDER: every tracked C++ file is laid out as .clang-format says. Exit status 77 (skipped) where
# clang-format or the checkout is missing.
set -euo pipefail
cd "$1"
# safe.directory: the checkout may be another user's than the one who runs the tests.
git=(git -c safe.directory='*')

command -v clang-format >/dev/null || { echo "skipped: clang-format is not installed"; exit 77; }
"${git[@]}" rev-parse >/dev/null || { echo "skipped: not a git checkout"; exit 77; }
# Of what is tracked, what is there.
"${git[@]}" grep -Ilz . -- '*.cpp' '*.h' | xargs -0 clang-format --dry-run -Werror ||
    { echo "clang-format -i FILE puts a file right" >&2; exit 1; }
