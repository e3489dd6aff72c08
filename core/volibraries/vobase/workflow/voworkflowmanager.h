// The workflow manager runs one workflow: a state machine whose states hold
// by their conditions and whose transfer functions, triggered by action
// messages, move it from state to state. It is a message handler: the
// application drives it with VoMessageWorkflow control messages and with
// action messages (VoMessageWorkflowAction and its subclasses); work items
// report the end of transfer functions with VoMessageWorkflowEndOfTF.
//
//   VoMessageDispatcher::GetInstance().StartAndWait();        // before anything else
//   VoWorkflowManager manager(L"Imaging", VoWorkflowManager::eWMF_BufferMessages);
//   if (!manager.initMessageHandler()) fail();                // the calling thread pumps its messages
//   manager.RegisterWorkflowState(import);
//   manager.RegisterWorkflowState(review);
//   manager.RegisterWorkflowStateCondition(review, hasImage, true);
//   manager.RegisterTransferFunction(import, review, loadImage);   // an automatic transfer function
//   manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Start)).Get();
//   VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageCommand(ID_LOAD)));
//   ...
//   manager.HandleMessage(VoMessageWorkflow(VoMessageWorkflow::eM_Stop)).Get();
//
// The flow: in a state, an action message that equals the init message of a
// transfer function registered for the current state and the message's
// class starts it: the state is left (no current state while it runs) and
// the transfer function runs:
//   - automatic and blocking: on the manager's thread, inside HandleMessage;
//     when HandleMessage returns the target state is current;
//   - automatic, not blocking: as a work item on the shared thread pool; its
//     end comes back as eM_EndOfATF;
//   - interactive: onInit is called; the application ends it with
//     PostEndOfInteractiveTransferFunction (eM_EndOfITF), after which onExit
//     runs here (blocking exit) or on the pool (its end: eM_EndOfITFExit).
// Then the target state is entered. Action messages that arrive while a
// transfer function runs, while the workflow sleeps, or while older ones are
// still buffered, are buffered when flag eWMF_BufferMessages is set (else
// refused with E_FAIL) and replayed one at a time, each as a message of its
// own (VoMessageWorkflowNextMsgBuffered posted to the manager itself).
//
// Choices this class makes where the workflow model leaves them open:
//   - evaluateCurrentWorkflowState keeps the current state while its
//     conditions all hold; otherwise (and at the start) it picks the first
//     registered state whose conditions all hold (a state without conditions
//     always holds);
//   - the buffer filter (filterMessageForBuffer) accepts every action message;
//   - the next buffered message is posted whenever a state has been entered
//     (start, end of a transfer function, continue), so the buffer drains;
//   - on sleep the current state's onSleep, or the running interactive
//     transfer function's onSleep, is called; on continue their onContinue;
//   - the error handler (runErrorHandler) is the automatic transfer function
//     registered for the state concerned, else the one registered for all
//     states; it runs on the manager's thread, after which the evaluation is
//     repeated once;
//   - while the workflow sleeps, the current state's messages are not
//     subscribed; entering a state while sleeping subscribes them on continue;
//   - the action step is handleMessageWorkflowAction; handleMessage (the
//     handler's entry point) routes every message to the matching public
//     HandleMessage overload;
//   - action messages are kept as clones made through the type registry
//     (current message, buffer): their classes must be clonable
//     (BX_IMPLEMENT_RTTI_CLONABLE), else they cannot start an automatic
//     transfer function or be buffered;
//   - stray end messages (no transfer function of that kind running) are ignored;
//   - an exception thrown by a state's callback is handed to that state's
//     onException and then fails the step like any other exception (error
//     hook, E_FAIL or a failed start).
//
// Subscriptions: the window's creation subscribes the control messages
// (VoMessageWorkflow, VoMessageWorkflowEndOfTF,
// VoMessageWorkflowNextMsgBuffered). While the workflow is started, the
// message classes of all registered transfer functions stay subscribed
// (so messages arriving during a transfer function reach the buffer); the
// current state's classes are counted on top of that. The dispatcher must
// run before the workflow starts. Call UnsubscribeAll (the destructor does)
// before the manager goes away; the destructor also waits for a work item
// still on the pool.
//
// Threads and locks: m_lock (recursive) guards every field below it; every
// public HandleMessage, Stop, Break, registration and query takes it. The
// state machine changes only on the thread that calls HandleMessage (the
// manager's thread when messages come through the dispatcher); transfer
// functions and interactive exits on the pool report back only by posted
// messages. The state event may be waited on from any thread.
#pragma once

