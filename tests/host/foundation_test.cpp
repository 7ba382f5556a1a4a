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

/** Notes the messages that arrive and runs the test's action on the looper's thread. */
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

    /** Lets hours pass at once, so that delays can be too long for a slow machine to mix them up. */
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
    message->setString("width", "512");
    int32_t width = -7;
    EXPECT_FALSE(message->findInt32("width", &width));
    EXPECT_EQ(-7, width);
}

TEST(AMessage, ItemsKeepTheOrderInWhichTheyWereFirstSetAndTheLatestType) {
    const sp<AMessage> message = new AMessage;
    message->setInt32("b", 1);
    message->setString("a", "text", 2);
    message->setBuffer("b", new ABuffer(3));
    ASSERT_EQ(2u, message->countEntries());
    AMessage::Type type;
    EXPECT_STREQ("b", message->getEntryNameAt(0, &type));
    EXPECT_EQ(AMessage::kTypeBuffer, type);
    EXPECT_STREQ("a", message->getEntryNameAt(1, &type));
    EXPECT_EQ(AMessage::kTypeString, type);
    EXPECT_EQ(nullptr, message->getEntryNameAt(2, &type));

    AString text;
    EXPECT_TRUE(message->getEntryAt(1).find(&text));
    EXPECT_STREQ("te", text.c_str());
    EXPECT_FALSE(message->getEntryAt(2).used());
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
    startHurrying();
    message(2)->post(61'000'000);
    EXPECT_THAT(mRecorder->waitFor(1), ElementsAre(2));
}

TEST_F(Looper, StopOnItsOwnThreadEndsAfterTheMessageInHand) {
    std::promise<status_t> stopped;
    mRecorder->action = [&](const sp<AMessage>&) { stopped.set_value(mLooper->stop()); };
    message(1)->post();
    message(2)->post();
    ASSERT_EQ(OK, mLooper->start());
    EXPECT_EQ(OK, stopped.get_future().get());
    mLooper->stop();  // from outside, so it waits for the thread
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
    EXPECT_EQ(-ENOENT, message->post());
}

}  // namespace
}  // namespace android
