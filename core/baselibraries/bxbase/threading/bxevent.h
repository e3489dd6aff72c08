// A manual-reset event: once set it stays set, releasing every waiter, until
// it is reset. Copies share one state, like a duplicated Win32 event handle, so
// an event can be handed to another thread by value.
//
//   BxEvent done;                          // not set
//   std::thread worker([done]() mutable { work(); done.Set(); });
//   if (!done.Wait(5000))                  // false: 5 s passed, still not set
//       report_timeout();
//
//   BxEvent a, b;
//   if (BxEvent::WaitForMultipleEvents({a, b}, INFINITE) == BxEvent::eWaitSignaled) ...
//
// Time-outs are in milliseconds; INFINITE (bxtypes.h) waits for ever and 0
// only tests the state. All members may be called from any thread at once.
// On a thread pool worker a wait that really blocks lets the pool compensate
// (see BxBlockingScope), so waiting inside a pool task cannot starve the pool.
//
// Cost: the state is one atomic word holding the set flag and the number of
// waiting threads. IsSet is one load; Set and Reset are one atomic operation
// and make no system call and take no lock while nobody waits. Wait sleeps
// on the word itself (a futex); only WaitForMultipleEvents uses a lock and a
// condition variable of its own, and Set takes the event's lock only when
// such a waiter is registered.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxtypes.h>

#include <initializer_list>
#include <memory>
#include <span>

/// A manual-reset event: once set it stays set, releasing every waiter, until it is reset.
class BXBASE_API BxEvent
{
public:
    /// Results of WaitForMultipleEvents.
    static constexpr int eWaitSignaled = 1; ///< one of the events is set
    static constexpr int eWaitTimeout = 2;  ///< the time-out passed first

    /// A new event with its own state, set or not.
    explicit BxEvent(bool initiallySet = false);

    /// Copies share the state of the original (cheap: one reference count).
    /// There is no separate move: a "moved" event still refers to the state.
    BxEvent(const BxEvent&) = default;
    /// Makes this object refer to other's state; the state it referred to before lives on in its other copies.
    BxEvent& operator=(const BxEvent&) = default;
    ~BxEvent();

    /// Sets the event and wakes every thread waiting for it.
    void Set();
    /// Clears the event; later waits block until the next Set.
    void Reset();
    /// True while the event is set.
    bool IsSet() const;

    /// Waits until the event is set (true) or timeoutMs passed (false).
    bool Wait(DWORD timeoutMs = INFINITE) const;

    /// Waits until any of the events is set: eWaitSignaled (1), or
    /// eWaitTimeout (2) when timeoutMs passed first. An empty list throws
    /// BxExceptionPreconditionViolation.
    static int WaitForMultipleEvents(std::span<const BxEvent> events, DWORD timeoutMs);
    /// The same for a braced list: `WaitForMultipleEvents({a, b}, 1000)`.
    static int WaitForMultipleEvents(std::initializer_list<BxEvent> events, DWORD timeoutMs)
    {
        return WaitForMultipleEvents(std::span<const BxEvent>(events.begin(), events.size()), timeoutMs);
    }

    /// True when both refer to the same shared state.
    bool operator==(const BxEvent& other) const { return m_state == other.m_state; }

private:
    struct SState;
    struct SMultiWaiter;

    std::shared_ptr<SState> m_state; ///< never null; shared by all copies
    SState& state() const { return *m_state; }
};
