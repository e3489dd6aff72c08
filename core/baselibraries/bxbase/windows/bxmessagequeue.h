// The message queue of one thread: first in first out, made on the thread's
// first use of the message-window layer. Any thread appends (Post); only the
// owning thread takes messages out (Retrieve). The quit request of
// PostQuitMessage is a flag, delivered as WM_QUIT once no other matching
// message is queued (as in Win32), whatever the filter.
//
//   BxMessageQueue& queue = BxMessageQueue::ForCurrentThread();
//   MSG msg;
//   if (queue.Retrieve(msg, BxMessageQueue::SFilter{}, BxMessageQueue::eRemove, 100)) ...
//
// This is the engine of bxwindowsapi.h; applications use those functions.
// Queue objects are never freed: when a thread ends its queue is closed (later
// posts fail) and kept for reuse by a new thread, so a poster holding a stale
// pointer always touches valid memory and is turned away by the window
// generation check made under the queue lock.
//
// Locks: m_lock guards m_messages, m_quitPending, m_quitCode, m_sequence,
// m_waiters, m_closed and m_threadId; m_windows belongs to the owning thread.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/windows/bxwindowtypes.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <vector>

/// The message queue of one thread: first in first out, made on the thread's first use of the message-window
/// layer.
class BXBASE_API BxMessageQueue
{
public:
    /// Which messages Retrieve looks at.
    struct SFilter
    {
        HWND hwnd = nullptr; ///< null: all; (HWND)-1: thread messages only; else that window only
        UINT min = 0;        ///< min == max == 0: every number
        UINT max = 0;
        bool Matches(const MSG& msg) const;
    };

    enum ERemove
    {
        eKeep,             ///< leave the message queued
        eRemove,           ///< take it out
        eRemoveUnlessQuit  ///< take it out, except WM_QUIT, which stays for the next caller
    };

    /// The calling thread's queue, made on first use.
    static BxMessageQueue& ForCurrentThread();
    /// The calling thread's queue, or null when it has none yet.
    static BxMessageQueue* FindForCurrentThread();

    BxMessageQueue(const BxMessageQueue&) = delete;
    BxMessageQueue& operator=(const BxMessageQueue&) = delete;

    /// Kernel id of the owning thread (0 while the queue waits for reuse).
    DWORD GetThreadId() const;

    /// Appends msg (any thread). With a generation, appends only while
    /// *generation == expected, tested under the queue lock, which is how a
    /// post races safely with the window's destruction. False when that test
    /// fails or the owning thread has ended.
    bool Post(const MSG& msg, const std::atomic<std::uint32_t>* generation = nullptr, std::uint32_t expected = 0);

    /// Owning thread: the first message that matches the filter, waiting up to
    /// timeoutMs (INFINITE: for ever) for one. False on time-out.
    bool Retrieve(MSG& msg, const SFilter& filter, ERemove remove, DWORD timeoutMs);

    /// Asks the owning thread's loop to end with exitCode (wParam of WM_QUIT).
    void PostQuit(int exitCode);

    /// Under the queue lock, sets generation to newGeneration and drops the
    /// queued messages of hwnd: the window is gone for every poster at once.
    void Invalidate(std::atomic<std::uint32_t>& generation, std::uint32_t newGeneration, HWND hwnd);

    /// Number of queued messages (a snapshot).
    std::size_t GetCount() const;

    /// Slots of the windows the owning thread created (owning thread only).
    std::vector<std::uint32_t>& OwnedWindows() { return m_windows; }

private:
    class CThreadHolder;
    BxMessageQueue() = default;
    void open(DWORD threadId);
    void close();

    mutable std::mutex m_lock;
    std::condition_variable m_posted; ///< the owner waits here for a post
    std::deque<MSG> m_messages;
    std::uint64_t m_sequence = 0;     ///< counts posts, so a waiter sees any new arrival
    int m_waiters = 0;
    bool m_quitPending = false;
    int m_quitCode = 0;
    bool m_closed = true;
    DWORD m_threadId = 0;
    std::vector<std::uint32_t> m_windows;
};
