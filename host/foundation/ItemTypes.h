#pragma once

#include <string>

#include <media/stagefright/foundation/AMessage.h>

namespace quill::host {

/** What is needed to know about one type of message item. */
struct ItemType {
    android::AMessage::Type type;
    const char* name;
    bool (*holds)(const android::AMessage::ItemData& item);
    /** Both hold this type, and the same value: strings and buffers by their bytes, objects by identity. */
    bool (*equal)(const android::AMessage::ItemData& left, const android::AMessage::ItemData& right);
    /** One line for people, without the name; nested messages are left to the caller. */
    std::string (*text)(const android::AMessage::ItemData& item);
};

/** The type of an item that is not empty. */
const ItemType& typeOf(const android::AMessage::ItemData& item);

}  // namespace quill::host
