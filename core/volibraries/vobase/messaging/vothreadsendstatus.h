// The state of one synchronous send in flight: the answers, the number of
// answers still expected, and the two events the sender waits on. The
// dispatcher keeps a pool of them and reuses one per send.
//
//   status.Reset(2);               // two counts: one subscriber and the routing itself
//   status.AddResult(1);           // on the subscriber's thread...
//   status.CountDown();            // ...then count down
//   status.CountDown();            // the dispatcher is done routing: the replied event is set
//   status.GetRepliedEvent().Wait();
//
// The dispatcher keeps one count of its own while it routes, so the replied
// event means that nobody touches the status any more; it sets the
// dispatched event only when subscribers live on the sender's thread, so that
// a sender without such subscribers is woken once. The sender sleeps on a
// third, private event that both the dispatched and the replied event ring
// (WaitUntilDispatchedOrReplied): one futex word instead of a wait on two
// events, which would take both events' locks for every send.
//
// Locks: m_resultsLock guards m_results. The pending count is atomic. The
// local handlers and the sender thread id are written by the dispatcher
// before it marks the send dispatched and read by the sender after it saw
// the dispatched event, so they need no lock.
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/bxcontainers.h>
#include <bxbase/inoncopyable.h>
#include <bxbase/ireferencecounted.h>
#include <bxbase/threading/bxcriticalsection.h>
#include <bxbase/threading/bxevent.h>

#include <atomic>
#include <cstdint>

class VoMessageHandlerBase;

/// The state of one synchronous send in flight: the answers, the number of answers still expected, and the two
/// events the sender waits on.
class VOBASE_API VoThreadSendStatus : public IReferenceCounted, public INonCopyable
{
public:
    VoThreadSendStatus() = default;
    ~VoThreadSendStatus() override = default;

    BxReferenceCounter<unsigned int>& getReferenceCounter() const override { return m_referenceCounter; }

    /// Prepares the status for `count` answers: resets the dispatched event,
    /// empties the local handlers and the results; with count 0 the replied
    /// event is set at once, else reset.
    void Reset(std::uint32_t count);
    /// Appends an answer (under the results lock).
    void AddResult(std::int64_t result);
    /// One answer less to wait for; the call that reaches 0 sets the replied event.
    void CountDown();
    /// Tells the sender that the dispatcher has routed the send.
    void MarkDispatched();
    /// Sender: sleeps until the send is dispatched (true: local handlers to
    /// answer) or every answer is in (false). The sender resets the event
    /// that woke it before it uses the status again.
    bool WaitUntilDispatchedOrReplied();
    /// What the timed wait below saw.
    enum EWaitResult
    {
        eWR_Replied = 0,
        eWR_Dispatched = 1,
        eWR_TimedOut = 2
    };
    /// As above, giving up after timeoutMs (INFINITE: never).
    EWaitResult WaitUntilDispatchedOrReplied(DWORD timeoutMs);

    /// Answers in arrival order. Read it only after the replied event.
    const BxListEx<std::int64_t>& GetResults() const noexcept { return m_results; }
    /// Subscribers living on the sender's thread, which the sender answers for itself.
    const BxListEx<VoMessageHandlerBase*>& GetLocalHandlers() const noexcept { return m_localHandlers; }
    /// Dispatcher, while routing: adds a subscriber that lives on the sender's thread (before MarkDispatched).
    void AddLocalHandler(VoMessageHandlerBase* handler) { m_localHandlers.push_back(handler); }

    /// The kernel id of the sending thread; subscribers on it are answered by the sender.
    std::uint32_t GetSenderThreadID() const noexcept { return m_senderThreadID; }
    /// Sender, before queuing the send: records its own thread id.
    void SetSenderThreadID(std::uint32_t threadID) noexcept { m_senderThreadID = threadID; }
    /// Answers still expected (read atomically; for diagnostics and tests).
    std::uint32_t GetPendingCount() const noexcept { return m_pending.load(std::memory_order_acquire); }

    /// Set when every answer is in.
    BxEvent& GetRepliedEvent() noexcept { return m_replied; }
    /// Set when the dispatcher has routed the send.
    BxEvent& GetDispatchedEvent() noexcept { return m_dispatched; }

private:
    mutable BxReferenceCounter<unsigned int> m_referenceCounter;
    BxCriticalSection m_resultsLock;             ///< guards m_results
    BxListEx<std::int64_t> m_results;            ///< in arrival order
    std::atomic<std::uint32_t> m_pending{0};
    BxEvent m_replied;
    BxEvent m_dispatched;
    BxEvent m_wake;  ///< set after m_dispatched or m_replied; only the sender waits on it
    BxListEx<VoMessageHandlerBase*> m_localHandlers;
    std::uint32_t m_senderThreadID = 0;
};
