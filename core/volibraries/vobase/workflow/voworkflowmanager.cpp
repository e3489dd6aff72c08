#include <vobase/workflow/voworkflowmanager.h>

#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/workflow/votaskendoftransferfunctioninteractive.h>
#include <vobase/workflow/votasktransferfunctionautomatic.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/bxformat.h>
#include <bxbase/bxstreamwriteasciitrace.h>
#include <bxbase/threading/bxthreadpool.h>

#include <algorithm>

using Logging::eLL_Error;
using Logging::eLL_Info;

namespace {

constexpr std::int64_t kFail = static_cast<std::int32_t>(0x80004005);

// Runs a work item on the shared thread pool.
class CWorkItemTask : public BxTask
{
public:
    explicit CWorkItemTask(BxSmartPointer<IWorkItem> item) : m_item(std::move(item)) {}

protected:
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> run() override
    {
        TaskManager::SWorkItemStatus status;
        m_item->Run(status);
        return true;
    }

private:
    BxSmartPointer<IWorkItem> m_item;
};

// A clone of `message` made through the type registry; null when its class cannot be cloned.
BxSmartPointer<const VoMessageWorkflowAction> cloneAction(const VoMessageWorkflowAction& message)
{
    std::unique_ptr<IObject> clone = message.GetRTTI().CloneObject(message);
    auto* action = dynamic_cast<VoMessageWorkflowAction*>(clone.get());
    if (action == nullptr)
        return nullptr;
    clone.release();
    return BxSmartPointer<const VoMessageWorkflowAction>(action);
}

const wchar_t* stateName(const BxSmartPointer<VoWorkflowState>& state)
{
    return state ? state->GetClassNameW() : L"";
}

const wchar_t* activity(bool sleeping)
{
    return sleeping ? L"sleeping" : L"active";
}

}  // namespace

VoWorkflowManager::VoWorkflowManager(const CStringW& name, EWorkflowManagerFlags flags)
    : VoMessageHandler(name), m_flags(flags)
{
}

VoWorkflowManager::~VoWorkflowManager()
{
    BxSmartPointer<BxTask> task;
    {
        BxCriticalSectionLocker locker(m_lock);
        task = m_poolTask;
    }
    if (task)
        task->WaitUntilTerminate();
    UnsubscribeAll();
}

// ---------------------------------------------------------------- helpers

template <class... Args>
void VoWorkflowManager::log(Logging::ELogLevel level, const char* function, const wchar_t* format, Args... args) const
{
    if (!m_logger || !m_logger->IsEnabled(level))
        return;
    m_logger->Log(level, __FILE__, __LINE__, function, BxFormat::Wide(format, args...));
}

void VoWorkflowManager::logReceived(const VoMessage& message) const
{
    if (m_logger && m_logger->IsEnabled(eLL_Info))
        log(eLL_Info, "VoWorkflowManager::HandleMessage", L"Received message '%s' (%s)", message.GetClassNameW(),
            message.ToString().c_str());
}

void VoWorkflowManager::logCalling(const wchar_t* callee, const wchar_t* operation) const
{
    log(eLL_Info, "VoWorkflowManager::callback", L"Calling '%s::%s'", callee, operation);
}

void VoWorkflowManager::reportError() noexcept
{
    try {
        throw;
    } catch (const BxException& exception) {
        try {
            onError(&exception);
        } catch (...) {
        }
    } catch (...) {
        try {
            onError(nullptr);
        } catch (...) {
        }
    }
}

template <class Callback>
void VoWorkflowManager::callState(VoWorkflowState& state, Callback&& callback)
{
    try {
        callback();
    } catch (const BxException& exception) {
        tellState(state, &exception);
        throw;
    } catch (...) {
        tellState(state, nullptr);
        throw;
    }
}

void VoWorkflowManager::tellState(VoWorkflowState& state, const BxException* exception) noexcept
{
    try {
        state.onException(exception);
    } catch (...) {
        // the original exception goes on; this one has nowhere to go
    }
}

template <class Hook>
bool VoWorkflowManager::callHook(Hook&& hook)
{
    try {
        hook();
        return true;
    } catch (...) {
        reportError();
        return false;
    }
}

void VoWorkflowManager::setCurrentState(const BxSmartPointer<VoWorkflowState>& state)
{
    if (m_currentState == state)
        return;
    m_currentState = state;
    onCurrentWFSChanged();
}

void VoWorkflowManager::setExtendedState(const BxSmartPointer<VoWorkflowState>& state)
{
    if (m_extendedState == state)
        return;
    m_extendedState = state;
    onExtendedWFSChanged();
}

void VoWorkflowManager::requireRegistered(const BxSmartPointer<VoWorkflowState>& state, const char* function) const
{
    if (!state || std::find(m_states.begin(), m_states.end(), state) == m_states.end())
        BX_THROW(BxExceptionPreconditionViolation, function, "the workflow state is null or not registered");
}

bool VoWorkflowManager::isAutomaticRunning() const
{
    return m_current.transferFunction && !m_interactive;
}

void VoWorkflowManager::runOnPool(BxSmartPointer<IWorkItem> item)
{
    m_poolTask = BxSmartPointer<BxTask>(new CWorkItemTask(std::move(item)));
    BxThreadPool::GetInstance().AddTask(m_poolTask, BxThreadPool::ePriorityNormal);
}

// ---------------------------------------------------------------- registration

