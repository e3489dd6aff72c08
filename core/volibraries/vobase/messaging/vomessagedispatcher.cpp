#include <vobase/messaging/vomessagedispatcher.h>

#include <vobase/messaging/vohangdetector.h>
#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessageshutdown.h>
#include <vobase/messaging/vomessagestring.h>
#include <vobase/messaging/vomessagesubscription.h>
#include <vobase/messaging/vomessagetrace.h>

#include <bxbase/diagnostics/bxtracehooks.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <algorithm>
#include <cstring>

namespace {

// The process-wide registry of handler names. It is never destroyed, so that
// handlers that die during process exit can still remove their names.
struct SHandlerRegistry
{
    BxCriticalSection lock;                          // guards handlers
    BxMap<CString, VoMessageHandlerBase*> handlers;
};

SHandlerRegistry& handlerRegistry()
{
    static SHandlerRegistry* registry = new SHandlerRegistry;  // immortal on purpose
    return *registry;
}

bool contains(const BxListEx<VoMessageHandlerBase*>& list, const VoMessageHandlerBase* handler)
{
    return std::find(list.begin(), list.end(), handler) != list.end();
}

}  // namespace

VoMessageDispatcher::VoMessageDispatcher() : VoMessageHandlerThreaded(L"MessageDispatcher", static_cast<EThreadPriority>(0))
{
    m_subscriptionsRTTI.rehash(128);
    m_subscriptionsCommand.rehash(128);
    m_subscribers.reserve(64);
    m_rttiWorkList.reserve(16);
}

VoMessageDispatcher::~VoMessageDispatcher()
{
    ShutdownAndWait(INFINITE);
}

// Sending ----------------------------------------------------------------------------------------

LRESULT VoMessageDispatcher::SendMessageW(const VoMessage& message)
{
    return GetInstance().sendMessage(message, nullptr, nullptr);
}

LRESULT VoMessageDispatcher::SendMessageW(const VoMessage& message, BxList<std::int64_t>& results)
{
    return GetInstance().sendMessage(message, nullptr, &results);
}

LRESULT VoMessageDispatcher::SendMessageW(const VoMessage& message, const VoMessageHandlerBase& target)
{
    return GetInstance().sendMessage(message, &target, nullptr);
}

LRESULT VoMessageDispatcher::SendPrivateMessage(const VoMessage& message)
{
    VoMessageDispatcher& dispatcher = GetInstance();
    return dispatcher.sendMessage(message, &dispatcher, nullptr);
}

LRESULT VoMessageDispatcher::SendMessageW(const wchar_t*, unsigned int, const VoMessage& message)
{
    return SendMessageW(message);
}

LRESULT VoMessageDispatcher::SendMessageW(const wchar_t*, unsigned int, const VoMessage& message,
                                          BxList<std::int64_t>& results)
{
    return SendMessageW(message, results);
}

LRESULT VoMessageDispatcher::SendMessageW(const wchar_t*, unsigned int, const VoMessage& message,
                                          const VoMessageHandlerBase& target)
{
    return SendMessageW(message, target);
}

LRESULT VoMessageDispatcher::SendPrivateMessage(const wchar_t*, unsigned int, const VoMessage& message)
{
    return SendPrivateMessage(message);
}

void VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage> message)
{
    GetInstance().postMessage(std::move(message), nullptr);
}

void VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase& target)
{
    GetInstance().postMessage(std::move(message), &target);
}

void VoMessageDispatcher::PostMessageW(const wchar_t*, unsigned int, BxSmartPointer<const VoMessage> message)
{
    PostMessageW(std::move(message));
}

void VoMessageDispatcher::PostMessageW(const wchar_t*, unsigned int, BxSmartPointer<const VoMessage> message,
                                       const VoMessageHandlerBase& target)
{
    PostMessageW(std::move(message), target);
}

