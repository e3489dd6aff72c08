// The demo's worker: a message handler with a thread of its own. It takes
// CMsgRequest messages, sent or posted from any thread, answers a send with
// the square of the request's value and, when the request asks for it,
// posts the same result back as a CMsgAnswer.
//
//   CWorkerHandler worker;
//   if (!worker.StartAndWait()) fail();        // thread runs, subscribed to CMsgRequest
//   CMessenger::Send(CMsgRequest(12));         // 144
#pragma once

#include <vobase/messaging/vomessagehandlerthreaded.h>

#include <atomic>
#include <cstddef>

class CWorkerHandler : public VoMessageHandlerThreaded
{
public:
    CWorkerHandler();
    /// Unsubscribes; the base then ends the thread's loop and waits for it.
    ~CWorkerHandler() override;

    /// Requests handled so far (any thread may ask).
    std::size_t GetHandledCount() const noexcept { return m_handled.load(); }

protected:
    /// Subscribes CMsgRequest once the thread's window exists.
    void onSubscribeMessages() override;
    /// Answers a CMsgRequest; anything else goes to the base.
    LRESULT handleMessage(const VoMessage& message) override;

private:
    std::atomic<std::size_t> m_handled{0};
};
