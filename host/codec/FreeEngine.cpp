#include "FreeEngine.h"

#include <algorithm>
#include <cstring>
#include <list>
#include <mutex>

#include <cutils/properties.h>

namespace quill::host {

namespace {

struct GrayPicture {
    EngineSettings settings;
    std::vector<uint8_t> parameterSets;
    std::vector<uint8_t> coded;

    bool fits(const EngineSettings& other) const {
        return settings.width == other.width && settings.height == other.height &&
               settings.bitDepth == other.bitDepth && settings.aspects == other.aspects;
    }
};

PlanarPicture gray(const EngineSettings& settings) {
    PlanarPicture picture;
    picture.reshape(codedSize(settings.width), codedSize(settings.height), settings.bitDepth);
    // 128 in 8 bits. In 10 bits 514, the value nearest to the middle whose two bytes are equal.
    for (std::vector<uint8_t>& plane : picture.planes)
        std::fill(plane.begin(), plane.end(), settings.bitDepth > 8 ? 2 : 128);
    return picture;
}

std::optional<GrayPicture> codeGray(const EngineSettings& settings) {
    EngineSettings quick = settings;
    quick.preset = "ultrafast";  // more work gains nothing here
    const std::unique_ptr<HevcEngine> engine = HevcEngine::open(quick);
    GrayPicture picture;
    if (engine == nullptr || !engine->encode(gray(settings), std::nullopt, &picture.coded)) return std::nullopt;
    picture.settings = settings;
    picture.parameterSets = engine->parameterSets();
    return picture;
}

/** The gray picture for these settings; null if x265 refuses them. */
const GrayPicture* grayPictureFor(const EngineSettings& settings) {
    static std::mutex lock;
    static std::list<GrayPicture>* const pictures =
            new std::list<GrayPicture>;  // never destroyed: encoder threads use it
    const std::lock_guard<std::mutex> guard(lock);
    for (const GrayPicture& picture : *pictures) {
        if (picture.fits(settings)) return &picture;
    }
    std::optional<GrayPicture> made = codeGray(settings);
    if (!made) return nullptr;
    pictures->push_back(std::move(*made));
    return &pictures->back();
}

class FreeEngine : public HevcEngine {
  public:
    explicit FreeEngine(const GrayPicture& picture) : mPicture(picture) {}

    const std::vector<uint8_t>& parameterSets() const override { return mPicture.parameterSets; }

    bool readsPictures() const override { return false; }

    bool encode(const PlanarPicture&, std::optional<int>, std::vector<uint8_t>* coded) override {
        *coded = mPicture.coded;
        return true;
    }

  private:
    const GrayPicture& mPicture;
};

}  // namespace

bool isEncodingFree() {
    char kind[PROPERTY_VALUE_MAX];
    property_get("debug.quill.host.encoder", kind, "");
    return strcmp(kind, "free") == 0;
}

std::unique_ptr<HevcEngine> openFreeEngine(const EngineSettings& settings) {
    const GrayPicture* const picture = grayPictureFor(settings);
    return picture == nullptr ? nullptr : std::make_unique<FreeEngine>(*picture);
}

}  // namespace quill::host
