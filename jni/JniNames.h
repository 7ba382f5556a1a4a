#pragma once

#define LOG_TAG "NativeHeifWriter"

namespace android {

constexpr char kWriterClass[] = "com/quill/media/QuillHeifWriter";
constexpr char kOptionsClass[] = "com/quill/media/QuillHeifWriter$Options";

}  // namespace android
