#include "HevcNal.h"

#include <algorithm>

namespace quill::host {

namespace {

constexpr uint8_t kStartCode[] = {0, 0, 1};
constexpr uint8_t kEmulationPrevention = 3;
constexpr size_t kNalHeaderSize = 2;
// The longest prefix of a ue(v) whose value fits 32 bits.
constexpr unsigned kMaxGolombPrefix = 31;

/** The first start code at or after `from`; null if there is none. */
const uint8_t* findStartCode(ByteView stream, const uint8_t* from) {
    const uint8_t* const end = stream.data + stream.size;
    const uint8_t* found = std::search(from, end, std::begin(kStartCode), std::end(kStartCode));
    return found == end ? nullptr : found;
}

/** A NAL unit never ends in a zero byte, so zeros before a start code belong to the start code. */
const uint8_t* withoutTrailingZeros(const uint8_t* begin, const uint8_t* end) {
    while (end > begin && end[-1] == 0) --end;
    return end;
}

}  // namespace

std::vector<Nal> splitNals(ByteView stream) {
    std::vector<Nal> nals;
    if (stream.size < sizeof(kStartCode)) return nals;
    const uint8_t* const end = stream.data + stream.size;
    const uint8_t* startCode = findStartCode(stream, stream.data);
    if (!startCode || withoutTrailingZeros(stream.data, startCode) != stream.data) return {};
    while (startCode) {
        const uint8_t* const begin = startCode + sizeof(kStartCode);
        startCode = findStartCode(stream, begin);
        const uint8_t* const nalEnd = withoutTrailingZeros(begin, startCode ? startCode : end);
        const size_t size = static_cast<size_t>(nalEnd - begin);
        if (size < kNalHeaderSize) return {};
        nals.push_back({{begin, size}});
    }
    return nals;
}

Bytes rawPayload(const Nal& nal) {
    Bytes payload;
    payload.reserve(nal.bytes.size);
    unsigned zeros = 0;
    for (size_t i = kNalHeaderSize; i < nal.bytes.size; ++i) {
        const uint8_t byte = nal.bytes.data[i];
        const bool inserted = zeros >= 2 && byte == kEmulationPrevention;
        if (!inserted) payload.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return payload;
}

uint32_t BitReader::bits(unsigned count) {
    uint32_t value = 0;
    for (; count > 0; --count, ++mPosition) {
        const size_t byte = mPosition / 8;
        mOk = mOk && byte < mBytes.size;
        const uint32_t bit = mOk ? mBytes.data[byte] >> (7 - mPosition % 8) & 1U : 0;
        value = value << 1 | bit;
    }
    return value;
}

uint32_t BitReader::ue() {
    unsigned prefix = 0;
    while (mOk && prefix <= kMaxGolombPrefix && !flag()) ++prefix;
    if (prefix > kMaxGolombPrefix) mOk = false;
    if (!mOk) return 0;
    return ((1U << prefix) - 1) + bits(prefix);
}

int32_t BitReader::se() {
    const uint32_t code = ue();
    const auto magnitude = static_cast<int32_t>(code / 2 + code % 2);
    return code % 2 ? magnitude : -magnitude;
}

void BitReader::skip(unsigned count) {
    for (; mOk && count > 0; --count) flag();
}

}  // namespace quill::host
