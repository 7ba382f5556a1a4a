#include "HeifItems.h"

#include <algorithm>

#include "HeifProperties.h"
#include "MetadataSample.h"

namespace quill::host {

namespace {

constexpr uint32_t kMaxShortSize = 65535;

class ContentsBuilder {
  public:
    explicit ContentsBuilder(int clockwiseDegrees) : mDegrees(clockwiseDegrees) {}

    void addTrack(const HeifTrack& track) {
        for (const Bytes& sample : track.samples) addTile(track, sample);
        if (track.grid) addGrid(track);
        finishImage(track);
    }

    void makeLastPrimary(const HeifTrack& track) {
        mContents.primaryId = mContents.items.back().id;
        mContents.isMainProfile = track.config.sps.profile.isMain();
    }

    void addMetadata(const Bytes& sample) {
        const MetadataKind kind = classifyMetadata(sample);
        if (kind.type == MetadataKind::Type::kUnknown) return;
        HeifItem& item = add(kind.type == MetadataKind::Type::kExif ? "Exif" : "mime");
        item.hidden = true;  // not an image to be shown
        item.referenceType = "cdsc";
        item.references = {mContents.primaryId};
        if (kind.type == MetadataKind::Type::kExif) {
            item.ownBody = exifBody(sample, kind.tiffOffset);
        } else {
            item.contentType = "application/rdf+xml";
            item.ownBody = sample;
        }
    }

    HeifContents take() { return std::move(mContents); }

  private:
    HeifItem& add(std::string_view type) {
        HeifItem& item = mContents.items.emplace_back();
        item.id = static_cast<uint16_t>(mContents.items.size());
        item.type = type;
        return item;
    }

    /** Equal properties share one box of `ipco`. */
    void use(Bytes property, bool essential, HeifItem* item) {
        auto& all = mContents.properties;
        auto found = std::find(all.begin(), all.end(), property);
        if (found == all.end()) found = all.insert(all.end(), std::move(property));
        item->properties.push_back({static_cast<uint16_t>(found - all.begin() + 1), essential});
    }

    void describe(const HevcSps& sps, uint32_t width, uint32_t height, HeifItem* item) {
        use(spatialExtentsBox(width, height), false, item);
        use(pixelInformationBox(sps), false, item);
        use(colorBox(sps.aspects), false, item);
    }

    void addTile(const HeifTrack& track, const Bytes& sample) {
        HeifItem& item = add("hvc1");
        item.hidden = track.grid.has_value();
        item.tile = sample;
        const HevcSps& sps = track.config.sps;
        describe(sps, sps.width, sps.height, &item);
        use(decoderConfigurationBox(track.config), true, &item);
    }

    void addGrid(const HeifTrack& track) {
        const uint16_t firstTile = static_cast<uint16_t>(mContents.items.size() - track.samples.size() + 1);
        HeifItem& item = add("grid");
        item.inItemData = true;
        item.ownBody = gridBody(track);
        item.referenceType = "dimg";
        for (uint16_t id = firstTile; id < item.id; ++id) item.references.push_back(id);
        describe(track.config.sps, track.width, track.height, &item);
    }

    /** The transformations. They come after the properties that describe the image. */
    void finishImage(const HeifTrack& track) {
        HeifItem& item = mContents.items.back();
        const HevcSps& sps = track.config.sps;
        const bool larger = sps.width != track.width || sps.height != track.height;
        if (!track.grid && larger) use(cleanApertureBox(track.width, track.height, sps), true, &item);
        if (mDegrees != 0) use(rotationBox(mDegrees), true, &item);
    }

    /** ISO/IEC 23008-12, 6.6.2.3. */
    static Bytes gridBody(const HeifTrack& track) {
        const bool wide = std::max(track.width, track.height) > kMaxShortSize;
        BoxWriter writer;
        writer.put8(0);  // version
        writer.put8(wide ? 1 : 0);
        writer.put8(track.grid->rows - 1);
        writer.put8(track.grid->columns - 1);
        writer.put(track.width, wide ? 4 : 2);
        writer.put(track.height, wide ? 4 : 2);
        return writer.take();
    }

    /** ISO/IEC 23008-12, A.2.1: the offset of the TIFF header, then the sample unchanged. */
    static Bytes exifBody(const Bytes& sample, size_t tiffOffset) {
        BoxWriter writer;
        writer.put32(tiffOffset);
        writer.putBytes(sample);
        return writer.take();
    }

    const int mDegrees;
    HeifContents mContents;
};

size_t primaryTrack(const std::vector<HeifTrack>& tracks) {
    const auto found = std::find_if(tracks.begin(), tracks.end(), [](const auto& track) { return track.isDefault; });
    return found == tracks.end() ? 0 : static_cast<size_t>(found - tracks.begin());
}

}  // namespace

HeifContents buildHeifContents(const std::vector<HeifTrack>& tracks, const std::vector<Bytes>& metadata,
                               int clockwiseDegrees) {
    ContentsBuilder builder(clockwiseDegrees);
    const size_t primary = primaryTrack(tracks);
    for (size_t i = 0; i < tracks.size(); ++i) {
        builder.addTrack(tracks[i]);
        if (i == primary) builder.makeLastPrimary(tracks[i]);
    }
    for (const Bytes& sample : metadata) builder.addMetadata(sample);
    return builder.take();
}

}  // namespace quill::host
