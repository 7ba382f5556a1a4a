# ./quill coverage. Sourced by ./quill.
# shellcheck shell=bash

# Per cent that have to run.
readonly line_floor=95 branch_floor=85

# What the counters say, file by file: CSV of gcovr in, a table out.
coverage_table() {
    awk -F, -v line_floor=$line_floor -v branch_floor=$branch_floor '
        function row(name, covered, lines, taken, branches) {
            printf "%-40s %5d of %5d %6.1f %%   %5d of %5d %6.1f %%\n", name, covered, lines,
                lines ? 100 * covered / lines : 100, taken, branches, branches ? 100 * taken / branches : 100
        }
        NR == 1 { printf "%-40s %23s   %23s\n", "", "lines", "branches"; next }
        { row($1, $3, $2, $6, $5); covered += $3; lines += $2; taken += $6; branches += $5 }
        END {
            row("total", covered, lines, taken, branches)
            if (lines == 0 || 100 * covered < line_floor * lines || 100 * taken < branch_floor * branches) {
                printf "less than %d %% of the lines or %d %% of the branches\n", line_floor, branch_floor
                exit 1
            }
        }' "$1"
}

coverage() {
    local dir=$root/build/coverage total=0 failed=0 skipped=0
    build coverage
    find "$dir" -name '*.gcda' -delete
    rm -rf "$dir/html"
    mkdir -p "$dir/html"
    test_preset coverage
    [ "$failed" = 0 ] || die "$failed tests failed: what they cover does not count"
    # Unreachable code and exceptions' ways are the compiler's branches, not ours.
    logged gcovr --root "$root" --object-directory "$dir" --filter "$root/(jni|writer|encoder|codecinfo)/" \
        --exclude-throw-branches --exclude-unreachable-branches \
        --csv "$dir/coverage.csv" --html-details "$dir/html/index.html" "$dir" || die "gcovr cannot read the counters"
    coverage_table "$dir/coverage.csv"
}
