#pragma once

#include <utils/RefBase.h>

namespace android {

/** Decryption of protected content. Encoders do not use it, but callers need the type to pass a null one. */
struct ICrypto : public virtual RefBase {};

}  // namespace android