void VoWorkflowManager::RegisterWorkflowState(BxSmartPointer<VoWorkflowState> state)
{
    if (!state)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::RegisterWorkflowState", "the state is null");
    BxCriticalSectionLocker locker(m_lock);
    if (std::find(m_states.begin(), m_states.end(), state) != m_states.end())
        return;
    m_states.push_back(state);
    for (const auto& [condition, value] : state->GetConditions())
        if (m_conditionCounts[condition]++ == 0)
            m_conditionValues[condition] = false;
    onRegisterWorkflowState(*state);
}

void VoWorkflowManager::RegisterWorkflowStateCondition(BxSmartPointer<VoWorkflowState> state,
                                                       BxSmartPointer<const VoWorkflowStateCondition> condition,
                                                       bool value)
{
    BxCriticalSectionLocker locker(m_lock);
    requireRegistered(state, "VoWorkflowManager::RegisterWorkflowStateCondition");
    if (!condition)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::RegisterWorkflowStateCondition",
                 "the condition is null");
    const bool known = state->GetConditions().count(condition) != 0;
    state->AddCondition(condition, value);
    if (!known && m_conditionCounts[condition]++ == 0)
        m_conditionValues[condition] = false;
}

void VoWorkflowManager::RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source,
                                                 BxSmartPointer<VoWorkflowState> target,
                                                 BxSmartPointer<VoTransferFunctionAutomatic> transferFunction)
{
    registerByInitMessage(std::move(source), std::move(target), BxSmartPointer<VoTransferFunction>(transferFunction));
}

void VoWorkflowManager::RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source,
                                                 BxSmartPointer<VoWorkflowState> target,
                                                 BxSmartPointer<VoTransferFunctionInteractive> transferFunction)
{
    registerByInitMessage(std::move(source), std::move(target), BxSmartPointer<VoTransferFunction>(transferFunction));
}

void VoWorkflowManager::registerByInitMessage(BxSmartPointer<VoWorkflowState> source,
                                              BxSmartPointer<VoWorkflowState> target,
                                              BxSmartPointer<VoTransferFunction> transferFunction)
{
    if (!transferFunction)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::RegisterTransferFunction",
                 "the transfer function is null");
    const BxRTTI& messageClass = transferFunction->GetInitMessage()->GetRTTI();
    RegisterTransferFunction(std::move(source), std::move(target), messageClass, std::move(transferFunction));
}

void VoWorkflowManager::RegisterTransferFunction(BxSmartPointer<VoWorkflowState> source,
                                                 BxSmartPointer<VoWorkflowState> target, const BxRTTI& messageClass,
                                                 BxSmartPointer<VoTransferFunction> transferFunction)
{
    const char* function = "VoWorkflowManager::RegisterTransferFunction";
    BxCriticalSectionLocker locker(m_lock);
    requireRegistered(source, function);
    requireRegistered(target, function);
    if (!transferFunction || (dynamic_cast<VoTransferFunctionAutomatic*>(transferFunction.get()) == nullptr &&
                              dynamic_cast<VoTransferFunctionInteractive*>(transferFunction.get()) == nullptr))
        BX_THROW(BxExceptionPreconditionViolation, function,
                 "the transfer function must be automatic or interactive");
    if (!messageClass.IsKindOf(VoMessageWorkflowAction::RTTI))
        BX_THROW(BxExceptionPreconditionViolation, function, "the message class is not an action message");
    addTransferFunction(STransferFunction{std::move(source), std::move(target), &messageClass, transferFunction});
}

void VoWorkflowManager::addTransferFunction(STransferFunction transferFunction)
{
    m_transferFunctions.push_back(transferFunction);
    if (m_actionMessagesRegistered)
        subscribeClass(transferFunction.messageClass);
    transferFunction.transferFunction->onRegistration(IsStarted());
    onRegisterTransferFunction(m_transferFunctions.back());
}

void VoWorkflowManager::RegisterErrorHandler(BxSmartPointer<const VoWorkflowState> state,
                                             BxSmartPointer<VoTransferFunctionAutomatic> handler)
{
    BxCriticalSectionLocker locker(m_lock);
    const bool known = std::any_of(m_states.begin(), m_states.end(),
                                   [&](const BxSmartPointer<VoWorkflowState>& s) { return s.get() == state.get(); });
    if (!state || !known || !handler)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::RegisterErrorHandler",
                 "the state is not registered or the handler is null");
    m_errorHandlers[state] = std::move(handler);
}

void VoWorkflowManager::RegisterErrorHandler(BxSmartPointer<VoTransferFunctionAutomatic> handler)
{
    if (!handler)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::RegisterErrorHandler", "the handler is null");
    BxCriticalSectionLocker locker(m_lock);
    m_errorHandlers[nullptr] = std::move(handler);
}

bool VoWorkflowManager::Unregister(const BxSmartPointer<VoTransferFunction>& transferFunction)
{
    BxCriticalSectionLocker locker(m_lock);
    if (transferFunction && m_current.transferFunction == transferFunction)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::Unregister",
                 "the running transfer function cannot be removed");
    bool found = false;
    for (auto it = m_transferFunctions.begin(); it != m_transferFunctions.end();) {
        if (it->transferFunction != transferFunction) {
            ++it;
            continue;
        }
        const STransferFunction removed = *it;
        it = m_transferFunctions.erase(it);
        found = true;
        if (m_actionMessagesRegistered)
            unsubscribeClass(removed.messageClass);
        if (m_stateMessagesRegistered && removed.source == m_currentState)
            unsubscribeClass(removed.messageClass);
        removed.transferFunction->onUnregistration(IsStarted());
        onUnregisterTransferFunction(removed);
    }
    return found;
}

