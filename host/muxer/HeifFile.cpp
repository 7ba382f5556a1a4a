#include "HeifFile.h"

namespace quill::host {

namespace {

constexpr unsigned kShortField = 4, kLongField = 8;
constexpr uint64_t kMaxShortField = 0xFFFFFFFF;
// The header of `mdat` with a 32-bit and with a 64-bit size.
constexpr uint64_t kBoxHeader = 8, kLargeBoxHeader = 16;
constexpr uint32_t kHiddenItem = 1;      // flag of `infe`
constexpr uint32_t kWideIndexes = 1;     // flag of `ipma`
constexpr size_t kMaxNarrowIndex = 127;  // of a property, in seven bits
constexpr unsigned kItemDataConstruction = 1;

/** The place of the bodies: the absolute offset in the file, and a field width that fits all offsets. */
struct Placement {
    uint64_t bodiesOffset = 0;
    unsigned fieldWidth = kShortField;
};

uint64_t bodiesSize(const HeifContents& contents) {
    uint64_t size = 0;
    for (const HeifItem& item : contents.items) size += item.inItemData ? 0 : item.body().size;
    return size;
}

void putFileType(BoxWriter& writer, bool isMainProfile) {
    const char* const brand = isMainProfile ? "heic" : "heix";
    const auto box = writer.beginBox("ftyp");
    writer.putFourCc(brand);
    writer.put32(0);  // minor version
    for (const char* compatible : {"mif1", brand, "miaf"}) writer.putFourCc(compatible);
    writer.finishBox(box);
}

void putHandler(BoxWriter& writer) {
    const auto box = writer.beginFullBox("hdlr", 0, 0);
    writer.put32(0);
    writer.putFourCc("pict");
    for (int reserved = 0; reserved < 3; ++reserved) writer.put32(0);
    writer.putString("");
    writer.finishBox(box);
}

void putPrimaryItem(BoxWriter& writer, uint16_t id) {
    const auto box = writer.beginFullBox("pitm", 0, 0);
    writer.put16(id);
    writer.finishBox(box);
}

/** Version 1, which can refer to `idat`. One extent per item, no base offset, no extent index. */
void putItemLocations(BoxWriter& writer, const HeifContents& contents, const Placement& placement) {
    const auto box = writer.beginFullBox("iloc", 1, 0);
    writer.put8(placement.fieldWidth << 4 | placement.fieldWidth);
    writer.put8(0);
    writer.put16(contents.items.size());
    uint64_t inFile = placement.bodiesOffset, inItemData = 0;
    for (const HeifItem& item : contents.items) {
        uint64_t& next = item.inItemData ? inItemData : inFile;
        writer.put16(item.id);
        writer.put16(item.inItemData ? kItemDataConstruction : 0);
        writer.put16(0);  // this file
        writer.put16(1);
        writer.put(next, placement.fieldWidth);
        writer.put(item.body().size, placement.fieldWidth);
        next += item.body().size;
    }
    writer.finishBox(box);
}

void putItemInfo(BoxWriter& writer, const HeifContents& contents) {
    const auto box = writer.beginFullBox("iinf", 0, 0);
    writer.put16(contents.items.size());
    for (const HeifItem& item : contents.items) {
        const auto entry = writer.beginFullBox("infe", 2, item.hidden ? kHiddenItem : 0);
        writer.put16(item.id);
        writer.put16(0);  // not protected
        writer.putFourCc(item.type);
        writer.putString("");
        if (!item.contentType.empty()) writer.putString(item.contentType);
        writer.finishBox(entry);
    }
    writer.finishBox(box);
}

void putItemReferences(BoxWriter& writer, const HeifContents& contents) {
    const auto box = writer.beginFullBox("iref", 0, 0);
    for (const HeifItem& item : contents.items) {
        if (item.references.empty()) continue;
        const auto entry = writer.beginBox(item.referenceType);
        writer.put16(item.id);
        writer.put16(item.references.size());
        for (uint16_t id : item.references) writer.put16(id);
        writer.finishBox(entry);
    }
    writer.finishBox(box);
}

void putPropertyAssociations(BoxWriter& writer, const HeifContents& contents) {
    const bool wide = contents.properties.size() > kMaxNarrowIndex;
    const unsigned width = wide ? 2 : 1;
    const uint64_t essential = wide ? 0x8000 : 0x80;
    size_t described = 0;
    for (const HeifItem& item : contents.items) described += item.properties.empty() ? 0 : 1;
    const auto box = writer.beginFullBox("ipma", 0, wide ? kWideIndexes : 0);
    writer.put32(described);
    for (const HeifItem& item : contents.items) {
        if (item.properties.empty()) continue;
        writer.put16(item.id);
        writer.put8(item.properties.size());
        for (const auto& use : item.properties) writer.put(use.index | (use.essential ? essential : 0), width);
    }
    writer.finishBox(box);
}

void putItemProperties(BoxWriter& writer, const HeifContents& contents) {
    const auto box = writer.beginBox("iprp");
    const auto container = writer.beginBox("ipco");
    for (const Bytes& property : contents.properties) writer.putBytes(property);
    writer.finishBox(container);
    putPropertyAssociations(writer, contents);
    writer.finishBox(box);
}

void putItemData(BoxWriter& writer, const HeifContents& contents) {
    const auto box = writer.beginBox("idat");
    for (const HeifItem& item : contents.items) {
        if (item.inItemData) writer.putBytes(item.body());
    }
    writer.finishBox(box);
}

template <typename Predicate>
bool anyItem(const HeifContents& contents, Predicate predicate) {
    for (const HeifItem& item : contents.items) {
        if (predicate(item)) return true;
    }
    return false;
}

void putMeta(BoxWriter& writer, const HeifContents& contents, const Placement& placement) {
    const auto box = writer.beginFullBox("meta", 0, 0);
    putHandler(writer);
    putPrimaryItem(writer, contents.primaryId);
    putItemLocations(writer, contents, placement);
    putItemInfo(writer, contents);
    if (anyItem(contents, [](const auto& item) { return !item.references.empty(); })) {
        putItemReferences(writer, contents);
    }
    putItemProperties(writer, contents);
    if (anyItem(contents, [](const auto& item) { return item.inItemData; })) putItemData(writer, contents);
    writer.finishBox(box);
}

/** Only the header. If the size does not fit 32 bits, it is 1 and the real size follows the type. */
void putMediaDataHeader(BoxWriter& writer, uint64_t bodies) {
    const bool large = bodies + kBoxHeader > kMaxShortField;
    writer.put32(large ? 1 : bodies + kBoxHeader);
    writer.putFourCc("mdat");
    if (large) writer.put64(bodies + kLargeBoxHeader);
}

BoxWriter writeHead(const HeifContents& contents, const Placement& placement, uint64_t bodies) {
    BoxWriter writer;
    putFileType(writer, contents.isMainProfile);
    putMeta(writer, contents, placement);
    putMediaDataHeader(writer, bodies);
    return writer;
}

}  // namespace

std::optional<HeifLayout> layOutHeif(const HeifContents& contents, uint64_t start) {
    const uint64_t bodies = bodiesSize(contents);
    // The size of the head depends only on the width of its offsets, so a first head is written to measure it.
    Placement placement;
    uint64_t headSize = writeHead(contents, placement, bodies).size();
    if (start + headSize + bodies > kMaxShortField) {
        placement.fieldWidth = kLongField;
        headSize = writeHead(contents, placement, bodies).size();
    }
    placement.bodiesOffset = start + headSize;
    BoxWriter head = writeHead(contents, placement, bodies);
    if (!head.ok() || head.size() != headSize) return std::nullopt;
    HeifLayout layout{head.take(), {}, headSize + bodies};
    for (const HeifItem& item : contents.items) {
        if (!item.inItemData) layout.bodies.push_back(item.body());
    }
    return layout;
}

}  // namespace quill::host
