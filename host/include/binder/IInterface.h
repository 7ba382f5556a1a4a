#pragma once

#include <utils/RefBase.h>

namespace android {

/** A handle that one process passes to another. Here everything is one process, so it is only a reference. */
class IBinder : public virtual RefBase {};

/** The base of interfaces whose objects, on a device, may be in another process. */
class IInterface : public virtual RefBase {};

}  // namespace android