bool VoWorkflowManager::Unregister(const BxSmartPointer<VoWorkflowState>& state)
{
    BxCriticalSectionLocker locker(m_lock);
    auto it = std::find(m_states.begin(), m_states.end(), state);
    if (it == m_states.end())
        return false;
    if (state == m_currentState || m_current.source == state || m_current.target == state)
        BX_THROW(BxExceptionPreconditionViolation, "VoWorkflowManager::Unregister",
                 "the current workflow state cannot be removed");
    std::vector<BxSmartPointer<VoTransferFunction>> connected;
    for (const auto& tf : m_transferFunctions)
        if (tf.source == state || tf.target == state)
            connected.push_back(tf.transferFunction);
    for (const auto& tf : connected)
        Unregister(tf);
    m_errorHandlers.erase(BxSmartPointer<const VoWorkflowState>(state));
    for (const auto& [condition, value] : state->GetConditions()) {
        auto count = m_conditionCounts.find(condition);
        if (count != m_conditionCounts.end() && --count->second == 0) {
            m_conditionCounts.erase(count);
            m_conditionValues.erase(condition);
        }
    }
    if (m_extendedState == state)
        setExtendedState(nullptr);
    m_states.erase(it);
    return true;
}

// ---------------------------------------------------------------- queries

BxSmartPointer<VoWorkflowState> VoWorkflowManager::GetCurrentState() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_currentState;
}

BxSmartPointer<VoWorkflowState> VoWorkflowManager::GetExtendedState() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_extendedState;
}

BxSmartPointer<VoTransferFunction> VoWorkflowManager::GetCurrentTransferFunction() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_current.transferFunction;
}

BxSmartPointer<const VoMessageWorkflowAction> VoWorkflowManager::GetCurrentMessage() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_currentMessage;
}

BxSmartPointer<VoTransferFunctionAutomatic> VoWorkflowManager::GetErrorHandler(
    const BxSmartPointer<const VoWorkflowState>& state) const
{
    BxCriticalSectionLocker locker(m_lock);
    auto it = m_errorHandlers.find(state);
    if (it == m_errorHandlers.end())
        it = m_errorHandlers.find(nullptr);
    return it == m_errorHandlers.end() ? nullptr : it->second;
}

BxSmartPointer<VoTransferFunction> VoWorkflowManager::GetTransferFunction(
    const BxSmartPointer<VoWorkflowState>& source, const VoMessageWorkflowAction& message) const
{
    BxCriticalSectionLocker locker(m_lock);
    if (!source)
        return nullptr;
    const STransferFunction* found = findTransferFunction(*source, message);
    return found ? found->transferFunction : nullptr;
}

BxSmartPointer<VoWorkflowState> VoWorkflowManager::GetWorkflowState(const BxRTTI& rtti) const
{
    BxCriticalSectionLocker locker(m_lock);
    for (const auto& state : m_states)
        if (&state->GetRTTI() == &rtti)
            return state;
    return nullptr;
}

VoWorkflowStateCondition::ETriState VoWorkflowManager::GetWorkflowStateCondition(
    const BxSmartPointer<const VoWorkflowStateCondition>& condition) const
{
    BxCriticalSectionLocker locker(m_lock);
    return condition ? condition->GetLatestEvaluation() : VoWorkflowStateCondition::eTS_NotEvaluated;
}

std::vector<BxSmartPointer<VoWorkflowState>> VoWorkflowManager::GetWorkflowStates() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_states;
}

bool VoWorkflowManager::IsStarted() const
{
    BxCriticalSectionLocker locker(m_lock);
    return (m_status & eS_Started) != 0;
}

bool VoWorkflowManager::IsSleeping() const
{
    BxCriticalSectionLocker locker(m_lock);
    return (m_status & eS_Sleeping) != 0;
}

std::size_t VoWorkflowManager::GetBufferedCount() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_buffer.size();
}

bool VoWorkflowManager::IsLastEndInteractive() const
{
    BxCriticalSectionLocker locker(m_lock);
    return m_lastEndInteractive;
}

void VoWorkflowManager::SetLogger(BxSmartPointer<Logging::ILogger> logger)
{
    BxCriticalSectionLocker locker(m_lock);
    m_logger = std::move(logger);
}

// ---------------------------------------------------------------- messages

// Every message is handled under the manager's lock, logged on arrival; what
// escapes the handling goes to the error handler and answers E_FAIL.
template <class TBody>
std::int64_t VoWorkflowManager::handleGuarded(const VoMessage& message, TBody&& body)
{
    BxCriticalSectionLocker locker(m_lock);
    try {
        logReceived(message);
        return body();
    } catch (...) {
        reportError();
        return kFail;
    }
}

BxCheckReturn<std::int64_t> VoWorkflowManager::HandleMessage(const VoMessageWorkflow& message)
{
    return handleGuarded(message, [&]() -> std::int64_t {
        switch (message.GetMessageW()) {
        case VoMessageWorkflow::eM_Start:
            return onStartWorkflow(false) ? 1 : 0;
        case VoMessageWorkflow::eM_StartSleeping:
            return onStartWorkflow(true) ? 1 : 0;
        case VoMessageWorkflow::eM_Stop:
            return onStopWorkflow() ? 1 : 0;
        case VoMessageWorkflow::eM_Continue:
            return onContinueWorkflow() ? 1 : 0;
        case VoMessageWorkflow::eM_Sleep:
            return onSleepWorkflow() ? 1 : 0;
        case VoMessageWorkflow::eM_Break:
            return onBreakWorkflow() ? 1 : 0;
        case VoMessageWorkflow::eM_Reevaluate:
            return onReevaluateWorkflow() ? 1 : 0;
        case VoMessageWorkflow::eM_Dump: {
            BxStreamWriteASCIITrace trace(m_logger);
            dump(trace);
            dumpConditions(trace);
            return 1;
        }
        }
        BX_THROW(BxException, "VoWorkflowManager::HandleMessage", "unknown workflow message");
    });
}

