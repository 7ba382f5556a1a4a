#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace quill::test {

/**
 * Memory that can be touched only while it is open. It ends where a page begins that never can. Its address is never
 * used again, so that a late access ends the process, sanitizer or not.
 */
class GuardedMemory {
  public:
    explicit GuardedMemory(size_t size)
            : mSize(size),
              mMapped((size + kPage - 1) / kPage * kPage),
              mPages(static_cast<int8_t*>(
                      mmap(nullptr, mMapped + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    /** Gives the memory back and keeps the addresses. */
    ~GuardedMemory() {
        static_cast<void>(mmap(mPages, mMapped + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0));
    }
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    int8_t* data() const { return mPages + (mMapped - mSize); }
    size_t size() const { return mSize; }
    void open() { mprotect(mPages, mMapped, PROT_READ | PROT_WRITE); }
    void shut() { mprotect(mPages, mMapped, PROT_NONE); }

  private:
    static inline const size_t kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    const size_t mSize, mMapped;
    int8_t* const mPages;
};

}  // namespace quill::test
