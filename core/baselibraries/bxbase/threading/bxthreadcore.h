// The operating-system side of BxThread<Derived, Policy>: one thread with a
// name the system shows, a priority, an affinity mask, an exit code and the
// events that mark its start and end. Use BxThread; this class carries the
// parts that do not depend on the derived class.
//
// Locks: m_lock guards m_thread, m_name, m_priority, m_affinityMask and
// m_autoDelete. The exit code and thread id are atomics; the events are
// thread-safe themselves.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxtypes.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthreadapi.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>

/// The operating-system side of BxThread<Derived, Policy>: one thread with a name the system shows, a priority,
/// an affinity mask, an exit code and the events that mark its start and end.
class BXBASE_API BxThreadCore
{
public:
    /// Thread priorities with their Win32 values. Applied best effort as the
    /// thread's nice value (lowering always works; raising needs the right to).
    enum EThreadPriority
    {
        eTP_Idle = -15,
        eTP_Lowest = -2,
        eTP_BelowNormal = -1,
        eTP_Normal = 0,
        eTP_AboveNormal = 1,
        eTP_Highest = 2,
        eTP_TimeCritical = 15
    };

    /// Exit code of a thread whose function ended with an exception.
    static constexpr DWORD eExitCodeException = 0xE06D7363u;

    BxThreadCore(const BxThreadCore&) = delete;
    BxThreadCore& operator=(const BxThreadCore&) = delete;

    /// True from Start until the thread function has returned.
    bool IsRunning() const { return m_exitCode.load(std::memory_order_acquire) == STILL_ACTIVE; }

    /// Waits until the thread has ended (true) or timeoutMs passed (false).
    /// A thread that was never started counts as ended.
    bool WaitUntilTerminate(DWORD timeoutMs = INFINITE) const;

    /// STILL_ACTIVE (259) while running, then the thread function's result
    /// (eExitCodeException when it threw); 0 before the first start.
    DWORD GetExitCode() const { return m_exitCode.load(std::memory_order_acquire); }

    /// Kernel id of the running (or last) thread; 0 before it began.
    DWORD GetThreadId() const { return m_threadId.load(std::memory_order_acquire); }

    /// Set when the thread has ended; reset by Start. A copy stays valid when
    /// the object deletes itself, so others can wait for a self-deleting thread.
    BxEvent GetTerminatedEvent() const { return m_terminated; }

    /// Name shown by the system (ps, top, debuggers; cut to 15 bytes of UTF-8).
    /// Takes effect at once when the thread runs.
    void SetName(const CStringW& name);
    /// The name as set (not cut); any thread may call it.
    CStringW GetName() const;

    /// Priority (best effort, see EThreadPriority). Takes effect at once when the thread runs.
    void SetPriority(EThreadPriority priority);
    /// The priority as set, even when the system did not grant it.
    EThreadPriority GetPriority() const;

    /// CPUs the thread may run on (bit n = CPU n); 0 leaves the choice to the
    /// system. Bits of CPUs the process may not use are ignored. Takes effect
    /// at once when the thread runs.
    void SetAffinityMask(DWORD_PTR mask);
    /// The mask as set (0: the system chooses).
    DWORD_PTR GetAffinityMask() const;

    /// When true the object deletes itself after its thread function returned.
    /// Such an object must be made with new and not be touched after Start.
    void SetAutoDelete(bool autoDelete);

protected:
    /// What the thread runs; its result is the exit code.
    using Body = std::function<DWORD()>;
    /// Deletes the most derived object of a self-deleting thread (see SetAutoDelete).
    using Deleter = void (*)(BxThreadCore*);

    /// Sets up a thread object that is not started: the given name and priority, no affinity, exit code 0 and
    /// the terminated event set.
    BxThreadCore(const CStringW& name, EThreadPriority priority);
    /// Waits for the thread to end, unless called by the thread itself.
    ~BxThreadCore();

    /// Starts the thread with body; false when it already runs.
    bool start(Body body, Deleter deleter);
    /// Set once the started thread runs (a copy, valid after self-deletion).
    BxEvent startedEvent() const { return m_started; }

private:
    void threadMain(Body body, Deleter deleter);
    void applyName() const;     // caller holds m_lock
    void applyPriority() const; // caller holds m_lock
    void applyAffinity() const; // caller holds m_lock

    mutable std::mutex m_lock;
    std::thread m_thread;
    CStringW m_name;
    EThreadPriority m_priority;
    DWORD_PTR m_affinityMask = 0;
    bool m_autoDelete = false;

    std::atomic<DWORD> m_exitCode{0};
    std::atomic<DWORD> m_threadId{0};
    BxEvent m_started;
    BxEvent m_terminated{true};
};
