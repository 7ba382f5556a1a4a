#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>
#include <pthread.h>

#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Clock.h"

namespace android {
namespace {

using quill::host::Clock;
using ::testing::ElementsAre;

/** Notes what arrives, and does what the test asks on the looper's thread. */
class Recorder : public AHandler {
  public:
    std::function<void(const sp<AMessage>&)> action;

    void onMessageReceived(const sp<AMessage>& msg) override {
        if (action) action(msg);
        const std::lock_guard<std::mutex> guard(mLock);
        mSeen.push_back(msg->what());
        mArrived.notify_all();
    }

    std::vector<uint32_t> waitFor(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        mArrived.wait(guard, [&] { return mSeen.size() >= count; });
        return mSeen;
    }

    std::vector<uint32_t> seen() { return waitFor(0); }

  private:
    std::mutex mLock;
    std::condition_variable mArrived;
    std::vector<uint32_t> mSeen;
};

class Looper : public ::testing::Test {
  protected:
    Looper() { mLooper->registerHandler(mRecorder); }
    ~Looper() override {
        mLooper->stop();
        Clock::instance().setScale(1);
    }

    /** Delays may be so long that no hold-up of the test confuses them: once all is posted they are cut short. */
    void startHurrying() {
        Clock::instance().setScale(1e-9);
        ASSERT_EQ(OK, mLooper->start());
    }

    sp<AMessage> message(uint32_t what) { return new AMessage(what, mRecorder); }

