#pragma once

#include <string>

#include <media/stagefright/foundation/AMessage.h>

namespace quill::host {

/** The items of `message`, a line `name=value` each. Only int32 and string items have their value shown. */
std::string itemsText(const android::AMessage& message);

}  // namespace quill::host
