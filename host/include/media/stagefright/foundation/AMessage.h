#pragma once

#include <stddef.h>
#include <stdint.h>
#include <sys/types.h>

#include <memory>
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
struct AMessage;

/** Stands for one reply that somebody waits for. */
struct AReplyToken : public RefBase {
  private:
    friend struct AMessage;
    friend class quill::host::LooperQueue;

    explicit AReplyToken(const std::shared_ptr<quill::host::LooperQueue>& queue) : mQueue(queue) {}

    const std::weak_ptr<quill::host::LooperQueue> mQueue;
    // Guarded by the queue's lock.
    sp<AMessage> mReply;
    bool mReplied = false;
};

/**
 * Named, typed items in the order they were first set, and optionally a handler to deliver them to.
 * Names are compared byte by byte. Not thread-safe: whoever posts a message lets go of it.
 */
struct AMessage : public RefBase {
    AMessage();
    /** For `handler`, which is referenced weakly, on the looper it is registered with right now. */
    AMessage(uint32_t what, const sp<const AHandler>& handler);

    void setWhat(uint32_t what) { mWhat = what; }
    uint32_t what() const { return mWhat; }
    void setTarget(const sp<const AHandler>& handler);

    /** Forgets all items. */
    void clear();
    bool contains(const char* name) const;

    // Adds an item or replaces the one of that name, of whatever type; aborts beyond maxAllowedEntries().
    void setInt32(const char* name, int32_t value);
    void setInt64(const char* name, int64_t value);
    void setSize(const char* name, size_t value);
    void setFloat(const char* name, float value);
    void setDouble(const char* name, double value);
    void setPointer(const char* name, void* value);
    /** `len` bytes of `s`, all up to the NUL when negative. */
    void setString(const char* name, const char* s, ssize_t len = -1);
    void setString(const char* name, const AString& s);
    void setObject(const char* name, const sp<RefBase>& obj);
    void setBuffer(const char* name, const sp<ABuffer>& buffer);
    void setMessage(const char* name, const sp<AMessage>& obj);
    void setRect(const char* name, int32_t left, int32_t top, int32_t right, int32_t bottom);

    // False, and nothing written, when there is no item of that name or it is of another type.
    bool findInt32(const char* name, int32_t* value) const;
    bool findInt64(const char* name, int64_t* value) const;
    bool findSize(const char* name, size_t* value) const;
    bool findFloat(const char* name, float* value) const;
    bool findDouble(const char* name, double* value) const;
    bool findPointer(const char* name, void** value) const;
    bool findString(const char* name, AString* value) const;
    bool findObject(const char* name, sp<RefBase>* obj) const;
    bool findBuffer(const char* name, sp<ABuffer>* buffer) const;
    bool findMessage(const char* name, sp<AMessage>* obj) const;
    bool findRect(const char* name, int32_t* left, int32_t* top, int32_t* right, int32_t* bottom) const;
    /** From an int32 or int64 item. */
    bool findAsInt64(const char* name, int64_t* value) const;
    /** From any number item. */
    bool findAsFloat(const char* name, float* value) const;

    /** Delivers this on the target's looper, `delayUs` from now. -ENOENT without a target, or when its looper is gone.
     */
    status_t post(int64_t delayUs = 0);
    /** `post`, and drops what was posted with the same `token` and has not arrived yet. */
    status_t postUnique(const sp<RefBase>& token, int64_t delayUs = 0);

    /**
     * Posts this and waits for the handler's reply. -ENOENT when the looper does not run or stops meanwhile;
     * INVALID_OPERATION on the looper's own thread, which could not answer.
     */
    status_t postAndAwaitResponse(sp<AMessage>* response);
    /** For the handler: true once for a message whose sender waits; takes the token to reply with. */
    bool senderAwaitsResponse(sp<AReplyToken>* replyID);
    /** Hands this to whoever waits for `replyID`. -EBUSY when it has its reply, -ENOENT when its looper is gone. */
    status_t postReply(const sp<AReplyToken>& replyID);

    /** A copy, of nested messages too; buffers and objects are shared. */
    sp<AMessage> dup() const;
    /** Sets every item of `other` here. */
    void extend(const sp<AMessage>& other);
    /**
     * The items here that `other` lacks or has with another value (buffers: other bytes). With `deep`, of a message
     * in both only what has changed inside it. A null `other` has no items.
     */
    sp<AMessage> changesFrom(const sp<const AMessage>& other, bool deep = false) const;
    /** For people: one item per line, indented by `indent` spaces. */
    AString debugString(int32_t indent = 0) const;

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

    static size_t maxAllowedEntries();
    size_t countEntries() const { return mItems.size(); }
    /** Null when out of range. The name lives until the item is removed or renamed, or another one is added. */
    const char* getEntryNameAt(size_t index, Type* type) const;
    /** A copy; empty when out of range. */
    ItemData getEntryAt(size_t index) const;
    ItemData findItem(const char* name) const;
    /** An empty item changes nothing. */
    void setItem(const char* name, const ItemData& item);
    /** countEntries() when there is none of that name. */
    size_t findEntryByName(const char* name) const;

    // BAD_INDEX when out of range.
    /** BAD_VALUE for a null name, ALREADY_EXISTS for one that another item has. */
    status_t setEntryNameAt(size_t index, const char* name);
    /** BAD_VALUE for an empty item. */
    status_t setEntryAt(size_t index, const ItemData& item);
    status_t removeEntryAt(size_t index);
    /** NAME_NOT_FOUND when there is none of that name. */
    status_t removeEntryByName(const char* name);

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
    std::shared_ptr<quill::host::LooperQueue> targetQueue() const;
    /** On the looper's thread. False when the target is gone. */
    bool deliver();

    uint32_t mWhat = 0;
    ALooper::handler_id mTarget = 0;
    wp<AHandler> mHandler;
    wp<ALooper> mLooper;
    sp<AReplyToken> mReplyToken;
    std::vector<Item> mItems;

    DISALLOW_EVIL_CONSTRUCTORS(AMessage);
};

}  // namespace android
