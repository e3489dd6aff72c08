#include <vobase/messaging/vomessagehandlerthreaded.h>

#include <bxbase/windows/bxwindowsapi.h>

VoMessageHandlerThreaded::VoMessageHandlerThreaded(const CStringW& name, EThreadPriority priority)
    : BxThread(name, priority), VoMessageHandler(name)
{
    DWORD_PTR processMask = 0, systemMask = 0;
    if (GetProcessAffinityMask(GetCurrentProcess(), &processMask, &systemMask))
        SetAffinityMask(processMask);
    SetThreadFunction(&VoMessageHandlerThreaded::mainLoop);
}

VoMessageHandlerThreaded::~VoMessageHandlerThreaded()
{
    // The loop uses this object: end it before the members go.
    if (IsRunning())
    {
        const HWND hwnd = GetHWND();
        if (hwnd != nullptr)
            PostMessageW(hwnd, WM_QUIT, 0, 0);
        WaitUntilTerminate();
    }
}

void VoMessageHandlerThreaded::SetName(const CStringW& name)
{
    BxThread::SetName(name);
    VoMessageHandler::setName(name);
}

bool VoMessageHandlerThreaded::StartAndWait()
{
    if (!BxThread::StartAndWait())
        return false;
    return m_readyForMessages.Wait(INFINITE);
}

bool VoMessageHandlerThreaded::mainLoop()
{
    if (!createHWND(*this, *this))
        return false;
    m_readyForMessages.Set();
    MSG message{};
    for (;;)
    {
        const BOOL result = GetMessageW(&message, nullptr, 0, 0);
        if (result == 0)
            break;
        if (result == -1)
            continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    m_readyForMessages.Reset();
    return destroyMessageHandler();
}

void VoMessageHandlerThreaded::signalMessagingFinished()
{
    UnsubscribeAll();
    PostMessageW(GetHWND(), WM_QUIT, 0, 0);
}
