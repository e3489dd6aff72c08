#include <bxbase/threading/bxevent.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/threading/bxblockingscope.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

// A thread in WaitForMultipleEvents registers one of these with every event it
// waits for; Set wakes it through its own condition variable.
struct BxEvent::SMultiWaiter
{
    std::mutex mutex;
    std::condition_variable wake;
    bool signaled = false; ///< guarded by mutex
};

struct BxEvent::SState
{
    std::atomic<bool> set{false};      ///< read without the mutex, written with it held by Set
    std::mutex mutex;                  ///< guards waiters and multiWaiters
    std::condition_variable wake;      ///< Wait sleeps here
    int waiters = 0;                   ///< threads inside Wait
    std::vector<SMultiWaiter*> multiWaiters; ///< registered by WaitForMultipleEvents
};

namespace
{
using Clock = std::chrono::steady_clock;

Clock::time_point deadlineAfter(DWORD timeoutMs)
{
    return Clock::now() + std::chrono::milliseconds(timeoutMs);
}
} // namespace

BxEvent::BxEvent(bool initiallySet) : m_state(std::make_shared<SState>())
{
    m_state->set.store(initiallySet, std::memory_order_relaxed);
}

BxEvent::~BxEvent() = default;

void BxEvent::Set()
{
    SState& s = state();
    if (s.set.load(std::memory_order_acquire))
        return;
    bool notify = false;
    {
        std::lock_guard lock(s.mutex);
        s.set.store(true, std::memory_order_release);
        notify = s.waiters > 0;
        for (SMultiWaiter* waiter : s.multiWaiters)
        {
            // Notified under our mutex: the waiter unregisters under it, so it is alive here.
            std::lock_guard waiterLock(waiter->mutex);
            waiter->signaled = true;
            waiter->wake.notify_one();
        }
    }
    // The waker holds its own reference to the state, so notifying after the
    // unlock is safe and spares the woken threads a collision on the mutex.
    if (notify)
        s.wake.notify_all();
}

void BxEvent::Reset()
{
    state().set.store(false, std::memory_order_release);
}

bool BxEvent::IsSet() const
{
    return state().set.load(std::memory_order_acquire);
}

bool BxEvent::Wait(DWORD timeoutMs) const
{
    SState& s = state();
    if (s.set.load(std::memory_order_acquire))
        return true;
    if (timeoutMs == 0)
        return false;

    auto isSet = [&s] { return s.set.load(std::memory_order_acquire); };
    BxBlockingScope blocking;
    std::unique_lock lock(s.mutex);
    ++s.waiters;
    bool result;
    if (timeoutMs == INFINITE)
    {
        s.wake.wait(lock, isSet);
        result = true;
    }
    else
        result = s.wake.wait_until(lock, deadlineAfter(timeoutMs), isSet);
    --s.waiters;
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
        std::lock_guard lock(s.mutex);
        s.multiWaiters.push_back(&waiter);
    }

    bool signaled;
    {
        BxBlockingScope blocking;
        std::unique_lock lock(waiter.mutex);
        // Registered first, tested second: a Set between the two is seen here
        // or has marked the waiter, so no wake-up is lost.
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
        std::lock_guard lock(s.mutex);
        auto& list = s.multiWaiters;
        list.erase(std::find(list.begin(), list.end(), &waiter));
    }
    return signaled ? eWaitSignaled : eWaitTimeout;
}
