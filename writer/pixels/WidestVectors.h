#pragma once

namespace android {

/** Bits of the widest vectors that a kernel may use; fewer where the processor has none as wide. */
enum class VectorWidth { k128, k256, k512 };
constexpr VectorWidth kWidestVectors = VectorWidth::k512;

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
 * Calls `kKernel` as compiled for the widest vectors that this processor has and `most` allows. x86-64 promises vectors
 * of 128 bits only; on every other processor this is a plain call.
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
