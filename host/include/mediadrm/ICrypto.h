#pragma once

#include <utils/RefBase.h>

namespace android {

/** Decryption of protected content. Encoders take none: the type exists so that a null one can be passed. */
struct ICrypto : public virtual RefBase {};

}  // namespace android
