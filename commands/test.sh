# ./quill test. Sourced by ./quill.
# shellcheck shell=bash

# What has to come out alike to the byte on every processor, the capability manager, and one still: about a minute
# under emulation, where everything takes a quarter of an hour.
arm64_subset='^library\.(Digests|PixelConversion|Downscaling|Thumbnail|Exif|TileLayout|WholeFrameTiling|HeicEncoderInfo)'
arm64_subset+='|^library\.WriterStill\.StepsAreLoggedInOrder$|^contract\.'

# The number NAME="N" of a ctest report.
report_count() {
    grep -o -m 1 "$2=\"[0-9]*\"" "$1" | head -n 1 | tr -dc 0-9
}

# test_preset PRESET [CTEST_ARGUMENT...]
test_preset() {
    local preset=$1 dir=$root/build/$1
    local report=$dir/report.xml
    shift
    case $preset in
    dev) install_packages bench ;;
    arm64 | valgrind) install_packages "$preset" ;;
    esac
    build "$preset"
    rm -f "$report"
    echo "Testing ($preset)"
    ctest --test-dir "$dir" -j "$(nproc)" --output-on-failure --no-tests=error --output-junit report.xml "$@" || true
    [ -s "$report" ] || die "ctest wrote no report for $preset"
    total=$((total + $(report_count "$report" tests)))
    failed=$((failed + $(report_count "$report" failures)))
    skipped=$((skipped + $(report_count "$report" skipped) + $(report_count "$report" disabled)))
}

run_tests() {
    local presets=() preset total=0 failed=0 skipped=0
    while [ $# -gt 0 ]; do
        case $1=${2-} in
        --preset=?*) presets+=("$2") ;;
        --arch=arm64) presets+=(arm64) ;;
        *) wrong_usage "test: no such option or value: $*" ;;
        esac
        shift 2
    done
    for preset in "${presets[@]}"; do test_preset "$preset"; done
    if [ ${#presets[@]} = 0 ]; then
        test_preset dev
        test_preset asan
        test_preset arm64 -R "$arm64_subset"
    fi
    local skips=
    [ "$skipped" = 0 ] || skips=", $skipped skipped"
    echo "$((total - failed - skipped)) passed, $failed failed$skips"
    [ "$failed" = 0 ]
}
