#pragma once

#include <nativebase/nativebase.h>

namespace android {

/**
 * A native C object that is reference-counted by REF: fills `common.incRef` and `common.decRef` of NATIVE_TYPE, so
 * that both faces share one count.
 */
template <typename NATIVE_TYPE, typename TYPE, typename REF, typename NATIVE_BASE = android_native_base_t>
class ANativeObjectBase : public NATIVE_TYPE, public REF {
  public:
    // Both bases have these; the ones of REF count.
    void incStrong(const void* id) const { REF::incStrong(id); }
    void decStrong(const void* id) const { REF::decStrong(id); }

  protected:
    typedef ANativeObjectBase<NATIVE_TYPE, TYPE, REF, NATIVE_BASE> BASE;

    ANativeObjectBase() : NATIVE_TYPE(), REF() {
        NATIVE_TYPE::common.incRef = incRef;
        NATIVE_TYPE::common.decRef = decRef;
    }

    static TYPE* getSelf(NATIVE_TYPE* self) { return static_cast<TYPE*>(self); }
    static const TYPE* getSelf(const NATIVE_TYPE* self) { return static_cast<const TYPE*>(self); }
    // `common` is the first member of every native type.
    static TYPE* getSelf(NATIVE_BASE* base) { return getSelf(reinterpret_cast<NATIVE_TYPE*>(base)); }

    static void incRef(NATIVE_BASE* base) {
        ANativeObjectBase* const self = getSelf(base);
        self->incStrong(self);
    }
    static void decRef(NATIVE_BASE* base) {
        ANativeObjectBase* const self = getSelf(base);
        self->decStrong(self);
    }
};

}  // namespace android
