#include <bxbase/windows/bxmessageloop.h>

#include <bxbase/windows/bxmessagequeue.h>
#include <bxbase/windows/bxwindowsapi.h>

int BxMessageLoop::Run()
{
    MSG msg;
    BOOL result;
    while ((result = GetMessageW(&msg, nullptr, 0, 0)) != 0)
    {
        if (result == -1)
            continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return static_cast<int>(static_cast<std::int64_t>(msg.wParam));
}

std::size_t BxMessageLoop::ProcessPending(DWORD timeoutMs)
{
    BxMessageQueue& queue = BxMessageQueue::ForCurrentThread();
    std::size_t count = 0;
    MSG msg;
    DWORD wait = timeoutMs;
    while (queue.Retrieve(msg, {}, BxMessageQueue::eRemoveUnlessQuit, wait))
    {
        if (msg.message == WM_QUIT)
            break;
        ++count;
        DispatchMessageW(&msg);
        wait = 0; // only the first message is waited for
    }
    return count;
}

bool BxMessageLoop::IsQuitPending()
{
    MSG msg;
    return BxMessageQueue::ForCurrentThread().Retrieve(msg, {}, BxMessageQueue::eKeep, 0) && msg.message == WM_QUIT;
}
