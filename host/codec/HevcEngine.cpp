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

/** NAL unit types below this one are slices (ISO/IEC 23008-2, table 7-1). */
constexpr uint32_t kFirstNonSliceType = 32;

/** Gives smooth areas, where banding shows, slightly more bits. */
constexpr double kAdaptiveQuantStrength = 0.3;

/** Quantiser offsets are given per block of this side; see `fractionOffsets`. */
constexpr int kOffsetBlock = 16;

/** The smallest coding tree unit. */
constexpr uint32_t kSmallestUnit = 16;

/**
 * Up to this quantiser a photograph's blocks are hardly ever coded larger than `kSmallestUnit`. An ultrafast one takes
 * 0.65 of the time without larger ones, and 0.7 % more bytes; at a quantiser of 27 it would be 11 %.
 */
constexpr double kFineQp = 18.0;

/** 0 to `count` - 1, ordered so that the first few are always spread over the whole range. */
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
 * x265 quantises in whole steps. For a fraction of a step, that fraction of the coding tree units is coded one step
 * coarser: whole rows as far as possible, because each change of quantiser costs bits, and spread over the picture, so
 * that no part of it looks different.
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

/** x265 fills tables that all its encoders share when it opens one. */
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

/** Appends one NAL unit with a four-byte start code; x265 has three bytes in all but the first. */
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
    // A picture must have at least one coding tree unit.
    while (param->maxCUSize > kSmallestUnit &&
           static_cast<int>(param->maxCUSize) > std::min(param->sourceWidth, param->sourceHeight)) {
        param->maxCUSize /= 2;
    }
    // Of the presets ultrafast alone codes no smaller ones. Large pictures may not: from level 5 on a coding tree unit
    // has 32 pixels or more (ITU-T H.265, A.4.1).
    const bool isTile = !settings.threaded;
    if (isTile && settings.qp <= kFineQp && param->minCUSize >= kSmallestUnit) param->maxCUSize = kSmallestUnit;
    param->minCUSize = std::min(param->minCUSize, param->maxCUSize);
    param->maxTUSize = std::min(param->maxTUSize, param->maxCUSize);
    param->rc.qgSize = std::min(param->rc.qgSize, param->maxCUSize);
}

void setIntraOnly(x265_param* param) {
    // Each picture asks to be an IDR picture. A key frame interval of 1 would have the same effect, but x265 then marks
    // the stream as Main Intra, a profile of the range extensions, in place of Main or Main 10.
    param->keyframeMax = -1;
    param->keyframeMin = 1;
    param->bOpenGOP = 0;
    param->bframes = 0;
    param->maxNumReferences = 1;
    // No delay: each picture comes out of the call that takes it in.
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
 * Every picture sets its own quantiser, so it never depends on earlier pictures. The mode is still constant rate
 * factor, because x265 applies offsets inside a picture only in that mode.
 */
void setRate(x265_param* param) {
    param->rc.rateControlMode = X265_RC_CRF;
    param->rc.cuTree = 0;
    param->rc.aqMode = X265_AQ_VARIANCE;
    param->rc.aqStrength = kAdaptiveQuantStrength;
}

/** Without wavefronts x265 starts no thread pools. The pool name stays null, because x265 leaks it. */
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
    // Without it x265 3.5 forgets to free the filter's buffers. The engines of tiles stay open.
    if (settings.threaded) param->bEnableSAO = 1;
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
        // With every picture or with none: x265 allocates memory for them at the first.
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
            // x265 only reads them.
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
