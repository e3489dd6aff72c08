#include <bxbase/threading/bxevent.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/threading/bxblockingscope.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

// A thread in WaitForMultipleEvents registers one of these with every event it
// waits for; Set wakes it through its own condition variable.
struct BxEvent::SMultiWaiter
{
    std::mutex mutex;
    std::condition_variable wake;
    bool signaled = false; ///< guarded by mutex
};

// The state word: bit 0 is the set flag, bits 1..15 count the threads inside
// Wait, bits 16..31 the threads registered by WaitForMultipleEvents. One
// atomic operation thus changes the flag and tells who must be woken.
struct BxEvent::SState
{
    static constexpr std::uint32_t kSet = 1;
    static constexpr std::uint32_t kWaiter = 2;
    static constexpr std::uint32_t kWaiterMask = 0xFFFE;
    static constexpr std::uint32_t kMultiWaiter = 0x10000;

    std::atomic<std::uint32_t> word{0};
    std::mutex mutex;                        ///< guards multiWaiters
    std::vector<SMultiWaiter*> multiWaiters; ///< registered by WaitForMultipleEvents
};

namespace
{
using Clock = std::chrono::steady_clock;

Clock::time_point deadlineAfter(DWORD timeoutMs)
{
    return Clock::now() + std::chrono::milliseconds(timeoutMs);
}

// Sleeps while *word == expected, at most until the deadline (none: null).
void futexWait(std::atomic<std::uint32_t>& word, std::uint32_t expected, const Clock::time_point* deadline)
{
    timespec relative{};
    if (deadline != nullptr)
    {
        const auto left = std::chrono::duration_cast<std::chrono::nanoseconds>(*deadline - Clock::now()).count();
        if (left <= 0)
            return;
        relative.tv_sec = static_cast<time_t>(left / 1000000000);
        relative.tv_nsec = static_cast<long>(left % 1000000000);
    }
    // EINTR, EAGAIN (the word changed) and ETIMEDOUT all send the caller back to look.
    ::syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAIT_PRIVATE, expected,
              deadline != nullptr ? &relative : nullptr, nullptr, 0);
}

void futexWakeAll(std::atomic<std::uint32_t>& word)
{
    ::syscall(SYS_futex, reinterpret_cast<std::uint32_t*>(&word), FUTEX_WAKE_PRIVATE, INT_MAX, nullptr, nullptr, 0);
}
} // namespace

BxEvent::BxEvent(bool initiallySet) : m_state(std::make_shared<SState>())
{
    m_state->word.store(initiallySet ? SState::kSet : 0, std::memory_order_relaxed);
}

BxEvent::~BxEvent() = default;

void BxEvent::Set()
{
    SState& s = state();
    if (s.word.load(std::memory_order_acquire) & SState::kSet)
        return;
    const std::uint32_t before = s.word.fetch_or(SState::kSet, std::memory_order_acq_rel);
    if (before & SState::kSet)
        return;
    // The caller's copy keeps the state alive, also when a woken waiter drops its own.
    if (before & SState::kWaiterMask)
        futexWakeAll(s.word);
    if (before >= SState::kMultiWaiter)
    {
        std::lock_guard lock(s.mutex);
        for (SMultiWaiter* waiter : s.multiWaiters)
        {
            // Notified under our mutex: the waiter unregisters under it, so it is alive here.
            std::lock_guard waiterLock(waiter->mutex);
            waiter->signaled = true;
            waiter->wake.notify_one();
        }
    }
}

void BxEvent::Reset()
{
    SState& s = state();
    if (s.word.load(std::memory_order_relaxed) & SState::kSet)
        s.word.fetch_and(~SState::kSet, std::memory_order_acq_rel);
}

bool BxEvent::IsSet() const
{
    return (state().word.load(std::memory_order_acquire) & SState::kSet) != 0;
}

bool BxEvent::Wait(DWORD timeoutMs) const
{
    SState& s = state();
    if (s.word.load(std::memory_order_acquire) & SState::kSet)
        return true;
    if (timeoutMs == 0)
        return false;

    BxBlockingScope blocking;
    const Clock::time_point deadline = timeoutMs == INFINITE ? Clock::time_point{} : deadlineAfter(timeoutMs);
    // Counted first, tested second: a Set after the count sees it and wakes
    // the word; a Set before it is seen by the test.
    std::uint32_t word = s.word.fetch_add(SState::kWaiter, std::memory_order_acq_rel) + SState::kWaiter;
    bool result = true;
    while ((word & SState::kSet) == 0)
    {
        if (timeoutMs != INFINITE && Clock::now() >= deadline)
        {
            result = false;
            break;
        }
        futexWait(s.word, word, timeoutMs == INFINITE ? nullptr : &deadline);
        word = s.word.load(std::memory_order_acquire);
    }
    s.word.fetch_sub(SState::kWaiter, std::memory_order_relaxed);
    return result;
}

int BxEvent::WaitForMultipleEvents(std::span<const BxEvent> events, DWORD timeoutMs)
{
    if (events.empty())
        BX_THROW(BxExceptionPreconditionViolation, "BxEvent::WaitForMultipleEvents", "no events to wait for");

    auto anySet = [&events] {
        return std::any_of(events.begin(), events.end(), [](const BxEvent& e) { return e.IsSet(); });
    };
    if (anySet())
        return eWaitSignaled;
    if (timeoutMs == 0)
        return eWaitTimeout;

    SMultiWaiter waiter;
    for (const BxEvent& e : events)
    {
        SState& s = e.state();
        {
            std::lock_guard lock(s.mutex);
            s.multiWaiters.push_back(&waiter);
        }
        s.word.fetch_add(SState::kMultiWaiter, std::memory_order_acq_rel);
    }

    bool signaled;
    {
        BxBlockingScope blocking;
        std::unique_lock lock(waiter.mutex);
        // Registered and counted first, tested second: a Set after the count
        // marks the waiter, a Set before it is seen here, so no wake-up is lost.
        auto done = [&] { return waiter.signaled || anySet(); };
        if (timeoutMs == INFINITE)
        {
            waiter.wake.wait(lock, done);
            signaled = true;
        }
        else
            signaled = waiter.wake.wait_until(lock, deadlineAfter(timeoutMs), done);
    }

    for (const BxEvent& e : events)
    {
        SState& s = e.state();
        s.word.fetch_sub(SState::kMultiWaiter, std::memory_order_relaxed);
        std::lock_guard lock(s.mutex);
        auto& list = s.multiWaiters;
        list.erase(std::find(list.begin(), list.end(), &waiter));
    }
    return signaled ? eWaitSignaled : eWaitTimeout;
}
