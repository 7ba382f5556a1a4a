#!/usr/bin/env bash
# install.sh SOURCE_FOLDER BUILD_FOLDER VERSION: installs into an empty folder, uses everything from there with nothing of
# this shell's environment, and uninstalls.
set -euo pipefail
source_folder=$1 build=$2 version=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
prefix=$folder/prefix
cmake --install "$build" --prefix "$prefix" >/dev/null
cd "$folder"

quill=$prefix/bin/quill
[ "$(env -i "$quill" --version)" = "quill $version" ]
env -i JAVA_TOOL_OPTIONS=-Xshare:on "$quill" --version 2>/dev/null  # fails without its archive of classes

# Another user, to whom one of the folders is shut, gets the stills of the others.
chmod 755 .
mkdir -p photos/open photos/shut stills
cp "$source_folder/photos/compact-640x480-with-thumbnail.jpg" photos/open/a.jpg
chmod 000 photos/shut
chmod 777 stills
other=()
[ "$(id -u)" != 0 ] || other=(setpriv --reuid 65534 --clear-groups)
! "${other[@]}" env -i "$quill" still -r photos -d stills --preset ultrafast 2>told || exit 1
[[ $(cat told) == *"quill: photos/shut: this folder may not be read"* ]]
heif-info stills/open/a.heic >/dev/null

page=$prefix/share/man/man1/quill.1
[[ $(lexgrog "$page") == *'"quill - '* ]]
[ -z "$(man --warnings -l "$page" 2>&1 >page.txt)" ]
grep -q -- '--preset PRESET' page.txt

touch 'My $(touch harm) `touch harm` photo.jpg'
# complete WORD...: what bash offers for the last one.
complete() {
    bash -c 'source "$1" && COMP_WORDS=("${@:2}") COMP_CWORD=$(($# - 2)) && _complete_quill && printf "%s\n" "${COMPREPLY[@]}"' \
        bash "$prefix/share/bash-completion/completions/quill" "$@" 2>/dev/null
}
[ "$(complete quill ins)" = inspect ]
[ "$(complete quill still --preset place)" = placebo ]
[ "$(complete quill still My)" = My* ] && [ ! -e harm ]

cat >consumer.cpp <<'CPP'
#include <QuillHeifWriter.h>

#include <fcntl.h>

int main(int, char** arguments) {
    std::vector<uint8_t> frame(96 * 64 * 3 / 2, 128);
    const android::sp<android::QuillHeifWriter> writer = new android::QuillHeifWriter;
    writer->start(96, 64, 96, 64, android::FORMAT_NV12, 90, 0);
    const int fd = open(arguments[1], O_RDWR | O_CREAT, 0666);
    const int result = writer->processInputFrame(frame.data(), nullptr, 0, fd);
    writer->close();
    writer->destroy();
    return result;
}
CPP
cat >CMakeLists.txt <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(consumer CXX)
find_package(quillheifwriter REQUIRED)
add_executable(consumer consumer.cpp)
target_link_libraries(consumer quill::heifwriter)
CMAKE
# shellcheck disable=SC2046
g++ -std=c++17 -Wall -Werror consumer.cpp -o by-pkg-config -Wl,-rpath,"$prefix/lib" \
    $(PKG_CONFIG_PATH=$prefix/lib/pkgconfig pkg-config --cflags --libs "quillheifwriter = $version")
cmake -S . -B by-cmake -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null && cmake --build by-cmake >/dev/null
for consumer in ./by-pkg-config by-cmake/consumer; do
    rm -f frame.heic
    env -i "$consumer" frame.heic
    heif-info frame.heic >/dev/null
done

"$source_folder/quill" uninstall --prefix "$prefix"
[ -z "$(ls -A "$prefix")" ]
