#define LOG_TAG "AMessage"
#include <log/log.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>
#include <string.h>

#include <algorithm>

#include "ItemTypes.h"

namespace android {

namespace {

// As on a device, where a message is also sent to other processes.
constexpr size_t kMaxNumItems = 256;

/** Reads the item as a From and converts that. */
template <typename From, typename To>
bool convert(const AMessage::ItemData& item, To* value) {
    From held{};
    if (!item.find(&held)) return false;
    *value = static_cast<To>(held);
    return true;
}

}  // namespace

AMessage::AMessage() = default;

AMessage::AMessage(uint32_t what, const sp<const AHandler>& handler) : mWhat(what) { setTarget(handler); }

void AMessage::clear() { mItems.clear(); }

bool AMessage::contains(const char* name) const { return findEntryByName(name) < mItems.size(); }

size_t AMessage::findEntryByName(const char* name) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(), [&](const Item& item) { return item.mName == name; });
    return static_cast<size_t>(found - mItems.begin());
}

void AMessage::setItem(const char* name, const ItemData& item) {
    if (!item.used()) return;
    const size_t index = findEntryByName(name);
    if (index < mItems.size()) {
        mItems[index].mData = item;
        return;
    }
    LOG_ALWAYS_FATAL_IF(mItems.size() == kMaxNumItems, "no room for item %s: a message holds %zu", name, kMaxNumItems);
    mItems.push_back({name, item});
}

AMessage::ItemData AMessage::findItem(const char* name) const { return getEntryAt(findEntryByName(name)); }

template <typename T>
void AMessage::set(const char* name, T value) {
    ItemData item;
    item.set(std::move(value));
    setItem(name, item);
}

template <typename T>
bool AMessage::find(const char* name, T* value) const {
    const size_t index = findEntryByName(name);
    return index < mItems.size() && mItems[index].mData.find(value);
}

void AMessage::setInt32(const char* name, int32_t value) { set(name, value); }
void AMessage::setInt64(const char* name, int64_t value) { set(name, value); }
void AMessage::setSize(const char* name, size_t value) { set(name, value); }
void AMessage::setFloat(const char* name, float value) { set(name, value); }
void AMessage::setDouble(const char* name, double value) { set(name, value); }
void AMessage::setPointer(const char* name, void* value) { set(name, value); }

void AMessage::setString(const char* name, const char* s, ssize_t len) {
    set(name, AString(s, len < 0 ? strlen(s) : static_cast<size_t>(len)));
}

void AMessage::setString(const char* name, const AString& s) { set(name, s); }
void AMessage::setObject(const char* name, const sp<RefBase>& obj) { set(name, obj); }
void AMessage::setBuffer(const char* name, const sp<ABuffer>& buffer) { set(name, buffer); }
void AMessage::setMessage(const char* name, const sp<AMessage>& obj) { set(name, obj); }

void AMessage::setRect(const char* name, int32_t left, int32_t top, int32_t right, int32_t bottom) {
    set(name, Rect{left, top, right, bottom});
}

bool AMessage::findInt32(const char* name, int32_t* value) const { return find(name, value); }
bool AMessage::findInt64(const char* name, int64_t* value) const { return find(name, value); }
bool AMessage::findSize(const char* name, size_t* value) const { return find(name, value); }
bool AMessage::findFloat(const char* name, float* value) const { return find(name, value); }
bool AMessage::findDouble(const char* name, double* value) const { return find(name, value); }
bool AMessage::findPointer(const char* name, void** value) const { return find(name, value); }
bool AMessage::findString(const char* name, AString* value) const { return find(name, value); }
bool AMessage::findObject(const char* name, sp<RefBase>* obj) const { return find(name, obj); }
bool AMessage::findBuffer(const char* name, sp<ABuffer>* buffer) const { return find(name, buffer); }
bool AMessage::findMessage(const char* name, sp<AMessage>* obj) const { return find(name, obj); }

bool AMessage::findRect(const char* name, int32_t* left, int32_t* top, int32_t* right, int32_t* bottom) const {
    Rect rect;
    if (!find(name, &rect)) return false;
    *left = rect.mLeft;
    *top = rect.mTop;
    *right = rect.mRight;
    *bottom = rect.mBottom;
    return true;
}

bool AMessage::findAsInt64(const char* name, int64_t* value) const {
    const ItemData item = findItem(name);
    return convert<int64_t>(item, value) || convert<int32_t>(item, value);
}

bool AMessage::findAsFloat(const char* name, float* value) const {
    const ItemData item = findItem(name);
    return convert<float>(item, value) || convert<double>(item, value) || convert<int64_t>(item, value) ||
           convert<int32_t>(item, value) || convert<size_t>(item, value);
}

sp<AMessage> AMessage::dup() const {
    const sp<AMessage> copy = new AMessage;
    copy->mWhat = mWhat;
    copy->mTarget = mTarget;
    copy->mHandler = mHandler;
    copy->mLooper = mLooper;
    copy->mReplyToken = mReplyToken;
    copy->mItems = mItems;
    for (Item& item : copy->mItems) {
        sp<AMessage> nested;
        if (item.mData.find(&nested) && nested != nullptr) item.mData.set(nested->dup());
    }
    return copy;
}

void AMessage::extend(const sp<AMessage>& other) {
    if (other == nullptr || other == this) return;
    for (const Item& item : other->mItems) setItem(item.mName.c_str(), item.mData);
}

size_t AMessage::maxAllowedEntries() { return kMaxNumItems; }

const char* AMessage::getEntryNameAt(size_t index, Type* type) const {
    if (index >= mItems.size()) {
        *type = kTypeInt32;
        return nullptr;
    }
    *type = quill::host::typeOf(mItems[index].mData).type;
    return mItems[index].mName.c_str();
}

AMessage::ItemData AMessage::getEntryAt(size_t index) const {
    return index < mItems.size() ? mItems[index].mData : ItemData();
}

status_t AMessage::setEntryNameAt(size_t index, const char* name) {
    if (index >= mItems.size()) return BAD_INDEX;
    if (name == nullptr) return BAD_VALUE;
    if (mItems[index].mName == name) return OK;
    if (contains(name)) return ALREADY_EXISTS;
    mItems[index].mName = name;
    return OK;
}

status_t AMessage::setEntryAt(size_t index, const ItemData& item) {
    if (index >= mItems.size()) return BAD_INDEX;
    if (!item.used()) return BAD_VALUE;
    mItems[index].mData = item;
    return OK;
}

status_t AMessage::removeEntryAt(size_t index) {
    if (index >= mItems.size()) return BAD_INDEX;
    mItems.erase(mItems.begin() + static_cast<ptrdiff_t>(index));
    return OK;
}

status_t AMessage::removeEntryByName(const char* name) {
    const size_t index = findEntryByName(name);
    return index < mItems.size() ? removeEntryAt(index) : static_cast<status_t>(NAME_NOT_FOUND);
}

}  // namespace android
