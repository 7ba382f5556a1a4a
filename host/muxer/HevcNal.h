#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "BoxWriter.h"

namespace quill::host {

/** nal_unit_type, ITU-T H.265 table 7-1. */
enum class NalType : uint8_t {
    kBlaWLp = 16,  ///< the first type of a picture that decoding may start at
    kCra = 21,     ///< the last one
    kLastVcl = 31,
    kVps = 32,
    kSps = 33,
    kPps = 34,
};

/** One NAL unit, header included, without start code; a view into the stream. */
struct Nal {
    ByteView bytes;

    NalType type() const { return static_cast<NalType>(bytes.data[0] >> 1 & 0x3F); }
    bool isParameterSet() const { return type() >= NalType::kVps && type() <= NalType::kPps; }
    bool isPicture() const { return type() <= NalType::kLastVcl; }
    bool startsDecoding() const { return type() >= NalType::kBlaWLp && type() <= NalType::kCra; }
};

/**
 * Splits a byte stream (H.265 annex B) at its start codes. Empty if the stream does not begin with a start code or
 * has a NAL unit shorter than its header.
 */
std::vector<Nal> splitNals(ByteView stream);

/** The NAL unit's payload: without header and without emulation prevention bytes. */
Bytes rawPayload(const Nal& nal);

/** Reads a payload bit by bit. Past the end it reads zeros, and `ok` stays false. */
class BitReader {
  public:
    explicit BitReader(ByteView bytes) : mBytes(bytes) {}

    uint32_t bits(unsigned count);  ///< up to 32
    bool flag() { return bits(1) != 0; }
    uint32_t ue();  ///< ue(v), Exp-Golomb
    int32_t se();   ///< se(v)
    void skip(unsigned count);

    bool ok() const { return mOk; }

  private:
    ByteView mBytes;
    size_t mPosition = 0;  // in bits
    bool mOk = true;
};

}  // namespace quill::host
