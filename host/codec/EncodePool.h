#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "CodecConfig.h"
#include "HevcEngine.h"

namespace quill::host {

struct CodedPicture {
    std::vector<uint8_t> bytes;  ///< empty for the end of the stream
    int64_t timeUs = 0;
    bool endOfStream = false;
};

/** One picture to code, or the end of the stream. */
struct EncodeJob {
    std::optional<SourcePicture> picture;  ///< nothing for the end of the stream
    std::function<void()> release;         ///< called on a worker's thread when `picture` is not read any more
    int64_t timeUs = 0;
};

/**
 * Codes pictures on as many threads as there are cores, and gives them back in the order they came in.
 *
 * The tiles of a grid are coded side by side, one thread and one engine each. Without a grid
 * there is one picture to wait for, and one engine spreads it over all cores: half the time on two.
 * Thread-safe.
 */
class EncodePool {
  public:
    enum class Poll { kNothing, kPicture, kFailed };

    /** `onProgress` is called on a worker's thread, outside every lock, when `poll` may have news. */
    EncodePool(const CodecConfig& config, std::function<void()> onProgress);
    /** Waits for the pictures being coded; drops all others. */
    ~EncodePool();

    /** Calls nothing back; the end of the stream may be there to poll at once. */
    void submit(EncodeJob job);
    /** The next picture in order; kFailed for ever once an engine could not be opened. */
    Poll poll(CodedPicture* picture);
    /** Of the stream; empty until the first picture came out of `poll`. */
    std::vector<uint8_t> parameterSets();

  private:
    enum class Progress { kWaiting, kCoding, kDone };
    struct Entry {
        EncodeJob job;
        Progress progress = Progress::kWaiting;
        CodedPicture result;
    };

    void work();
    std::shared_ptr<Entry> take();
    std::unique_ptr<HevcEngine> openEngine();
    bool code(HevcEngine* engine, Entry* entry);
    bool codeToBudget(HevcEngine* engine, const PlanarPicture& planar, std::vector<uint8_t>* coded);
    void finish(Entry* entry);
    void fail();

    const CodecConfig mConfig;
    const RgbToYuv mMatrix;
    const std::function<void()> mOnProgress;
    size_t mMaxUnclaimed;

    std::mutex mLock;
    std::condition_variable mWork;
    std::deque<std::shared_ptr<Entry>> mEntries;  // in order, until polled
    std::optional<int> mBitDepth;                 // of the stream: the profile's, or the first picture's
    std::vector<uint8_t> mParameterSets;
    bool mStopping = false;
    bool mFailed = false;

    std::vector<std::thread> mWorkers;
};

}  // namespace quill::host
