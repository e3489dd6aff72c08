// Records the road of every message in the trace (BxTraceRecorder), category
// "messaging": the send or post call, the dispatcher's routing and each
// handling, joined by arrows (flows).
//
// Spans (complete events), each on the thread where it happens:
//   "send CMsgJob"   the whole SendMessageW call of the sender, waiting included
//   "post CMsgJob"   the PostMessageW call
//   "CMsgJob"        a handling: handleMessage of a subscriber on its thread, of
//                    a subscriber on the sender's thread answered by the sender,
//                    and the dispatcher's routing of the send or post (which is
//                    its own handling for messages to the dispatcher itself)
//
// Arrows, one per hop, each named by the message's class, with its start at
// the start of the span it leaves and its end at the start of the handling it
// reaches (so both Perfetto, which binds an arrow to the enclosing span, and
// Chrome DevTools, which binds it to the span of the same start and category,
// draw it):
//   send/post call  -> the dispatcher's routing
//   routing         -> each subscriber's handling (a post to N subscribers
//                      makes N such arrows, one per queued entry)
//   send call       -> each handling the sender does itself (subscribers on
//                      its own thread)
// The queued entries carry the id of the arrow that reaches them
// (VoSendNotification::flowId, VoPostNotification::flowId; 0 when the
// recorder was off). A text message (VoMessageString) reaches its window as a
// window message: its handling has no incoming arrow. An entry dropped unhandled
// (its handler unsubscribed or was destroyed) ends its arrow in an instant
// "dropped <class>" on the thread that dropped it, so that every arrow has
// both ends.
//
// The dispatcher and the handlers call these functions at their hook points,
// only while BxTraceHooks::IsOn():
//
//   const std::uint64_t traceStart =
//       BxTraceHooks::IsOn() ? VoMessageTrace::BeginHandling(*entry.message, entry.flowId) : 0;
//   handleMessage(*entry.message);
//   if (traceStart != 0)
//       VoMessageTrace::EndHandling(*entry.message, traceStart);   // before the sender may go on
//
// or, where the entry owns its message (posts), with a scope:
//
//   const VoMessageTrace::CHandlingScope span(*entry.message, entry.flowId);
#pragma once

#include <vobase/vobaseapi.h>

#include <bxbase/diagnostics/bxtracehooks.h>

#include <cstdint>

class VoMessage;
struct VoPostNotification;
struct VoSendNotification;

/// Records the road of every message in the trace: calls, routing and handlings, joined by arrows.
class VOBASE_API VoMessageTrace
{
public:
    /// The category of every messaging event.
    static constexpr const char* kCategory = "messaging";

    /// A send call begins: starts the arrow to the routing and stores its id
    /// in the notification. Returns the start of the send's span.
    static std::uint64_t BeginSend(VoSendNotification& notification) noexcept;
    /// The send call that began at `start` returns: records its span "send <class>".
    static void EndSend(const VoMessage& message, std::uint64_t start) noexcept;
    /// A post call: records its span "post <class>" with the start of the arrow to the routing; returns the arrow's id.
    static std::uint64_t Post(const VoMessage& message) noexcept;

    /// The next hop: starts a new arrow from this thread's current span
    /// (which began at `spanStart`) to the handling of `notification` and
    /// stores its id there.
    static void Hop(VoSendNotification& notification, std::uint64_t spanStart) noexcept;
    /// The next hop of a post entry, as for a send.
    static void Hop(VoPostNotification& notification, std::uint64_t spanStart) noexcept;

    /// A queued entry is dropped unhandled: ends its arrow (if any) at an instant "dropped <class>".
    static void Drop(const VoSendNotification& notification) noexcept;
    /// A queued post entry is dropped unhandled, as for a send.
    static void Drop(const VoPostNotification& notification) noexcept;

    /// A handling of `message` begins: ends the arrow `flowId` (none when 0)
    /// inside it. Returns the start of the handling's span.
    static std::uint64_t BeginHandling(const VoMessage& message, std::uint64_t flowId) noexcept;
    /// The handling that began at `start` ends: records its span, named by the message's class.
    static void EndHandling(const VoMessage& message, std::uint64_t start) noexcept;

    /// A handling as a scope: BeginHandling when made, EndHandling when
    /// destroyed. Only for a message that outlives the scope.
    class CHandlingScope
    {
    public:
        /// Begins the handling of `message`, reached by the arrow `flowId`, while hook points record.
        CHandlingScope(const VoMessage& message, std::uint64_t flowId) noexcept
            : m_message(message), m_start(BxTraceHooks::IsOn() ? BeginHandling(message, flowId) : 0)
        {
        }
        ~CHandlingScope()
        {
            if (m_start != 0)
                EndHandling(m_message, m_start);
        }
        /// When the handling began (BxTraceRecorder::Now()); 0 when it is not recorded.
        std::uint64_t GetStart() const noexcept { return m_start; }
        CHandlingScope(const CHandlingScope&) = delete;
        CHandlingScope& operator=(const CHandlingScope&) = delete;

    private:
        const VoMessage& m_message;
        std::uint64_t m_start; ///< 0: not recording
    };
};
