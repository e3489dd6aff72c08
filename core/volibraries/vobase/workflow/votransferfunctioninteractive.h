// A transfer function that lives while the user works: the workflow manager
// calls onInit when an action message starts it, the application ends it
// (VoWorkflowManager::PostEndOfInteractiveTransferFunction), and the manager
// then calls onExit, on its own thread when the exit is blocking, else on
// the shared thread pool. While the workflow sleeps the manager calls
// onSleep, and onContinue when it wakes.
//
//   class CEditRegion : public VoTransferFunctionInteractive {
//   public:
//       CEditRegion() : VoTransferFunctionInteractive(new VoMessageCommand(ID_EDIT), false, true, L"Edit") {}
//       void onInit(const VoMessageWorkflowAction& m) override { VoTransferFunctionInteractive::onInit(m); openEditor(); }
//       void onExit() override { closeEditor(); VoTransferFunctionInteractive::onExit(); }
//   };
//
// Lifecycle: idle -> onInit -> running -> onSleep -> running and sleeping ->
// onContinue -> running -> onExit -> idle; onContinue in any other state
// changes nothing. The flags are atomics: a non-blocking onExit runs on a
// pool thread while the manager's thread may read them.
#pragma once

#include <vobase/workflow/votransferfunction.h>

#include <atomic>

/// A transfer function that lives while the user works: the workflow manager calls onInit when an action message
/// starts it, the application ends it (VoWorkflowManager::PostEndOfInteractiveTransferFunction), and the manager
/// then calls onExit, on its own thread when the exit is blocking, else on the shared thread pool.
class VOBASE_API VoTransferFunctionInteractive : public VoTransferFunction
{
public:
    /// An interactive transfer function triggered by `initMessage`, idle (not running); `blockingExit` makes the
    /// manager run onExit on its own thread. A null init message throws BxExceptionPreconditionViolation.
    VoTransferFunctionInteractive(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                                  bool blockingExit);
    /// The same with a name for the manager's log lines and dumps.
    VoTransferFunctionInteractive(BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                                  bool blockingExit, const CStringW& name);

    /// The type record (L"VoTransferFunctionInteractive"), based on VoTransferFunction::RTTI.
    static const BxRTTI RTTI;
    /// Returns RTTI.
    const BxRTTI& GetRTTI() const override { return RTTI; }

    /// True when the manager runs onExit on its own thread.
    bool IsBlockingExit() const noexcept { return m_blockingExit; }
    /// True between onInit and onExit.
    bool IsRunning() const noexcept { return m_running.load(std::memory_order_acquire); }
    /// True between onSleep and onContinue (or onExit).
    bool IsSleeping() const noexcept { return m_sleeping.load(std::memory_order_acquire); }

    /// Started by `message`: sets running.
    virtual void onInit(const VoMessageWorkflowAction& message);
    /// Ended: clears running and sleeping.
    virtual void onExit();
    /// The workflow sleeps: sets sleeping.
    virtual void onSleep();
    /// The workflow wakes: clears sleeping, only when running and sleeping are both set.
    virtual void onContinue();

private:
    bool m_blockingExit;
    std::atomic<bool> m_running{false};
    std::atomic<bool> m_sleeping{false};
};
