#include "HeifProperties.h"

namespace quill::host {

namespace {

constexpr unsigned kFullRangeFlag = 0x80;
constexpr int kFullTurn = 360, kQuarterTurn = 90;

/** A signed number of half pixels, as a fraction: the unit of centre offsets. */
void putHalves(BoxWriter& writer, int64_t halves) {
    writer.put32(static_cast<uint32_t>(halves));  // two's complement
    writer.put32(2);
}

void putWhole(BoxWriter& writer, uint32_t value) {
    writer.put32(value);
    writer.put32(1);
}

}  // namespace

Bytes decoderConfigurationBox(const HevcConfig& config) {
    BoxWriter writer;
    const auto box = writer.beginBox("hvcC");
    putHevcRecord(writer, config);
    writer.finishBox(box);
    return writer.take();
}

Bytes spatialExtentsBox(uint32_t width, uint32_t height) {
    BoxWriter writer;
    const auto box = writer.beginFullBox("ispe", 0, 0);
    writer.put32(width);
    writer.put32(height);
    writer.finishBox(box);
    return writer.take();
}

Bytes pixelInformationBox(const HevcSps& sps) {
    BoxWriter writer;
    const auto box = writer.beginFullBox("pixi", 0, 0);
    const bool monochrome = sps.chromaFormat == 0;
    writer.put8(monochrome ? 1 : 3);
    writer.put8(sps.lumaBits);
    for (int plane = 1; !monochrome && plane < 3; ++plane) writer.put8(sps.chromaBits);
    writer.finishBox(box);
    return writer.take();
}

Bytes colorBox(const ColorAspects& aspects) {
    BoxWriter writer;
    const auto box = writer.beginBox("colr");
    writer.putFourCc("nclx");
    writer.put16(aspects.primaries);
    writer.put16(aspects.transfer);
    writer.put16(aspects.matrix);
    writer.put8(aspects.fullRange ? kFullRangeFlag : 0);
    writer.finishBox(box);
    return writer.take();
}

Bytes cleanApertureBox(uint32_t width, uint32_t height, const HevcSps& coded) {
    BoxWriter writer;
    const auto box = writer.beginBox("clap");
    putWhole(writer, width);
    putWhole(writer, height);
    putHalves(writer, int64_t{width} - coded.width);
    putHalves(writer, int64_t{height} - coded.height);
    writer.finishBox(box);
    return writer.take();
}

Bytes rotationBox(int clockwiseDegrees) {
    BoxWriter writer;
    const auto box = writer.beginBox("irot");
    writer.put8(static_cast<uint64_t>((kFullTurn - clockwiseDegrees) % kFullTurn / kQuarterTurn));  // anti-clockwise
    writer.finishBox(box);
    return writer.take();
}

}  // namespace quill::host
