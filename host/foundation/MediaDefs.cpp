#include <media/stagefright/foundation/MediaDefs.h>

#include <media/stagefright/MediaCodecConstants.h>

namespace android {

const char* MEDIA_MIMETYPE_IMAGE_ANDROID_HEIC = MIMETYPE_IMAGE_ANDROID_HEIC;
const char* MEDIA_MIMETYPE_VIDEO_HEVC = MIMETYPE_VIDEO_HEVC;

}  // namespace android
