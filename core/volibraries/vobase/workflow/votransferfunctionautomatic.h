// A transfer function that runs without user interaction: the workflow
// manager hands it the triggering message (SetMessage) and runs it as a work
// item (VoTaskTransferFunctionAutomatic), on its own thread when blocking,
// else on the shared thread pool.
//
//   class CImport : public VoTransferFunctionAutomatic {
//   public:
//       CImport(const VoMessageHandlerBase& manager)
//           : VoTransferFunctionAutomatic(manager, new VoMessageCommand(ID_IMPORT), true, false, L"Import") {}
//   protected:
//       void execute(const VoMessageWorkflowAction& message) override {
//           for (auto& file : files()) { if (isBreak()) return; load(file); }
//       }
//   };
//
// Run() resets the break event, executes the current message (or the init
// message when none is set), hands every exception to onException and clears
// the current message; nothing leaves it.
//
// Threads: Break() may be called from any thread while execute runs; the
// break event is the only state shared then. SetMessage and Run are called
// one after the other by the manager (the pool's queue orders them).
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>
#include <vobase/workflow/votransferfunction.h>

#include <bxbase/threading/bxevent.h>

/// A transfer function that runs without user interaction: the workflow manager hands it the triggering message
/// (SetMessage) and runs it as a work item (VoTaskTransferFunctionAutomatic), on its own thread when blocking,
/// else on the shared thread pool.
class VOBASE_API VoTransferFunctionAutomatic : public VoTransferFunction
{
public:
    /// An automatic transfer function whose end is reported to `handler` (the workflow manager, which must outlive
    /// it), triggered by `initMessage`; `blocking` makes the manager run it on its own thread inside HandleMessage.
    /// A null init message throws BxExceptionPreconditionViolation.
    VoTransferFunctionAutomatic(const VoMessageHandlerBase& handler,
                                BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                                bool blocking);
    /// The same with a name for the manager's log lines and dumps.
    VoTransferFunctionAutomatic(const VoMessageHandlerBase& handler,
                                BxSmartPointer<const VoMessageWorkflowAction> initMessage, bool breakSupport,
                                bool blocking, const CStringW& name);

    /// The type record (L"VoTransferFunctionAutomatic"), based on VoTransferFunction::RTTI.
    static const BxRTTI RTTI;
    /// Returns RTTI.
    const BxRTTI& GetRTTI() const override { return RTTI; }

    /// True when the manager runs it on its own thread.
    bool IsBlocking() const noexcept { return m_blocking; }
    /// Stores a clone of `message` (made through the type registry) as the
    /// current message. A class without a clone factory throws
    /// BxExceptionPreconditionViolation.
    void SetMessage(const VoMessageWorkflowAction& message);
    /// With break support: onBreak (which sets the break event); else nothing.
    void Break();
    /// Break support is on and the break event is set; long execute bodies poll it.
    bool isBreak() const { return hasBreakSupport() && m_breakEvent.IsSet(); }
    /// Runs the body once; see the overview. Never throws.
    void Run();

    /// The handler to which the end is reported (the workflow manager).
    const VoMessageHandlerBase& getHandler() const noexcept { return m_handler; }
    /// The current message (null when none is set).
    const BxSmartPointer<const VoMessageWorkflowAction>& getMessage() const noexcept { return m_message; }
    /// The break event (a copy sharing its state).
    BxEvent getBreakEvent() const { return m_breakEvent; }

    /// Sets the break event.
    void onBreak() override { m_breakEvent.Set(); }

protected:
    /// The work, given the current message or the init message.
    virtual void execute(const VoMessageWorkflowAction& message) = 0;
    /// Hook for derived classes that activate the transfer function themselves; empty. The workflow manager does
    /// not call it.
    virtual void onActivate() {}
    /// The counterpart of onActivate; empty. The workflow manager does not call it.
    virtual void onDeactivate() {}

private:
    void reportException(const BxException* exception) noexcept;

    const VoMessageHandlerBase& m_handler;
    BxSmartPointer<const VoMessageWorkflowAction> m_message;  ///< set by the manager, cleared by Run
    bool m_blocking;
    BxEvent m_breakEvent;
};
