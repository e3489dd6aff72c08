// Asks a handler to create the window of another handler on its own thread.
// Every handler subscribes to it once its window exists, so a handler made
// on one thread can be given a window (and so a home thread) on another.
//
//   CWorkerHandler worker;            // no window yet
//   VoMessageDispatcher::SendMessageW(VoMessageCreateHWND(worker, L"Worker"), uiHandler);  // 1: created
#pragma once

#include <vobase/messaging/vomessage.h>

class VoMessageHandler;

/// Asks a handler to create the window of another handler on its own thread.
class VOBASE_API VoMessageCreateHWND : public VoMessage
{
    BX_DECLARE_RTTI();

public:
    /// Asks for the window of `handler`, which is not owned and must outlive the request; `windowName` travels
    /// with it.
    VoMessageCreateHWND(VoMessageHandler& handler, const CStringW& windowName);
    /// Refers to the same handler and copies the window name; the copy is a new message with a fresh ID.
    VoMessageCreateHWND(const VoMessageCreateHWND&) = default;
    /// Refers to the same handler and moves the window name; the new message gets a fresh ID.
    VoMessageCreateHWND(VoMessageCreateHWND&&) noexcept = default;
    ~VoMessageCreateHWND() override = default;

    /// The handler whose window is to be made.
    VoMessageHandler& GetHandler() const noexcept { return m_handler; }
    /// The window name given by the requester. The receiver does not use it for the window: the window class is
    /// named after the handler and the window is titled with the receiving handler's name.
    const CStringW& GetWindowName() const noexcept { return m_windowName; }

private:
    VoMessageHandler& m_handler;
    CStringW m_windowName;
};
