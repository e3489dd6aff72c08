// An entry of a post queue: the message of an asynchronous post and the
// handler it is addressed to (null: every subscriber). The entry shares the
// message, which lives until the last entry holding it has been processed.
// Invalidation (an unsubscription) releases the message; the entry then stays
// queued and is skipped when its turn comes.
//
//   handler.queuePostNotification(VoPostNotification{nullptr, message});
#pragma once

#include <vobase/messaging/vomessage.h>

#include <bxbase/bxsmartpointer.h>

#include <cstdint>

class VoMessageHandlerBase;

/// An entry of a post queue: the message of an asynchronous post and the handler it is addressed to (null: every
/// subscriber).
struct VoPostNotification
{
    VoMessageHandlerBase* target = nullptr;     ///< null: all subscribers
    BxSmartPointer<const VoMessage> message;    ///< null once invalidated
    std::uint64_t flowId = 0;                   ///< the trace's arrow to this entry's handling (0: not traced)
};
