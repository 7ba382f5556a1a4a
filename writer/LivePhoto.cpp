#define LOG_TAG "QuillHeifWriter"

#include <log/log.h>

#include "BoxAppender.h"
#include "InputFrame.h"

namespace android {

int QuillHeifWriter::createLivePhoto(uint8_t* yuv, uint8_t* exif, uint32_t exifLen, char* xmp, uint32_t xmpLen,
                                     uint8_t* fileExtender, uint32_t fileExtenderLen, int gainmapFd, int videoFd,
                                     int fd) {
    // Stays set for the writer's life, on purpose: a later frame without a packet gets this one.
    if (xmpLen != 0) mXmpData.assign(xmp, xmpLen);
    if (processInputFrame(yuv, exif, exifLen, fd) == -1) {
        ALOGE("fail to encode heif");
        return -1;
    }
    return addMotionPhoto(videoFd, gainmapFd, fd, fileExtender, fileExtenderLen);
}

// Nothing is rolled back: the still before the boxes is whole and opens by itself.
int QuillHeifWriter::addMotionPhoto(int videoFd, int gainmapFd, int fd, uint8_t* fileExtender,
                                    uint32_t fileExtenderLen) {
    if (videoFd == -1 || fd == -1) {
        ALOGE("file isn't opened");
        return -1;
    }
    if (!appendFileBox(fd, kVideoBox, videoFd)) {
        ALOGE("lseek failure");
        return -1;
    }
    if (addGainMap(gainmapFd, fd) < 0) return -1;
    if (fileExtender == nullptr) return 0;
    if (!appendMemoryBox(fd, kExtenderBox, fileExtender, fileExtenderLen)) {
        ALOGE("Failed to write fileExtender to file");
        return -1;
    }
    return 0;
}

int QuillHeifWriter::addGainMap(int gainmapFd, int fd) {
    if (gainmapFd == -1) return 0;
    if (appendFileBox(fd, kGainMapBox, gainmapFd)) return 0;
    ALOGE("lseek failure");
    return -1;
}

bool QuillHeifWriter::createXmp(uint32_t /* len */) { return true; }

}  // namespace android