#include <vobase/messaging/vomessagehandler.h>
#include <vobase/tasks/iworkitem.h>
#include <vobase/workflow/iinterceptorworkflowmanager.h>
#include <vobase/workflow/vomessageworkflow.h>
#include <vobase/workflow/vomessageworkflowendoftf.h>
#include <vobase/workflow/vomessageworkflownextmsgbuffered.h>
#include <vobase/workflow/votransferfunctionautomatic.h>
#include <vobase/workflow/votransferfunctioninteractive.h>
#include <vobase/workflow/voworkflowstate.h>
#include <vobase/workflow/voworkflowtrace.h>

#include <bxbase/bxcheckreturn.h>
#include <bxbase/bxidumpable.h>
#include <bxbase/diagnostics/bxtracehooks.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/interceptor/cframework.h>
#include <bxbase/logging/ilogger.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxtask.h>

#include <cstdint>
#include <deque>
#include <map>
#include <vector>

/// The workflow manager runs one workflow: a state machine whose states hold by their conditions and whose
/// transfer functions, triggered by action messages, move it from state to state.
class VOBASE_API VoWorkflowManager : public VoMessageHandler,
                                     public INonCopyable,
                                     public BxIDumpable<1>,
                                     public Interceptor::CFramework<Workflow::IInterceptorWorkflowManager>
{
public:
    /// Construction flags.
    enum EWorkflowManagerFlags : std::uint32_t
    {
        eWMF_None = 0,
        eWMF_BufferMessages = 1  ///< buffer action messages that cannot be handled at once
    };

    /// A registered transfer function: from source to target, triggered by
    /// messages of messageClass that equal its init message.
    struct STransferFunction
    {
        BxSmartPointer<VoWorkflowState> source;            ///< the state it leaves
        BxSmartPointer<VoWorkflowState> target;            ///< the state it enters
        const BxRTTI* messageClass = nullptr;              ///< the class of the messages that trigger it
        BxSmartPointer<VoTransferFunction> transferFunction; ///< automatic or interactive
    };

    /// A manager named `name` (also its handler name, unique at the dispatcher).
    VoWorkflowManager(const CStringW& name, EWorkflowManagerFlags flags);
    /// Unsubscribes everything and waits for a work item still on the pool.
    ~VoWorkflowManager() override;

    // ---- registration (throws BxExceptionPreconditionViolation on null or unknown arguments)
    /// Adds a state; registering one twice changes nothing.
    void RegisterWorkflowState(BxSmartPointer<VoWorkflowState> state);
    /// Asks `state` (registered) to hold only when `condition` evaluates to `value`.
    void RegisterWorkflowStateCondition(BxSmartPointer<VoWorkflowState> state,
                                        BxSmartPointer<const VoWorkflowStateCondition> condition, bool value);
    /// Registers a transfer function from source to target, triggered by the class of its init message.
    void RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source, BxSmartPointer<VoWorkflowState> target,
                                  BxSmartPointer<VoTransferFunctionAutomatic> transferFunction);
    /// The same for an interactive transfer function.
    void RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source, BxSmartPointer<VoWorkflowState> target,
                                  BxSmartPointer<VoTransferFunctionInteractive> transferFunction);
    /// The same with an explicit message class (the transfer function must be automatic or interactive).
    void RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source, BxSmartPointer<VoWorkflowState> target,
                                  const BxRTTI& messageClass, BxSmartPointer<VoTransferFunction> transferFunction);
    /// The error handler of `state` (registered).
    void RegisterErrorHandler(BxSmartPointer<const VoWorkflowState> state,
                              BxSmartPointer<VoTransferFunctionAutomatic> handler);
    /// The error handler for every state without one of its own (and for the start).
    void RegisterErrorHandler(BxSmartPointer<VoTransferFunctionAutomatic> handler);
    /// Removes every registration of the transfer function; false when it had none.
    /// The running transfer function cannot be removed.
    bool Unregister(const BxSmartPointer<VoTransferFunction>& transferFunction);
    /// Removes a state with its transfer functions and error handler; false when unknown.
    /// The current state cannot be removed.
    bool Unregister(const BxSmartPointer<VoWorkflowState>& state);

    // ---- queries
    /// The current state; null while a transfer function runs or before the start.
    BxSmartPointer<VoWorkflowState> GetCurrentState() const;
    /// The state most recently left or entered.
    BxSmartPointer<VoWorkflowState> GetExtendedState() const;
    /// The running transfer function, or null.
    BxSmartPointer<VoTransferFunction> GetCurrentTransferFunction() const;
    /// The action message that started the running transfer function (a clone; null when none).
    BxSmartPointer<const VoMessageWorkflowAction> GetCurrentMessage() const;
    /// The handler of `state`, else the one for all states, else null.
    BxSmartPointer<VoTransferFunctionAutomatic> GetErrorHandler(const BxSmartPointer<const VoWorkflowState>& state) const;
    /// The first transfer function registered for `source` and a message of
    /// `messageClass` whose init message equals `message`; null when none.
    BxSmartPointer<VoTransferFunction> GetTransferFunction(const BxSmartPointer<VoWorkflowState>& source,
                                                           const VoMessageWorkflowAction& message) const;
    /// The first registered state of class `rtti` (exact), or null.
    BxSmartPointer<VoWorkflowState> GetWorkflowState(const BxRTTI& rtti) const;
    /// The value of `condition` at the latest evaluation, eTS_NotEvaluated before.
    VoWorkflowStateCondition::ETriState GetWorkflowStateCondition(
        const BxSmartPointer<const VoWorkflowStateCondition>& condition) const;
    /// The registered states in registration order.
    std::vector<BxSmartPointer<VoWorkflowState>> GetWorkflowStates() const;
    /// Set while the workflow rests in a state, reset while a transfer function runs.
    BxEvent GetStateEvent() const { return m_stateEvent; }
    /// True between the start and the stop of the workflow.
    bool IsStarted() const;
    /// True while the workflow sleeps.
    bool IsSleeping() const;
    /// The number of buffered action messages.
    std::size_t GetBufferedCount() const;
    /// True when the last end of a transfer function was an interactive end (eM_EndOfITF).
    bool IsLastEndInteractive() const;
    /// The construction flags.
    EWorkflowManagerFlags GetFlags() const noexcept { return m_flags; }

    /// Hands the manager a logger (null: nothing is logged).
    void SetLogger(BxSmartPointer<Logging::ILogger> logger);

    // ---- messages (each takes m_lock, logs "Received message '%s' (%s)", answers E_FAIL on any exception)
    /// Start, stop, sleep, continue, break, re-evaluate or dump; 1 for success, 0 for failure.
    BxCheckReturn<std::int64_t> HandleMessage(const VoMessageWorkflow& message);
    /// Handled now in a state when nothing is buffered and the workflow is
    /// awake; else buffered (0) or refused (E_FAIL).
    BxCheckReturn<std::int64_t> HandleMessage(const VoMessageWorkflowAction& message);
    /// The end of a transfer function or of an interactive exit.
    BxCheckReturn<std::int64_t> HandleMessage(const VoMessageWorkflowEndOfTF& message);
    /// Takes the next buffered message and handles it.
    BxCheckReturn<std::int64_t> HandleMessage(const VoMessageWorkflowNextMsgBuffered& message);

    /// Stops the workflow (see onStopWorkflow).
    bool Stop();
    /// Breaks the running transfer function (see onBreakWorkflow).
    bool Break();

    /// Posts `message` to `manager` alone, through the dispatcher.
    static void PostMessageW(BxSmartPointer<const VoMessage> message, const VoWorkflowManager& manager);
    /// Ends the running interactive transfer function of `manager` (posts eM_EndOfITF to it).
    static void PostEndOfInteractiveTransferFunction(const VoWorkflowManager& manager);

    /// The state dump: state, current workflow state, transfer function,
    /// message and the outgoing transfer functions of the current state.
    void dump(BxStreamWriteASCIIT<CStringW>& stream) const override;
    /// The condition dump: each condition's latest value.
    void dumpConditions(BxStreamWriteASCIIT<CStringW>& stream) const;

