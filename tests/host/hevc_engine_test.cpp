#include "HevcEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "PictureLayout.h"
#include "RateControl.h"

namespace quill::host {
namespace {

using Bytes = std::vector<uint8_t>;

/** Slopes, edges and noise, as in a photograph. */
PlanarPicture photograph(int width, int height) {
    PlanarPicture picture;
    picture.reshape(codedSize(width), codedSize(height), 8);
    std::mt19937 random(1);
    for (int plane = 0; plane < 3; ++plane) {
        for (size_t i = 0; i < picture.planes[plane].size(); ++i) {
            const int x = static_cast<int>(i) % picture.planeWidth(plane);
            const int y = static_cast<int>(i) / picture.planeWidth(plane);
            const double wave = 60 * std::sin(x * 0.05 + plane) + 40 * std::cos(y * 0.11) + (x / 23 % 2) * 20;
            const int value = static_cast<int>(120 + wave) + static_cast<int>(random() % 7);
            picture.planes[plane][i] = static_cast<uint8_t>(value);
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

TEST(HevcEngine, PicturesDoNotDependOnWhatWasCodedBefore) {
    const auto fresh = HevcEngine::open(settingsFor(256, 256));
    const auto used = HevcEngine::open(settingsFor(256, 256));
    PlanarPicture black;
    black.reshape(256, 256, 8);
    const PlanarPicture picture = photograph(256, 256);
    for (int i = 0; i < 5; ++i) codeWith(used.get(), i % 2 == 0 ? black : picture);
    EXPECT_EQ(fresh->parameterSets(), used->parameterSets());
    const Bytes first = codeWith(fresh.get(), picture), later = codeWith(used.get(), picture);
    constexpr size_t kHeaders = 16;  // of the NAL unit and the slice, with the flag that differs
    ASSERT_GT(first.size(), kHeaders);
    EXPECT_EQ(Bytes(first.begin() + kHeaders, first.end()), Bytes(later.begin() + kHeaders, later.end()));
}

TEST(HevcEngine, EverySizeIsCodedWithEveryPreset) {
    constexpr int kSizes[][2] = {{1, 1}, {15, 40}, {16, 16}, {18, 30}, {63, 65}, {64, 64}, {321, 241}, {512, 512}};
    for (const char* preset : {"ultrafast", "slow"}) {
        for (const auto& [width, height] : kSizes) {
            EngineSettings settings = settingsFor(width, height);
            settings.preset = preset;
            const auto engine = HevcEngine::open(settings);
            ASSERT_NE(engine, nullptr) << width << "x" << height << " " << preset;
            EXPECT_FALSE(codeWith(engine.get(), photograph(width, height)).empty());
        }
    }
}

TEST(HevcEngine, SizeGrowsWithEveryStepOfQuality) {
    const PlanarPicture picture = photograph(512, 512);
    std::vector<size_t> sizes;
    for (int quality = 0; quality <= 100; ++quality) {
        EngineSettings settings = settingsFor(512, 512);
        settings.qp = qpForQuality(quality);
        const auto engine = HevcEngine::open(settings);
        const Bytes stream = codeWith(engine.get(), picture);
        // With so small a picture one step may shrink the stream by a few bytes; two steps never do.
        EXPECT_NE(stream.size(), quality >= 1 ? sizes[quality - 1] : 0) << "quality " << quality;
        EXPECT_GT(stream.size(), quality >= 2 ? sizes[quality - 2] : 0) << "quality " << quality;
        sizes.push_back(stream.size());
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
