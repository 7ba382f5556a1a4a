#pragma once

namespace android {

// Media types, as track and codec formats name them.
extern const char* MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC;
extern const char* MEDIA_MIMETYPE_VIDEO_HEVC;

}  // namespace android
