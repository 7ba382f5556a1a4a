#define LOG_TAG "QuillPlatform"

#include "HevcEngine.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <numeric>

#include <log/log.h>
#include <x265.h>

namespace quill::host {

namespace {

constexpr uint8_t kStartCode[] = {0, 0, 0, 1};

/** NAL unit types below this one carry slices (ISO/IEC 23008-2, table 7-1). */
constexpr uint32_t kFirstNonSliceType = 32;

/** Smooth areas get a little more than their share: banding shows before noise does. */
constexpr double kAdaptiveQuantStrength = 0.3;

/** Quantiser offsets are given per block of this side; see `fractionOffsets`. */
constexpr int kOffsetBlock = 16;

/** 0 to `count` - 1, ordered so that any first few of them lie spread over the whole range. */
std::vector<int> spreadOut(int count) {
    const auto reversed = [](int number) {
        uint32_t bits = 0;
        for (int i = 0; i < 16; ++i) bits = bits << 1 | (static_cast<uint32_t>(number) >> i & 1);
        return bits;
    };
    std::vector<int> order(static_cast<size_t>(count));
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(), [&](int a, int b) { return reversed(a) < reversed(b); });
    return order;
}

/**
 * x265 quantises in whole steps. A fraction is made of them: that part of the picture's coding tree units
 * is coded one step coarser. Whole rows of them as far as possible, since each change along the way
 * costs bits, and rows spread over the picture, so that no half of it looks different.
 */
std::vector<float> fractionOffsets(double qp, int width, int height, int unit) {
    const auto across = [](int size, int block) { return (size + block - 1) / block; };
    const int unitColumns = across(width, unit);
    const int unitRows = across(height, unit);
    const int columns = across(width, kOffsetBlock);
    const int rows = across(height, kOffsetBlock);
    const int coarser = static_cast<int>(std::lround((qp - std::floor(qp)) * unitColumns * unitRows));

    const std::vector<int> order = spreadOut(unitRows);
    std::vector<int> unitsBefore(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        unitsBefore[static_cast<size_t>(order[i])] = static_cast<int>(i) * unitColumns;
    std::vector<float> offsets;
    for (int y = 0; y < rows; ++y) {
        const int before = unitsBefore[static_cast<size_t>(y * kOffsetBlock / unit)];
        for (int x = 0; x < columns; ++x) offsets.push_back(before + x * kOffsetBlock / unit < coarser ? 1.0F : 0.0F);
    }
    return offsets;
}

/** x265 fills tables shared by all its encoders when it opens one. */
std::mutex gOpening;

struct ParamFree {
    const x265_api* api;
    void operator()(x265_param* param) const { api->param_free(param); }
};
using Param = std::unique_ptr<x265_param, ParamFree>;

struct EncoderClose {
    const x265_api* api;
    void operator()(x265_encoder* encoder) const { api->encoder_close(encoder); }
};
using Encoder = std::unique_ptr<x265_encoder, EncoderClose>;

/** Appends one NAL unit; x265 shortens the start codes of all but the first to three bytes. */
void appendNal(const x265_nal& nal, std::vector<uint8_t>* stream) {
    const uint8_t* const begin = nal.payload;
    const uint8_t* const end = begin + nal.sizeBytes;
    const uint8_t* const body = std::find(begin, end, uint8_t{1}) + 1;
    stream->insert(stream->end(), std::begin(kStartCode), std::end(kStartCode));
    stream->insert(stream->end(), body, end);
}

void setGeometry(const EngineSettings& settings, x265_param* param) {
    param->sourceWidth = codedSize(settings.width);
    param->sourceHeight = codedSize(settings.height);
    param->internalCsp = X265_CSP_I420;
    param->fpsNum = 30;
    param->fpsDenom = 1;
    // A picture must hold one coding tree unit at least.
    while (param->maxCUSize > kMinCodedSize &&
           static_cast<int>(param->maxCUSize) > std::min(param->sourceWidth, param->sourceHeight)) {
        param->maxCUSize /= 2;
    }
    param->minCUSize = std::min(param->minCUSize, param->maxCUSize);
    param->maxTUSize = std::min(param->maxTUSize, param->maxCUSize);
    param->rc.qgSize = std::min(param->rc.qgSize, param->maxCUSize);
}

void setIntraOnly(x265_param* param) {
    // Every picture is asked to be an IDR picture, one by one. A key frame interval of 1 would do so too, but x265 then
    // calls the stream Main Intra of the range extensions, which fewer decoders take than Main and Main 10.
    param->keyframeMax = -1;
    param->keyframeMin = 1;
    param->bOpenGOP = 0;
    param->bframes = 0;
    param->maxNumReferences = 1;
    // Nothing may wait for the next picture: each one comes out of the call that takes it in.
    param->lookaheadDepth = 0;
    param->lookaheadSlices = 0;
    param->scenecutThreshold = 0;
    param->frameNumThreads = 1;
    param->bRepeatHeaders = 0;
    param->bEmitInfoSEI = 0;
    param->bEmitHRDSEI = 0;
    param->bEnableAccessUnitDelimiters = 0;
    param->decodedPictureHashSEI = 0;
    param->bAnnexB = 1;
}

/**
 * Every picture names its quantiser, so that it never depends on the pictures coded before. The mode is
 * none the less constant rate factor: only with it does x265 heed offsets inside the picture.
 */
void setRate(x265_param* param) {
    param->rc.rateControlMode = X265_RC_CRF;
    param->rc.cuTree = 0;
    param->rc.aqMode = X265_AQ_VARIANCE;
    param->rc.aqStrength = kAdaptiveQuantStrength;
}

/** Without wavefronts x265 has no use for its pools and starts none; naming "none" would leak the name. */
void setThreads(bool threaded, x265_param* param) {
    param->bEnableWavefront = threaded ? 1 : 0;
    param->numaPools = nullptr;
}

void setAspects(const ColorAspects& aspects, x265_param* param) {
    param->vui.bEnableVideoSignalTypePresentFlag = 1;
    param->vui.bEnableVideoFullRangeFlag = aspects.fullRange ? 1 : 0;
    param->vui.bEnableColorDescriptionPresentFlag = 1;
    param->vui.colorPrimaries = aspects.primaries;
    param->vui.transferCharacteristics = aspects.transfer;
    param->vui.matrixCoeffs = aspects.matrix;
}

Param makeParam(const x265_api* api, const EngineSettings& settings) {
    Param param(api->param_alloc(), ParamFree{api});
    if (param == nullptr) return param;
    if (api->param_default_preset(param.get(), settings.preset.c_str(), "zerolatency") != 0) {
        param.reset();
        return param;
    }
    param->logLevel = X265_LOG_NONE;
    setGeometry(settings, param.get());
    setIntraOnly(param.get());
    setRate(param.get());
    setThreads(settings.threaded, param.get());
    param->bEnableSAO = 1;  // without it x265 3.5 forgets to free the filter's buffers
    setAspects(settings.aspects, param.get());
    return param;
}

class X265Engine : public HevcEngine {
  public:
    X265Engine(const x265_api* api, Param param, Encoder encoder, double qp)
            : mApi(api),
              mParam(std::move(param)),
              mEncoder(std::move(encoder)),
              mQp(static_cast<int>(std::floor(qp))),
              mFraction(fractionOffsets(qp, mParam->sourceWidth, mParam->sourceHeight,
                                        static_cast<int>(mParam->maxCUSize))),
              mNoFraction(mFraction.size(), 0.0F) {}

    bool readParameterSets() {
        x265_nal* nals = nullptr;
        uint32_t count = 0;
        if (mApi->encoder_headers(mEncoder.get(), &nals, &count) < 0) return false;
        for (uint32_t i = 0; i < count; ++i) {
            if (nals[i].type >= kFirstNonSliceType && nals[i].type <= NAL_UNIT_PPS) {
                appendNal(nals[i], &mParameterSets);
            }
        }
        return !mParameterSets.empty();
    }

    const std::vector<uint8_t>& parameterSets() const override { return mParameterSets; }

    bool encode(const PlanarPicture& picture, std::optional<int> qp, std::vector<uint8_t>* coded) override {
        coded->clear();
        x265_picture input = describe(picture);
        input.forceqp = qp.value_or(mQp) + 1;  // 0 would be x265's own choice
        // Given with every picture or with none: x265 makes room for them at the first.
        input.quantOffsets = (qp ? mNoFraction : mFraction).data();
        x265_nal* nals = nullptr;
        uint32_t count = 0;
        const int pictures = mApi->encoder_encode(mEncoder.get(), &nals, &count, &input, nullptr);
        for (uint32_t i = 0; pictures == 1 && i < count; ++i) {
            if (nals[i].type < kFirstNonSliceType) appendNal(nals[i], coded);
        }
        if (coded->empty()) ALOGE("x265 gave no picture (%d)", pictures);
        return !coded->empty();
    }

  private:
    x265_picture describe(const PlanarPicture& picture) {
        x265_picture input;
        mApi->picture_init(mParam.get(), &input);
        for (int plane = 0; plane < 3; ++plane) {
            // Only read, though x265 does not say so in its type.
            input.planes[plane] = const_cast<uint8_t*>(picture.planes[plane].data());
            input.stride[plane] = picture.planeWidth(plane) * static_cast<int>(picture.bytesPerSample());
        }
        input.bitDepth = picture.bitDepth;  // x265 shifts to the depth it codes
        input.sliceType = X265_TYPE_IDR;
        input.pts = mPictures++;
        return input;
    }

    const x265_api* const mApi;
    const Param mParam;
    const Encoder mEncoder;
    const int mQp;
    std::vector<float> mFraction;
    std::vector<float> mNoFraction;
    std::vector<uint8_t> mParameterSets;
    int64_t mPictures = 0;
};

}  // namespace

std::unique_ptr<HevcEngine> HevcEngine::open(const EngineSettings& settings) {
    const std::lock_guard<std::mutex> guard(gOpening);
    const x265_api* const api = x265_api_get(settings.bitDepth);
    if (api == nullptr) {
        ALOGE("x265 was built without %d bits", settings.bitDepth);
        return nullptr;
    }
    Param param = makeParam(api, settings);
    Encoder encoder(param == nullptr ? nullptr : api->encoder_open(param.get()), EncoderClose{api});
    if (encoder == nullptr) {
        ALOGE("x265 refused %dx%d, %d bits, preset %s", settings.width, settings.height, settings.bitDepth,
              settings.preset.c_str());
        return nullptr;
    }
    auto engine = std::make_unique<X265Engine>(api, std::move(param), std::move(encoder), settings.qp);
    if (!engine->readParameterSets()) return nullptr;
    return engine;
}

}  // namespace quill::host
