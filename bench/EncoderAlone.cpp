#include "EncoderAlone.h"

#include <condition_variable>
#include <mutex>
#include <stdexcept>

#include "HeicEncoderInfoManager.h"
#include "QuillHeifEncoder.h"
#include "TileLayout.h"
#include "codec/EncodePool.h"

namespace quill::bench {

namespace {

using namespace android;
using host::CodecConfig;
using host::EncodePool;

constexpr int kQuality = 95;

int across(int samples) { return (samples + kTileSide - 1) / kTileSide; }

CodecConfig configFor(const test::Geometry& geometry) {
    CodecConfig config;
    config.width = config.height = kTileSide;
    config.gridRows = across(geometry.height);
    config.gridCols = across(geometry.width);
    config.layout = host::SampleLayout::kNv12;
    config.bitDepth = 8;
    config.quality = kQuality;
    return config;
}

/** Sleeps until the pool has news. */
class News {
  public:
    void tell() {
        const std::lock_guard<std::mutex> guard(mLock);
        mAny = true;
        mTold.notify_one();
    }
    void await() {
        std::unique_lock<std::mutex> guard(mLock);
        mTold.wait(guard, [this] { return mAny; });
        mAny = false;
    }

  private:
    std::mutex mLock;
    std::condition_variable mTold;
    bool mAny = false;
};

}  // namespace

EncoderAlone::EncoderAlone(uint8_t* frame, const test::Geometry& geometry)
        : mConfig(configFor(geometry)),
          mTiles(static_cast<size_t>(mConfig.pictureCount()), std::vector<uint8_t>(kTileBytesYuv8)) {
    const sp<QuillHeifEncoder> cutter = new QuillHeifEncoder(geometry.width, geometry.height, geometry.stride,
                                                             geometry.sliceHeight, FORMAT_NV12, kQuality);
    for (size_t i = 0; i < mTiles.size(); ++i) {
        cutter->fillInputBuffer(mTiles[i].data(), frame, static_cast<int>(i), kTileSide);
    }
}

void EncoderAlone::encode() {
    News news;
    EncodePool pool(mConfig, [&] { news.tell(); });
    for (const std::vector<uint8_t>& tile : mTiles) pool.submit({mConfig.describe(tile.data()), [] {}, 0});
    host::CodedPicture coded;
    for (size_t done = 0; done < mTiles.size();) {
        switch (pool.poll(&coded)) {
            case EncodePool::Poll::kPicture:
                ++done;
                break;
            case EncodePool::Poll::kNothing:
                news.await();
                break;
            case EncodePool::Poll::kFailed:
                throw std::runtime_error("the encoder failed");
        }
    }
}

}  // namespace quill::bench
