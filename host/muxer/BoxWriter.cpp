#include "BoxWriter.h"

namespace quill::host {

namespace {

constexpr unsigned kBitsPerByte = 8;
constexpr unsigned kWidestField = 8;

}  // namespace

BoxWriter::Marker BoxWriter::beginBox(std::string_view type) {
    const Marker marker{mBytes.size()};
    put32(0);
    putFourCc(type);
    return marker;
}

BoxWriter::Marker BoxWriter::beginFullBox(std::string_view type, uint8_t version, uint32_t flags) {
    const Marker marker = beginBox(type);
    put8(version);
    put(flags, 3);
    return marker;
}

void BoxWriter::finishBox(Marker marker) {
    const auto size = narrow<uint32_t>(mBytes.size() - marker.offset);
    mOk = mOk && size;
    if (!mOk) return;
    for (unsigned i = 0; i < sizeof(*size); ++i) {
        mBytes[marker.offset + i] = static_cast<uint8_t>(*size >> (kBitsPerByte * (sizeof(*size) - 1 - i)));
    }
}

void BoxWriter::put(uint64_t value, unsigned width) {
    if (width < kWidestField && value >> (kBitsPerByte * width) != 0) mOk = false;
    for (unsigned i = width; i-- > 0;) mBytes.push_back(static_cast<uint8_t>(value >> (kBitsPerByte * i)));
}

void BoxWriter::putFourCc(std::string_view code) {
    mOk = mOk && code.size() == 4;
    mBytes.insert(mBytes.end(), code.begin(), code.end());
}

void BoxWriter::putString(std::string_view text) {
    mBytes.insert(mBytes.end(), text.begin(), text.end());
    mBytes.push_back(0);
}

void BoxWriter::putBytes(ByteView bytes) { mBytes.insert(mBytes.end(), bytes.data, bytes.data + bytes.size); }

}  // namespace quill::host
