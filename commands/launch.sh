# The command line and the demo, out of the build. Sourced by ./quill.
# shellcheck shell=bash

run_java() {
    build release quill_classes
    "$root/build/release/bin/quill" "$@"
}

demo() {
    local out=$root/out/demo photo=$root/photos/phone-3264x2448.jpg
    local still live clip=$root/photos/clip.mp4
    mkdir -p "$out" 2>>"$log" || true
    [ -w "$out" ] || out=$(mktemp -d)  # another user's checkout
    still=$out/phone-3264x2448.heic live=$out/phone-3264x2448.MP.heic
    run_java still "$photo" -o "$still"
    echo
    echo "Read back by heif-info:"
    heif-info "$still" | sed -n '/./{s/^/  /;p}' | head -n 12
    heif-convert "$still" "$out/preview.png" >>"$log" || die "heif-convert cannot decode $still"
    echo
    run_java live "$photo" --video "$clip" -o "$live"
    exiftool -b -MotionPhotoVideo "$live" | cmp - "$clip" || die "exiftool finds another video in $live"
    echo
    echo "Read back by exiftool:"
    exiftool -s -XMP:all -MotionPhotoVideo "$live" | sed 's/^/  /'
    echo
    echo "Still:      ${still#"$PWD"/}"
    echo "Live photo: ${live#"$PWD"/}"
    echo "Preview:    ${out#"$PWD"/}/preview.png"
}
