#!/usr/bin/env bash
# Class data of the command line: what a JVM maps in place of reading and checking jars.
#   classes.sh list QUILL PHOTO LIST          the names of the classes that a still and a look into it load
#   classes.sh archive QUILL LIST ARCHIVE     these classes, for this program in this place and its JVM; empty where
#                                             the JVM makes no archive
set -euo pipefail
quill=$2

list() {
    local photo=$1 list=$2 folder
    folder=$(mktemp -d)
    export QUILL_DEVICE=free-codec
    JAVA_TOOL_OPTIONS="-Xshare:off -XX:DumpLoadedClassList=$folder/still" "$quill" still "$photo" -o "$folder/still.heic"
    JAVA_TOOL_OPTIONS="-Xshare:off -XX:DumpLoadedClassList=$folder/inspect" "$quill" inspect "$folder/still.heic"
    cat "$folder/still" "$folder/inspect" | awk '!seen[$0]++' >"$list"
    rm -r "$folder"
}

# Objects are archived from under G1 only, and any collector takes them from there.
archive() {
    rm -f "$2"
    _JAVA_OPTIONS="-XX:-UseSerialGC -XX:+UseG1GC -Xshare:dump -XX:SharedClassListFile=$1 -XX:SharedArchiveFile=$2" \
        "$quill" --version || true
    touch "$2"
}

"$1" "${@:3}" >/dev/null 2>&1
