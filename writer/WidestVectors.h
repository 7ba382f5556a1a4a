#pragma once

#include "VectorWidth.h"

namespace android {

/** A kernel for `withWidestVectors`: plain loops, compiled anew wherever they are called from. */
#define QUILL_KERNEL __attribute__((always_inline)) inline

#if defined(__x86_64__)
template <auto kKernel, typename... Args>
__attribute__((target("avx2"))) void withAvx2(Args... args) {
    kKernel(args...);
}

template <auto kKernel, typename... Args>
__attribute__((target("avx512f,avx512bw,avx512dq,avx512vl"))) void withAvx512(Args... args) {
    kKernel(args...);
}
#endif

/**
 * Calls `kKernel` as compiled for the widest vectors that this processor has and `most` allows. An x86-64 program may
 * count on no more than the vectors of the first of them, a quarter as wide as today's; everywhere else this is a plain
 * call.
 */
template <auto kKernel, typename... Args>
void withWidestVectors([[maybe_unused]] VectorWidth most, Args... args) {
#if defined(__x86_64__)
    if (most >= VectorWidth::k512 && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl")) {
        return withAvx512<kKernel, Args...>(args...);
    }
    if (most >= VectorWidth::k256 && __builtin_cpu_supports("avx2")) return withAvx2<kKernel, Args...>(args...);
#endif
    kKernel(args...);
}

}  // namespace android
