// A thread owned by an object of the derived class, which names its thread
// function: a member function of Derived returning DWORD, bool or int.
//
//   class CWorker : public BxThread<CWorker, BxThreadPolicyMFC>
//   {
//   public:
//       CWorker() : BxThread(L"Worker", eTP_BelowNormal) { SetThreadFunction(&CWorker::work); }
//       ~CWorker() { WaitUntilTerminate(); }        // end the thread before members die
//   private:
//       bool work() { ...; return true; }            // exit code 1
//   };
//
//   CWorker worker;
//   worker.StartAndWait();                          // returns when the thread runs
//   worker.WaitUntilTerminate(1000);                // false: still running after 1 s
//   DWORD code = worker.GetExitCode();              // STILL_ACTIVE (259) while running
//
// A self-deleting thread is made with new, SetAutoDelete(true), and is not
// touched after Start; wait for it through a copy of GetTerminatedEvent().
//
//   auto* w = new CWorker; w->SetAutoDelete(true);
//   BxEvent ended = w->GetTerminatedEvent();
//   w->Start();
//   ended.Wait();
//
// Name, priority and affinity: see BxThreadCore. A derived class whose thread
// uses its members must wait for the thread in its own destructor; the base
// destructor waits too, but by then the derived part is gone.
#pragma once

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/threading/bxthreadcore.h>
#include <bxbase/threading/bxthreadpolicymfc.h>

#include <type_traits>
#include <utility>

/// A thread owned by an object of the derived class, which names its thread function: a member function of
/// Derived returning DWORD, bool or int.
template <class Derived, class Policy = BxThreadPolicyMFC>
class BxThread : public BxThreadCore
{
public:
    /// Sets up a thread object that is not started yet: no thread function (call SetThreadFunction before
    /// Start), the given name and priority, applied when the thread starts.
    explicit BxThread(const CStringW& name = CStringW(), EThreadPriority priority = eTP_Normal)
        : BxThreadCore(name, priority)
    {
    }

    /// Sets the member function the thread runs; its result becomes the exit code.
    template <class R>
    void SetThreadFunction(R (Derived::*function)())
    {
        static_assert(std::is_convertible_v<R, DWORD>, "the thread function must return a number or bool");
        m_function = function == nullptr ? Body() : Body([this, function]() -> DWORD {
            return static_cast<DWORD>((static_cast<Derived*>(this)->*function)());
        });
    }

    /// Starts the thread. False when it already runs or the system refused a
    /// thread. Throws BxExceptionPreconditionViolation without a thread function.
    bool Start()
    {
        if (!m_function)
            BX_THROW(BxExceptionPreconditionViolation, "BxThread::Start", "no thread function set");
        Body function = m_function;
        Body body = [function = std::move(function)]() -> DWORD {
            Policy::OnThreadEnter();
            struct SLeave { ~SLeave() { Policy::OnThreadLeave(); } } leave;
            return function();
        };
        return start(std::move(body), &deleteDerived);
    }

    /// Starts the thread and returns once it runs (true), or false when it
    /// could not start or did not begin within timeoutMs.
    bool StartAndWait(DWORD timeoutMs = INFINITE)
    {
        BxEvent started = startedEvent();
        return Start() && started.Wait(timeoutMs);
    }

private:
    static void deleteDerived(BxThreadCore* core) { delete static_cast<Derived*>(static_cast<BxThread*>(core)); }

    Body m_function; ///< set before Start, read by Start on the owner's thread
};
