// The process-wide message router: a threaded handler named
// "MessageDispatcher" that keeps the subscription tables and turns every send
// or post into queue entries on the subscribing handlers' threads.
//
//   VoMessageDispatcher::GetInstance().StartAndWait();         // once, before the first send
//   handler.Subscribe(CMsgSave::RTTI);                         // on the handler's thread
//   LRESULT last = VoMessageDispatcher::SendMessageW(CMsgSave());   // waits for every subscriber
//   VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgSave));  // returns at once
//   ...
//   VoMessageDispatcher::GetInstance().ShutdownAndWait(INFINITE);
//
// Subscribers of a message are those of its exact class, then of each base
// class (depth first, in declared order), then, for a VoMessageCommand, those
// of its command id; a handler found twice gets the message twice. A send
// returns the answer that arrived last (0 without subscribers); subscribers
// living on the sender's own thread are answered by the sender itself, after
// their earlier posts, so that posts followed by a send arrive in order. A
// message addressed to a handler that is not subscribed to it is dropped (a
// send returns 0). VoMessageString is not routed: its text is posted to its
// window.
//
// Never send from the dispatcher's own thread, nor, while answering a send
// from thread A, to a subscriber on thread A: both wait for ever (and are
// reported by VoHangDetector, which lists every blocked send).
//
// Threads and locks: the subscription maps, the scratch lists and routing
// belong to the dispatcher's thread. m_statusPoolLock guards m_statusPool,
// m_sendMonitorsLock guards m_sendMonitors (a send reads the atomic
// m_hasSendMonitors first and takes the lock only when monitors exist); the
// process-wide registry of handler names has its own lock
// (FindMessageHandler may be called anywhere).
#pragma once

