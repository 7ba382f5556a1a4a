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
        item.hidden = true;  // no image to be shown: strict readers would look for its pixel properties
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

    /** Readers refuse files with hundreds of property boxes, so equal ones are one. */
    void use(HeifItem& item, Bytes property, bool essential) {
        auto& all = mContents.properties;
        auto found = std::find(all.begin(), all.end(), property);
        if (found == all.end()) found = all.insert(all.end(), std::move(property));
        item.properties.push_back({static_cast<uint16_t>(found - all.begin() + 1), essential});
    }

    void describe(HeifItem& item, const HevcSps& sps, uint32_t width, uint32_t height) {
        use(item, spatialExtentsBox(width, height), false);
        use(item, pixelInformationBox(sps), false);
        use(item, colorBox(sps.aspects), false);
    }

    void addTile(const HeifTrack& track, const Bytes& sample) {
        HeifItem& item = add("hvc1");
        item.hidden = track.grid.has_value();
        item.tile = sample;
        const HevcSps& sps = track.config.sps;
        describe(item, sps, sps.width, sps.height);
        use(item, decoderConfigurationBox(track.config), true);
    }

    void addGrid(const HeifTrack& track) {
        const uint16_t firstTile = static_cast<uint16_t>(mContents.items.size() - track.samples.size() + 1);
        HeifItem& item = add("grid");
        item.inItemData = true;
        item.ownBody = gridBody(track);
        item.referenceType = "dimg";
        for (uint16_t id = firstTile; id < item.id; ++id) item.references.push_back(id);
        describe(item, track.config.sps, track.width, track.height);
    }

    /** Transformations, after everything that describes the image they apply to. */
    void finishImage(const HeifTrack& track) {
        HeifItem& item = mContents.items.back();
        const HevcSps& sps = track.config.sps;
        const bool larger = sps.width != track.width || sps.height != track.height;
        if (!track.grid && larger) use(item, cleanApertureBox(track.width, track.height, sps), true);
        if (mDegrees != 0) use(item, rotationBox(mDegrees), true);
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

    /** ISO/IEC 23008-12, A.2.1: where the TIFF header is, then the sample as it came. */
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
