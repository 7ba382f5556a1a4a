#define LOG_TAG "QuillPlatform"

#include "EncodePool.h"

#include <algorithm>
#include <system_error>

#include <log/log.h>
#include <pthread.h>

#include "FreeEngine.h"
#include "Preset.h"
#include "RateControl.h"
#include "SpareEngines.h"

namespace quill::host {

namespace {

/** The workers pause when more coded pictures than a whole image and these are waiting to be polled. */
constexpr size_t kUnclaimedPictures = 8;

size_t workerCount(const CodecConfig& config) {
    const size_t cores = std::max(1u, std::thread::hardware_concurrency());
    return std::min(cores, static_cast<size_t>(config.pictureCount()));
}

}  // namespace

EncodePool::EncodePool(const CodecConfig& config, std::function<void()> onProgress)
        : mConfig(config), mMatrix(config.aspects), mOnProgress(std::move(onProgress)), mBitDepth(config.bitDepth) {
    const size_t workers = workerCount(config);
    // From one thread, a client may draw a whole image on its surface before it asks for the first tile.
    mMaxUnclaimed = workers + static_cast<size_t>(config.pictureCount()) + kUnclaimedPictures;
    try {
        for (size_t i = 0; i < workers; ++i) {
            mWorkers.emplace_back([this] { work(); });
            pthread_setname_np(mWorkers.back().native_handle(), "HevcEncode");
        }
    } catch (const std::system_error& error) {
        ALOGE("Started %zu of %zu encoder threads: %s", mWorkers.size(), workers, error.what());
        mFailed = mWorkers.empty();  // no callback: the caller holds its own lock
    }
}

EncodePool::~EncodePool() {
    {
        const std::lock_guard<std::mutex> guard(mLock);
        mStopping = true;
    }
    mWork.notify_all();
    for (std::thread& worker : mWorkers) worker.join();
}

void EncodePool::submit(EncodeJob job) {
    auto entry = std::make_shared<Entry>();
    entry->result.timeUs = job.timeUs;
    entry->result.endOfStream = !job.picture;
    if (entry->result.endOfStream) entry->progress = Progress::kDone;
    entry->job = std::move(job);
    {
        const std::lock_guard<std::mutex> guard(mLock);
        if (!mBitDepth && !entry->result.endOfStream) mBitDepth = bitDepthOf(entry->job.picture->layout);
        mEntries.push_back(entry);
    }
    mWork.notify_one();
}

EncodePool::Poll EncodePool::poll(CodedPicture* picture) {
    {
        const std::lock_guard<std::mutex> guard(mLock);
        if (mFailed) return Poll::kFailed;
        if (mEntries.empty() || mEntries.front()->progress != Progress::kDone) return Poll::kNothing;
        *picture = std::move(mEntries.front()->result);
        mEntries.pop_front();
    }
    mWork.notify_all();
    return Poll::kPicture;
}

std::vector<uint8_t> EncodePool::parameterSets() {
    const std::lock_guard<std::mutex> guard(mLock);
    return mParameterSets;
}

void EncodePool::work() {
    std::unique_ptr<HevcEngine> engine;
    while (const std::shared_ptr<Entry> entry = take()) {
        if (engine == nullptr) engine = openEngine();
        if (engine == nullptr) return fail();
        if (!code(engine.get(), entry.get())) return fail();
        finish(entry.get());
    }
    if (engine != nullptr && isReused()) keepSpareEngine(engineSettings(), std::move(engine));
}

/** The next picture to code; null if the pool stops. */
std::shared_ptr<EncodePool::Entry> EncodePool::take() {
    std::unique_lock<std::mutex> guard(mLock);
    for (;;) {
        if (mStopping || mFailed) return nullptr;
        const size_t reach = std::min(mEntries.size(), mMaxUnclaimed);
        for (size_t i = 0; i < reach; ++i) {
            if (mEntries[i]->progress != Progress::kWaiting) continue;
            mEntries[i]->progress = Progress::kCoding;
            return mEntries[i];
        }
        mWork.wait(guard);
    }
}

/** Engines of tiles serve the next still too. */
bool EncodePool::isReused() const { return mConfig.pictureCount() > 1 && !isEncodingFree(); }

EngineSettings EncodePool::engineSettings() {
    EngineSettings settings;
    settings.width = mConfig.width;
    settings.height = mConfig.height;
    settings.aspects = mConfig.aspects;
    settings.preset = presetFor(mConfig.framePixels());
    settings.qp = qpForQuality(mConfig.quality);
    settings.threaded = mConfig.pictureCount() == 1;
    const std::lock_guard<std::mutex> guard(mLock);
    settings.bitDepth = *mBitDepth;
    return settings;
}

std::unique_ptr<HevcEngine> EncodePool::openEngine() {
    const EngineSettings settings = engineSettings();
    std::unique_ptr<HevcEngine> engine = isReused() ? takeSpareEngine(settings) : nullptr;
    if (engine == nullptr) engine = isEncodingFree() ? openFreeEngine(settings) : HevcEngine::open(settings);
    if (engine == nullptr) return nullptr;
    const std::lock_guard<std::mutex> guard(mLock);
    mParameterSets = engine->parameterSets();
    return engine;
}

/** False if the encoder failed. */
bool EncodePool::code(HevcEngine* engine, Entry* entry) {
    thread_local PlanarPicture planar;
    if (engine->readsPictures()) toPlanar(*entry->job.picture, mMatrix, &planar);
    entry->job.release();
    mOnProgress();  // the input's memory is free again
    std::vector<uint8_t>* const coded = &entry->result.bytes;
    return mConfig.constantQuality ? engine->encode(planar, std::nullopt, coded) : codeToBudget(engine, planar, coded);
}

bool EncodePool::codeToBudget(HevcEngine* engine, const PlanarPicture& planar, std::vector<uint8_t>* coded) {
    QpSearch search(bitsPerPicture(mConfig.bitrate, mConfig.pictureCount()), int64_t{mConfig.width} * mConfig.height);
    std::vector<uint8_t> trial;
    while (const std::optional<int> qp = search.next()) {
        if (!engine->encode(planar, qp, &trial)) return false;
        if (search.report(static_cast<int64_t>(trial.size()) * 8)) coded->swap(trial);
    }
    return true;
}

void EncodePool::finish(Entry* entry) {
    entry->job.release = nullptr;  // frees the input's memory too
    {
        const std::lock_guard<std::mutex> guard(mLock);
        entry->progress = Progress::kDone;
    }
    mOnProgress();
}

void EncodePool::fail() {
    {
        const std::lock_guard<std::mutex> guard(mLock);
        mFailed = true;
    }
    mWork.notify_all();
    mOnProgress();
}

}  // namespace quill::host
