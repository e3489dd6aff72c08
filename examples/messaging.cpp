// Messages between threads: a worker handler with a thread of its own squares
// numbers. The main thread sends one request (and waits for the answer),
// posts three more (and goes on at once), and pumps its own message loop, as
// a user-interface thread would, until the worker's posted results arrive.
#include <vobase/messaging/vomessagedispatcher.h>
#include <vobase/messaging/vomessagehandler.h>
#include <vobase/messaging/vomessagehandlerthreaded.h>

#include <bxbase/threading/bxthreadapi.h>
#include <bxbase/windows/bxmessageloop.h>

#include <cstdio>

struct CMsgSquare : VoMessage  // a request; `reply` asks for a posted CMsgResult
{
    explicit CMsgSquare(int value = 0, bool reply = false) : value(value), reply(reply) {}
    int value;
    bool reply;
    BX_DECLARE_RTTI()  // registered message classes: the dispatcher routes by class
};
BX_IMPLEMENT_RTTI(CMsgSquare, &VoMessage::RTTI)

struct CMsgResult : VoMessage
{
    explicit CMsgResult(int value = 0, int square = 0) : value(value), square(square) {}
    int value, square;
    BX_DECLARE_RTTI()
};
BX_IMPLEMENT_RTTI(CMsgResult, &VoMessage::RTTI)

class CWorker : public VoMessageHandlerThreaded
{
public:
    CWorker() : VoMessageHandlerThreaded(L"ExampleWorker", eTP_Normal) {}
    ~CWorker() override { UnsubscribeAll(); }
protected:
    void onSubscribeMessages() override { VoMessageHandlerThreaded::onSubscribeMessages(), Subscribe(CMsgSquare::RTTI); }
    LRESULT handleMessage(const VoMessage& message) override  // on the worker's thread
    {
        if (!message.IsKindOf(CMsgSquare::RTTI))
            return VoMessageHandlerThreaded::handleMessage(message);
        const auto& request = static_cast<const CMsgSquare&>(message);
        const int square = request.value * request.value;
        if (request.reply)
            VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgResult(request.value, square)));
        return square;
    }
};

class CMainLoop : public VoMessageHandler  // lives on the main thread, which pumps its messages
{
public:
    CMainLoop() : VoMessageHandler(L"ExampleMainLoop") {}
    int received = 0;
protected:
    void onSubscribeMessages() override { VoMessageHandler::onSubscribeMessages(), Subscribe(CMsgResult::RTTI); }
    LRESULT handleMessage(const VoMessage& message) override
    {
        if (!message.IsKindOf(CMsgResult::RTTI))
            return VoMessageHandler::handleMessage(message);
        const auto& result = static_cast<const CMsgResult&>(message);
        std::printf("main loop received %d squared = %d (thread %u)\n", result.value, result.square, GetCurrentThreadId());
        return ++received;
    }
};

int main()
{
    VoMessageDispatcher& dispatcher = VoMessageDispatcher::GetInstance();
    CMainLoop mainLoop;
    CWorker worker;
    if (!dispatcher.StartAndWait() || !mainLoop.initMessageHandler() || !worker.StartAndWait())  // dispatcher first
        return 1;
    std::printf("main thread %u, worker thread %u\n", GetCurrentThreadId(), worker.GetThreadID());

    const LRESULT answer = VoMessageDispatcher::SendMessageW(CMsgSquare(12));  // waits for the worker
    std::printf("send: 12 squared = %lld\n", static_cast<long long>(answer));
    for (int value : {2, 3, 4})
        VoMessageDispatcher::PostMessageW(BxSmartPointer<const VoMessage>(new CMsgSquare(value, true)));
    while (mainLoop.received < 3)
        BxMessageLoop::ProcessPending(INFINITE);  // handles what arrives on this thread
    mainLoop.UnsubscribeAll(), mainLoop.destroyMessageHandler().Ignore(), worker.UnsubscribeAll();  // shut down in order
    const bool ended = dispatcher.ShutdownAndWait(INFINITE);
    std::printf("posted results: %d, dispatcher ended: %s\n", mainLoop.received, ended ? "yes" : "no");
    return answer == 144 && ended ? 0 : 1;
}