BxCheckReturn<std::int64_t> VoWorkflowManager::HandleMessage(const VoMessageWorkflowAction& message)
{
    return handleGuarded(message, [&]() -> std::int64_t {
        if ((m_status & eS_Sleeping) == 0 && m_buffer.empty() && m_currentState)
            return handleMessageWorkflowAction(message);
        return pushMessageToBuffer(message) ? 0 : kFail;
    });
}

BxCheckReturn<std::int64_t> VoWorkflowManager::HandleMessage(const VoMessageWorkflowEndOfTF& message)
{
    return handleGuarded(message, [&]() -> std::int64_t {
        switch (message.GetMessageW()) {
        case VoMessageWorkflowEndOfTF::eM_EndOfATF:
        case VoMessageWorkflowEndOfTF::eM_EndOfITF: {
            const std::int64_t result = onMsgEndOfTF(message.GetMessageW());
            m_lastEndInteractive = message.GetMessageW() == VoMessageWorkflowEndOfTF::eM_EndOfITF;
            return result;
        }
        case VoMessageWorkflowEndOfTF::eM_EndOfITFExit:
            if (!m_exitRunning)
                return 0;
            m_exitRunning = false;
            return onAfterEndOfTF();
        }
        BX_THROW(BxException, "VoWorkflowManager::HandleMessage", "unknown end of transfer function");
    });
}

BxCheckReturn<std::int64_t> VoWorkflowManager::HandleMessage(const VoMessageWorkflowNextMsgBuffered& message)
{
    return handleGuarded(message, [&]() -> std::int64_t { return onMsgNextBufferedMsg(); });
}

bool VoWorkflowManager::Stop()
{
    BxCriticalSectionLocker locker(m_lock);
    return onStopWorkflow();
}

bool VoWorkflowManager::Break()
{
    BxCriticalSectionLocker locker(m_lock);
    return onBreakWorkflow();
}

void VoWorkflowManager::PostMessageW(BxSmartPointer<const VoMessage> message, const VoWorkflowManager& manager)
{
    VoMessageDispatcher::PostMessageW(std::move(message), manager);
}

void VoWorkflowManager::PostEndOfInteractiveTransferFunction(const VoWorkflowManager& manager)
{
    PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageWorkflowEndOfTF(VoMessageWorkflowEndOfTF::eM_EndOfITF)),
                 manager);
}

LRESULT VoWorkflowManager::handleMessage(const VoMessage& message)
{
    if (message.IsKindOf(VoMessageWorkflowAction::RTTI))
        return HandleMessage(static_cast<const VoMessageWorkflowAction&>(message)).Get();
    if (message.IsKindOf(VoMessageWorkflowEndOfTF::RTTI))
        return HandleMessage(static_cast<const VoMessageWorkflowEndOfTF&>(message)).Get();
    if (message.IsKindOf(VoMessageWorkflowNextMsgBuffered::RTTI))
        return HandleMessage(static_cast<const VoMessageWorkflowNextMsgBuffered&>(message)).Get();
    if (message.IsKindOf(VoMessageWorkflow::RTTI))
        return HandleMessage(static_cast<const VoMessageWorkflow&>(message)).Get();
    return VoMessageHandler::handleMessage(message);
}

void VoWorkflowManager::onSubscribeMessages()
{
    VoMessageHandler::onSubscribeMessages();
    Subscribe(VoMessageWorkflow::RTTI);
    Subscribe(VoMessageWorkflowEndOfTF::RTTI);
    Subscribe(VoMessageWorkflowNextMsgBuffered::RTTI);
}

// ---------------------------------------------------------------- subscriptions

void VoWorkflowManager::subscribeClass(const BxRTTI* rtti)
{
    if (m_subscribed[rtti]++ == 0)
        Subscribe(*rtti);
}

void VoWorkflowManager::unsubscribeClass(const BxRTTI* rtti)
{
    auto it = m_subscribed.find(rtti);
    if (it == m_subscribed.end())
        return;
    if (--it->second == 0) {
        m_subscribed.erase(it);
        Unsubscribe(*rtti);
    }
}

void VoWorkflowManager::registerMessagesWorkflowAction()
{
    if (m_actionMessagesRegistered)
        return;
    for (const auto& tf : m_transferFunctions)
        subscribeClass(tf.messageClass);
    m_actionMessagesRegistered = true;
}

void VoWorkflowManager::unregisterMessagesWorkflowAction()
{
    if (!m_actionMessagesRegistered)
        return;
    m_actionMessagesRegistered = false;
    for (const auto& tf : m_transferFunctions)
        unsubscribeClass(tf.messageClass);
}

void VoWorkflowManager::registerMessages(const VoWorkflowState& state)
{
    if (m_stateMessagesRegistered)
        return;
    for (const auto& tf : m_transferFunctions)
        if (tf.source.get() == &state)
            subscribeClass(tf.messageClass);
    m_stateMessagesRegistered = true;
}

void VoWorkflowManager::unregisterMessages(const VoWorkflowState& state)
{
    if (!m_stateMessagesRegistered)
        return;
    m_stateMessagesRegistered = false;
    for (const auto& tf : m_transferFunctions)
        if (tf.source.get() == &state)
            unsubscribeClass(tf.messageClass);
}

// ---------------------------------------------------------------- evaluation and error handler

