# The command line in Java, and the demo. Sourced by ./quill.
# shellcheck shell=bash

run_java() {
    local dir=$root/build/release quiet=silent argument jars=/usr/share/java
    build release quillheifwriter quill_jar
    for argument in "$@"; do
        [ "$argument" != --verbose ] || quiet=verbose
    done
    # Three quarters of the memory: a 64-megapixel photograph needs its pixels twice. The serial collector starts soonest.
    LC_ALL=C.UTF-8 QUILL_LOG=${QUILL_LOG:-$quiet} java -XX:MaxRAMPercentage=75 -XX:+UseSerialGC -Djava.library.path="$dir/lib" \
        -cp "$dir/java/quill.jar:$dir/java/quill-media.jar:$dir/java/quill-android.jar:$jars/picocli.jar:$jars/jackson-core.jar" \
        com.quill.cli.Quill "$@"
}

demo() {
    local out=$root/out/demo photo=$root/photos/phone-3264x2448.jpg
    local still=$out/phone-3264x2448.heic live=$out/phone-3264x2448.MP.heic clip=$root/photos/clip.mp4
    mkdir -p "$out"
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