LRESULT VoMessageDispatcher::sendMessage(const VoMessage& message, const VoMessageHandlerBase* target,
                                         BxList<std::int64_t>* results)
{
    callSendMonitors(message);
    BxSmartPointer<VoThreadSendStatus> status = takeStatus();
    status->SetSenderThreadID(GetCurrentThreadId());
    VoSendNotification notification{const_cast<VoMessageHandlerBase*>(target), &message, status.get()};
    const std::uint64_t traceStart = BxTraceHooks::IsOn() ? VoMessageTrace::BeginSend(notification) : 0;
    queueSendNotification(notification);

    // The dispatcher sets the dispatched event only when subscribers live on
    // this thread; otherwise the sender sleeps once, until the last answer.
    if (VoHangDetector::WaitUntilDispatchedOrReplied(*status, message, *this))
    {
        status->GetDispatchedEvent().Reset();
        // This thread is blocked here and cannot take its handlers' window
        // messages: it answers for them itself, after their earlier posts.
        for (VoMessageHandlerBase* local : status->GetLocalHandlers())
        {
            local->flushPostNotifications();
            if (BxTraceHooks::IsOn())
                VoMessageTrace::Hop(notification, traceStart);
            local->processSendNotification(notification);
        }
    }
    VoHangDetector::WaitUntilReplied(*status, message, *this);
    status->GetRepliedEvent().Reset();

    const auto& answers = status->GetResults();
    const LRESULT result = answers.empty() ? 0 : answers.back();
    if (results != nullptr)
        results->insert(results->end(), answers.begin(), answers.end());
    returnStatus(std::move(status));
    if (traceStart != 0)
        VoMessageTrace::EndSend(message, traceStart);
    return result;
}

void VoMessageDispatcher::postMessage(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase* target)
{
    const std::uint64_t flowId = BxTraceHooks::IsOn() ? VoMessageTrace::Post(*message) : 0;
    queuePostNotification(VoPostNotification{const_cast<VoMessageHandlerBase*>(target), std::move(message), flowId});
}

void VoMessageDispatcher::callSendMonitors(const VoMessage& message)
{
    if (!m_hasSendMonitors.load(std::memory_order_acquire))
        return;  // the usual case: no lock taken
    decltype(m_sendMonitors) monitors;
    {
        BxCriticalSectionLocker locker(m_sendMonitorsLock);
        if (m_sendMonitors.empty())
            return;
        monitors = m_sendMonitors;
    }
    for (const auto& monitor : monitors)
    {
        try
        {
            (*monitor.second)(message);
        }
        catch (...)
        {
            // A monitor only watches; it cannot stop a send.
        }
    }
}

std::size_t VoMessageDispatcher::AddSendMonitor(SendMonitor monitor)
{
    BxCriticalSectionLocker locker(m_sendMonitorsLock);
    m_sendMonitors.emplace_back(++m_lastSendMonitorID, std::make_shared<SendMonitor>(std::move(monitor)));
    m_hasSendMonitors.store(true, std::memory_order_release);
    return m_lastSendMonitorID;
}

bool VoMessageDispatcher::RemoveSendMonitor(std::size_t id)
{
    BxCriticalSectionLocker locker(m_sendMonitorsLock);
    auto it = std::find_if(m_sendMonitors.begin(), m_sendMonitors.end(), [id](const auto& m) { return m.first == id; });
    if (it == m_sendMonitors.end())
        return false;
    m_sendMonitors.erase(it);
    m_hasSendMonitors.store(!m_sendMonitors.empty(), std::memory_order_release);
    return true;
}

BxSmartPointer<VoThreadSendStatus> VoMessageDispatcher::takeStatus()
{
    {
        BxCriticalSectionLocker locker(m_statusPoolLock);
        if (!m_statusPool.empty())
        {
            BxSmartPointer<VoThreadSendStatus> status = std::move(m_statusPool.back());
            m_statusPool.pop_back();
            return status;
        }
    }
    return BxSmartPointer<VoThreadSendStatus>(new VoThreadSendStatus);
}

void VoMessageDispatcher::returnStatus(BxSmartPointer<VoThreadSendStatus> status)
{
    BxCriticalSectionLocker locker(m_statusPoolLock);
    m_statusPool.push_back(std::move(status));
}

// Routing (dispatcher's thread) ------------------------------------------------------------------

