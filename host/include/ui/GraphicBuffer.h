#pragma once

#include <stdint.h>

#include <atomic>
#include <memory>
#include <string>

#include <hardware/gralloc.h>
#include <nativebase/nativebase.h>
#include <ui/ANativeObjectBase.h>
#include <ui/PixelFormat.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace quill::host {
struct BufferContents;
}

namespace android {

/**
 * Pixel memory shared between a producer and a consumer. Reference-counted. Thread-safe except for the pixels, which
 * belong to the holder of the lock.
 */
class GraphicBuffer : public ANativeObjectBase<ANativeWindowBuffer, GraphicBuffer, RefBase> {
  public:
    enum {
        USAGE_SW_READ_NEVER = GRALLOC_USAGE_SW_READ_NEVER,
        USAGE_SW_READ_RARELY = GRALLOC_USAGE_SW_READ_RARELY,
        USAGE_SW_READ_OFTEN = GRALLOC_USAGE_SW_READ_OFTEN,
        USAGE_SW_READ_MASK = GRALLOC_USAGE_SW_READ_MASK,

        USAGE_SW_WRITE_NEVER = GRALLOC_USAGE_SW_WRITE_NEVER,
        USAGE_SW_WRITE_RARELY = GRALLOC_USAGE_SW_WRITE_RARELY,
        USAGE_SW_WRITE_OFTEN = GRALLOC_USAGE_SW_WRITE_OFTEN,
        USAGE_SW_WRITE_MASK = GRALLOC_USAGE_SW_WRITE_MASK,

        USAGE_SOFTWARE_MASK = USAGE_SW_READ_MASK | USAGE_SW_WRITE_MASK,
        USAGE_HW_TEXTURE = GRALLOC_USAGE_HW_TEXTURE,
        USAGE_HW_VIDEO_ENCODER = GRALLOC_USAGE_HW_VIDEO_ENCODER,
    };

    /** The buffer that a window handed out, with a new reference; null for null. */
    static sp<GraphicBuffer> from(ANativeWindowBuffer* buffer);

    /** Zeroed memory of one layer. `initCheck` fails for an unsupported size or format and if the allocation fails. */
    GraphicBuffer(uint32_t width, uint32_t height, PixelFormat format, uint32_t layerCount, uint64_t usage,
                  std::string requestorName = "<Unknown>");

    status_t initCheck() const { return mInitCheck; }
    uint32_t getWidth() const { return static_cast<uint32_t>(width); }
    uint32_t getHeight() const { return static_cast<uint32_t>(height); }
    /** Pixels from one row to the next. */
    uint32_t getStride() const { return static_cast<uint32_t>(stride); }
    uint64_t getUsage() const { return usage; }
    PixelFormat getPixelFormat() const { return format; }
    ANativeWindowBuffer* getNativeBuffer() const;

    /**
     * Gives the CPU the memory until `unlock`. `inUsage` is software reading or writing that the buffer was made for;
     * anything else is BAD_VALUE. INVALID_OPERATION while locked. Semi-planar chroma starts stride x height samples
     * after the luma; bytes per pixel and stride are those of the luma.
     */
    status_t lock(uint32_t inUsage, void** vaddr, int32_t* outBytesPerPixel = nullptr,
                  int32_t* outBytesPerStride = nullptr);
    /** INVALID_OPERATION if it is not locked. */
    status_t unlock();

  private:
    friend struct quill::host::BufferContents;

    ~GraphicBuffer() override;
    status_t allocate(size_t size);

    struct FreeMemory {
        void operator()(uint8_t* memory) const;
    };

    status_t mInitCheck;
    std::unique_ptr<uint8_t, FreeMemory> mMemory;
    size_t mSize = 0;  // bytes
    std::atomic<bool> mLocked{false};
};

}  // namespace android