    const sp<ALooper> mLooper = new ALooper;
    const sp<Recorder> mRecorder = new Recorder;
};

TEST(AMessage, FindOfAnotherTypeFailsAndWritesNothing) {
    const sp<AMessage> message = new AMessage;
    message->setInt32("width", 512);
    int64_t wide = -7;
    EXPECT_FALSE(message->findInt64("width", &wide));
    EXPECT_EQ(-7, wide);
    EXPECT_TRUE(message->findAsInt64("width", &wide));
    EXPECT_EQ(512, wide);
    float ratio = 0;
    EXPECT_TRUE(message->findAsFloat("width", &ratio));
    EXPECT_EQ(512.0f, ratio);
}

TEST(AMessage, ItemsKeepTheOrderTheyWereFirstSetInAndTheLatestType) {
    const sp<AMessage> message = new AMessage;
    message->setInt32("b", 1);
    message->setString("a", "text", 2);
    message->setSize("b", 3);
    ASSERT_EQ(2u, message->countEntries());
    AMessage::Type type;
    EXPECT_STREQ("b", message->getEntryNameAt(0, &type));
    EXPECT_EQ(AMessage::kTypeSize, type);
    EXPECT_STREQ("a", message->getEntryNameAt(1, &type));
    EXPECT_EQ(AMessage::kTypeString, type);
    EXPECT_EQ(nullptr, message->getEntryNameAt(2, &type));

    AString text;
    const AMessage::ItemData item = message->getEntryAt(1);
    EXPECT_TRUE(item.find(&text));
    EXPECT_STREQ("te", text.c_str());
    EXPECT_FALSE(message->getEntryAt(2).used());
}

TEST(AMessage, CopyIsDeepAndTellsWhatChangedSince) {
    const sp<AMessage> original = new AMessage;
    const sp<AMessage> nested = new AMessage;
    nested->setInt32("same", 1);
    nested->setInt32("depth", 1);
    original->setMessage("nested", nested);
    original->setBuffer("csd", new ABuffer(4));

    const sp<AMessage> copy = original->dup();
    EXPECT_EQ(0u, copy->changesFrom(original)->countEntries());
    nested->setInt32("depth", 2);
    const sp<AMessage> changes = copy->changesFrom(original, true);
    sp<AMessage> inside;
    int32_t depth = 0;
    ASSERT_EQ(1u, changes->countEntries());
    ASSERT_TRUE(changes->findMessage("nested", &inside));
    EXPECT_EQ(1u, inside->countEntries());
    EXPECT_TRUE(inside->findInt32("depth", &depth) && depth == 1);
}

TEST(ABuffer, RangeStaysInsideTheCapacity) {
    uint8_t bytes[8] = {};
    const sp<ABuffer> buffer = new ABuffer(bytes, sizeof bytes);
    EXPECT_EQ(OK, buffer->setRangeWithStatus(3, 5));
    EXPECT_EQ(bytes + 3, buffer->data());
    EXPECT_EQ(BAD_VALUE, buffer->setRangeWithStatus(3, 6));
    EXPECT_EQ(BAD_VALUE, buffer->setRangeWithStatus(4, SIZE_MAX));
    EXPECT_EQ(5u, buffer->size());
    EXPECT_EQ(8u, buffer->capacity());
}

TEST_F(Looper, DeliversByDueTimeAndThenInPostingOrder) {
    message(4)->post(7'200'000'000);
    message(3)->post(3'600'000'000);
    message(1)->post();
    message(2)->post();
    startHurrying();
    EXPECT_THAT(mRecorder->waitFor(4), ElementsAre(1, 2, 3, 4));
}

TEST_F(Looper, StopDropsWhatIsQueuedAndARestartDeliversOnlyWhatIsNew) {
    ASSERT_EQ(OK, mLooper->start());
    message(1)->post(60'000'000);
    ASSERT_EQ(OK, mLooper->stop());
    ASSERT_EQ(OK, mLooper->start());
    message(2)->post();
    EXPECT_THAT(mRecorder->waitFor(1), ElementsAre(2));
}

TEST_F(Looper, StopOnItsOwnThreadEndsAfterTheMessageInHand) {
    std::promise<status_t> stopped;
    mRecorder->action = [&](const sp<AMessage>&) { stopped.set_value(mLooper->stop()); };
    message(1)->post();
    message(2)->post();
    ASSERT_EQ(OK, mLooper->start());
    EXPECT_EQ(OK, stopped.get_future().get());
    mLooper->stop();  // from outside, now waits for the thread
    EXPECT_THAT(mRecorder->seen(), ElementsAre(1));
}

TEST(ALooper, LastReferenceMayGoOnItsOwnThread) {
    sp<ALooper> looper = new ALooper;
    const sp<Recorder> recorder = new Recorder;
    looper->registerHandler(recorder);
    std::promise<void> posted;
    auto isPosted = posted.get_future();
    recorder->action = [&](const sp<AMessage>&) {
        isPosted.wait();
        looper.clear();
    };
    const sp<AMessage> message = new AMessage(1, recorder);
    ASSERT_EQ(OK, looper->start());
    message->post();
    posted.set_value();
    recorder->waitFor(1);
    EXPECT_EQ(nullptr, recorder->looper());
    EXPECT_EQ(-ENOENT, message->post());
}

TEST_F(Looper, RequestGetsItsOneReply) {
    status_t second = OK;
    mRecorder->action = [&](const sp<AMessage>& request) {
        sp<AReplyToken> token, again;
        ASSERT_TRUE(request->senderAwaitsResponse(&token));
        EXPECT_FALSE(request->senderAwaitsResponse(&again));
        const sp<AMessage> reply = new AMessage;
        reply->setInt32("err", 5);
        reply->postReply(token);
        second = reply->postReply(token);
    };
    sp<AMessage> response;
    EXPECT_EQ(-ENOENT, message(1)->postAndAwaitResponse(&response));
    ASSERT_EQ(OK, mLooper->start());
    ASSERT_EQ(OK, message(1)->postAndAwaitResponse(&response));
    int32_t err = 0;
    EXPECT_TRUE(response->findInt32("err", &err));
    EXPECT_EQ(5, err);
    mLooper->stop();
    EXPECT_EQ(-EBUSY, second);
}

}  // namespace
}  // namespace android
