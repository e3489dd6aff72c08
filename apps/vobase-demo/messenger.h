// The demo's way into the message dispatcher: the dispatcher's send and post
// calls, counted, so that the report can tell how many messages the demo
// routed. Any thread may call it.
//
//   CMessenger::Send(CMsgRequest(7));                                     // waits for the answer
//   CMessenger::Post(BxSmartPointer<const VoMessage>(new CMsgProgress(...)), ui);   // returns at once
#pragma once

#include <vobase/messaging/vomessage.h>
#include <vobase/messaging/vomessagehandlerbase.h>

#include <bxbase/bxsmartpointer.h>
#include <bxbase/bxtypes.h>

#include <cstdint>

class CMessenger
{
public:
    CMessenger() = delete;

    /// Sends `message` to every subscriber and returns the last answer.
    static LRESULT Send(const VoMessage& message);
    /// Sends `message` to `target` alone.
    static LRESULT Send(const VoMessage& message, const VoMessageHandlerBase& target);
    /// Posts `message` to every subscriber.
    static void Post(BxSmartPointer<const VoMessage> message);
    /// Posts `message` to `target` alone.
    static void Post(BxSmartPointer<const VoMessage> message, const VoMessageHandlerBase& target);

    /// Sends and posts made through this class so far.
    static std::uint64_t GetRoutedCount() noexcept;
};