void VoMessageDispatcher::processSendNotification(VoSendNotification& notification)
{
    // The routing holds one count of its own, released when it is done with
    // the status: so the sender, woken by the last count, never meets a
    // status the dispatcher still uses.
    VoThreadSendStatus& status = *notification.status;
    const std::uint64_t traceStart =
        BxTraceHooks::IsOn() ? VoMessageTrace::BeginHandling(*notification.message, notification.flowId) : 0;
    if (notification.target != this)
    {
        const auto& subscribers = getSubscribers(notification.target, *notification.message);
        status.Reset(static_cast<std::uint32_t>(subscribers.size()) + 1);
        for (VoMessageHandlerBase* subscriber : subscribers)
        {
            if (subscriber->GetThreadID() == status.GetSenderThreadID())
                status.AddLocalHandler(subscriber);
            else
            {
                if (BxTraceHooks::IsOn())
                    VoMessageTrace::Hop(notification, traceStart);
                subscriber->queueSendNotification(notification);
            }
        }
        if (!status.GetLocalHandlers().empty())
            status.MarkDispatched();  // the sender answers for these
    }
    else
    {
        status.Reset(2);
        try
        {
            status.AddResult(handleMessage(*notification.message));
        }
        catch (...)
        {
            // no answer from the dispatcher; the sender gets 0
        }
        status.CountDown();
    }
    if (traceStart != 0)
        VoMessageTrace::EndHandling(*notification.message, traceStart);  // while the sender still waits
    status.CountDown();  // the routing's own count
}

void VoMessageDispatcher::processPostNotification(VoPostNotification& notification)
{
    const VoMessageTrace::CHandlingScope traceSpan(*notification.message, notification.flowId);
    if (notification.target == this)
    {
        try
        {
            (void)handleMessage(*notification.message);
        }
        catch (...)
        {
        }
        return;
    }
    if (routeOf(notification.message->GetRTTI()).isString)
    {
        // The text travels as a window message; the receiving handler frees the buffer.
        const auto& text = static_cast<const VoMessageString&>(*notification.message);
        const CStringW& string = text.GetMessageString();
        auto* buffer = static_cast<wchar_t*>(CoTaskMemAlloc((string.size() + 1) * sizeof(wchar_t)));
        if (buffer == nullptr)
            return;
        std::memcpy(buffer, string.c_str(), (string.size() + 1) * sizeof(wchar_t));
        if (!::PostMessageW(text.GetHWND(), WM_VO_MESSAGE_STRING, reinterpret_cast<WPARAM>(text.GetHWND()),
                            reinterpret_cast<LPARAM>(buffer)))
            CoTaskMemFree(buffer);  // nobody will receive it
        return;
    }
    for (VoMessageHandlerBase* subscriber : getSubscribers(notification.target, *notification.message))
    {
        if (BxTraceHooks::IsOn())
            VoMessageTrace::Hop(notification, traceSpan.GetStart());
        subscriber->queuePostNotification(notification);
    }
}

const BxListEx<VoMessageHandlerBase*>& VoMessageDispatcher::getSubscribers(const VoMessageHandlerBase* target,
                                                                           const VoMessage& message)
{
    m_subscribers.clear();
    getSubscribersForMessage(message);
    if (target != nullptr)
    {
        const bool subscribed = contains(m_subscribers, target);
        m_subscribers.clear();
        if (subscribed)
            m_subscribers.push_back(const_cast<VoMessageHandlerBase*>(target));
    }
    return m_subscribers;
}

void VoMessageDispatcher::getSubscribersForMessage(const VoMessage& message)
{
    getSubscribersForRTTI(message.GetRTTI());
    if (routeOf(message.GetRTTI()).isCommand)
        getSubscribersForCommand(static_cast<const VoMessageCommand&>(message).GetWParam());
}

void VoMessageDispatcher::getSubscribersForRTTI(const BxRTTI& rtti)
{
    // The class itself, then its bases depth first (see routeOf).
    for (const VoMessageHandlerList* list : routeOf(rtti).lists)
        m_subscribers.insert(m_subscribers.end(), list->handlers.begin(), list->handlers.end());  // duplicates kept
}

const VoMessageDispatcher::SRoute& VoMessageDispatcher::routeOf(const BxRTTI& rtti)
{
    auto [it, made] = m_routes.try_emplace(&rtti);
    SRoute& route = it->second;
    if (made)
    {
        m_rttiWorkList.clear();
        m_rttiWorkList.push_back(&rtti);
        fillWorkListWithRTTIBaseClasses(rtti);
        for (const BxRTTI* entry : m_rttiWorkList)
            route.lists.push_back(&getSubscriptionsRTTI(*entry));
        route.isCommand = rtti.IsKindOf(VoMessageCommand::RTTI);
        route.isString = rtti.IsKindOf(VoMessageString::RTTI);
    }
    return route;
}