#include <vobase/messaging/iinterceptormessagedispatcher.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>
#include <vobase/messaging/vothreadsendstatus.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/interceptor/cdispatcher.h>
#include <bxbase/interceptor/cframework.h>
#include <bxbase/threading/bxsingleton.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// The process-wide message router: a threaded handler named "MessageDispatcher" that keeps the subscription
/// tables and turns every send or post into queue entries on the subscribing handlers' threads.
class VOBASE_API VoMessageDispatcher
    : public VoMessageHandlerThreaded,
      public Interceptor::CFramework<Messaging::IInterceptorMessageDispatcher,
                                     Interceptor::CDispatcher<Messaging::IInterceptorMessageDispatcher>>
{
public:
    /// The handlers subscribed under one key, in subscription order. Lists
    /// stay in the maps once made, also when empty.
    class VoMessageHandlerList : public BxReferenceCountedObject
    {
    public:
        /// The subscribed handlers (not owned), in subscription order; dispatcher's thread only.
        BxListEx<VoMessageHandlerBase*> handlers;
    };

    /// A function called with every message before its send is queued.
    using SendMonitor = std::function<void(const VoMessage&)>;

    /// The singleton, made on first use.
    static VoMessageDispatcher& GetInstance() { return BxSingleton<VoMessageDispatcher>::GetInstance(); }

    ~VoMessageDispatcher() override;

    // Synchronous sends: wait until every subscriber has answered.
    /// To every subscriber; returns the answer that arrived last, or 0.
    static LRESULT SendMessageW(const VoMessage& message);
    /// As above; every answer is appended to `results`, in arrival order.
    static LRESULT SendMessageW(const VoMessage& message, BxList<std::int64_t>& results);
    /// To `target` only, which must be subscribed to the message (else 0 at once).
    static LRESULT SendMessageW(const VoMessage& message, const VoMessageHandlerBase& target);
    /// To the dispatcher itself (subscription requests).
    static LRESULT SendPrivateMessage(const VoMessage& message);

    // Asynchronous posts: queue and return.
    /// To every subscriber, each on its own thread; returns at once (any thread). The queues share `message`,
    /// which lives until the last subscriber has handled it.
    static void PostMessageW(BxSmartPointer<const VoMessage> message);
    /// To `target` only, which must be subscribed to the message (else the message is dropped); returns at once.
    static void PostMessageW(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase& target);

    // The same calls naming the caller's source position; they behave exactly like the plain ones.
    /// SendMessageW(message); `sourceFile` and `line` name the caller's position.
    static LRESULT SendMessageW(const wchar_t* sourceFile, unsigned int line, const VoMessage& message);
    /// SendMessageW(message, results); `sourceFile` and `line` name the caller's position.
    static LRESULT SendMessageW(const wchar_t* sourceFile, unsigned int line, const VoMessage& message,
                                BxList<std::int64_t>& results);
    /// SendMessageW(message, target); `sourceFile` and `line` name the caller's position.
    static LRESULT SendMessageW(const wchar_t* sourceFile, unsigned int line, const VoMessage& message,
                                const VoMessageHandlerBase& target);
    /// SendPrivateMessage(message); `sourceFile` and `line` name the caller's position.
    static LRESULT SendPrivateMessage(const wchar_t* sourceFile, unsigned int line, const VoMessage& message);
    /// PostMessageW(message); `sourceFile` and `line` name the caller's position.
    static void PostMessageW(const wchar_t* sourceFile, unsigned int line, BxSmartPointer<const VoMessage> message);
    /// PostMessageW(message, target); `sourceFile` and `line` name the caller's position.
    static void PostMessageW(const wchar_t* sourceFile, unsigned int line, BxSmartPointer<const VoMessage> message,
                             const VoMessageHandlerBase& target);

    /// The handler registered under `name`, or null.
    static const VoMessageHandlerBase* FindMessageHandler(const CString& name);
    /// Removes every registry entry of `handler` (its destructor calls this).
    static void onHandlerDelete(const VoMessageHandlerBase& handler);

    /// Unsubscribes every handler and ends the dispatcher's thread; true when
    /// the thread was not running or ended within timeoutMs.
    bool ShutdownAndWait(unsigned int timeoutMs);

    /// The dispatcher never unsubscribes itself.
    void UnsubscribeAll() override {}

    /// Adds a send monitor; the id removes it again.
    std::size_t AddSendMonitor(SendMonitor monitor);
    /// Removes a send monitor; true when the id was known.
    bool RemoveSendMonitor(std::size_t id);

    /// Subscribers of `message` (see above), narrowed to `target` when given.
    /// Dispatcher's thread only (and tests and benchmarks while no routing runs).
    const BxListEx<VoMessageHandlerBase*>& getSubscribers(const VoMessageHandlerBase* target, const VoMessage& message);

protected:
    LRESULT handleMessage(const VoMessage& message) override;
    /// Routes a send to the subscribers' queues (dispatcher's thread).
    void processSendNotification(VoSendNotification& notification) override;
    /// Routes a post to the subscribers' queues (dispatcher's thread).
    void processPostNotification(VoPostNotification& notification) override;
    /// The dispatcher subscribes to nothing.
    void onSubscribeMessages() override {}

private:
    friend class BxSingleton<VoMessageDispatcher>;
    using HandlerListPtr = BxSmartPointer<VoMessageHandlerList>;

    VoMessageDispatcher();

    LRESULT sendMessage(const VoMessage& message, const VoMessageHandlerBase* target, BxList<std::int64_t>* results);
    void postMessage(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase* target);
    void callSendMonitors(const VoMessage& message);
    BxSmartPointer<VoThreadSendStatus> takeStatus();
    void returnStatus(BxSmartPointer<VoThreadSendStatus> status);

    void getSubscribersForMessage(const VoMessage& message);
    void getSubscribersForRTTI(const BxRTTI& rtti);
    void getSubscribersForCommand(std::uint64_t commandID);
    void fillWorkListWithRTTIBaseClasses(const BxRTTI& rtti);
    VoMessageHandlerList& getSubscriptionsRTTI(const BxRTTI& rtti);

    /// What routing needs of one message class, worked out when the class is
    /// first routed: the subscriber lists of the class and of its bases in the
    /// order of the base-class walk (lists stay in the map once made, so the
    /// pointers stay valid), and whether it is a command or a string message.
    struct SRoute
    {
        BxListEx<VoMessageHandlerList*> lists;
        bool isCommand = false;
        bool isString = false;
    };
    const SRoute& routeOf(const BxRTTI& rtti);
    VoMessageHandlerList& getSubscriptionsCommand(std::uint64_t commandID);

    LRESULT onMessageSubscription(const VoMessageSubscription& subscription);
    LRESULT onMessageShutDown();
    void subscribeRTTI(const BxRTTI& rtti, VoMessageHandlerBase& handler);
    void subscribeCommand(std::uint64_t commandID, VoMessageHandlerBase& handler);
    void unsubscribeRTTI(const BxRTTI& rtti, VoMessageHandlerBase& handler);
    void unsubscribeCommand(std::uint64_t commandID, VoMessageHandlerBase& handler);
    void unsubscribeAllRTTI(VoMessageHandlerBase& handler);
    void unsubscribeAllCommand(VoMessageHandlerBase& handler);

    BxCriticalSection m_sendMonitorsLock;                                      ///< guards the two below
    std::vector<std::pair<std::size_t, std::shared_ptr<SendMonitor>>> m_sendMonitors;
    std::size_t m_lastSendMonitorID = 0;
    std::atomic<bool> m_hasSendMonitors{false};  ///< mirrors !m_sendMonitors.empty(), written under the lock

    // Dispatcher's thread only.
    BxListEx<VoMessageHandlerBase*> m_subscribers;  ///< scratch list of every routing step
    BxListEx<const BxRTTI*> m_rttiWorkList;         ///< scratch list of the base-class walk
    BxMap<const BxRTTI*, HandlerListPtr> m_subscriptionsRTTI;
    BxMap<std::uint64_t, HandlerListPtr> m_subscriptionsCommand;
    BxMap<const BxRTTI*, SRoute> m_routes;          ///< by message class, made on first use

    BxCriticalSection m_statusPoolLock;                       ///< guards m_statusPool
    BxArray<BxSmartPointer<VoThreadSendStatus>> m_statusPool;  ///< used as a stack
};
