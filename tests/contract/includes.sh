#!/usr/bin/env bash
# includes.sh COMPILE_COMMANDS: what each room can include, asked of the compiler with the room's own flags. The table has
# a line per room, "ROOM HEADER...": of all headers in the table, the room finds these and no others. One of each kind is
# compiled as well: the first that is listed must compile, and one that is not listed must not.
set -euo pipefail
export LC_ALL=C
commands=$1
platform="utils/RefBase.h media/stagefright/MediaCodec.h"
low="Clock.h Faults.h $platform"
table="
encoder/frame   Frame.h
codecinfo       Frame.h HeicEncoderInfoManager.h $platform
encoder         Frame.h HeicEncoderInfoManager.h QuillHeifEncoder.h $platform
writer/pixels   Frame.h Nv12Conversion.h
writer/exif     Frame.h Nv12Conversion.h ExifBlock.h
writer/live     BoxAppender.h
writer          Frame.h HeicEncoderInfoManager.h QuillHeifEncoder.h Nv12Conversion.h ExifBlock.h BoxAppender.h QuillHeifWriter.h $platform
jni             Frame.h QuillHeifWriter.h HeifWriterJni.h $platform
host/clock      Clock.h $platform
host/testing    $low
host/system     $low Device.h
host/jni        $low JniReference.h
host/foundation $low LooperQueue.h
host/graphics   $low BufferQueue.h
host/color      ColorAspects.h $platform
host/codec      $low Device.h LooperQueue.h BufferQueue.h ColorAspects.h CodecConfig.h
host/muxer      $low LooperQueue.h ColorAspects.h BoxWriter.h"
headers=$(awk '{ for (i = 2; i <= NF; ++i) print $i }' <<<"$table" | sort -u)
question=$(for header in $headers; do printf '#if __has_include(<%s>)\n%s\n#endif\n' "$header" "$header"; done)
failed=0

# ask ROOM OPTION...: the compiler over standard input, with the flags of the room's sources and these options.
ask() {
    local command
    command=$(sed -n "s|^ *\"command\": \"\(.*\) -o $1/CMakeFiles/.*|\1|p" "$commands" | sed '1!d; s|\\\(.\)|\1|g')
    [ -n "$command" ] || { echo "$commands compiles nothing in $1"; return 1; }
    eval "$command ${*:2} -x c++ -"
}

while read -r room expected; do
    found=$(ask "$room" -E -P <<<"$question") || { echo "$room: $found"; exit 1; }
    diff <(tr ' ' '\n' <<<"$expected" | sort) <(sort <<<"$found") || { echo "^ headers that $room finds"; failed=1; }
    refused=$(comm -13 <(sort <<<"$found") <(printf '%s\n' $headers) | tail -1)
    ask "$room" -fsyntax-only <<<"#include <${expected%% *}>" || { echo "^ $room"; failed=1; }
    problem=$(ask "$room" -fsyntax-only <<<"#include <$refused>" 2>&1) && problem=compiles
    [[ $problem =~ "$refused".*("No such file"|"not found") ]] || { echo "$room, $refused: $problem"; failed=1; }
done < <(sed 1d <<<"$table")
exit $failed
