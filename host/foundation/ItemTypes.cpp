#define LOG_TAG "AMessage"
#include "ItemTypes.h"

#include <log/log.h>
#include <string.h>

#include <algorithm>

namespace quill::host {

using android::ABuffer;
using android::AMessage;
using android::AString;
using android::AStringPrintf;
using android::RefBase;
using android::sp;
using ItemData = AMessage::ItemData;

namespace {

// As many bytes of a buffer tell people what it is; the rest would drown the other items.
constexpr size_t kBytesShown = 16;

template <typename T>
T valueOf(const ItemData& item) {
    T value{};
    item.find(&value);
    return value;
}

template <typename T>
bool same(const T& left, const T& right) {
    return left == right;
}

bool same(const AMessage::Rect& left, const AMessage::Rect& right) {
    return left.mLeft == right.mLeft && left.mTop == right.mTop && left.mRight == right.mRight &&
           left.mBottom == right.mBottom;
}

bool same(const sp<ABuffer>& left, const sp<ABuffer>& right) {
    if (left == right) return true;
    if (left == nullptr || right == nullptr || left->size() != right->size()) return false;
    return left->size() == 0 || memcmp(left->data(), right->data(), left->size()) == 0;
}

bool same(const sp<AMessage>& left, const sp<AMessage>& right) {
    if (left == right) return true;
    if (left == nullptr || right == nullptr || left->countEntries() != right->countEntries()) return false;
    return left->changesFrom(right)->countEntries() == 0;
}

template <typename T>
std::string textOf(const T& number) {
    return std::to_string(number);
}

std::string textOf(const AString& text) { return "\"" + std::string(text.c_str()) + "\""; }
std::string textOf(void* pointer) { return AStringPrintf("%p", pointer).c_str(); }
std::string textOf(const sp<RefBase>& object) { return textOf(static_cast<void*>(object.get())); }
std::string textOf(const sp<AMessage>& message) { return textOf(static_cast<void*>(message.get())); }

std::string textOf(const AMessage::Rect& rect) {
    return AStringPrintf("(%d, %d, %d, %d)", rect.mLeft, rect.mTop, rect.mRight, rect.mBottom).c_str();
}

std::string textOf(const sp<ABuffer>& buffer) {
    if (buffer == nullptr) return "null";
    std::string text = std::to_string(buffer->size()) + " bytes";
    const size_t shown = std::min(buffer->size(), kBytesShown);
    for (size_t i = 0; i < shown; ++i) text += AStringPrintf("%s%02x", i == 0 ? ": " : " ", buffer->data()[i]).c_str();
    return shown < buffer->size() ? text + " ..." : text;
}

template <typename T>
ItemType typeRow(AMessage::Type type, const char* name) {
    return {type, name,
            [](const ItemData& item) {
                T value{};
                return item.find(&value);
            },
            [](const ItemData& left, const ItemData& right) {
                T a{}, b{};
                return left.find(&a) && right.find(&b) && same(a, b);
            },
            [](const ItemData& item) { return textOf(valueOf<T>(item)); }};
}

}  // namespace

const ItemType& typeOf(const ItemData& item) {
    static const ItemType kTypes[] = {
            typeRow<int32_t>(AMessage::kTypeInt32, "int32_t"),
            typeRow<int64_t>(AMessage::kTypeInt64, "int64_t"),
            typeRow<size_t>(AMessage::kTypeSize, "size_t"),
            typeRow<float>(AMessage::kTypeFloat, "float"),
            typeRow<double>(AMessage::kTypeDouble, "double"),
            typeRow<void*>(AMessage::kTypePointer, "void *"),
            typeRow<AString>(AMessage::kTypeString, "string"),
            typeRow<sp<RefBase>>(AMessage::kTypeObject, "RefBase"),
            typeRow<sp<AMessage>>(AMessage::kTypeMessage, "AMessage"),
            typeRow<AMessage::Rect>(AMessage::kTypeRect, "Rect"),
            typeRow<sp<ABuffer>>(AMessage::kTypeBuffer, "Buffer"),
    };
    const auto found =
            std::find_if(std::begin(kTypes), std::end(kTypes), [&](const ItemType& type) { return type.holds(item); });
    LOG_ALWAYS_FATAL_IF(found == std::end(kTypes), "an empty item has no type");
    return *found;
}

}  // namespace quill::host
