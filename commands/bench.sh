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

# The machine, in a sentence.
machine() {
    local compiler
    compiler=$(sed -n 's/^CMAKE_CXX_COMPILER:[A-Z]*=//p' "$root/build/bench/CMakeCache.txt")
    awk -F ': ' -v date="$(date -u +%F)" -v cores="$(nproc)" -v kernel="$(uname -m), $(uname -s) $(uname -r)" \
        -v compiler="$("$compiler" --version | awk 'NR == 1')" '
        /^model name/ { name = $2 }
        /^MemTotal/ { memory = sprintf("%.0f GiB", $2 / 1024 ^ 2) }
        END {
            if (name == "") name = "unknown processor"
            printf "Measured on %s: %s, %s cores, %s, %s, compiled by %s.\n\n", date, name, cores, memory, kernel, compiler
        }' /proc/cpuinfo /proc/meminfo
}

# What quill_bench printed into RESULTS/output, as files beside it: table.md for the page, ratios.tsv and scaling.tsv for
# the pictures.
sort_results() {
    machine >"$1/table.md"
    awk -F ' *[|] *' -v dir="$1" '
        BEGIN {
            print "row\tratio\tbudget" >(dir "/ratios.tsv")
            print "megapixels\tmilliseconds\tbudget\tmebibytes" >(dir "/scaling.tsv")
        }
        /^\|/ { print >>(dir "/table.md") }
        /^note: / { notes = notes "\n" substr($0, 7) ".\n" }
        $3 !~ /^[0-9.]+$/ { next }
        { print $2 "\t" $3 "\t" $4 >(dir "/ratios.tsv") }
        $2 ~ /^still\/[0-9]+mp$/ { sizes[++count] = substr($2, 7); times[count] = $6 "\t" $7 }
        $2 ~ /^memory\/[0-9]+mp$/ { peaks[substr($2, 8)] = $6 }
        END {
            printf "%s", notes >>(dir "/table.md")
            for (i = 1; i <= count; ++i)
                if (sizes[i] in peaks) print sizes[i] + 0 "\t" times[i] "\t" peaks[sizes[i]] >(dir "/scaling.tsv")
        }' "$1/output"
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
    rm -rf "$results" && mkdir -p "$results"
    "$root/build/bench/bin/quill_bench" --benchmark_filter="$filter" | tee "$results/output" || status=$?
    tail -n 1 "$results/output" | grep -q ' rows, ' || die "the benchmarks did not end"
    sort_results "$results"
    [ -z "$plot_dir" ] || plot "$results" "$plot_dir"
    [ -z "$docs" ] || { plot "$results" "$root/docs/images" && write_table "$results"; }
    return "$status"
}
