#pragma once

#include <utils/RefBase.h>

namespace android {

/** A handle that one process passes to another. Here all is one process: it is a reference and no more. */
class IBinder : public virtual RefBase {};

/** The base of interfaces that, on a device, may live in another process. */
class IInterface : public virtual RefBase {};

}  // namespace android
