#!/usr/bin/env bash
# binary.sh CHECK LIBRARY NM READELF: what the shared library as built offers and needs, against the lists beside this
# script. Prints the difference: "<" is expected and missing, ">" is there and not expected.
set -euo pipefail
export LC_ALL=C
check=$1 library=$2 nm=$3 readelf=$4
lists=$(dirname "${BASH_SOURCE[0]}")

entries() { grep -vE '^(#|\[|$)' "$lists/$1"; }

# Symbols that the library takes from others, but for those of the C and C++ runtimes: they carry the runtime's version,
# or are the toolchain's own or the standard library's templates.
imports() {
    "$nm" -D --undefined-only "$library" | awk '{ print $2 }' | grep -vE '@(GLIBC|GLIBCXX|CXXABI|GCC)' |
        grep -vxE '_ITM_(de)?registerTMCloneTable|__gmon_start__|_ZNK?S[ast].*' | sed 's/@.*//' | c++filt
}

# What exports.txt asks for and the library has, in the list's own form: objects with their sizes.
exports() {
    "$nm" -D -S --defined-only "$library" | awk '$3 != "V" && $3 != "B" { print $2, $3, $4 }' | c++filt |
        while read -r size kind name; do
            [ "$kind" != R ] || name+=" $((16#$size))"
            echo "$name"
        done | grep -xF "$(entries exports.txt)" | sort -u
}

# address and size of a symbol, as decimal numbers
extent() {
    "$readelf" -W --dyn-syms "$library" | awk -v name="$1" '$8 == name { print $2, $3 }' |
        while read -r address size; do echo "$((16#$address)) $size"; done
}

# A virtual table's name and the functions in it; first, where there is one, the description of its type.
slots() {
    local address size at
    echo "$1"
    read -r address size < <(extent "$1") || return 1
    for ((at = address + 8; at < address + size; at += 8)); do printf '%016x\n' "$at"; done |
        awk 'NR == FNR { target[$1] = $5; next } FNR > 1 || target[$1] { print "  " target[$1] }' \
            <("$readelf" -rW "$library") - |
        sed -E 's/@.*//; s/(D[01])Ev$/& [\1]/' | c++filt
}

tables() { entries virtual-tables.txt | grep '^_ZTV' | while read -r table; do slots "$table"; done; }

case $check in
imports) diff <(entries platform-symbols.txt | sort) <(imports | sort) ;;
exports) diff <(entries exports.txt | sort -u) <(exports) ;;
virtual-tables) diff <(entries virtual-tables.txt) <(tables) ;;
*) false ;;
esac
