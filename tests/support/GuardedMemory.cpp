#include "support/GuardedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace quill::test {

GuardedMemory::GuardedMemory(size_t size) : mSize(size) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    mMapped = (mSize + page - 1) / page * page;
    mPages = mmap(nullptr, mMapped + page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mPages == MAP_FAILED) throw std::runtime_error("no guarded memory");
    mData = static_cast<int8_t*>(mPages) + (mMapped - mSize);
}

/** Gives the memory back and keeps the addresses. */
GuardedMemory::~GuardedMemory() {
    mmap(mPages, mMapped + 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0);
}

void GuardedMemory::open() { mprotect(mPages, mMapped, PROT_READ | PROT_WRITE); }

void GuardedMemory::shut() { mprotect(mPages, mMapped, PROT_NONE); }

}  // namespace quill::test
