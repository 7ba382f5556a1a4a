#!/usr/bin/env bash
# names.sh QUILL PHOTO: files of any name become stills and are named in messages by the same bytes, without a locale
# and with one. A line feed is told in hex: a message is one line.
set -euo pipefail
quill=$1 photo=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export LC_ALL=C  # of this script: a character is a byte

names=($'caf\xe9' $'caf\xc3\xa9 \xe2\x82\xac' $'two\nlines' -dash ' ' $'\x80\xff')
for locale in '' LC_ALL=C.UTF-8 LC_ALL=tr_TR.UTF-8; do
    rm -f -- *
    for name in "${names[@]}"; do cp "$photo" "./$name.jpg"; done
    env -i QUILL_DEVICE=free-codec ${locale:+"$locale"} "$quill" still -- "${names[@]/%/.jpg}" >.report 2>.losses
    sed -i 's/  640x480  .*//' .report
    for name in "${names[@]//$'\n'/\\x0a}"; do printf '%s.jpg -> %s.heic\n' "$name" "$name"; done | cmp - .report
    for name in "${names[@]}"; do [ -s "./$name.heic" ]; done

    ! env -i ${locale:+"$locale"} "$quill" inspect $'\xe9\xc3\xa9' 2>.report
    printf 'quill: %b: there is no such file\n' '\xe9\xc3\xa9' | cmp - .report
done
