#include "codec/HevcEngine.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "codec/PictureLayout.h"
#include "codec/RateControl.h"

namespace quill::host {
namespace {

using Bytes = std::vector<uint8_t>;

/** Luma of the first picture of `stream` as an independent decoder sees it. */
struct Decoded {
    int width = 0;
    int height = 0;
    Bytes luma;
};

/** Debian has libde265 for its own HEIF tools but not its headers with it: these few calls are its stable C interface.
 */
class Decoder {
  public:
    Decoder() : mLibrary(dlopen("libde265.so.0", RTLD_NOW)) {
        if (mLibrary != nullptr) mContext = call<void*>("de265_new_decoder");
    }
    ~Decoder() {
        if (mLibrary != nullptr) call<int>("de265_free_decoder", mContext);
    }

    Decoded decode(const Bytes& stream) {
        Decoded decoded;
        if (mLibrary == nullptr) return decoded;
        call<int>("de265_push_data", mContext, stream.data(), static_cast<int>(stream.size()), int64_t{0}, nullptr);
        call<int>("de265_flush_data", mContext);
        const void* image = nullptr;
        for (int more = 1; more != 0 && image == nullptr;) {
            if (call<int>("de265_decode", mContext, &more) != 0) break;
            image = call<const void*>("de265_get_next_picture", mContext);
        }
        if (image == nullptr) return decoded;
        decoded.width = call<int>("de265_get_image_width", image, 0);
        decoded.height = call<int>("de265_get_image_height", image, 0);
        const int bytes = call<int>("de265_get_bits_per_pixel", image, 0) > 8 ? 2 : 1;
        int stride = 0;
        const auto* row = call<const uint8_t*>("de265_get_image_plane", image, 0, &stride);
        for (int y = 0; y < decoded.height; ++y, row += stride) {
            decoded.luma.insert(decoded.luma.end(), row, row + decoded.width * bytes);
        }
        return decoded;
    }

  private:
    template <typename Result, typename... Args>
    Result call(const char* name, Args... args) {
        return reinterpret_cast<Result (*)(Args...)>(dlsym(mLibrary, name))(args...);
    }

