#define LOG_TAG "GraphicBuffer"

#include <ui/GraphicBuffer.h>

#include <cstdlib>

#include <log/log.h>

#include "CallLog.h"
#include "Faults.h"
#include "PixelLayout.h"

namespace android {

using quill::host::Fault;
using quill::host::Faults;
using quill::host::layoutOf;
using quill::host::PixelLayout;

namespace {

constexpr uint64_t kReadMask = GRALLOC_USAGE_SW_READ_MASK;
constexpr uint64_t kWriteMask = GRALLOC_USAGE_SW_WRITE_MASK;

/** Compares levels, not bits: a buffer made for frequent reading may be read rarely. */
bool allows(uint64_t made, uint64_t wanted) {
    return (wanted & kReadMask) <= (made & kReadMask) && (wanted & kWriteMask) <= (made & kWriteMask);
}

bool isSoftwareUsage(uint64_t usage) { return usage != 0 && (usage & ~(kReadMask | kWriteMask)) == 0; }

}  // namespace

sp<GraphicBuffer> GraphicBuffer::from(ANativeWindowBuffer* buffer) { return sp<GraphicBuffer>(getSelf(buffer)); }

GraphicBuffer::GraphicBuffer(uint32_t inWidth, uint32_t inHeight, PixelFormat inFormat, uint32_t inLayerCount,
                             uint64_t inUsage, std::string requestorName)
        : mInitCheck(NO_INIT) {
    const std::optional<PixelLayout> layout = layoutOf(inWidth, inHeight, inFormat);
    mInitCheck = layout && inLayerCount == 1 ? allocate(layout->size) : BAD_VALUE;
    if (mInitCheck != OK) {
        ALOGE("%s: cannot make a buffer of %u layer(s) of %ux%u in format 0x%x: %d", requestorName.c_str(),
              inLayerCount, inWidth, inHeight, static_cast<unsigned>(inFormat), mInitCheck);
        return;
    }
    width = static_cast<int>(inWidth);
    height = static_cast<int>(inHeight);
    stride = static_cast<int>(layout->stride);
    format = inFormat;
    layerCount = inLayerCount;
    usage = inUsage;
    usage_deprecated = static_cast<int>(static_cast<uint32_t>(inUsage));
}

GraphicBuffer::~GraphicBuffer() {
    if (handle != nullptr) native_handle_delete(const_cast<native_handle_t*>(handle));
}

status_t GraphicBuffer::allocate(size_t size) {
    mMemory.reset(static_cast<uint8_t*>(calloc(size, 1)));
    if (mMemory == nullptr) return NO_MEMORY;
    mSize = size;
    handle = native_handle_create(0 /* fds */, 0 /* ints */);
    return handle == nullptr ? NO_MEMORY : OK;
}

void GraphicBuffer::FreeMemory::operator()(uint8_t* memory) const { free(memory); }

ANativeWindowBuffer* GraphicBuffer::getNativeBuffer() const {
    return static_cast<ANativeWindowBuffer*>(const_cast<GraphicBuffer*>(this));
}

status_t GraphicBuffer::lock(uint32_t inUsage, void** vaddr, int32_t* outBytesPerPixel, int32_t* outBytesPerStride) {
    quill::host::CallLog::instance().note("GraphicBuffer::lock", {inUsage});
    const std::optional<Fault> fault = Faults::instance().at("GraphicBuffer::lock");
    if (fault && fault->kind == Fault::Kind::kStatus) return fault->status;
    if (mInitCheck != OK) return NO_INIT;
    if (!isSoftwareUsage(inUsage) || !allows(usage, inUsage)) return BAD_VALUE;
    if (mLocked.exchange(true)) return INVALID_OPERATION;
    const bool hidden = fault && fault->kind == Fault::Kind::kNullBuffer;
    const PixelLayout layout = *layoutOf(getWidth(), getHeight(), format);
    if (vaddr != nullptr) *vaddr = hidden ? nullptr : mMemory.get();
    if (outBytesPerPixel != nullptr) *outBytesPerPixel = static_cast<int32_t>(layout.bytesPerPixel);
    if (outBytesPerStride != nullptr) *outBytesPerStride = static_cast<int32_t>(layout.bytesPerStride);
    return OK;
}

status_t GraphicBuffer::unlock() {
    if (const auto status = Faults::instance().statusAt("GraphicBuffer::unlock")) return *status;
    return mLocked.exchange(false) ? OK : INVALID_OPERATION;
}

}  // namespace android
