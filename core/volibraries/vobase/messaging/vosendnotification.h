// An entry of a send queue: the message of a synchronous send, borrowed from
// the sender (who waits until every reply is in), the handler it is addressed
// to (null: every subscriber) and the send's status, which collects the
// answers and wakes the sender.
//
//   handler.queueSendNotification(VoSendNotification{nullptr, &message, status});
#pragma once

#include <cstdint>

class VoMessage;
class VoMessageHandlerBase;
class VoThreadSendStatus;

/// An entry of a send queue: the message of a synchronous send, borrowed from the sender (who waits until every
/// reply is in), the handler it is addressed to (null: every subscriber) and the send's status, which collects
/// the answers and wakes the sender.
struct VoSendNotification
{
    VoMessageHandlerBase* target = nullptr;  ///< null: all subscribers
    const VoMessage* message = nullptr;      ///< borrowed; null once invalidated
    VoThreadSendStatus* status = nullptr;    ///< answers and wake-up of the waiting sender
    std::uint64_t flowId = 0;                ///< the trace's arrow to this entry's handling (0: not traced)
};
