// Reports waits that cannot end. A synchronous send and a task manager's
// WaitUntilTerminate wait without limit, and they still do; but when such a
// wait is blocked for good, the detector says so once, as a warning through
// its logger, and lists it in GetBlockedWaits():
//
//   - a cycle of synchronous sends between threads (A's send waits on a
//     handler of thread B, whose own send waits on a handler of thread A;
//     longer cycles too);
//   - a send made before the dispatcher's thread runs (or after it ended),
//     and a send made on the dispatcher's own thread;
//   - a send to a handler whose thread has ended, or whose queue holds the
//     send and has taken no entry for a whole detection period (a handler
//     that keeps taking entries is busy, not stuck, and never reported);
//   - WaitUntilTerminate called from inside a work item of the task it waits
//     for (see VoTaskWaitWatch).
//
//   VoHangDetector::SetTimeout(2000);                        // or VOBASE_HANG_TIMEOUT_MS=2000
//   VoHangDetector::SetLogger(myLogger);                     // default: category "Core.HangDetector"
//   for (const auto& wait : VoHangDetector::GetBlockedWaits())
//       if (wait.kind == VoHangDetector::eK_SendCycle) showCycle(wait.cycle);
//
// How it works: a waiting thread first waits for the detection time (default
// 5 s; the environment variable VOBASE_HANG_TIMEOUT_MS sets another, 0 turns
// detection off). A send answered in that time costs nothing more: no lock,
// no allocation. Only a wait that outlasts it registers in a process-wide
// table (thread id -> what it waits on), looks at what it waits on and keeps
// waiting, looking again every detection period, until its wait ends and it
// removes its entry. What a send waits on is found, when needed, in the
// handlers themselves: every live handler is known to the detector, and a
// send waits on each handler that holds its entry in the send queue or is
// answering it right now. The cycles are found by following the table from
// thread to thread; a handler's liveness is its kernel thread; its progress is
// a counter of the send entries it took.
//
// Each blocked wait is logged at most once; a cycle is one line naming every
// member, and marks all of them as logged. Lines begin with "Blocked send:"
// or "Blocked task wait:".
//
// Locks: one process-wide mutex guards the table of blocked waits and the set
// of live handlers; while holding it, a diagnosis takes each handler's
// send-queue lock in turn (nothing takes them in the other order). The
// detection time is an atomic; the logger is replaced under its own mutex.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/logging/ilogger.h>

#include <cstdint>
#include <string>
#include <vector>

class VoMessage;
class VoMessageHandlerBase;
class VoThreadSendStatus;

/// Reports waits that cannot end: cycles of synchronous sends, sends the dispatcher or a handler will never take,
/// and task waits from inside the task waited for.
class VOBASE_API VoHangDetector
{
public:
    /// What a blocked wait was found to be.
    enum EKind
    {
        eK_Waiting = 0,             ///< blocked past the detection time; no hang found (a long answer, say)
        eK_SendCycle = 1,           ///< the send is part of a cycle of synchronous sends
        eK_DispatcherNotRunning = 2,///< the dispatcher's thread never started, or has ended
        eK_SendOnDispatcherThread = 3, ///< the send was made on the dispatcher's own thread
        eK_HandlerThreadEnded = 4,  ///< a handler holding the send has no thread any more
        eK_HandlerStalled = 5,      ///< a handler holding the send took no entry for a whole period
        eK_TaskWaitsForItself = 6   ///< WaitUntilTerminate from inside the task it waits for
    };

    /// A handler a send waits on.
    struct SWaitedHandler
    {
        std::wstring name;          ///< the handler's name
        std::uint32_t threadID = 0; ///< its thread (0: it never had one)
        bool answering = false;     ///< true: it is answering the send; false: the send waits in its queue
    };

    /// One blocked wait, as GetBlockedWaits lists it.
    struct SBlockedWait
    {
        EKind kind = eK_Waiting;           ///< what the wait was found to be
        std::uint32_t threadID = 0;        ///< the waiting thread
        std::wstring threadName;           ///< its name, as the system shows it
        std::wstring messageClass;         ///< a send: the class of the message sent
        std::vector<SWaitedHandler> handlers; ///< a send: the handlers it waits on
        std::vector<std::uint32_t> cycle;  ///< eK_SendCycle: the threads of the cycle, this one first
        std::string workItem;              ///< a task wait: the work item that waits
        std::string waitedItem;            ///< a task wait: the work item waited for
        std::int32_t taskID = -1;          ///< a task wait: the task of the work item that waits
        std::int32_t waitedTaskID = -1;    ///< a task wait: the task waited for (the same, or a newer one)
        std::uint32_t waitedMs = 0;        ///< how long the wait has lasted so far
        bool reported = false;             ///< logged already
    };

    /// Default detection time in milliseconds.
    static constexpr std::uint32_t kDefaultTimeoutMs = 5000;

    /// The detection time in milliseconds (0: off). At first the value of
    /// VOBASE_HANG_TIMEOUT_MS, or kDefaultTimeoutMs.
    static std::uint32_t GetTimeout() noexcept;
    /// Sets the detection time for waits that begin from now on (0: off).
    static void SetTimeout(std::uint32_t timeoutMs) noexcept;

    /// Hands the detector another logger (null: the default, "Core.HangDetector").
    static void SetLogger(BxSmartPointer<Logging::ILogger> logger);

    /// Every wait blocked past the detection time right now, sends and task
    /// waits, with what is known of it (kind eK_Waiting while no hang is found).
    static std::vector<SBlockedWait> GetBlockedWaits();
    /// How many hang reports were logged since the process started.
    static std::uint64_t GetReportCount() noexcept;

    // Hooks of the dispatcher: the sender's two waits.
    /// Waits until the send is dispatched to handlers of the sender's own
    /// thread (true) or fully answered (false).
    static bool WaitUntilDispatchedOrReplied(VoThreadSendStatus& status, const VoMessage& message,
                                             const VoMessageHandlerBase& dispatcher);
    /// Waits until the send is fully answered.
    static void WaitUntilReplied(VoThreadSendStatus& status, const VoMessage& message,
                                 const VoMessageHandlerBase& dispatcher);

    // Hooks of the handlers: the detector knows every live handler.
    /// Called by a handler's constructor: from now on a diagnosis looks at its queue.
    static void AddHandler(const VoMessageHandlerBase& handler);
    /// Called first by a handler's destructor; waits while a diagnosis looks at the handlers.
    static void RemoveHandler(const VoMessageHandlerBase& handler);

    // Hooks of the task waits (VoTaskWaitWatch).
    /// Enters the calling thread's wait, already known to be blocked for good
    /// and blocked for waitedMs so far, and logs it once as "Blocked task
    /// wait: " + the calling thread + " " + `what` + how long it has been
    /// blocked, naming `functionName` as the logging function.
    static void BeginBlockedWait(SBlockedWait wait, std::uint32_t waitedMs, const std::wstring& what,
                                 const char* functionName);
    /// Removes the calling thread's entry.
    static void EndBlockedWait();

private:
    class CDiagnosis;  ///< one look at a blocked send (reads the handlers' queues and marks)

    static bool watchSend(VoThreadSendStatus& status, const VoMessage& message, const VoMessageHandlerBase& dispatcher,
                          bool untilDispatched, std::uint32_t timeoutMs);
};