bool VoWorkflowManager::holds(const VoWorkflowState& state)
{
    for (const auto& [condition, wanted] : state.GetConditions()) {
        auto known = m_conditionValues.find(condition);
        const bool value = known != m_conditionValues.end() ? known->second : condition->Evaluate();
        if (value != wanted)
            return false;
    }
    return true;
}

BxSmartPointer<VoWorkflowState> VoWorkflowManager::evaluateCurrentWorkflowState()
{
    for (auto& [condition, value] : m_conditionValues)
        value = condition->Evaluate();
    // A state that still holds stays current, even when an earlier registered one holds too.
    if (m_currentState && holds(*m_currentState))
        return m_currentState;
    for (const auto& state : m_states)
        if (holds(*state))
            return state;
    BX_THROW(BxException, "VoWorkflowManager::evaluateCurrentWorkflowState", "no workflow state holds");
}

BxSmartPointer<VoWorkflowState> VoWorkflowManager::evaluateWithErrorHandler(
    const BxSmartPointer<const VoWorkflowState>& state)
{
    try {
        return evaluateCurrentWorkflowState();
    } catch (const BxException&) {
        if (!runErrorHandler(state))
            throw;
    }
    return evaluateCurrentWorkflowState();
}

bool VoWorkflowManager::runErrorHandler(const BxSmartPointer<const VoWorkflowState>& state)
{
    BxSmartPointer<VoTransferFunctionAutomatic> handler = GetErrorHandler(state);
    if (!handler)
        return false;
    if (!callHook([&] { onRunErrorHandler(state.get()); }))
        return false;
    handler->Run();
    return true;
}

// ---------------------------------------------------------------- start and stop

bool VoWorkflowManager::onStartWorkflow(bool sleeping)
{
    log(eLL_Info, "VoWorkflowManager::onStartWorkflow", L"Starting workflow manager '%s' %s", GetName().c_str(),
        activity(sleeping));
    if ((m_status & eS_Started) != 0)
        return false;
    BxSmartPointer<VoWorkflowState> entered;
    try {
        if (!callHook([&] { onStart(sleeping); }))
            throw BxException(__FILE__, __LINE__, "VoWorkflowManager::onStartWorkflow", "the start hook failed");
        BxSmartPointer<VoWorkflowState> state = evaluateWithErrorHandler(nullptr);
        log(eLL_Info, "VoWorkflowManager::onStartWorkflow", L"Entering workflow state '%s' %s",
            state->GetClassNameW(), activity(sleeping));
        entered = state;
        setCurrentState(state);
        setExtendedState(state);
        m_status = static_cast<std::uint8_t>(eS_Started | (sleeping ? eS_Sleeping : 0));
        registerMessagesWorkflowAction();
        if (!sleeping)
            registerMessages(*state);
        logCalling(state->GetClassNameW(), L"onInit");
        callState(*state, [&] { state->onInit(sleeping); });
        callState(*state, [&] { state->onAfterEnter(); });
        setStateEvent();
        dispatch(&Workflow::IInterceptorWorkflowManager::OnStart, Workflow::CContextStart(*this, state, sleeping));
        dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange,
                 Workflow::CContextStateChange(*this, nullptr, state));
        if (!sleeping)
            postMessageNextBufferedMsg();
        return true;
    } catch (...) {
        reportError();
    }
    if (entered) {
        log(eLL_Info, "VoWorkflowManager::onStartWorkflow", L"Leaving workflow state '%s'", entered->GetClassNameW());
        unregisterMessages(*entered);
    }
    unregisterMessagesWorkflowAction();
    resetStateEvent();
    setCurrentState(nullptr);
    m_status = 0;
    log(eLL_Info, "VoWorkflowManager::onStartWorkflow", L"Could not start workflow manager '%s'", GetName().c_str());
    return false;
}

bool VoWorkflowManager::onStopWorkflow()
{
    BxCriticalSectionLocker locker(m_lock);
    log(eLL_Info, "VoWorkflowManager::onStopWorkflow", L"Stopping workflow manager '%s'", GetName().c_str());
    if ((m_status & eS_Started) == 0)
        return false;
    if (m_current.transferFunction) {
        if (m_current.transferFunction->hasBreakSupport() && onBreakWorkflow()) {
            m_status |= eS_StopPending;
            return true;
        }
        if (m_interactive)
            return false;
        m_status |= eS_StopPending;
        return true;
    }
    try {
        BxSmartPointer<VoWorkflowState> left = m_currentState;
        if (left)
            log(eLL_Info, "VoWorkflowManager::onStopWorkflow", L"Leaving workflow state '%s'", left->GetClassNameW());
        unregisterMessagesWorkflowAction();
        if (left)
            unregisterMessages(*left);
        resetStateEvent();
        setCurrentState(nullptr);
        if (left) {
            setExtendedState(left);
            callState(*left, [&] { left->onExit(); });
        }
        m_status = 0;
        dispatch(&Workflow::IInterceptorWorkflowManager::OnStop, Workflow::CContextStop(*this, left));
        if (left)
            dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange,
                     Workflow::CContextStateChange(*this, left, nullptr));
        return callHook([&] { onStop(); });
    } catch (...) {
        reportError();
        return false;
    }
}

bool VoWorkflowManager::onBreakWorkflow()
{
    BxCriticalSectionLocker locker(m_lock);
    if ((m_status & eS_Started) == 0)
        return false;
    const BxSmartPointer<VoTransferFunction> tf = m_current.transferFunction;
    if (tf && tf->hasBreakSupport()) {
        if (!callHook([&] { onBreak(); }))
            return false;
        if (auto* automatic = dynamic_cast<VoTransferFunctionAutomatic*>(tf.get()))
            automatic->Break();
        else
            tf->onBreak();
    }
    return true;
}