protected:
    // ---- hooks (empty), called through one wrapper: an exception goes to onError and fails the step
    /// The workflow starts (asleep when `sleeping`).
    virtual void onStart(bool /*sleeping*/) {}
    /// The workflow stops.
    virtual void onStop() {}
    /// The workflow goes to sleep.
    virtual void onSleep() {}
    /// The workflow wakes up.
    virtual void onContinue() {}
    /// The running transfer function is asked to break.
    virtual void onBreak() {}
    /// The workflow leaves `state` for a transfer function.
    virtual void onLeaveState(const VoWorkflowState& /*state*/) {}
    /// A transfer function is about to start.
    virtual void onStartTransferFunction(const STransferFunction& /*transferFunction*/) {}
    /// The error handler of `state` (null: the one for all states) is about to run.
    virtual void onRunErrorHandler(const VoWorkflowState* /*state*/) {}
    // ---- notifications (empty)
    /// A state was registered.
    virtual void onRegisterWorkflowState(const VoWorkflowState& /*state*/) {}
    /// A transfer function was registered.
    virtual void onRegisterTransferFunction(const STransferFunction& /*transferFunction*/) {}
    /// A transfer function was unregistered.
    virtual void onUnregisterTransferFunction(const STransferFunction& /*transferFunction*/) {}
    /// The current state changed (GetCurrentState).
    virtual void onCurrentWFSChanged() {}
    /// The extended state changed (GetExtendedState).
    virtual void onExtendedWFSChanged() {}
    /// The error hook: the exception, or null for a foreign one. Empty.
    virtual void onError(const BxException* /*exception*/) {}
    /// Whether `transferFunction`, found for `message`, may start; true.
    virtual bool acceptTransferFunction(const STransferFunction& /*transferFunction*/,
                                        const VoMessageWorkflowAction& /*message*/) const
    {
        return true;
    }
    /// Whether `message` may be buffered (with eWMF_BufferMessages); true.
    virtual bool filterMessageForBuffer(const VoMessageWorkflowAction& /*message*/) const { return true; }

    // ---- the steps (called under m_lock)
    /// eM_Start / eM_StartSleeping: calls onStart, evaluates the states (running the error handler once when none
    /// holds), enters the start state, subscribes the action messages (and, awake, the state's) and sets the state
    /// event. False when already started; on a failure the manager is left stopped and the result is false.
    bool onStartWorkflow(bool sleeping);
    /// eM_Stop (takes m_lock itself). In a state: leaves it, unsubscribes, resets the state event, calls the
    /// state's onExit and then onStop, whose success is the result. While a transfer function runs the stop is
    /// deferred to its end (true), unless it is interactive and cannot be broken (false). False when not started.
    bool onStopWorkflow();
    /// eM_Sleep: calls onSleep, marks the workflow sleeping and unsubscribes the current state's messages (or
    /// calls the running interactive transfer function's onSleep). True when sleeping afterwards; false when not
    /// started or on failure.
    bool onSleepWorkflow();
    /// eM_Continue: false at once when not sleeping (or when onContinue fails). Wakes the running transfer function,
    /// or re-evaluates the states (switching when another one holds), subscribes the current state's messages and
    /// posts the next buffered message.
    bool onContinueWorkflow();
    /// eM_Break (takes m_lock itself): false when not started; when the running transfer function supports
    /// breaking, calls onBreak and asks it to break. True otherwise.
    bool onBreakWorkflow();
    /// eM_Reevaluate: nothing (true) while a transfer function runs; else evaluates the states and, when another
    /// one holds, switches to it. When no state holds even after the error handler, stops the workflow and
    /// returns false.
    bool onReevaluateWorkflow();
    /// The action step: starts the transfer function the message selects.
    std::int64_t handleMessageWorkflowAction(const VoMessage& message);
    /// The end (`kind` eM_EndOfATF or eM_EndOfITF) of the running transfer function. An interactive one's onExit
    /// runs first: here when its exit is blocking, else on the pool (result 1; its end arrives as
    /// eM_EndOfITFExit). Then onAfterEndOfTF. 0 when no transfer function of that kind runs (a stray end).
    std::int64_t onMsgEndOfTF(VoMessageWorkflowEndOfTF::EMessage kind);
    /// Ends the running transfer function: logs "Ending transfer function '%s'" and enters its target state, or
    /// stops the workflow when a stop is pending. 1 on success, 0 when nothing was running, E_FAIL on an
    /// exception (the current messages are then unsubscribed).
    std::int64_t onAfterEndOfTF();
    /// Takes the oldest buffered message and handles it as an action message, then posts for the next one. 0
    /// when sleeping, without a current state, or with an empty buffer.
    std::int64_t onMsgNextBufferedMsg();
    /// The current state while its conditions hold, else the first registered
    /// state whose conditions hold; BxException when none.
    BxSmartPointer<VoWorkflowState> evaluateCurrentWorkflowState();
    /// Runs the error handler for `state`; false when there is none or it failed.
    bool runErrorHandler(const BxSmartPointer<const VoWorkflowState>& state);
    /// The first transfer function registered from `state` whose message class `message` is kind of and whose
    /// init message equals it; null when none. Points into the registrations: valid until the next change.
    const STransferFunction* findTransferFunction(const VoWorkflowState& state,
                                                  const VoMessageWorkflowAction& message) const;
    /// Appends a clone of `message` to the buffer ("Push message '%s' to buffer"); false when buffering is off
    /// (no eWMF_BufferMessages), filterMessageForBuffer refuses it, or its class cannot be cloned.
    bool pushMessageToBuffer(const VoMessageWorkflowAction& message);
    /// Removes and returns the oldest buffered message ("Pop message '%s' from buffer"); null when empty.
    BxSmartPointer<const VoMessageWorkflowAction> getNextMessageBuffered();
    /// Posts a VoMessageWorkflowNextMsgBuffered to this manager when the buffer holds messages and none is on
    /// its way already.
    void postMessageNextBufferedMsg();
    /// Subscribes the message classes of all registered transfer functions at the dispatcher (once; classes
    /// are counted, so a class shared with the current state stays subscribed until both let go).
    void registerMessagesWorkflowAction();
    /// Undoes registerMessagesWorkflowAction; does nothing when it is not in effect.
    void unregisterMessagesWorkflowAction();
    /// Subscribes the message classes of the transfer functions leaving `state` (once, until unregisterMessages).
    void registerMessages(const VoWorkflowState& state);
    /// Undoes registerMessages for `state`; does nothing when it is not in effect.
    void unregisterMessages(const VoWorkflowState& state);
    /// Sets the state event (the workflow rests in a state).
    void setStateEvent() { m_stateEvent.Set(); }
    /// Resets the state event (a transfer function runs).
    void resetStateEvent() { m_stateEvent.Reset(); }

    /// Routes a delivered message to the matching HandleMessage overload.
    LRESULT handleMessage(const VoMessage& message) override;
    /// Subscribes the control messages, after the base's subscriptions.
    void onSubscribeMessages() override;

