// For runs under memcheck, in front of x265: its assembler computes on bytes past the picture that never reach the
// stream, which memcheck cannot follow. What the encoder gives out counts as defined here, or every byte of ours that
// is made from it would be reported, and those reports would hide our own.
#include <dlfcn.h>
#include <valgrind/memcheck.h>
#include <x265.h>

#include <map>
#include <mutex>

namespace {

std::mutex gLock;
std::map<int, x265_api> gApis;  // by bit depth

const x265_api* realApi(int bitDepth) {
    using Get = const x265_api* (*)(int);
#define TEXT_OF(x) #x
#define NAME_OF(x) TEXT_OF(x)
    static const auto get = reinterpret_cast<Get>(dlsym(RTLD_NEXT, NAME_OF(x265_api_get)));
#undef NAME_OF
#undef TEXT_OF
    return get(bitDepth);
}

template <int kBitDepth>
int encodeDefined(x265_encoder* encoder, x265_nal** nals, uint32_t* count, x265_picture* in, x265_picture* out) {
    const int pictures = realApi(kBitDepth)->encoder_encode(encoder, nals, count, in, out);
    VALGRIND_MAKE_MEM_DEFINED(&pictures, sizeof(pictures));
    VALGRIND_MAKE_MEM_DEFINED(count, sizeof(*count));
    if (*count > 0) VALGRIND_MAKE_MEM_DEFINED(*nals, *count * sizeof(**nals));
    for (uint32_t i = 0; i < *count; ++i) VALGRIND_MAKE_MEM_DEFINED((*nals)[i].payload, (*nals)[i].sizeBytes);
    return pictures;
}

}  // namespace

/** Found ahead of the encoder's own. */
extern "C" const x265_api* x265_api_get(int bitDepth) {
    const x265_api* const real = realApi(bitDepth);
    if (real == nullptr) return nullptr;
    const std::lock_guard<std::mutex> guard(gLock);
    const auto [entry, added] = gApis.try_emplace(bitDepth, *real);
    if (added) entry->second.encoder_encode = bitDepth == 10 ? encodeDefined<10> : encodeDefined<8>;
    return &entry->second;
}
