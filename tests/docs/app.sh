#!/usr/bin/env bash
# app.sh SOURCE_FOLDER JARS LIBRARIES: follows docs/app.md as a reader would, in an empty folder with two jars and two
# libraries: writes the page's classes to files, runs its commands, and has an app of all classes write its photos, as
# compiled and as shrunk for release. Needs javac, java, proguard and the readers in PATH.
set -euo pipefail
source_folder=$1 jars=$2 libraries=$3
here=$source_folder/tests/docs clip=$source_folder/photos/clip.mp4
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
cp "$jars"/quill-{media,android}.jar "$libraries"/libquill{heifwriter,platform}.so .

# blocks LANGUAGE: the page's blocks of it, a NUL behind each.
blocks() {
    awk -v begin="\`\`\`$1" '$0 == "```" && on { on = 0; printf "%c", 0 } on { print } $0 == begin { on = 1 }' \
        "$source_folder/docs/app.md"
}

while IFS= read -r -d '' class; do
    [[ $class =~ class\ ([A-Za-z]+) ]] && printf '%s' "$class" >"${BASH_REMATCH[1]}.java"
done < <(blocks java)
[ "$(ls -- *.java | wc -l)" = 4 ] || { echo "the page has other classes: $(ls -- *.java)" >&2; exit 1; }
bash -euo pipefail -c "$(blocks sh | tr -d '\0')"
blocks xml | tr -d '\0' >packet.xml

cp "$here/App.java" .
javac --release 11 -Xlint:all -Werror -cp quill-media.jar:quill-android.jar -d app ./*.java
jar --create --file app.jar -C app .

# run JAR...: the app; what it wrote is read by others.
run() {
    rm -f ./*.heic
    (IFS=: && java -Xcheck:jni -Djava.library.path=. -cp "$*:quill-android.jar" App "$clip" packet.xml) || return
    [ "$(ls -- *.heic)" = $'bitmap.heic\nlive.heic\nsaved.heic' ]  # and not the one that was cancelled
    for photo in *.heic; do heif-info "$photo" >/dev/null; done
    exiftool -b -MotionPhotoVideo live.heic | cmp - "$clip"
}

run app.jar quill-media.jar

# shrink RULES...: as an app's release build, everything renamed and moved that may be.
shrink() {
    rm -f shrunk.jar
    proguard -injars app.jar -injars 'quill-media.jar(!META-INF/MANIFEST.MF)' -outjars shrunk.jar \
        -libraryjars quill-android.jar:jdk.jar -allowaccessmodification -repackageclasses \
        -keep 'public class App { public static void main(java.lang.String[]); }' \
        -keepclasseswithmembernames,includedescriptorclasses 'class * { native <methods>; }' "$@"
}

# The shrinker looks the JDK's classes up and reads none later than Java 13's: these say that they are Java 11's.
jimage extract --dir jdk --include 'regex:/java.base/java/.*' \
    "$(dirname "$(readlink -f "$(command -v jimage)")")/../lib/modules"
find jdk -name '*.class' -exec perl -0777 -i -pe 'substr($_, 7, 1) = chr 55' {} +
jar --create --file jdk.jar -C jdk/java.base java

jar --extract --file quill-media.jar META-INF/proguard
jar --describe-module --file quill-media.jar | grep '^com.quill.media automatic$'
shrink -include META-INF/proguard/*
run shrunk.jar
shrink
! run shrunk.jar || { echo "the rules in the jar are not needed" >&2; exit 1; }
