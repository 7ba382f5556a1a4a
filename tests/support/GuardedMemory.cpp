#include "support/GuardedMemory.h"

#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace quill::test {

GuardedMemory::GuardedMemory(const std::vector<int8_t>& bytes) : mSize(bytes.size()) {
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    mMapped = (mSize + page - 1) / page * page;
    mPages = mmap(nullptr, mMapped + page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mPages == MAP_FAILED || (mMapped > 0 && mprotect(mPages, mMapped, PROT_READ | PROT_WRITE) != 0)) {
        throw std::runtime_error("no guarded memory");
    }
    mData = static_cast<int8_t*>(mPages) + (mMapped - mSize);
    if (mSize > 0) memcpy(mData, bytes.data(), mSize);
}

/** Gives the memory back and keeps the addresses. */
void GuardedMemory::forbid() { mmap(mPages, mMapped + 1, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED, -1, 0); }

}  // namespace quill::test
