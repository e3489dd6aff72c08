// A message handler whose home is the thread that creates its message-only
// window (initMessageHandler). That thread must pump its window messages
// (BxMessageLoop::Run or ProcessPending, or its own GetMessageW loop);
// everything delivered to the handler runs there.
//
//   class CView : public VoMessageHandler {
//   public:
//       CView() : VoMessageHandler(L"View") {}
//   protected:
//       LRESULT handleMessage(const VoMessage& m) override { ...; return 1; }
//   };
//   CView view;
//   if (!view.initMessageHandler()) fail();      // window made, subscribed to VoMessageCreateHWND
//   view.Subscribe(CMsgRefresh::RTTI);
//   BxMessageLoop::Run();                        // on the view's thread
//   view.UnsubscribeAll();
//   view.destroyMessageHandler().Ignore();
//
// The window procedure finds the handler through the window's user data
// (GWLP_USERDATA), set when the window is created and cleared by
// destroyMessageHandler.
#pragma once

#include <vobase/messaging/vomessagehandlerbase.h>

/// A message handler whose home is the thread that creates its message-only window (initMessageHandler).
class VOBASE_API VoMessageHandler : public VoMessageHandlerBase
{
public:
    /// A handler named `name` (unique among the dispatcher's handlers), without a window yet: call
    /// initMessageHandler on its home thread.
    explicit VoMessageHandler(const CStringW& name);
    /// Destroys the window when it still exists.
    ~VoMessageHandler() override;

    HWND GetHWND() const override { return m_hwnd.load(std::memory_order_acquire); }

    /// Creates the handler's window on the calling thread, which becomes the
    /// handler's thread; false when the window could not be made.
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> initMessageHandler();
    /// Detaches the handler from its window (user data cleared), destroys the
    /// window and forgets its handle; true.
    BxCheckReturn<bool, BxCheckReturnPolicyAssert> destroyMessageHandler();

protected:
    /// Stores the window handle (atomically: wake-ups read it from any thread).
    void setHWND(HWND hwnd) override { m_hwnd.store(hwnd, std::memory_order_release); }
    WNDPROC getWindowProc() const override { return &windowProc; }
    /// Nothing to end for a handler that does not own its thread.
    void signalMessagingFinished() override {}

private:
    static LRESULT windowProc(HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);

    std::atomic<HWND> m_hwnd{nullptr};  ///< written on the handler's thread, read by any (wake-ups)
};
