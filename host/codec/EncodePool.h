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
    std::function<void()> release;         ///< called on a worker's thread once `picture` has been read
    int64_t timeUs = 0;
};

/**
 * Codes pictures on all cores and returns them in input order. Thread-safe.
 *
 * The tiles of a grid are coded in parallel, each thread with an engine of its own. Without a grid there is one
 * picture, and one engine spreads it over all cores.
 */
class EncodePool {
  public:
    enum class Poll { kNothing, kPicture, kFailed };

    /** `onProgress` is called on a worker's thread, outside every lock, when the result of `poll` may have changed. */
    EncodePool(const CodecConfig& config, std::function<void()> onProgress);
    /** Waits for the pictures being coded and drops all others. */
    ~EncodePool();

    /** Does not call back, although an end of the stream can be polled at once. */
    void submit(EncodeJob job);
    /** The next picture in order; always kFailed after an engine has failed. */
    Poll poll(CodedPicture* picture);
    /** The stream's parameter sets; empty until `poll` has returned the first picture. */
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
    bool isReused() const;
    EngineSettings engineSettings();
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
    std::optional<int> mBitDepth;                 // the profile's, or else the first picture's
    std::vector<uint8_t> mParameterSets;
    bool mStopping = false;
    bool mFailed = false;

    std::vector<std::thread> mWorkers;
};

}  // namespace quill::host
