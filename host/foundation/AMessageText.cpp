#include <ctype.h>
#include <media/stagefright/foundation/AMessage.h>

#include <string>

#include "ItemTypes.h"

namespace android {

using quill::host::ItemType;
using quill::host::typeOf;

namespace {

constexpr int32_t kIndentStep = 2;

/** Four-character codes in letters, other numbers in hexadecimal. */
std::string whatText(uint32_t what) {
    const char letters[] = {static_cast<char>(what >> 24), static_cast<char>(what >> 16), static_cast<char>(what >> 8),
                            static_cast<char>(what)};
    for (const char letter : letters) {
        if (!isprint(static_cast<unsigned char>(letter))) return AStringPrintf("0x%08x", what).c_str();
    }
    return "'" + std::string(letters, sizeof letters) + "'";
}

/** The part of `now` that differs from `before`; empty when nothing does. */
AMessage::ItemData changeOf(const AMessage::ItemData& before, const AMessage::ItemData& now, bool deep) {
    if (before.used() && typeOf(now).equal(before, now)) return {};
    sp<AMessage> nestedBefore, nestedNow;
    if (!deep || !before.find(&nestedBefore) || !now.find(&nestedNow) || nestedNow == nullptr) return now;
    AMessage::ItemData change;
    change.set(nestedNow->changesFrom(nestedBefore, deep));
    return change;
}

}  // namespace

sp<AMessage> AMessage::changesFrom(const sp<const AMessage>& other, bool deep) const {
    const sp<AMessage> changes = new AMessage;
    changes->mWhat = mWhat;
    for (const Item& item : mItems) {
        const ItemData before = other == nullptr ? ItemData() : other->findItem(item.mName.c_str());
        changes->setItem(item.mName.c_str(), changeOf(before, item.mData, deep));
    }
    return changes;
}

AString AMessage::debugString(int32_t indent) const {
    const std::string margin(static_cast<size_t>(indent), ' ');
    const std::string inner = margin + std::string(kIndentStep, ' ');
    std::string text = "AMessage(what = " + whatText(mWhat) + ", target = " + std::to_string(mTarget) + ") = {\n";
    for (const Item& item : mItems) {
        const ItemType& type = typeOf(item.mData);
        sp<AMessage> nested;
        const bool nests = item.mData.find(&nested) && nested != nullptr;
        text += inner + type.name + " " + item.mName + " = " +
                (nests ? nested->debugString(indent + kIndentStep).c_str() : type.text(item.mData)) + "\n";
    }
    text += margin + "}";
    return AString(text.c_str(), text.size());
}

}  // namespace android
