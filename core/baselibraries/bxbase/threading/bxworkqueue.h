// A double-ended queue of tasks for BxThreadPool: the owning worker pushes and
// takes at the back (newest first, which keeps a fork-join tree depth first
// and its data warm in the cache), other workers steal at the front (oldest
// first, which hands them the biggest pieces of work). The shared injection
// queue for tasks added from outside the pool uses the back for adding and
// the front for taking, which makes it first in first out.
//
//   BxWorkQueue queue;
//   queue.PushBack(task);                       // owner
//   BxSmartPointer<BxTask> mine = queue.PopBack();   // owner: newest
//   BxSmartPointer<BxTask> stolen = queue.PopFront(); // thief: oldest
//
// A worker moves a run of the oldest tasks of the injection queue to its own
// queue in one go (PopFrontHalf, PushBackReversed), so that the producer
// and the workers meet on the shared queue once per run instead of once per task.
//
// The entries are kept in a ring that doubles when full and never shrinks, so
// a queue in steady use allocates nothing. Each entry holds a reference to
// its task: a task added and forgotten by its creator stays alive until run.
//
// Locks: m_lock (a spin lock: it is held for a few instructions, and a
// worker that sleeps on a contended mutex costs two system calls) guards
// m_ring and m_head; m_count is written under m_lock and
// may be read without it (IsEmpty, GetCount), so a worker can skip an empty
// queue without touching its lock. Its stores are sequentially consistent:
// a worker that announces it is going to sleep and then finds the queue empty
// is ordered against a producer that pushes and then looks for sleepers.
#pragma once

#include <bxbase/bxbaseapi.h>
#include <bxbase/bxsmartpointer.h>
#include <bxbase/threading/bxtask.h>

#include <atomic>
#include <cstddef>
#include <mutex>
#include <vector>

/// One pool worker's queue of tasks: the owner takes the newest, thieves the oldest.
class BXBASE_API BxWorkQueue
{
public:
    BxWorkQueue();
    BxWorkQueue(const BxWorkQueue&) = delete;
    BxWorkQueue& operator=(const BxWorkQueue&) = delete;

    /// Appends the task as the newest entry.
    void PushBack(BxSmartPointer<BxTask> task);
    /// Removes and returns the newest entry, or null when the queue is empty.
    BxSmartPointer<BxTask> PopBack();
    /// Removes and returns the oldest entry, or null when the queue is empty.
    BxSmartPointer<BxTask> PopFront();
    /// Removes up to `max` of the oldest entries, but no more than half of
    /// them (rounded up), into out[0..n), oldest first; returns n.
    std::size_t PopFrontHalf(BxSmartPointer<BxTask>* out, std::size_t max);
    /// Appends tasks[0..count) so that tasks[0] is the newest: PopBack then
    /// returns them in the order of the array.
    void PushBackReversed(BxSmartPointer<BxTask>* tasks, std::size_t count);
    /// Removes the newest entry when it is `task`; true when it did.
    bool PopBackIf(const BxTask& task);
    /// Removes every entry and returns them, oldest first.
    std::vector<BxSmartPointer<BxTask>> TakeAll();

    /// True when the queue holds no entry (a snapshot; no lock taken).
    bool IsEmpty() const { return m_count.load() == 0; }
    /// The number of entries (a snapshot; no lock taken).
    std::size_t GetCount() const { return m_count.load(); }

private:
    /// Test-and-test-and-set lock; a waiter pauses, then yields its core.
    class CSpinLock
    {
    public:
        void lock();
        void unlock() { m_locked.store(false, std::memory_order_release); }

    private:
        std::atomic<bool> m_locked{false};
    };

    std::size_t mask() const { return m_ring.size() - 1; }
    void growLocked();

    mutable CSpinLock m_lock;
    std::vector<BxSmartPointer<BxTask>> m_ring; ///< capacity a power of two; guarded by m_lock
    std::size_t m_head = 0;                     ///< index of the oldest entry; guarded by m_lock
    std::atomic<std::size_t> m_count{0};        ///< entries; written under m_lock
    static constexpr std::size_t kInitialCapacity = 64;
};
