#!/usr/bin/env bash
# android_bp.sh SOURCE_FOLDER CMAKE_PARTS [JAR]: Android.bp is well-formed (bpfmt, the platform's own parser), builds the same
# sources with the same flags as CMake (CMAKE_PARTS, lines "srcs FILE" and "cflags FLAG") and names only libraries of the
# platform. With the Java library's JAR: its module makes the same classes for the same Java, and no API level is asked
# for that the module does not state. Prints the difference: "<" is expected and missing, ">" is there and not expected.
set -euo pipefail
export LC_ALL=C
source_folder=$1 cmake_parts=$2 jar=${3-}
lists=$(dirname "${BASH_SOURCE[0]}")
bp=$source_folder/Android.bp
failed=0

# expect WHAT EXPECTED ACTUAL: the same lines, in any order, each as often.
expect() {
    diff <(sort <<<"$2") <(sort <<<"$3") && return
    echo "^ $1"
    failed=1
}

difference=$(bpfmt -d "$bp")
[ -z "$difference" ] || { echo "$difference"; echo "bpfmt -w Android.bp puts it right"; exit 1; }

# "MODULE PROPERTY VALUE" for every value; bpfmt's layout has one property or one value in a line.
values=$(awk '
    /^[a-z]/ { module = $1 }
    /^    [a-z]/ { property = $1; sub(":", "", property) }
    /^    [a-z_]+: (true|false),/ { sub(",", "", $2); print module, property, $2 }
    { while (match($0, /"([^"\\]|\\.)*"/)) {
        print module, property, substr($0, RSTART + 1, RLENGTH - 2)
        $0 = substr($0, RSTART + RLENGTH) } }' "$bp")

# of MODULE PROPERTY: its values.
of() { awk -v module="$1" -v property="$2" '$1 == module && $2 == property { print $3 }' <<<"$values"; }
parts() { sed -n "s/^$1 //p" "$cmake_parts"; }

expect "sources of the library" "$(parts srcs)" "$(of cc_library srcs)"
expect "include folders" "$(parts srcs | sed 's|/[^/]*$||' | sort -u)" "$(of cc_library_headers export_include_dirs)"
expect "flags" "$(parts cflags | sort -u)" \
    "$(of cc_defaults cflags; echo "-std=$(of cc_defaults cpp_std)"; [ "$(of cc_defaults rtti)" != false ] || echo -fno-rtti)"
expect "libraries with something that the library takes" \
    "$(awk '/^\[/ { name = substr($0, 2, length($0) - 2) } /^[a-zA-Z_]/ && name != "libc" { print name }' \
        "$lists/platform-symbols.txt" | sort -u)" "$(of cc_defaults shared_libs)"
expect "libraries that are none of the platform's" "" \
    "$(awk '$2 ~ /_libs$|_lib_headers$/ { print $3 }' <<<"$values" | sort -u |
        grep -vxF -e "$(sed -n 's/^\[\(.*\)\]$/\1/p' "$lists/platform-symbols.txt")" \
            -e "$(awk '$2 == "name" { print $3 }' <<<"$values")")"
for file in $(of cc_test srcs) $(of cc_test data); do
    [ -e "$source_folder/$file" ] || { echo "no $file"; failed=1; }
done

[ -n "$jar" ] || exit "$failed"
shopt -s globstar
classes=$(jar --list --file "$jar" | sed -n 's/\.class$//p')
minimum=$(of android_library min_sdk_version)
# shellcheck disable=SC2046
expect "classes" "$(grep -v '\$' <<<"$classes")" \
    "$(cd "$source_folder" && printf '%s\n' $(of android_library srcs) | sed 's|^java/media/||; s/\.java$//')"
expect "Java" "$(parts java)" "$(of android_library java_version)"
expect "rules" "META-INF/proguard/$(basename "$(of android_library optimize)")" \
    "$(jar --list --file "$jar" | grep '^META-INF/proguard/.')"
expect "API level of the manifest" "$minimum" \
    "$(sed -n 's/.*minSdkVersion="\([0-9]*\)".*/\1/p' "$source_folder/$(of android_library manifest)")"
# shellcheck disable=SC2086
expect "what is used of the platform" "$(awk '/^[0-9]/ { print $2 }' "$lists/platform-java.txt")" \
    "$(javap -c -p -cp "$jar" $classes | sed -nE 's/.*(Method|Field) (android\/[^ ]*).*/\2/p' | sort -u)"
expect "beyond API level $minimum" "" \
    "$(awk -v minimum="$minimum" '/^[0-9]/ && $1 > minimum' "$lists/platform-java.txt")"
exit "$failed"
