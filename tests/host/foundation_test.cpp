#include <gmock/gmock.h>
#include <media/stagefright/foundation/AHandler.h>
#include <media/stagefright/foundation/AMessage.h>

#include <functional>
#include <future>

#include "Clock.h"

namespace {

using namespace android;
using quill::host::Clock;
using testing::ElementsAre;

/** Notes the messages that arrive and runs the test's action on the looper's thread. */
struct Recorder : AHandler {
    void onMessageReceived(const sp<AMessage>& msg) override {
        seen.push_back(msg->what());
        if (action) action();
        if (msg->what() == kLast) last.set_value();
    }

    static constexpr uint32_t kLast = 9;
    std::function<void()> action;
    std::vector<uint32_t> seen;
    std::promise<void> last;
};

class Looper : public testing::Test {
  protected:
    Looper() { mLooper->registerHandler(mRecorder); }

    void post(uint32_t what, int64_t delayUs = 0) { (new AMessage(what, mRecorder))->post(delayUs); }

    /** Starts and lets hours pass at once, so that delays can be too long for a slow machine to mix them up. */
    const std::vector<uint32_t>& seenUntilLast() {
        Clock::instance().setScale(1e-9);
        EXPECT_EQ(OK, mLooper->start());
        mRecorder->last.get_future().wait();
        return mRecorder->seen;
    }

    const sp<ALooper> mLooper = new ALooper;
    const sp<Recorder> mRecorder = new Recorder;
};

TEST(AMessage, ItemHasItsLatestTypeOnly) {
    const sp<AMessage> message = new AMessage;
    message->setString("key", "512", 2);
    AString text;
    EXPECT_TRUE(message->getEntryAt(0).find(&text) && text == "51");
    message->setBuffer("key", new ABuffer(3));
    AMessage::Type type;
    EXPECT_STREQ("key", message->getEntryNameAt(0, &type));
    EXPECT_EQ(AMessage::kTypeBuffer, type);
    EXPECT_FALSE(message->findString("key", &text) || message->getEntryAt(1).used());
}

TEST_F(Looper, DeliversByDueTimeAndThenInPostingOrder) {
    post(Recorder::kLast, 7'200'000'000);
    post(3, 3'600'000'000);
    post(1);
    post(2);
    EXPECT_THAT(seenUntilLast(), ElementsAre(1, 2, 3, Recorder::kLast));
}

TEST_F(Looper, StopDropsWhatIsQueuedAndARestartDeliversOnlyWhatIsNew) {
    ASSERT_EQ(OK, mLooper->start());
    post(1, 60'000'000);
    ASSERT_EQ(OK, mLooper->stop());
    post(Recorder::kLast, 61'000'000);
    EXPECT_THAT(seenUntilLast(), ElementsAre(Recorder::kLast));
}

TEST_F(Looper, StopOnItsOwnThreadEndsAfterTheMessageInHand) {
    mRecorder->action = [&] { EXPECT_EQ(OK, mLooper->stop()); };
    post(Recorder::kLast);
    post(2);
    seenUntilLast();
    mLooper->stop();  // from outside, so it waits for the thread
    EXPECT_THAT(mRecorder->seen, ElementsAre(Recorder::kLast));
}

}  // namespace
