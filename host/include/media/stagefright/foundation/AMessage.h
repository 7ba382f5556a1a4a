#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include <media/stagefright/foundation/ABase.h>
#include <media/stagefright/foundation/ABuffer.h>
#include <media/stagefright/foundation/AData.h>
#include <media/stagefright/foundation/ALooper.h>
#include <media/stagefright/foundation/AString.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace quill::host {
class LooperQueue;
}

namespace android {

struct AHandler;

/**
 * Named, typed items in the order in which they were first set, and optionally the handler that gets them. Names are
 * compared byte by byte. Not thread-safe: the sender does not touch a message after posting it.
 */
struct AMessage : public RefBase {
    AMessage();
    /** For `handler`, of which it holds a weak reference, on the looper where it is registered now. */
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    uint32_t what() const { return mWhat; }
    bool contains(const char* name) const;

    // Adds an item or replaces the one of that name, whatever its type. Aborts at more than 256 items.
    void setInt32(const char* name, int32_t value);
    /** `len` bytes of `s`; up to the NUL if negative. */
    void setString(const char* name, const char* s, ssize_t len = -1);
    void setBuffer(const char* name, const sp<ABuffer>& buffer);

    // False if there is no item of that name or if it has another type; then nothing is written.
    bool findInt32(const char* name, int32_t* value) const;
    bool findString(const char* name, AString* value) const;
    bool findBuffer(const char* name, sp<ABuffer>* buffer) const;

    /** Delivers this on the target's looper in `delayUs`. -ENOENT if there is no target or its looper is gone. */
    status_t post(int64_t delayUs = 0);

    /** A copy with the same target; buffers are shared. */
    sp<AMessage> dup() const;

    enum Type {
        kTypeInt32,
        kTypeInt64,
        kTypeSize,
        kTypeFloat,
        kTypeDouble,
        kTypePointer,
        kTypeString,
        kTypeObject,
        kTypeMessage,
        kTypeRect,
        kTypeBuffer,
    };

    struct Rect {
        int32_t mLeft, mTop, mRight, mBottom;
    };

    typedef AData<int32_t, int64_t, size_t, float, double, Rect, AString, void*, sp<AMessage>, sp<ABuffer>,
                  sp<RefBase>>::Basic ItemData;

    size_t countEntries() const { return mItems.size(); }
    /** Null if out of range. The name stays valid until another item is added. */
    const char* getEntryNameAt(size_t index, Type* type) const;
    /** A copy; empty if out of range. */
    ItemData getEntryAt(size_t index) const;
    ItemData findItem(const char* name) const;
    /** An empty item changes nothing. */
    void setItem(const char* name, const ItemData& item);

  protected:
    ~AMessage() override = default;

  private:
    friend class quill::host::LooperQueue;

    struct Item {
        std::string mName;
        ItemData mData;
    };

    template <typename T>
    void set(const char* name, T value);
    template <typename T>
    bool find(const char* name, T* value) const;
    size_t indexOf(const char* name) const;
    /** On the looper's thread. */
    void deliver();

    uint32_t mWhat = 0;
    ALooper::handler_id mTarget = 0;
    wp<AHandler> mHandler;
    wp<ALooper> mLooper;
    std::vector<Item> mItems;

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

}  // namespace android
