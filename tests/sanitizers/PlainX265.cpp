// For runs under memcheck, in front of x265: its assembler reads and computes on bytes past rows and discards the
// surplus, which memcheck cannot follow. The same encoder in C is clean, so that nothing of it has to be suppressed.
#include <dlfcn.h>
#include <x265.h>

#include <map>
#include <mutex>

namespace {

const x265_api* realApi(int bitDepth) {
    using Get = const x265_api* (*)(int);
#define TEXT_OF(x) #x
#define NAME_OF(x) TEXT_OF(x)
    static const auto get = reinterpret_cast<Get>(dlsym(RTLD_NEXT, NAME_OF(x265_api_get)));
#undef NAME_OF
#undef TEXT_OF
    return get(bitDepth);
}

x265_encoder* openWithoutAssembler(x265_param* param) {
    param->cpuid = 0;
    return realApi(param->internalBitDepth)->encoder_open(param);
}

}  // namespace

/** Found ahead of the encoder's own. */
extern "C" const x265_api* x265_api_get(int bitDepth) {
    static std::mutex lock;
    static std::map<int, x265_api> apis;
    const x265_api* const real = realApi(bitDepth);
    if (real == nullptr) return nullptr;
    const std::lock_guard<std::mutex> guard(lock);
    const auto [entry, added] = apis.try_emplace(bitDepth, *real);
    if (added) entry->second.encoder_open = openWithoutAssembler;
    return &entry->second;
}
