#include <vobase/messaging/vomessagehandlerbase.h>

#include <vobase/messaging/vomessagecommand.h>
#include <vobase/messaging/vomessagecreatehwnd.h>
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vohangdetector.h>
#include <vobase/messaging/vomessagestring.h>
#include <vobase/messaging/vomessagesubscription.h>
#include <vobase/messaging/vomessagetrace.h>
#include <vobase/messaging/vothreadsendstatus.h>

#include <bxbase/bxstreamwriteasciitrace.h>
#include <bxbase/bxstringconvert.h>
#include <bxbase/diagnostics/bxtracehooks.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/windows/bxwindowsapi.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <typeinfo>
#include <utility>

namespace {

BxSmartPointer<Logging::ILogger> defaultLogger()
{
    static const BxSmartPointer<Logging::ILogger> logger(new Logging::CLogger(L"Core.Messaging"));
    return logger;
}

CString typeName(const VoMessage& message)
{
    const char* mangled = typeid(message).name();
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> demangled(abi::__cxa_demangle(mangled, nullptr, nullptr, &status), std::free);
    return BxStringConvert::Utf8ToWide(status == 0 && demangled ? demangled.get() : mangled);
}

}  // namespace

VoMessageHandlerBase::VoMessageHandlerBase(const CStringW& name) : BxIClassName(name), m_logger(defaultLogger())
{
    VoHangDetector::AddHandler(*this);
}

VoMessageHandlerBase::~VoMessageHandlerBase()
{
    VoHangDetector::RemoveHandler(*this);
    // Senders still waiting for this handler are released without its answer.
    for (const VoSendNotification& entry : m_sendQueue)
    {
        if (BxTraceHooks::IsOn())
            VoMessageTrace::Drop(entry);
        if (entry.message != nullptr)
            entry.status->CountDown();
    }
    if (BxTraceHooks::IsOn())
        std::for_each(m_postQueue.begin(), m_postQueue.end(), [](const auto& entry) { VoMessageTrace::Drop(entry); });
    if (getDispatcher() == nullptr)
        return;
#ifndef NDEBUG
    std::fprintf(stderr,
                 "VoMessageHandlerBase: handler '%s' is destroyed while still subscribed; "
                 "call UnsubscribeAll() before destroying a message handler\n",
                 BxStringConvert::WideToUtf8(GetName()).c_str());
    std::abort();
#else
    VoMessageDispatcher::onHandlerDelete(*this);
#endif
}

void VoMessageHandlerBase::SetLogger(BxSmartPointer<Logging::ILogger> logger)
{
    m_logger = logger ? std::move(logger) : defaultLogger();
}

BxSmartPointer<Logging::ILogger> VoMessageHandlerBase::GetLogger() const
{
    return m_logger;
}

// Subscription requests ---------------------------------------------------------------------------

void VoMessageHandlerBase::sendSubscription(const VoMessageSubscription& subscription)
{
    VoMessageDispatcher::SendPrivateMessage(subscription);
}

void VoMessageHandlerBase::Subscribe(const BxRTTI& rtti)
{
    sendSubscription(VoMessageSubscription(this, VoMessageSubscription::eA_Subscribe, rtti));
}

void VoMessageHandlerBase::SubscribeCommand(std::uint64_t commandID)
{
    sendSubscription(VoMessageSubscription(this, VoMessageSubscription::eA_SubscribeCommand, commandID));
}

void VoMessageHandlerBase::SubscribeMessage(const VoMessage& message)
{
    if (message.IsKindOf(VoMessageCommand::RTTI))
        SubscribeCommand(static_cast<const VoMessageCommand&>(message).GetWParam());
    else
        Subscribe(message.GetRTTI());
}

void VoMessageHandlerBase::Unsubscribe(const BxRTTI& rtti)
{
    const VoMessageSubscription subscription(this, VoMessageSubscription::eA_Unsubscribe, rtti);
    sendSubscription(subscription);
    invalidateUnsubscribedMessages(subscription);
}

void VoMessageHandlerBase::UnsubscribeCommand(std::uint64_t commandID)
{
    const VoMessageSubscription subscription(this, VoMessageSubscription::eA_UnsubscribeCommand, commandID);
    sendSubscription(subscription);
    invalidateUnsubscribedMessages(subscription);
}

void VoMessageHandlerBase::UnsubscribeMessage(const VoMessage& message)
{
    if (message.IsKindOf(VoMessageCommand::RTTI))
        UnsubscribeCommand(static_cast<const VoMessageCommand&>(message).GetWParam());
    else
        Unsubscribe(message.GetRTTI());
}

void VoMessageHandlerBase::UnsubscribeAll()
{
    if (getDispatcher() == nullptr)
        return;
    const VoMessageSubscription subscription(this, VoMessageSubscription::eA_UnsubscribeAll);
    sendSubscription(subscription);
    invalidateUnsubscribedMessages(subscription);  // purges nothing, on purpose
}