    void* const mLibrary;
    void* mContext = nullptr;
};

/** Slopes, edges and noise: something of everything a photograph has. */
PlanarPicture photograph(int width, int height, int bitDepth = 8) {
    PlanarPicture picture;
    picture.reshape(codedSize(width), codedSize(height), bitDepth);
    std::mt19937 random(1);
    for (int plane = 0; plane < 3; ++plane) {
        for (size_t i = 0; i < picture.planes[plane].size() / picture.bytesPerSample(); ++i) {
            const int x = static_cast<int>(i) % picture.planeWidth(plane);
            const int y = static_cast<int>(i) / picture.planeWidth(plane);
            const double wave = 60 * std::sin(x * 0.05 + plane) + 40 * std::cos(y * 0.11) + (x / 23 % 2) * 20;
            const int value = static_cast<int>(120 + wave) + static_cast<int>(random() % 7);
            if (bitDepth == 8) picture.planes[plane][i] = static_cast<uint8_t>(value);
            if (bitDepth > 8) reinterpret_cast<uint16_t*>(picture.planes[plane].data())[i] = value * 4;
        }
    }
    return picture;
}

EngineSettings settingsFor(int width, int height) {
    EngineSettings settings;
    settings.width = width;
    settings.height = height;
    settings.preset = "ultrafast";
    return settings;
}

Bytes codeWith(HevcEngine* engine, const PlanarPicture& picture) {
    Bytes coded;
    EXPECT_TRUE(engine->encode(picture, std::nullopt, &coded));
    return coded;
}

Bytes streamOf(HevcEngine* engine, const PlanarPicture& picture) {
    Bytes stream = engine->parameterSets();
    const Bytes coded = codeWith(engine, picture);
    stream.insert(stream.end(), coded.begin(), coded.end());
    return stream;
}

/** Types of the NAL units behind four-byte start codes; -1 for one behind a shorter start code. */
std::vector<int> nalTypes(const Bytes& stream) {
    std::vector<int> types;
    for (size_t i = 2; i + 1 < stream.size(); ++i) {
        if (stream[i] != 1 || stream[i - 1] != 0 || stream[i - 2] != 0) continue;
        types.push_back(i >= 3 && stream[i - 3] == 0 ? stream[i + 1] >> 1 : -1);
    }
    return types;
}

double psnr(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / sum);
}

TEST(HevcEngine, StreamsAreParameterSetsThenSlicesOnly) {
    const auto engine = HevcEngine::open(settingsFor(512, 512));
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(nalTypes(engine->parameterSets()), (std::vector<int>{32, 33, 34}));
    const PlanarPicture picture = photograph(512, 512);
    for (int i = 0; i < 3; ++i) {
        const std::vector<int> types = nalTypes(codeWith(engine.get(), picture));
        ASSERT_EQ(types.size(), 1u) << "picture " << i;
        EXPECT_TRUE(types[0] == 19 || types[0] == 20) << "not an IDR picture: type " << types[0];
    }
}

TEST(HevcEngine, PicturesDoNotDependOnWhatWasCodedBefore) {
    const auto fresh = HevcEngine::open(settingsFor(256, 256));
    const auto used = HevcEngine::open(settingsFor(256, 256));
    PlanarPicture black;
    black.reshape(256, 256, 8);
    const PlanarPicture picture = photograph(256, 256);
    for (int i = 0; i < 5; ++i) codeWith(used.get(), i % 2 == 0 ? black : picture);
    EXPECT_EQ(fresh->parameterSets(), used->parameterSets());
    const Bytes first = streamOf(fresh.get(), picture);
    const Bytes later = streamOf(used.get(), picture);
    EXPECT_EQ(first.size(), later.size());
    EXPECT_EQ(Decoder().decode(first).luma, Decoder().decode(later).luma);
}

TEST(HevcEngine, EverySizeDecodesAtItsCodedSize) {
    constexpr int kSizes[][2] = {{1, 1}, {15, 40}, {16, 16}, {18, 30}, {63, 65}, {64, 64}, {321, 241}, {512, 512}};
    for (const char* preset : {"ultrafast", "slow"}) {
        for (const auto& size : kSizes) {
            EngineSettings settings = settingsFor(size[0], size[1]);
            settings.preset = preset;
            const auto engine = HevcEngine::open(settings);
            ASSERT_NE(engine, nullptr) << size[0] << "x" << size[1] << " " << preset;
            const Decoded decoded = Decoder().decode(streamOf(engine.get(), photograph(size[0], size[1])));
            EXPECT_EQ(decoded.width, codedSize(size[0])) << preset;
            EXPECT_EQ(decoded.height, codedSize(size[1])) << preset;
        }
    }
}

TEST(HevcEngine, QualityGrowsFromUglyToTransparentWithEveryStep) {
    const PlanarPicture picture = photograph(512, 512);
    std::vector<size_t> sizes;
    for (int quality = 0; quality <= 100; ++quality) {
        EngineSettings settings = settingsFor(512, 512);
        settings.qp = qpForQuality(quality);
        const auto engine = HevcEngine::open(settings);
        const Bytes stream = streamOf(engine.get(), picture);
        // Of this small regular picture a step may cost a few bytes in place of saving them; two steps never do.
        EXPECT_NE(stream.size(), quality >= 1 ? sizes[quality - 1] : 0) << "quality " << quality;
        EXPECT_GT(stream.size(), quality >= 2 ? sizes[quality - 2] : 0) << "quality " << quality;
        sizes.push_back(stream.size());
        if (quality % 50 != 0 && quality != 95) continue;
        const Decoded decoded = Decoder().decode(stream);
        ASSERT_EQ(decoded.luma.size(), picture.planes[0].size()) << "quality " << quality;
        const double difference = psnr(decoded.luma, picture.planes[0]);
        EXPECT_GT(difference, quality == 100 ? 52 : quality == 95 ? 40 : 0) << "quality " << quality;
        EXPECT_LT(difference, quality == 0 ? 33 : 99) << "quality " << quality;
    }
}

TEST(RateControl, SearchEndsNearTheTargetWhateverTheContent) {
    for (double typicalQp : {8.0, 20.0, 40.0}) {
        QpSearch search(100000, 512 * 512);
        double best = 0;
        int trials = 0;
        while (const auto qp = search.next()) {
            const double bits = 100000 * std::exp2((typicalQp - *qp) / 7.5);
            if (search.report(static_cast<int64_t>(bits))) best = bits;
            ASSERT_LE(++trials, 5);
        }
        EXPECT_NEAR(best, 100000, 15000) << typicalQp;
    }
}

TEST(ColorAspects, FollowTheKeysOfACamera) { EXPECT_EQ(colorAspectsFromKeys(2, 2, 1), (ColorAspects{5, 13, 5, true})); }

TEST(PictureLayout, OddPicturesRepeatTheirLastWholeSamples) {
    // 3x3 at a pitch of 4: one whole chroma sample; the client left the rest of the chroma at 0.
    const Bytes i420 = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 0, 0, 0, 0, 50, 0, 0, 0, 60, 0, 0, 0};
    PlanarPicture planar;
    toPlanar({SampleLayout::kI420, i420.data(), 3, 3, 4, 4}, RgbToYuv({}), &planar);
    ASSERT_EQ(planar.width, kMinCodedSize);
    EXPECT_EQ(Bytes(planar.planes[0].begin() + 16, planar.planes[0].begin() + 21), (Bytes{4, 5, 6, 6, 6}));
    EXPECT_EQ(planar.planes[0].back(), 9);
    EXPECT_EQ(planar.planes[1], Bytes(64, 50));
    EXPECT_EQ(planar.planes[2], Bytes(64, 60));
}

}  // namespace
}  // namespace quill::host
