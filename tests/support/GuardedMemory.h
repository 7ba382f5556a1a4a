#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace quill::test {

/**
 * A copy of some bytes that ends where a page begins that nobody may touch. Its address is never used again, so that
 * whoever still goes there after `forbid` ends the process, sanitizer or not.
 */
class GuardedMemory {
  public:
    explicit GuardedMemory(const std::vector<int8_t>& bytes);
    ~GuardedMemory() { forbid(); }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    int8_t* data() const { return mData; }
    std::vector<int8_t> bytes() const { return std::vector<int8_t>(mData, mData + mSize); }
    void forbid();

  private:
    size_t mSize;
    size_t mMapped;
    void* mPages;
    int8_t* mData;
};

}  // namespace quill::test
