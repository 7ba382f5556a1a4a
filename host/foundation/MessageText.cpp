#include "MessageText.h"

namespace quill::host {

using android::AMessage;

namespace {

std::string itemText(const AMessage::ItemData& item) {
    int32_t number;
    if (item.find(&number)) return std::to_string(number);
    android::AString text;
    return item.find(&text) ? text.c_str() : "";
}

}  // namespace

std::string itemsText(const AMessage& message) {
    std::string text;
    for (size_t i = 0; i < message.countEntries(); ++i) {
        AMessage::Type type;
        const std::string name = message.getEntryNameAt(i, &type);
        text += name + "=" + itemText(message.getEntryAt(i)) + "\n";
    }
    return text;
}

}  // namespace quill::host
