#pragma once

#include <chrono>
#include <thread>

namespace quill::test {

/** Waits until `condition` holds; false when that takes longer than any machine should need. */
template <typename Condition>
bool comesTrue(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace quill::test