private:
    enum EStatus : std::uint8_t
    {
        eS_Started = 1,
        eS_Sleeping = 2,
        eS_StopPending = 4
    };

    template <class Hook>
    bool callHook(Hook&& hook);
    /// Hands a context to the interceptors; while the trace recorder is on,
    /// the step is also recorded as an instant event on this thread.
    template <class Context>
    void dispatch(void (Workflow::IInterceptorWorkflowManager::*hook)(const Context&), const Context& context) const
    {
        if (BxTraceHooks::IsOn())
            VoWorkflowTrace::Record(hook, context);
        Interceptor::CFramework<Workflow::IInterceptorWorkflowManager>::dispatch(hook, context);
    }
    /// Runs a callback of `state`; an exception is shown to the state's
    /// onException first and then goes on to the step's own failure handling.
    template <class Callback>
    void callState(VoWorkflowState& state, Callback&& callback);
    void tellState(VoWorkflowState& state, const BxException* exception) noexcept;
    void reportError() noexcept;
    template <class... Args>
    void log(Logging::ELogLevel level, const char* function, const wchar_t* format, Args... args) const;
    void logReceived(const VoMessage& message) const;
    /// Runs body under m_lock after logging the message; what escapes it is reported and answers E_FAIL.
    template <class TBody>
    std::int64_t handleGuarded(const VoMessage& message, TBody&& body);
    void logCalling(const wchar_t* callee, const wchar_t* operation) const;

    /// Whether every condition of `state` has the value it asks for, as of the latest evaluation.
    bool holds(const VoWorkflowState& state);
    BxSmartPointer<VoWorkflowState> evaluateWithErrorHandler(const BxSmartPointer<const VoWorkflowState>& state);
    void setCurrentState(const BxSmartPointer<VoWorkflowState>& state);
    void setExtendedState(const BxSmartPointer<VoWorkflowState>& state);
    void initWorkflowStateAfterTF(const STransferFunction& transferFunction);
    void startAutomatic(const STransferFunction& transferFunction, VoTransferFunctionAutomatic& automatic);
    std::int64_t startInteractive(const STransferFunction& transferFunction,
                                  VoTransferFunctionInteractive& interactive, const VoMessageWorkflowAction& message);
    void runOnPool(BxSmartPointer<IWorkItem> item);
    void subscribeClass(const BxRTTI* rtti);
    void unsubscribeClass(const BxRTTI* rtti);
    void addTransferFunction(STransferFunction transferFunction);
    /// Registers a typed transfer function for the class of its init message.
    void registerByInitMessage(BxSmartPointer<VoWorkflowState> source, BxSmartPointer<VoWorkflowState> target,
                               BxSmartPointer<VoTransferFunction> transferFunction);
    void requireRegistered(const BxSmartPointer<VoWorkflowState>& state, const char* function) const;
    bool isAutomaticRunning() const;

    mutable BxCriticalSection m_lock;
    const EWorkflowManagerFlags m_flags;
    std::uint8_t m_status = 0;  ///< EStatus bits
    std::vector<BxSmartPointer<VoWorkflowState>> m_states;
    std::map<BxSmartPointer<const VoWorkflowStateCondition>, bool> m_conditionValues;
    std::map<BxSmartPointer<const VoWorkflowStateCondition>, std::uint32_t> m_conditionCounts;
    std::vector<STransferFunction> m_transferFunctions;
    std::map<BxSmartPointer<const VoWorkflowState>, BxSmartPointer<VoTransferFunctionAutomatic>> m_errorHandlers;
    BxSmartPointer<VoWorkflowState> m_currentState;
    BxSmartPointer<VoWorkflowState> m_extendedState;
    STransferFunction m_current;  ///< the running transfer function (transferFunction null when none)
    BxEvent m_stateEvent;         ///< manual reset; thread-safe by itself
    BxSmartPointer<const VoMessageWorkflowAction> m_currentMessage;
    bool m_interactive = false;         ///< the running transfer function is interactive
    bool m_lastEndInteractive = false;  ///< the last end was eM_EndOfITF
    bool m_exitRunning = false;         ///< a non-blocking interactive exit is on the pool
    bool m_nextPosted = false;          ///< a VoMessageWorkflowNextMsgBuffered is on its way
    bool m_actionMessagesRegistered = false;
    bool m_stateMessagesRegistered = false;  ///< the current state's classes are counted in m_subscribed
    std::deque<BxSmartPointer<const VoMessageWorkflowAction>> m_buffer;
    std::map<const BxRTTI*, std::uint32_t> m_subscribed;  ///< classes subscribed at the dispatcher, with counts
    BxSmartPointer<BxTask> m_poolTask;                     ///< the latest work item given to the pool
    BxSmartPointer<Logging::ILogger> m_logger;
};
