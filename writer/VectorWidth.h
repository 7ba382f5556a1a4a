#pragma once

namespace android {

/** Bits of the widest vectors that a kernel may use; fewer where the processor has none as wide. */
enum class VectorWidth { k128, k256, k512 };
constexpr VectorWidth kWidestVectors = VectorWidth::k512;

}  // namespace android
