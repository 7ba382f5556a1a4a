#define LOG_TAG "AMessage"
#include <log/log.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>
#include <string.h>

#include <algorithm>

namespace android {

namespace {

constexpr size_t kMaxNumItems = 256;

template <typename T>
bool holds(const AMessage::ItemData& item) {
    T value{};
    return item.find(&value);
}

AMessage::Type typeOf(const AMessage::ItemData& item) {
    if (holds<int32_t>(item)) return AMessage::kTypeInt32;
    if (holds<int64_t>(item)) return AMessage::kTypeInt64;
    if (holds<size_t>(item)) return AMessage::kTypeSize;
    if (holds<float>(item)) return AMessage::kTypeFloat;
    if (holds<double>(item)) return AMessage::kTypeDouble;
    if (holds<void*>(item)) return AMessage::kTypePointer;
    if (holds<AString>(item)) return AMessage::kTypeString;
    if (holds<sp<RefBase>>(item)) return AMessage::kTypeObject;
    if (holds<sp<AMessage>>(item)) return AMessage::kTypeMessage;
    if (holds<AMessage::Rect>(item)) return AMessage::kTypeRect;
    return AMessage::kTypeBuffer;
}

}  // namespace

AMessage::AMessage() = default;

bool AMessage::contains(const char* name) const { return indexOf(name) < mItems.size(); }

/** The number of items if there is none of that name. */
size_t AMessage::indexOf(const char* name) const {
    const auto found = std::find_if(mItems.begin(), mItems.end(), [&](const Item& item) { return item.mName == name; });
    return static_cast<size_t>(found - mItems.begin());
}

void AMessage::setItem(const char* name, const ItemData& item) {
    if (!item.used()) return;
    const size_t index = indexOf(name);
    if (index < mItems.size()) {
        mItems[index].mData = item;
        return;
    }
    LOG_ALWAYS_FATAL_IF(mItems.size() == kMaxNumItems, "no room for item %s: a message holds %zu", name, kMaxNumItems);
    mItems.push_back({name, item});
}

AMessage::ItemData AMessage::findItem(const char* name) const { return getEntryAt(indexOf(name)); }

template <typename T>
void AMessage::set(const char* name, T value) {
    ItemData item;
    item.set(std::move(value));
    setItem(name, item);
}

template <typename T>
bool AMessage::find(const char* name, T* value) const {
    const size_t index = indexOf(name);
    return index < mItems.size() && mItems[index].mData.find(value);
}

void AMessage::setInt32(const char* name, int32_t value) { set(name, value); }

void AMessage::setString(const char* name, const char* s, ssize_t len) {
    set(name, AString(s, len < 0 ? strlen(s) : static_cast<size_t>(len)));
}

void AMessage::setBuffer(const char* name, const sp<ABuffer>& buffer) { set(name, buffer); }

bool AMessage::findInt32(const char* name, int32_t* value) const { return find(name, value); }
bool AMessage::findString(const char* name, AString* value) const { return find(name, value); }
bool AMessage::findBuffer(const char* name, sp<ABuffer>* buffer) const { return find(name, buffer); }

sp<AMessage> AMessage::dup() const {
    const sp<AMessage> copy = new AMessage;
    copy->mWhat = mWhat;
    copy->mTarget = mTarget;
    copy->mHandler = mHandler;
    copy->mLooper = mLooper;
    copy->mItems = mItems;
    return copy;
}

const char* AMessage::getEntryNameAt(size_t index, Type* type) const {
    if (index >= mItems.size()) {
        *type = kTypeInt32;
        return nullptr;
    }
    *type = typeOf(mItems[index].mData);
    return mItems[index].mName.c_str();
}

AMessage::ItemData AMessage::getEntryAt(size_t index) const {
    return index < mItems.size() ? mItems[index].mData : ItemData();
}

}  // namespace android
