# ./quill bench. Sourced by ./quill.
# shellcheck shell=bash

# plot RESULTS DIR
plot() {
    local results=$1 dir=$2 picture
    mkdir -p "$dir"
    for picture in ratios scaling; do
        # A filter may have left out every row that a picture shows.
        [ "$(wc -l <"$results/$picture.tsv")" -gt 1 ] || continue
        logged gnuplot -c "$root/bench/plots/$picture.gp" "$root/bench/plots" "$results" "$dir/$picture.png" ||
            die "cannot draw $dir/$picture.png"
        echo "Drawn: $dir/$picture.png"
    done
}

# Puts the table of the results in RESULTS in place of the one between the markers of docs/performance.md.
write_table() {
    local page=$root/docs/performance.md
    awk -v table="$1/table.md" '
        /^<!-- table: end -->/ { inside = 0 }
        !inside { print }
        /^<!-- table: begin -->/ { inside = 1; while ((getline line < table) > 0) print line }' "$page" >"$page.new"
    mv "$page.new" "$page"
    echo "Written: $page"
}

bench() {
    local filter=. plot_dir='' docs='' results=$root/build/bench/results status=0
    while [ $# -gt 0 ]; do
        case $1 in
        --docs) docs=yes ;;
        --filter | --plot)
            [ $# -ge 2 ] || wrong_usage "$1 needs a value"
            if [ "$1" = --filter ]; then filter=$2; else plot_dir=$2; fi
            shift
            ;;
        *) wrong_usage "bench: no such option: $1" ;;
        esac
        shift
    done
    [ -z "$docs" ] || [ "$filter" = . ] || wrong_usage "--docs is for all rows, without --filter"
    build bench quill_bench
    rm -rf "$results"
    "$root/build/bench/bin/quill_bench" --benchmark_filter="$filter" --report "$results" || status=$?
    [ -s "$results/table.md" ] || die "the benchmarks left no results"
    [ -z "$plot_dir" ] || plot "$results" "$plot_dir"
    [ -z "$docs" ] || { plot "$results" "$root/docs/images" && write_table "$results"; }
    return "$status"
}
