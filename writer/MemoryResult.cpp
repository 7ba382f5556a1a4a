#define LOG_TAG "QuillHeifWriter"

#include <stdio.h>
#include <string.h>

#include <memory>

#include <log/log.h>
#include <media/stagefright/MediaMuxer.h>

#include "QuillHeifEncoder.h"
#include "QuillHeifWriter.h"

namespace android {

bool QuillHeifWriter::getEncData(uint8_t** data, uint32_t* size) {
    if (data == nullptr || size == nullptr || !mEncodeDone.load(std::memory_order_acquire)) return false;
    ALOGI("Get encoded size %d", static_cast<int>(mEncodedSize));
    *data = new uint8_t[mEncodedSize];
    *size = mEncodedSize;
    if (mEncodedSize > 0) memcpy(*data, mEncodedData, mEncodedSize);
    return true;
}

void QuillHeifWriter::saveBuffer(const void* buf, int32_t len, const char* path) {
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path, "wb"), fclose);
    if (file == nullptr) {
        ALOGE("saveBuffer error");
        return;
    }
    if (len > 0) fwrite(buf, 1, static_cast<size_t>(len), file.get());
}

}  // namespace android