void VoMessageDispatcher::fillWorkListWithRTTIBaseClasses(const BxRTTI& rtti)
{
    for (const BxRTTI* base : rtti.GetBases())
    {
        if (base == nullptr)
            continue;
        m_rttiWorkList.push_back(base);
        fillWorkListWithRTTIBaseClasses(*base);
    }
}

void VoMessageDispatcher::getSubscribersForCommand(std::uint64_t commandID)
{
    auto it = m_subscriptionsCommand.find(commandID);
    if (it == m_subscriptionsCommand.end())
        return;
    const auto& handlers = it->second->handlers;
    m_subscribers.insert(m_subscribers.end(), handlers.begin(), handlers.end());
}

VoMessageDispatcher::VoMessageHandlerList& VoMessageDispatcher::getSubscriptionsRTTI(const BxRTTI& rtti)
{
    HandlerListPtr& list = m_subscriptionsRTTI[&rtti];
    if (!list)
        list = new VoMessageHandlerList;
    return *list;
}

VoMessageDispatcher::VoMessageHandlerList& VoMessageDispatcher::getSubscriptionsCommand(std::uint64_t commandID)
{
    HandlerListPtr& list = m_subscriptionsCommand[commandID];
    if (!list)
        list = new VoMessageHandlerList;
    return *list;
}

// Subscriptions (dispatcher's thread) ------------------------------------------------------------

LRESULT VoMessageDispatcher::handleMessage(const VoMessage& message)
{
    try
    {
        if (message.IsKindOf(VoMessageShutDown::RTTI))
            return onMessageShutDown();
        if (message.IsKindOf(VoMessageSubscription::RTTI))
            return onMessageSubscription(static_cast<const VoMessageSubscription&>(message));
        return VoMessageHandlerThreaded::handleMessage(message);
    }
    catch (...)
    {
        return E_FAIL;
    }
}

LRESULT VoMessageDispatcher::onMessageSubscription(const VoMessageSubscription& subscription)
{
    VoMessageHandlerBase* handler = subscription.GetMessageHandler();
    if (handler == nullptr)
        return E_FAIL;
    const auto action = subscription.GetAction();
    if (action == VoMessageSubscription::eA_Subscribe || action == VoMessageSubscription::eA_SubscribeCommand)
    {
        SHandlerRegistry& registry = handlerRegistry();
        BxCriticalSectionLocker locker(registry.lock);
        auto [it, inserted] = registry.handlers.try_emplace(handler->GetName(), handler);
        if (inserted)
            handler->setDispatcher(this);
        else if (it->second != handler)
            return E_FAIL;  // handler names are unique
    }
    else if (action == VoMessageSubscription::eA_UnsubscribeAll)
    {
        SHandlerRegistry& registry = handlerRegistry();
        {
            BxCriticalSectionLocker locker(registry.lock);
            auto it = registry.handlers.find(handler->GetName());
            if (it != registry.handlers.end() && it->second == handler)
                registry.handlers.erase(it);
        }
        handler->setDispatcher(nullptr);
    }

    switch (action)
    {
    case VoMessageSubscription::eA_Subscribe:
        if (subscription.GetSubscriberRTTI() == nullptr)
            return E_FAIL;
        subscribeRTTI(*subscription.GetSubscriberRTTI(), *handler);
        break;
    case VoMessageSubscription::eA_SubscribeCommand:
        subscribeCommand(subscription.GetCommandID(), *handler);
        break;
    case VoMessageSubscription::eA_Unsubscribe:
        if (subscription.GetSubscriberRTTI() == nullptr)
            return E_FAIL;
        unsubscribeRTTI(*subscription.GetSubscriberRTTI(), *handler);
        break;
    case VoMessageSubscription::eA_UnsubscribeCommand:
        unsubscribeCommand(subscription.GetCommandID(), *handler);
        break;
    case VoMessageSubscription::eA_UnsubscribeAll:
        unsubscribeAllCommand(*handler);
        unsubscribeAllRTTI(*handler);
        break;
    default:
        return E_FAIL;
    }
    return 0;
}