// ---------------------------------------------------------------- sleep, continue, re-evaluate

bool VoWorkflowManager::onSleepWorkflow()
{
    if ((m_status & eS_Started) == 0)
        return false;
    if ((m_status & eS_Sleeping) != 0)
        return true;
    try {
        if (!callHook([&] { onSleep(); }))
            return false;
        m_status |= eS_Sleeping;
        if (m_currentState) {
            log(eLL_Info, "VoWorkflowManager::onSleepWorkflow", L"Putting workflow state '%s' on hold",
                m_currentState->GetClassNameW());
            unregisterMessages(*m_currentState);
            logCalling(m_currentState->GetClassNameW(), L"onSleep");
            callState(*m_currentState, [&] { m_currentState->onSleep(); });
        } else if (m_current.transferFunction) {
            const wchar_t* name = m_current.transferFunction->GetName().c_str();
            if (m_interactive) {
                log(eLL_Info, "VoWorkflowManager::onSleepWorkflow",
                    L"Putting interactive transfer function '%s' on hold", name);
                logCalling(name, L"onSleep");
                static_cast<VoTransferFunctionInteractive&>(*m_current.transferFunction).onSleep();
            } else {
                log(eLL_Info, "VoWorkflowManager::onSleepWorkflow", L"Putting automatic transfer function '%s' on hold",
                    name);
            }
        }
        return true;
    } catch (...) {
        reportError();
        return false;
    }
}

bool VoWorkflowManager::onContinueWorkflow()
{
    if ((m_status & eS_Sleeping) == 0)
        return false;
    if (!callHook([&] { onContinue(); }))
        return false;
    m_status &= static_cast<std::uint8_t>(~eS_Sleeping);
    if (m_current.transferFunction) {
        const wchar_t* name = m_current.transferFunction->GetName().c_str();
        if (m_interactive) {
            log(eLL_Info, "VoWorkflowManager::onContinueWorkflow", L"Waking interactive transfer function '%s'", name);
            logCalling(name, L"onContinue");
            static_cast<VoTransferFunctionInteractive&>(*m_current.transferFunction).onContinue();
        } else {
            log(eLL_Info, "VoWorkflowManager::onContinueWorkflow", L"Waking automatic transfer function '%s'", name);
        }
        return true;
    }
    if (!m_currentState)
        return true;
    BxSmartPointer<VoWorkflowState> state = evaluateWithErrorHandler(m_currentState);
    if (state == m_currentState) {
        log(eLL_Info, "VoWorkflowManager::onContinueWorkflow", L"Waking workflow state '%s'", state->GetClassNameW());
    } else {
        const BxSmartPointer<VoWorkflowState> left = m_currentState;
        log(eLL_Info, "VoWorkflowManager::onContinueWorkflow", L"Leaving workflow state '%s'", left->GetClassNameW());
        log(eLL_Info, "VoWorkflowManager::onContinueWorkflow", L"Activating workflow state '%s' %s",
            state->GetClassNameW(), activity(false));
        setCurrentState(state);
        setExtendedState(state);
        callState(*state, [&] { state->onAfterEnter(); });
        dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange,
                 Workflow::CContextStateChange(*this, left, state));
    }
    setStateEvent();
    registerMessages(*m_currentState);
    logCalling(m_currentState->GetClassNameW(), L"onContinue");
    callState(*m_currentState, [&] { m_currentState->onContinue(); });
    postMessageNextBufferedMsg();
    return true;
}

bool VoWorkflowManager::onReevaluateWorkflow()
{
    if ((m_status & eS_Started) == 0)
        return false;
    if (m_current.transferFunction || !m_currentState)
        return true;
    BxSmartPointer<VoWorkflowState> state;
    try {
        state = evaluateWithErrorHandler(m_currentState);
    } catch (...) {
        reportError();
        unregisterMessages(*m_currentState);
        m_status &= static_cast<std::uint8_t>(~eS_StopPending);
        onStopWorkflow();
        return false;
    }
    const bool sleeping = (m_status & eS_Sleeping) != 0;
    const bool changed = state != m_currentState;
    if (changed) {
        const BxSmartPointer<VoWorkflowState> left = m_currentState;
        log(eLL_Info, "VoWorkflowManager::onReevaluateWorkflow", L"Leaving workflow state '%s'", left->GetClassNameW());
        unregisterMessages(*left);
        setCurrentState(state);
        setExtendedState(state);
        if (!sleeping)
            registerMessages(*state);
        log(eLL_Info, "VoWorkflowManager::onReevaluateWorkflow", L"Entering workflow state '%s' %s",
            state->GetClassNameW(), activity(sleeping));
        callState(*state, [&] { state->onAfterEnter(); });
        dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange,
                 Workflow::CContextStateChange(*this, left, state));
    }
    callState(*state, [&] { state->onReevaluate(changed); });
    return true;
}

// ---------------------------------------------------------------- action messages and transfer functions

const VoWorkflowManager::STransferFunction* VoWorkflowManager::findTransferFunction(
    const VoWorkflowState& state, const VoMessageWorkflowAction& message) const
{
    for (const auto& tf : m_transferFunctions)
        if (tf.source.get() == &state && message.IsKindOf(*tf.messageClass) && tf.transferFunction->isInitMessage(message))
            return &tf;
    return nullptr;
}