// Queueing ---------------------------------------------------------------------------------------

void VoMessageHandlerBase::queuePostNotification(const VoPostNotification& notification)
{
    BxCriticalSectionLocker locker(m_postQueueLock);
    m_postQueue.push_back(notification);
    signalPostNotification();
}

void VoMessageHandlerBase::queueSendNotification(const VoSendNotification& notification)
{
    BxCriticalSectionLocker locker(m_sendQueueLock);
    m_sendQueue.push_back(notification);
    signalSendNotification();
}

void VoMessageHandlerBase::signal(unsigned int notification)
{
    if (!PostMessageW(GetHWND(), notification, 0, 0))
        m_logger->Error(__FILE__, __LINE__, "VoMessageHandlerBase::signal", L"PostMessage() failed with error code %u",
                        static_cast<unsigned int>(GetLastError()));
}

void VoMessageHandlerBase::signalPostNotification()
{
    signal(WM_VO_POST_NOTIFICATION);
}

void VoMessageHandlerBase::signalSendNotification()
{
    signal(WM_VO_SEND_NOTIFICATION);
}

// Processing -------------------------------------------------------------------------------------

void VoMessageHandlerBase::onSendNotification()
{
    VoSendNotification entry;
    {
        BxCriticalSectionLocker locker(m_sendQueueLock);
        if (m_sendQueue.empty())
            return;
        entry = m_sendQueue.front();
        m_sendQueue.pop_front();
        m_sendsTaken.store(m_sendsTaken.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
    if (entry.message == nullptr)
        return;
    // Tells a hang diagnosis which send this thread is answering (restored
    // also when the answer throws).
    struct SAnswering
    {
        std::atomic<const VoThreadSendStatus*>& mark;
        const VoThreadSendStatus* outer;
        ~SAnswering() { mark.store(outer, std::memory_order_relaxed); }
    } answering{m_answering, m_answering.load(std::memory_order_relaxed)};
    m_answering.store(entry.status, std::memory_order_relaxed);
    processSendNotification(entry);
}

void VoMessageHandlerBase::processSendNotification(VoSendNotification& notification)
{
    // A handler that throws still counts down, so that the sender is not left waiting.
    const std::uint64_t traceStart =
        BxTraceHooks::IsOn() ? VoMessageTrace::BeginHandling(*notification.message, notification.flowId) : 0;
    try
    {
        notification.status->AddResult(handleMessage(*notification.message));
    }
    catch (...)
    {
    }
    if (traceStart != 0)
        VoMessageTrace::EndHandling(*notification.message, traceStart);  // the sender may go once counted down
    notification.status->CountDown();
}

void VoMessageHandlerBase::onPostNotification()
{
    if (m_flushing)
    {
        ++m_deferredSignals;
        return;
    }
    VoPostNotification entry;
    {
        BxCriticalSectionLocker locker(m_postQueueLock);
        if (m_postQueue.empty())
            return;
        entry = std::move(m_postQueue.front());
        m_postQueue.pop_front();
    }
    if (entry.message)
        processPostNotification(entry);
}

void VoMessageHandlerBase::processPostNotification(VoPostNotification& notification)
{
    const VoMessageTrace::CHandlingScope traceSpan(*notification.message, notification.flowId);
    try
    {
        (void)handleMessage(*notification.message);
    }
    catch (...)
    {
        // Posts have no one to report to.
    }
}

void VoMessageHandlerBase::flushPostNotifications()
{
    // A flush inside a flush (a post handled here sends again) keeps the
    // outer flush's count, so that no wake-up is lost.
    const bool outermost = !m_flushing;
    if (outermost)
    {
        m_flushing = true;
        m_deferredSignals = 0;
    }
    std::deque<VoPostNotification> entries;
    {
        BxCriticalSectionLocker locker(m_postQueueLock);
        entries.swap(m_postQueue);
    }
    const HWND hwnd = GetHWND();
    for (std::size_t i = 0; i < entries.size(); ++i)
    {
        MSG pending{};
        if (PeekMessageW(&pending, hwnd, WM_VO_POST_NOTIFICATION, WM_VO_POST_NOTIFICATION, PM_NOREMOVE) &&
            pending.message != WM_QUIT)
            PeekMessageW(&pending, hwnd, WM_VO_POST_NOTIFICATION, WM_VO_POST_NOTIFICATION, PM_REMOVE);
    }
    for (auto& entry : entries)
    {
        if (entry.message)
            processPostNotification(entry);
    }
    if (outermost)
    {
        m_flushing = false;
        for (std::uint32_t deferred = std::exchange(m_deferredSignals, 0); deferred > 0; --deferred)
            signalPostNotification();
    }
}

LRESULT VoMessageHandlerBase::handleMessage(const VoMessage& message)
{
    if (message.IsKindOf(VoMessageCreateHWND::RTTI))
    {
        const auto& request = static_cast<const VoMessageCreateHWND&>(message);
        return createHWND(*this, request.GetHandler()) ? 1 : 0;
    }
    BxStreamWriteASCIITrace trace(m_logger);
    trace << L"ERROR: Fehlgeleitete Meldung: Empfänger '" << GetName() << L"', Meldung '" << message.GetClassNameW()
          << L"'\n";
    return E_FAIL;
}

void VoMessageHandlerBase::onSubscribeMessages()
{
    Subscribe(VoMessageCreateHWND::RTTI);  // the dispatcher overrides this and subscribes to nothing
}

void VoMessageHandlerBase::invalidateUnsubscribedMessages(const VoMessageSubscription& subscription)
{
    {
        BxCriticalSectionLocker locker(m_sendQueueLock);
        for (auto& entry : m_sendQueue)
        {
            if (entry.message != nullptr && subscription.IsInvalidating(*entry.message))
            {
                if (BxTraceHooks::IsOn())
                    VoMessageTrace::Drop(entry);
                entry.message = nullptr;
                entry.status->CountDown();  // the sender stops waiting for this handler
            }
        }
    }
    BxCriticalSectionLocker locker(m_postQueueLock);
    for (auto& entry : m_postQueue)
    {
        if (entry.message && subscription.IsInvalidating(*entry.message))
        {
            if (BxTraceHooks::IsOn())
                VoMessageTrace::Drop(entry);
            entry.message.reset();
        }
    }
}

// Window procedure -------------------------------------------------------------------------------

LRESULT VoMessageHandlerBase::WindowProcHook(unsigned int message, WPARAM wParam, LPARAM lParam, int& handled)
{
    switch (message)
    {
    case WM_CREATE:
        if (GetThreadID() == 0)
            setThreadID(GetCurrentThreadId());
        onSubscribeMessages();
        break;
    case WM_DESTROY:
        onUnsubscribeMessages();
        break;
    case WM_VO_SEND_NOTIFICATION:
        onSendNotification();
        return 0;
    case WM_VO_POST_NOTIFICATION:
        onPostNotification();
        return 0;
    case WM_VO_MESSAGE_STRING:
    {
        if (lParam == 0)
            return 0;
        auto* buffer = reinterpret_cast<wchar_t*>(lParam);
        CStringW text(buffer);
        CoTaskMemFree(buffer);
        VoPostNotification entry{this, BxSmartPointer<const VoMessage>(new VoMessageString(reinterpret_cast<HWND>(wParam), text))};
        processPostNotification(entry);
        return 0;
    }
    default:
        if (message >= 0x400 && message <= 0xFFFF)
        {
            if (message < 0x8000)
            {
                handled = 0;
                onUserWindowsMessage(message, wParam, lParam, handled);
                return 0;
            }
            handled = 1;
            return message < 0xC000 ? onApplicationWindowsMessage(message, wParam, lParam)
                                    : onRegisteredWindowsMessage(message, wParam, lParam);
        }
        break;
    }
    handled = 0;
    onSystemWindowsMessage(message, wParam, lParam, handled);
    return 0;
}

// Diagnostics ------------------------------------------------------------------------------------

void VoMessageHandlerBase::getNameOfNextProcessedPostMessage(CString& name) const
{
    BxCriticalSectionLocker locker(m_postQueueLock);
    if (!m_postQueue.empty() && m_postQueue.front().message)
        name = typeName(*m_postQueue.front().message);
}

void VoMessageHandlerBase::getNameOfNextProcessedSendMessage(CString& name) const
{
    BxCriticalSectionLocker locker(m_sendQueueLock);
    if (!m_sendQueue.empty() && m_sendQueue.front().message != nullptr)
        name = typeName(*m_sendQueue.front().message);
}

// Window creation --------------------------------------------------------------------------------

bool VoMessageHandlerBase::createHWND(VoMessageHandlerBase& owner, VoMessageHandlerBase& handler)
{
    const HINSTANCE module = GetModuleHandleW(nullptr);
    const CStringW& className = handler.GetName();
    WNDCLASSEXW windowClass{};
    if (!GetClassInfoExW(module, className.c_str(), &windowClass))
    {
        windowClass = WNDCLASSEXW{};
        windowClass.cbSize = sizeof(WNDCLASSEXW);
        windowClass.hInstance = module;
        windowClass.lpfnWndProc = handler.getWindowProc();
        windowClass.lpszClassName = className.c_str();
        (void)RegisterClassExW(&windowClass);  // a failure shows in CreateWindowExW
    }
    const HWND hwnd = CreateWindowExW(0, className.c_str(), owner.GetName().c_str(), 0, CW_USEDEFAULT, CW_USEDEFAULT,
                                      CW_USEDEFAULT, CW_USEDEFAULT, HWND_MESSAGE, nullptr, module, &handler);
    if (hwnd == nullptr)
        return false;  // GetLastError() holds the reason
    handler.setHWND(hwnd);
    owner.setThreadID(GetCurrentThreadId());
    return true;
}
