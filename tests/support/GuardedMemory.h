#pragma once

#include <cstddef>
#include <cstdint>

namespace quill::test {

/**
 * Memory that can be touched only while it is open. It ends where a page begins that never can. Its address is never
 * used again, so that a late access ends the process, sanitizer or not.
 */
class GuardedMemory {
  public:
    explicit GuardedMemory(size_t size);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    int8_t* data() const { return mData; }
    size_t size() const { return mSize; }
    void open();
    void shut();

  private:
    size_t mSize;
    size_t mMapped;
    void* mPages;
    int8_t* mData;
};

}  // namespace quill::test