std::int64_t VoWorkflowManager::handleMessageWorkflowAction(const VoMessage& message)
{
    if (!message.IsKindOf(VoMessageWorkflowAction::RTTI))
        return kFail;
    const auto& action = static_cast<const VoMessageWorkflowAction&>(message);
    const STransferFunction* found = findTransferFunction(*m_currentState, action);
    if (found == nullptr || !acceptTransferFunction(*found, action))
        return 0;
    const STransferFunction tf = *found;
    if (!callHook([&] { onStartTransferFunction(tf); }))
        return kFail;

    const BxSmartPointer<VoWorkflowState> left = m_currentState;
    log(eLL_Info, "VoWorkflowManager::handleMessage", L"Leaving workflow state '%s'", left->GetClassNameW());
    if (!callHook([&] { onLeaveState(*left); }))
        return kFail;
    unregisterMessages(*left);
    resetStateEvent();
    setExtendedState(left);
    setCurrentState(nullptr);
    m_current = tf;
    dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange, Workflow::CContextStateChange(*this, left, nullptr));

    if (auto* automatic = dynamic_cast<VoTransferFunctionAutomatic*>(tf.transferFunction.get())) {
        automatic->SetMessage(action);
        m_currentMessage = automatic->getMessage();
        startAutomatic(tf, *automatic);
        return 1;
    }
    m_currentMessage = cloneAction(action);
    return startInteractive(tf, static_cast<VoTransferFunctionInteractive&>(*tf.transferFunction), action);
}

void VoWorkflowManager::startAutomatic(const STransferFunction& tf, VoTransferFunctionAutomatic& automatic)
{
    BxSmartPointer<VoTransferFunctionAutomatic> pointer(&automatic);
    m_interactive = false;
    dispatch(&Workflow::IInterceptorWorkflowManager::OnTransferFunctionStart,
             Workflow::CContextTransferFunction(*this, tf.transferFunction, tf.source, tf.target));
    if (automatic.IsBlocking()) {
        log(eLL_Info, "VoWorkflowManager::handleMessage", L"Starting automatic transferfunction '%s' blocking",
            automatic.GetName().c_str());
        VoTaskTransferFunctionAutomatic item(pointer, *this, m_logger, false);
        TaskManager::SWorkItemStatus status;
        item.Run(status);
        onMsgEndOfTF(VoMessageWorkflowEndOfTF::eM_EndOfATF);
        return;
    }
    log(eLL_Info, "VoWorkflowManager::handleMessage", L"Starting automatic transfer function '%s' non-blocking",
        automatic.GetName().c_str());
    runOnPool(BxSmartPointer<IWorkItem>(new VoTaskTransferFunctionAutomatic(pointer, *this, m_logger)));
}

std::int64_t VoWorkflowManager::startInteractive(const STransferFunction& tf, VoTransferFunctionInteractive& interactive,
                                                 const VoMessageWorkflowAction& message)
{
    log(eLL_Info, "VoWorkflowManager::handleMessage", L"Starting interactive transfer function '%s'",
        interactive.GetName().c_str());
    m_interactive = true;
    dispatch(&Workflow::IInterceptorWorkflowManager::OnTransferFunctionStart,
             Workflow::CContextTransferFunction(*this, tf.transferFunction, tf.source, tf.target));
    try {
        logCalling(interactive.GetName().c_str(), L"onInit");
        interactive.onInit(message);
    } catch (...) {
        reportError();
        onMsgEndOfTF(VoMessageWorkflowEndOfTF::eM_EndOfITF);
        return kFail;
    }
    return 1;
}

std::int64_t VoWorkflowManager::onMsgEndOfTF(VoMessageWorkflowEndOfTF::EMessage kind)
{
    const BxSmartPointer<VoTransferFunction> tf = m_current.transferFunction;
    const bool interactiveEnd = kind == VoMessageWorkflowEndOfTF::eM_EndOfITF;
    if (!tf || m_interactive != interactiveEnd || m_exitRunning)
        return 0;  // stray: no transfer function of this kind is running
    if (m_interactive) {
        BxSmartPointer<VoTransferFunctionInteractive> interactive(static_cast<VoTransferFunctionInteractive*>(tf.get()));
        if (!interactive->IsBlockingExit()) {
            log(eLL_Info, "VoWorkflowManager::onMsgEndOfTF", L"Starting '%s::onExit' non-blocking",
                interactive->GetName().c_str());
            m_exitRunning = true;
            runOnPool(BxSmartPointer<IWorkItem>(new VoTaskEndOfTransferFunctionInteractive(interactive, *this, m_logger)));
            return 1;
        }
        log(eLL_Info, "VoWorkflowManager::onMsgEndOfTF", L"Starting '%s::onExit' blocking",
            interactive->GetName().c_str());
        VoTaskEndOfTransferFunctionInteractive item(interactive, *this, m_logger, false);
        TaskManager::SWorkItemStatus status;
        item.Run(status);
    }
    return onAfterEndOfTF();
}

std::int64_t VoWorkflowManager::onAfterEndOfTF()
{
    const STransferFunction tf = m_current;
    if (!tf.transferFunction)
        return 0;
    try {
        log(eLL_Info, "VoWorkflowManager::onAfterEndOfTF", L"Ending transfer function '%s'",
            tf.transferFunction->GetName().c_str());
        m_current = STransferFunction{};
        m_currentMessage = nullptr;
        dispatch(&Workflow::IInterceptorWorkflowManager::OnTransferFunctionEnd,
                 Workflow::CContextTransferFunction(*this, tf.transferFunction, tf.source, tf.target));
        if ((m_status & eS_StopPending) != 0) {
            m_status &= static_cast<std::uint8_t>(~eS_StopPending);
            return onStopWorkflow() ? 1 : 0;
        }
        initWorkflowStateAfterTF(tf);
        return 1;
    } catch (...) {
        reportError();
        if (m_currentState)
            unregisterMessages(*m_currentState);
        return kFail;
    }
}