void VoMessageDispatcher::subscribeRTTI(const BxRTTI& rtti, VoMessageHandlerBase& handler)
{
    auto& handlers = getSubscriptionsRTTI(rtti).handlers;
    if (contains(handlers, &handler))
        return;
    handlers.push_back(&handler);
    dispatch(&Messaging::IInterceptorMessageDispatcher::OnSubscribe, Messaging::CContext(&handler, &rtti));
}

void VoMessageDispatcher::subscribeCommand(std::uint64_t commandID, VoMessageHandlerBase& handler)
{
    auto& handlers = getSubscriptionsCommand(commandID).handlers;
    if (contains(handlers, &handler))
        return;
    handlers.push_back(&handler);
    dispatch(&Messaging::IInterceptorMessageDispatcher::OnSubscribeCommand,
             Messaging::CContext(&handler, &VoMessageCommand::RTTI));
}

void VoMessageDispatcher::unsubscribeRTTI(const BxRTTI& rtti, VoMessageHandlerBase& handler)
{
    auto& handlers = getSubscriptionsRTTI(rtti).handlers;
    auto it = std::find(handlers.begin(), handlers.end(), &handler);
    if (it == handlers.end())
        return;
    dispatch(&Messaging::IInterceptorMessageDispatcher::OnUnsubscribe, Messaging::CContext(&handler, &rtti));
    handlers.erase(std::find(handlers.begin(), handlers.end(), &handler));  // the hook may not change the tables
}

void VoMessageDispatcher::unsubscribeCommand(std::uint64_t commandID, VoMessageHandlerBase& handler)
{
    auto& handlers = getSubscriptionsCommand(commandID).handlers;
    if (!contains(handlers, &handler))
        return;
    dispatch(&Messaging::IInterceptorMessageDispatcher::OnUnsubscribeCommand,
             Messaging::CContext(&handler, &VoMessageCommand::RTTI));
    handlers.erase(std::find(handlers.begin(), handlers.end(), &handler));
}

void VoMessageDispatcher::unsubscribeAllRTTI(VoMessageHandlerBase& handler)
{
    for (auto& [rtti, list] : m_subscriptionsRTTI)
        unsubscribeRTTI(*rtti, handler);
}

void VoMessageDispatcher::unsubscribeAllCommand(VoMessageHandlerBase& handler)
{
    for (auto& [commandID, list] : m_subscriptionsCommand)
        unsubscribeCommand(commandID, handler);
}

// Registry and shutdown --------------------------------------------------------------------------

const VoMessageHandlerBase* VoMessageDispatcher::FindMessageHandler(const CString& name)
{
    SHandlerRegistry& registry = handlerRegistry();
    BxCriticalSectionLocker locker(registry.lock);
    auto it = registry.handlers.find(name);
    return it == registry.handlers.end() ? nullptr : it->second;
}

void VoMessageDispatcher::onHandlerDelete(const VoMessageHandlerBase& handler)
{
    SHandlerRegistry& registry = handlerRegistry();
    BxCriticalSectionLocker locker(registry.lock);
    std::erase_if(registry.handlers, [&handler](const auto& entry) { return entry.second == &handler; });
}

bool VoMessageDispatcher::ShutdownAndWait(unsigned int timeoutMs)
{
    if (GetExitCode() != STILL_ACTIVE)
        return true;  // never started, or ended already
    const VoMessageShutDown shutDown;
    sendMessage(shutDown, this, nullptr);
    return WaitUntilTerminate(timeoutMs);
}

LRESULT VoMessageDispatcher::onMessageShutDown()
{
    SHandlerRegistry& registry = handlerRegistry();
    BxListEx<VoMessageHandlerBase*> handlers;
    {
        BxCriticalSectionLocker locker(registry.lock);
        for (const auto& entry : registry.handlers)
            handlers.push_back(entry.second);
    }
    for (VoMessageHandlerBase* handler : handlers)
    {
        handler->setDispatcher(nullptr);
        unsubscribeAllCommand(*handler);
        unsubscribeAllRTTI(*handler);
    }
    {
        BxCriticalSectionLocker locker(registry.lock);
        registry.handlers.clear();
    }
    signalMessagingFinished();
    return 0;
}
