#pragma once

#include <sched.h>
#include <stdint.h>

#include <atomic>

namespace android {

/**
 * What one thread lends to another, a piece of work at a time. The borrower takes it, uses it and gives it back. Once
 * the owner has revoked it, no take succeeds any more. One owner, one borrower.
 */
class Lease {
  public:
    /** Borrower: true if the thing is his until `giveBack`; false once it is revoked. */
    bool take() {
        uint8_t state = kFree;
        return mState.compare_exchange_strong(state, kInUse, std::memory_order_acquire);
    }
    void giveBack() { mState.fetch_and(static_cast<uint8_t>(~kInUse), std::memory_order_release); }

    /** Owner: ends the lending. True if the borrower has the thing at this moment. */
    bool revoke() { return (mState.fetch_or(kRevoked, std::memory_order_acq_rel) & kInUse) != 0; }
    /** Owner, after `revoke`: waits until the borrower has given the thing back. */
    void awaitReturn() const {
        while (isInUse()) sched_yield();
    }

    bool isInUse() const { return (mState.load(std::memory_order_acquire) & kInUse) != 0; }
    bool isRevoked() const { return (mState.load(std::memory_order_acquire) & kRevoked) != 0; }

  private:
    enum : uint8_t { kFree = 0, kInUse = 1, kRevoked = 2 };  // revoked while in use: both bits
    std::atomic<uint8_t> mState{kFree};
};

/** Takes a lease for a scope; false if it is revoked. */
class Loan {
  public:
    explicit Loan(Lease& lease) : mLease(lease), mTaken(lease.take()) {}
    ~Loan() {
        if (mTaken) mLease.giveBack();
    }
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;

    explicit operator bool() const { return mTaken; }

  private:
    Lease& mLease;
    const bool mTaken;
};

}  // namespace android