void VoWorkflowManager::initWorkflowStateAfterTF(const STransferFunction& tf)
{
    const bool sleeping = (m_status & eS_Sleeping) != 0;
    const BxSmartPointer<VoWorkflowState> left = m_extendedState;
    const BxSmartPointer<VoWorkflowState>& target = tf.target;
    if (left && left != target) {
        logCalling(left->GetClassNameW(), L"onAfterDifferentWFSLeft");
        callState(*left, [&] { left->onAfterDifferentWFSLeft(sleeping); });
        logCalling(target->GetClassNameW(), L"onBeforeDifferentWFSReached");
        callState(*target, [&] { target->onBeforeDifferentWFSReached(); });
    }
    log(eLL_Info, "VoWorkflowManager::initWorkflowStateAfterTF", L"Entering workflow state '%s'",
        target->GetClassNameW());
    setCurrentState(target);
    setExtendedState(target);
    if (!sleeping)
        registerMessages(*target);
    setStateEvent();
    callState(*target, [&] { target->onAfterEnter(); });
    dispatch(&Workflow::IInterceptorWorkflowManager::OnStateChange,
             Workflow::CContextStateChange(*this, nullptr, target));
    if (!sleeping)
        postMessageNextBufferedMsg();
}

// ---------------------------------------------------------------- buffer

bool VoWorkflowManager::pushMessageToBuffer(const VoMessageWorkflowAction& message)
{
    if ((m_flags & eWMF_BufferMessages) == 0 || !filterMessageForBuffer(message))
        return false;
    BxSmartPointer<const VoMessageWorkflowAction> clone = cloneAction(message);
    if (!clone)
        return false;
    log(eLL_Info, "VoWorkflowManager::pushMessageToBuffer", L"Push message '%s' to buffer", message.GetClassNameW());
    m_buffer.push_back(std::move(clone));
    return true;
}

BxSmartPointer<const VoMessageWorkflowAction> VoWorkflowManager::getNextMessageBuffered()
{
    if (m_buffer.empty())
        return nullptr;
    BxSmartPointer<const VoMessageWorkflowAction> message = std::move(m_buffer.front());
    m_buffer.pop_front();
    log(eLL_Info, "VoWorkflowManager::getNextMessageBuffered", L"Pop message '%s' from buffer",
        message->GetClassNameW());
    return message;
}

void VoWorkflowManager::postMessageNextBufferedMsg()
{
    if (m_nextPosted || m_buffer.empty())
        return;
    m_nextPosted = true;
    PostMessageW(BxSmartPointer<const VoMessage>(new VoMessageWorkflowNextMsgBuffered), *this);
}

std::int64_t VoWorkflowManager::onMsgNextBufferedMsg()
{
    m_nextPosted = false;
    if ((m_status & eS_Sleeping) != 0 || !m_currentState)
        return 0;
    BxSmartPointer<const VoMessageWorkflowAction> message = getNextMessageBuffered();
    if (!message)
        return 0;
    const std::int64_t result = handleMessageWorkflowAction(*message);
    if (m_currentState && (m_status & eS_Sleeping) == 0)
        postMessageNextBufferedMsg();
    return result;
}

// ---------------------------------------------------------------- dumps

void VoWorkflowManager::dump(BxStreamWriteASCIIT<CStringW>& stream) const
{
    BxCriticalSectionLocker locker(m_lock);
    const std::wstring rule(68, L'-');
    stream << rule << L"\n";
    stream << L"Information on workflow manager '" << GetName() << L"'\n";
    stream << L"\t- current state:             " << ((m_status & eS_Started) ? L"started" : L"not started")
           << ((m_status & eS_Sleeping) ? L" [sleeping]" : L"") << L"\n";
    stream << L"\t- current workflow state: " << stateName(m_currentState) << L"\n";
    stream << L"\t- current transfer function: "
           << (m_current.transferFunction ? m_current.transferFunction->GetName() : CStringW()) << L"\n";
    stream << L"\t- message:                   " << (m_currentMessage ? m_currentMessage->ToString() : CStringW())
           << L"\n";
    stream << L"\t- outgoing transfer functions:\n";
    for (const auto& tf : m_transferFunctions)
        if (m_currentState && tf.source == m_currentState)
            stream << L"\t\t- " << tf.transferFunction->GetName() << L" by " << tf.messageClass->GetName() << L"\n";
    stream << rule << L"\n";
}

void VoWorkflowManager::dumpConditions(BxStreamWriteASCIIT<CStringW>& stream) const
{
    BxCriticalSectionLocker locker(m_lock);
    const std::wstring rule(68, L'-');
    stream << rule << L"\n";
    stream << L"Evaluation of workflow manager '" << GetName() << L"'\n";
    for (const auto& [condition, value] : m_conditionValues) {
        const VoWorkflowStateCondition::ETriState latest = condition->GetLatestEvaluation();
        stream << L"\t- "
               << (latest == VoWorkflowStateCondition::eTS_True    ? L"true     "
                   : latest == VoWorkflowStateCondition::eTS_False ? L"false    "
                                                                   : L"undefined")
               << L" ";
        static_cast<const BxIDumpable<1>&>(*condition).dump(stream);
        stream << L"\n";
    }
    stream << rule << L"\n";
}
