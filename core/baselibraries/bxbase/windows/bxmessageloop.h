// Pumps the calling thread's message queue: any thread, the application's
// main thread included, can serve its message-only windows this way.
//
//   int exitCode = BxMessageLoop::Run();                // until PostQuitMessage / WM_QUIT
//
//   // In a loop of one's own (a test, a game loop, a console program):
//   BxMessageLoop::ProcessPending(100);                 // handle what is queued, waiting <= 100 ms
//
// Both dispatch every message to its window procedure (DispatchMessageW);
// thread messages (no window) are taken out and dropped.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxtypes.h>

#include <cstddef>

/// Pumps the calling thread's message queue: any thread, the application's main thread included, can serve its
/// message-only windows this way.
class BXBASE_API BxMessageLoop
{
public:
    BxMessageLoop() = delete;

    /// Dispatches messages until WM_QUIT arrives; returns its exit code (wParam).
    static int Run();

    /// Waits at most timeoutMs (0: not at all, INFINITE: for ever) for the
    /// first message, then dispatches every message queued, including those
    /// posted while it runs, until the queue is empty. Stops at WM_QUIT without
    /// taking it, so that an enclosing Run (or IsQuitPending) still sees it.
    /// Returns the number of messages taken out.
    static std::size_t ProcessPending(DWORD timeoutMs = 0);

    /// True when the next message for the loop is WM_QUIT.
    static bool IsQuitPending();
};
