// What is lent, taken, given back and revoked: every order of steps against two flags, and the wait across threads.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "Lease.h"

namespace {

using namespace android;

TEST(Lease, EveryOrderOfStepsIsThatOfTwoFlags) {
    for (int order = 0; order < 2187; ++order) {  // seven times one of three steps
        Lease lease;
        bool inUse = false, revoked = false;
        for (int i = 0, rest = order; i < 7; ++i, rest /= 3) {
            if (rest % 3 == 0) {
                EXPECT_EQ(!inUse && !revoked, lease.take()) << order;
                inUse = inUse || !revoked;
            } else if (rest % 3 == 1) {
                lease.giveBack();
                inUse = false;
            } else {
                EXPECT_EQ(inUse, lease.revoke()) << order;
                revoked = true;
            }
            EXPECT_EQ(inUse, lease.isInUse()) << order;
            EXPECT_EQ(revoked, lease.isRevoked()) << order;
            if (!inUse) lease.awaitReturn();
        }
    }
}

TEST(Lease, LoanGivesBackWhatItHasTakenAndNothingElse) {
    Lease lease;
    {
        const Loan loan(lease);
        EXPECT_TRUE(loan && !Loan(lease));
        EXPECT_TRUE(lease.isInUse()) << "the first one's still";
    }
    EXPECT_FALSE(lease.isInUse());
}

TEST(Lease, OwnerHasTheThingToItselfOnceItIsReturned) {
    for (int round = 0; round < 300; ++round) {
        Lease lease;
        int lent = 0;  // no atomic: the lease orders what is done with it
        std::atomic<bool> taken{false};
        std::thread borrower([&] {
            while (const Loan loan{lease}) {
                taken = true;
                while (round % 2 == 0 && !lease.isRevoked()) std::this_thread::yield();
                lent = round;
            }
        });
        while (!taken) std::this_thread::yield();
        const bool wasInUse = lease.revoke();
        lease.awaitReturn();
        EXPECT_TRUE(round % 2 != 0 || (wasInUse && lent == round)) << "back before the owner went on";
        lent = -1;
        borrower.join();
        EXPECT_EQ(-1, lent);
    }
}

}  // namespace
