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
    VoMessageCreateHWND(VoMessageHandler& handler, const CStringW& windowName);
    VoMessageCreateHWND(const VoMessageCreateHWND&) = default;
    VoMessageCreateHWND(VoMessageCreateHWND&&) noexcept = default;
    ~VoMessageCreateHWND() override = default;

    /// The handler whose window is to be made.
    VoMessageHandler& GetHandler() const noexcept { return m_handler; }
    const CStringW& GetWindowName() const noexcept { return m_windowName; }

private:
    VoMessageHandler& m_handler;
    CStringW m_windowName;
};
