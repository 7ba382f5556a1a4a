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

#include "testing/Clock.h"
#include "testing/Faults.h"

namespace android {
namespace {

using quill::host::Clock;
using quill::host::Fault;
using quill::host::Faults;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

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

TEST(AMessage, EntriesAreRenamedAndRemovedByIndexAndName) {
    const sp<AMessage> message = new AMessage;
    message->setInt32("one", 1);
    message->setInt32("two", 2);
    EXPECT_EQ(ALREADY_EXISTS, message->setEntryNameAt(0, "two"));
    EXPECT_EQ(OK, message->setEntryNameAt(0, "uno"));
    EXPECT_EQ(BAD_INDEX, message->setEntryNameAt(2, "tre"));
    EXPECT_EQ(NAME_NOT_FOUND, message->removeEntryByName("one"));
    EXPECT_EQ(OK, message->removeEntryByName("uno"));
    EXPECT_FALSE(message->contains("uno"));
    EXPECT_TRUE(message->contains("two"));
    EXPECT_EQ(BAD_INDEX, message->removeEntryAt(1));
}

TEST(AMessage, DupCopiesNestedMessagesAndSharesBuffers) {
    const sp<AMessage> original = new AMessage;
    const sp<AMessage> nested = new AMessage;
    const sp<ABuffer> buffer = new ABuffer(4);
    nested->setInt32("depth", 1);
    original->setMessage("nested", nested);
    original->setBuffer("buffer", buffer);

    const sp<AMessage> copy = original->dup();
    nested->setInt32("depth", 2);
    sp<AMessage> nestedCopy;
    sp<ABuffer> sameBuffer;
    int32_t depth = 0;
    ASSERT_TRUE(copy->findMessage("nested", &nestedCopy));
    ASSERT_TRUE(nestedCopy->findInt32("depth", &depth));
    EXPECT_EQ(1, depth);
    ASSERT_TRUE(copy->findBuffer("buffer", &sameBuffer));
    EXPECT_EQ(buffer, sameBuffer);
}

TEST(AMessage, ChangesFromTellsByBytesAndDeepOnlyWhatChangedInside) {
    const uint8_t bytes[] = {1, 2, 3};
    const auto make = [&](int32_t depth) {
        const sp<AMessage> nested = new AMessage;
        nested->setInt32("same", 1);
        nested->setInt32("depth", depth);
        const sp<AMessage> message = new AMessage;
        message->setMessage("nested", nested);
        message->setBuffer("csd", ABuffer::CreateAsCopy(bytes, sizeof bytes));
        return message;
    };
    EXPECT_EQ(0u, make(1)->changesFrom(make(1))->countEntries());
    const sp<AMessage> changes = make(2)->changesFrom(make(1), true);
    sp<AMessage> nested;
    ASSERT_EQ(1u, changes->countEntries());
    ASSERT_TRUE(changes->findMessage("nested", &nested));
    EXPECT_EQ(1u, nested->countEntries());
    EXPECT_TRUE(nested->contains("depth"));
    EXPECT_EQ(2u, make(1)->changesFrom(nullptr)->countEntries());
}

TEST(AMessage, DebugStringNamesTypesAndValues) {
    const sp<AMessage> message = new AMessage(0x61626364, nullptr);
    const sp<AMessage> nested = new AMessage;
    nested->setRect("crop", 0, 1, 2, 3);
    message->setString("mime", "video/hevc");
    message->setMessage("nested", nested);
    EXPECT_STREQ(
            "AMessage(what = 'abcd', target = 0) = {\n"
            "  string mime = \"video/hevc\"\n"
            "  AMessage nested = AMessage(what = 0x00000000, target = 0) = {\n"
            "    Rect crop = (0, 1, 2, 3)\n"
            "  }\n"
            "}",
            message->debugString().c_str());
}

TEST(AMessageDeathTest, MoreItemsThanTheLimitAbort) {
    const sp<AMessage> message = new AMessage;
    for (size_t i = 0; i < AMessage::maxAllowedEntries(); ++i) message->setInt32(std::to_string(i).c_str(), 0);
    message->setInt32("0", 1);
    EXPECT_DEATH(message->setInt32("one too many", 0), "no room for item one too many");
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

TEST(ABuffer, IsEmptyWhenThereIsNoMemory) {
    Faults::instance().reset();
    Faults::instance().inject("ABuffer::ABuffer", Fault::nullBuffer());
    const sp<ABuffer> buffer = new ABuffer(16);
    EXPECT_EQ(0u, buffer->capacity());
    EXPECT_EQ(nullptr, buffer->data());
}

TEST(AString, TrimsFindsAndCompares) {
    AString text(" \tC2.Quill.HEVC \n");
    text.trim();
    EXPECT_STREQ("C2.Quill.HEVC", text.c_str());
    EXPECT_TRUE(text.startsWithIgnoreCase("c2.quill."));
    EXPECT_FALSE(text.startsWith("c2"));
    EXPECT_TRUE(text.endsWith("HEVC"));
    EXPECT_FALSE(text.endsWith("a suffix longer than the text"));
    EXPECT_EQ(2, text.find("."));
    EXPECT_EQ(8, text.find(".", 3));
    EXPECT_EQ(-1, text.find("avc"));
    AString blank(" \n ");
    blank.trim();
    EXPECT_TRUE(blank.empty());
    AString size = AStringPrintf("%d", 64);
    size.append("x");
    size.append(48u);
    EXPECT_EQ(AString("64x48"), size);
}

TEST_F(Looper, DeliversByDueTimeAndThenInPostingOrder) {
    message(4)->post(7'200'000'000);
    message(3)->post(3'600'000'000);
    message(1)->post();
    message(2)->post();
    startHurrying();
    EXPECT_THAT(mRecorder->waitFor(4), ElementsAre(1, 2, 3, 4));
}

TEST_F(Looper, DelayFollowsTheScaledClock) {
    Clock::instance().setScale(0.0001);
    ASSERT_EQ(OK, mLooper->start());
    const int64_t posted = ALooper::GetNowUs();
    message(1)->post(60'000'000);
    mRecorder->waitFor(1);
    EXPECT_GE(ALooper::GetNowUs() - posted, 60'000'000);
}

TEST_F(Looper, ThreadCarriesTheFirstFifteenBytesOfTheName) {
    char name[32] = "";
    mRecorder->action = [&](const sp<AMessage>&) { pthread_getname_np(pthread_self(), name, sizeof name); };
    mLooper->setName("QuillHeifWriterLooper");
    ASSERT_EQ(OK, mLooper->start());
    message(1)->post();
    mRecorder->waitFor(1);
    EXPECT_STREQ("QuillHeifWriter", name);
}

TEST_F(Looper, SecondStartAndSecondStopAreInvalid) {
    EXPECT_EQ(INVALID_OPERATION, mLooper->stop());
    EXPECT_EQ(OK, mLooper->start());
    EXPECT_EQ(INVALID_OPERATION, mLooper->start());
    EXPECT_EQ(OK, mLooper->stop());
    EXPECT_EQ(INVALID_OPERATION, mLooper->stop());
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

TEST_F(Looper, RunsOnTheCallingThreadUntilStopped) {
    std::thread::id thread;
    mRecorder->action = [&](const sp<AMessage>&) {
        thread = std::this_thread::get_id();
        mLooper->stop();
    };
    message(1)->post();
    EXPECT_EQ(OK, mLooper->start(true /* runOnCallingThread */));
    EXPECT_EQ(std::this_thread::get_id(), thread);
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

TEST_F(Looper, MessageToADeadHandlerIsDroppedAndItsSenderDoesNotWait) {
    sp<Recorder> mortal = new Recorder;
    mLooper->registerHandler(mortal);
    const sp<AMessage> orphan = new AMessage(9, mortal);
    mortal.clear();
    ASSERT_EQ(OK, mLooper->start());
    sp<AMessage> response;
    EXPECT_EQ(-ENOENT, orphan->postAndAwaitResponse(&response));
    message(1)->post();
    EXPECT_THAT(mRecorder->waitFor(1), ElementsAre(1));
}

TEST_F(Looper, HandlerIsRegisteredOnce) {
    EXPECT_GT(mRecorder->id(), 0);
    EXPECT_EQ(mLooper, mRecorder->looper());
    EXPECT_EQ(INVALID_OPERATION, mLooper->registerHandler(mRecorder));
    mLooper->unregisterHandler(mRecorder->id());
    EXPECT_EQ(0, mRecorder->id());
    EXPECT_EQ(-ENOENT, message(1)->post());
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

TEST_F(Looper, StopReleasesAWaitingSender) {
    std::promise<void> received;
    mRecorder->action = [&](const sp<AMessage>&) { received.set_value(); };  // and never replies
    ASSERT_EQ(OK, mLooper->start());
    auto sender = std::async(std::launch::async, [&] {
        sp<AMessage> response;
        return message(1)->postAndAwaitResponse(&response);
    });
    received.get_future().wait();
    mLooper->stop();
    EXPECT_EQ(-ENOENT, sender.get());
}

TEST_F(Looper, RequestFromItsOwnThreadIsRefused) {
    status_t status = OK;
    mRecorder->action = [&](const sp<AMessage>&) {
        sp<AMessage> response;
        status = message(2)->postAndAwaitResponse(&response);
    };
    ASSERT_EQ(OK, mLooper->start());
    message(1)->post();
    mRecorder->waitFor(1);
    EXPECT_EQ(INVALID_OPERATION, status);
}

TEST_F(Looper, UniquePostReplacesTheOneWithItsToken) {
    const sp<RefBase> token = new AMessage;
    message(1)->postUnique(token, 1000);
    message(2)->postUnique(token);
    message(3)->postUnique(new AMessage, 3'600'000'000);
    startHurrying();
    EXPECT_THAT(mRecorder->waitFor(2), ElementsAre(2, 3));
}

TEST_F(Looper, DeliveredMessageIsReleasedBeforeTheNextOneComes) {
    struct Witness : public RefBase {
        std::promise<void> gone;
        ~Witness() override { gone.set_value(); }
    };
    sp<Witness> witness = new Witness;
    auto gone = witness->gone.get_future();
    sp<AMessage> request = message(1);
    request->setObject("witness", witness);
    witness.clear();
    request->post();
    request.clear();
    ASSERT_EQ(OK, mLooper->start());
    EXPECT_EQ(std::future_status::ready, gone.wait_for(std::chrono::seconds(30)));
}

TEST_F(Looper, CallsFailOnDemand) {
    Faults::instance().reset();
    Faults::instance().inject("ALooper::start", Fault::failing(NO_MEMORY));
    Faults::instance().inject("AMessage::post", Fault::failing(-EPIPE), 2);
    EXPECT_EQ(NO_MEMORY, mLooper->start());
    EXPECT_EQ(OK, mLooper->start());
    EXPECT_EQ(OK, message(1)->post());
    EXPECT_EQ(-EPIPE, message(2)->post());
    EXPECT_THAT(mRecorder->waitFor(1), ElementsAre(1));
}

TEST_F(Looper, ManyPostersLoseNothing) {
    constexpr size_t kPosters = 4;
    constexpr size_t kEach = 250;
    ASSERT_EQ(OK, mLooper->start());
    std::vector<std::thread> posters;
    for (size_t i = 0; i < kPosters; ++i) {
        posters.emplace_back([&] {
            for (size_t n = 0; n < kEach; ++n) message(1)->post(static_cast<int64_t>(n % 3));
        });
    }
    for (std::thread& poster : posters) poster.join();
    EXPECT_EQ(kPosters * kEach, mRecorder->waitFor(kPosters * kEach).size());
}

}  // namespace
}  // namespace android
