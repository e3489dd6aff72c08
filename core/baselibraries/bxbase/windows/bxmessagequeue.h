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
//
// The queue has two parts. Posters append to the incoming list under the
// queue lock. The owning thread takes the whole incoming list over into its
// batch under one lock acquisition (the two vectors swap, so their storage is
// reused and nothing is allocated once they have grown) and then serves
// Retrieve from the batch without locking, until no message of the batch
// matches. Batch messages are older than incoming ones, so the order of the
// queue is the batch followed by the incoming list. A poster wakes the owner
// only when the owner has said that it sleeps (m_ownerSleeps), and only once
// per sleep: while the owner works through its batch, posts cost a lock and an
// append, no system call.
//
// Queue objects are never freed: when a thread ends its queue is closed (later
// posts fail) and kept for reuse by a new thread, so a poster holding a stale
// pointer always touches valid memory and is turned away by the window
// generation check made under the queue lock.
//
// Locks: m_lock guards m_incoming, m_ownerSleeps, m_quitPending, m_quitCode,
// m_closed and m_threadId. m_batch, m_batchHead, m_batchTime and m_windows
// belong to the owning thread (m_batchCount mirrors the batch's size for
// GetCount on other threads).
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/windows/bxwindowtypes.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
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
        UINT max = 0;        ///< last message number taken (inclusive); see min
        /// True when `msg` passes both the window and the number filter.
        bool Matches(const MSG& msg) const;
    };

    /// What Retrieve does with the message it found.
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

    /// Owning thread: under the queue lock, sets generation to newGeneration
    /// and drops the queued messages of hwnd: the window is gone for every
    /// poster at once.
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

    /// Owning thread: the first matching batch message (taken out unless
    /// kept); false when none matches.
    bool takeFromBatch(MSG& msg, const SFilter& filter, ERemove remove);
    /// Owning thread, m_lock held: moves the incoming list behind the batch.
    void takeOverIncoming();
    void dropBatch();

    mutable std::mutex m_lock;
    std::condition_variable m_posted; ///< the owner sleeps here
    std::vector<MSG> m_incoming;      ///< posted, not yet taken over; guarded by m_lock
    bool m_ownerSleeps = false;       ///< the next post must wake the owner; guarded by m_lock
    bool m_quitPending = false;
    int m_quitCode = 0;
    bool m_closed = true;
    DWORD m_threadId = 0;

    std::vector<MSG> m_batch;                  ///< taken over; owning thread only
    std::size_t m_batchHead = 0;               ///< first message of m_batch still queued
    DWORD m_batchTime = 0;                     ///< when the batch's last part was taken over
    std::atomic<std::size_t> m_batchCount{0};  ///< queued messages in the batch
    std::vector<std::uint32_t> m_windows;
};
