// A message handler that owns its thread: the thread creates the handler's
// window and runs its message loop until the quit message.
//
//   class CWorker : public VoMessageHandlerThreaded {
//   public:
//       CWorker() : VoMessageHandlerThreaded(L"Worker", eTP_Normal) {}
//   protected:
//       void onSubscribeMessages() override { VoMessageHandlerThreaded::onSubscribeMessages(); Subscribe(CMsgJob::RTTI); }
//       LRESULT handleMessage(const VoMessage& m) override { ...; return 1; }
//   };
//   CWorker worker;
//   worker.StartAndWait();      // true: the loop runs and the handler is subscribed
//   ...
//   worker.UnsubscribeAll();    // before destruction; the destructor then ends the loop
//
// The thread carries the handler's name and runs on the CPUs the process may
// use. signalMessagingFinished unsubscribes everything and posts the quit
// message to the handler's window, which ends the loop.
#pragma once

#include <vobase/messaging/vomessagehandler.h>

#include <bxbase/threading/bxevent.h>
#include <bxbase/threading/bxthread.h>

/// A message handler that owns its thread: the thread creates the handler's window and runs its message loop
/// until the quit message.
class VOBASE_API VoMessageHandlerThreaded : public BxThread<VoMessageHandlerThreaded, BxThreadPolicyMFC>,
                                            public VoMessageHandler
{
public:
    /// A handler named `name` whose thread gets the same name and `priority`.
    VoMessageHandlerThreaded(const CStringW& name, EThreadPriority priority);
    /// Ends the loop (quit message) when the thread still runs, and waits for it.
    ~VoMessageHandlerThreaded() override;

    /// Starts the thread and waits until it can take messages (true), or
    /// false when the thread did not start. A thread that could not create
    /// its window never becomes ready: this then waits for ever.
    bool StartAndWait();

    /// Renames the thread and the handler.
    void SetName(const CStringW& name);
    using VoMessageHandler::GetName;

protected:
    /// Set while the loop runs.
    BxEvent getEventReadyForMessages() const { return m_readyForMessages; }
    /// Renames the thread and the handler.
    void setName(const CStringW& name) { SetName(name); }

    /// The thread function: window, ready event, message loop, window gone.
    bool mainLoop();
    /// UnsubscribeAll, then the quit message to the handler's own window.
    void signalMessagingFinished() override;

private:
    BxEvent m_readyForMessages;
};
