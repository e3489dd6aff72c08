#include <bxbase/threading/bxthreadpool.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxblockingscope.h>
#include <bxbase/threading/bxnohelpscope.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <pthread.h>
#include <system_error>

namespace
{
thread_local BxThreadPool* t_pool = nullptr; ///< the pool of the calling worker thread
thread_local void* t_slot = nullptr;         ///< its slot (BxThreadPool::SSlot)
thread_local unsigned t_stealStart = 0;      ///< where the calling worker starts to look for a victim

void cpuPause()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#else
    std::this_thread::yield();
#endif
}

unsigned defaultWorkerCount()
{
    return std::max(2u, std::thread::hardware_concurrency());
}
} // namespace

BxThreadPool& BxThreadPool::GetInstance()
{
    static BxThreadPool s_pool(defaultWorkerCount());
    return s_pool;
}

BxThreadPool::BxThreadPool(unsigned workerCount)
    : m_workerCount(std::max(1u, workerCount)), m_maxSpinning(std::max(1u, m_workerCount / 2))
{
    std::lock_guard lock(m_lock);
    for (unsigned i = 0; i < m_workerCount; ++i)
    {
        SSlot* slot = claimSlotLocked();
        SWorker& worker = m_threads.emplace_back();
        worker.thread = std::thread(&BxThreadPool::workerMain, this, &worker, slot);
        ++m_threadCount;
    }
    updateSurplusLocked();
}

BxThreadPool::~BxThreadPool()
{
    {
        std::lock_guard lock(m_lock);
        m_stopping.store(true);
        m_wake.notify_all();
        m_unpark.notify_all();
    }
    cancelQueued();
    // Workers blocked in a task may still start compensating workers until
    // they see m_stopping, so collect until the list stays empty.
    std::list<SWorker> threads;
    for (;;)
    {
        {
            std::lock_guard lock(m_lock);
            threads.splice(threads.end(), m_threads);
        }
        if (threads.empty())
            break;
        for (SWorker& worker : threads)
            worker.thread.join();
        threads.clear();
    }
    cancelQueued(); // what the last running tasks added
}

bool BxThreadPool::AddTask(BxSmartPointer<BxTask> task, int priority)
{
    if (!task)
        BX_THROW(BxExceptionPreconditionViolation, "BxThreadPool::AddTask", "null task");
    if (priority < ePriorityLow || priority > ePriorityHigh)
        BX_THROW(BxExceptionPreconditionViolation, "BxThreadPool::AddTask", "priority must be 0, 1 or 2");
    if (m_stopping.load())
        return false;
    if (!task->markQueued())
        return false;
    task->m_poolPriority.store(priority, std::memory_order_relaxed);

    BxWorkQueue& queue =
        t_pool == this ? static_cast<SSlot*>(t_slot)->queues[priority] : m_injection[priority];
    queue.PushBack(std::move(task));
    // The shut-down drains the queues after it raised m_stopping: either it
    // sees this task, or this sees the flag and drains again.
    if (m_stopping.load())
    {
        cancelQueued();
        return false;
    }
    notifyWork();
    return true;
}

unsigned BxThreadPool::GetThreadCount() const
{
    std::lock_guard lock(m_lock);
    return m_threadCount;
}

std::size_t BxThreadPool::GetQueuedCount() const
{
    std::size_t count = 0;
    for (const auto& queue : m_injection)
        count += queue.GetCount();
    const unsigned slots = m_slotCount.load(std::memory_order_acquire);
    for (unsigned i = 0; i < slots; ++i)
        for (const auto& queue : m_slots[i]->queues)
            count += queue.GetCount();
    return count;
}

bool BxThreadPool::IsPoolThread()
{
    return t_pool != nullptr;
}

void BxThreadPool::runTask(BxTask& task)
{
    try
    {
        task.runClaimed();
    }
    catch (const std::exception& e)
    {
        Logging::CLogger(L"Core.ThreadPool")
            .Error(__FILE__, __LINE__, "BxThreadPool::runTask", L"Exception left a task: %S", e.what());
    }
    catch (...)
    {
        Logging::CLogger(L"Core.ThreadPool")
            .Error(__FILE__, __LINE__, "BxThreadPool::runTask", L"Unknown exception left a task");
    }
}

bool BxThreadPool::helpWith(BxTask& task)
{
    if (t_pool == nullptr || !task.IsQueued() || BxNoHelpScope::IsRaised())
        return false;
    // Usually the awaited task is the newest entry of this thread's own
    // queue: take the entry out with it. Elsewhere the entry stays and is
    // dropped by whoever finds it, since the task is claimed once.
    static_cast<SSlot*>(t_slot)->queues[task.m_poolPriority.load(std::memory_order_relaxed)].PopBackIf(task);
    if (!task.claim())
        return false;
    runTask(task);
    return true;
}

// --- finding work ----------------------------------------------------------------

BxSmartPointer<BxTask> BxThreadPool::findWork(SSlot& slot)
{
    for (int priority = ePriorityHigh; priority >= ePriorityLow; --priority)
    {
        if (BxSmartPointer<BxTask> task = slot.queues[priority].PopBack())
            return task;
        if (BxSmartPointer<BxTask> task = takeInjected(slot, priority))
            return task;
        if (BxSmartPointer<BxTask> task = steal(slot, priority))
            return task;
    }
    return nullptr;
}

BxSmartPointer<BxTask> BxThreadPool::takeInjected(SSlot& slot, int priority)
{
    const std::size_t taken = m_injection[priority].PopFrontHalf(slot.run.data(), kInjectedRun);
    if (taken == 0)
        return nullptr;
    if (taken > 1)
    {
        slot.queues[priority].PushBackReversed(slot.run.data() + 1, taken - 1);
        notifyWork(); // others may steal from the run
    }
    return std::move(slot.run[0]);
}

BxSmartPointer<BxTask> BxThreadPool::steal(SSlot& self, int priority)
{
    const unsigned slots = m_slotCount.load(std::memory_order_acquire);
    const unsigned start = t_stealStart++;
    for (unsigned i = 0; i < slots; ++i)
    {
        SSlot& victim = *m_slots[(start + i) % slots];
        if (&victim == &self)
            continue;
        if (BxSmartPointer<BxTask> task = victim.queues[priority].PopFront())
            return task;
    }
    return nullptr;
}

bool BxThreadPool::hasWork() const
{
    for (const auto& queue : m_injection)
        if (!queue.IsEmpty())
            return true;
    const unsigned slots = m_slotCount.load(std::memory_order_acquire);
    for (unsigned i = 0; i < slots; ++i)
        for (const auto& queue : m_slots[i]->queues)
            if (!queue.IsEmpty())
                return true;
    return false;
}

void BxThreadPool::cancelQueued()
{
    auto cancelAll = [](BxWorkQueue& queue) {
        for (auto& task : queue.TakeAll())
            task->cancel();
    };
    for (auto& queue : m_injection)
        cancelAll(queue);
    const unsigned slots = m_slotCount.load(std::memory_order_acquire);
    for (unsigned i = 0; i < slots; ++i)
        for (auto& queue : m_slots[i]->queues)
            cancelAll(queue);
}

// --- spinning and sleeping ---------------------------------------------------------
//
// The hand-off: a producer queues its task, then looks at m_spinning; a worker
// that stops spinning lowers m_spinning, then looks at the queues. All of these
// are sequentially consistent, so one of the two sees the other: either the
// producer sees no spinner and wakes a sleeper, or the worker sees the task.
// A worker going to sleep raises m_sleeping under m_lock before its last look,
// and a waker hands out its wake-up under m_lock, so no wake-up falls between
// that look and the wait.

void BxThreadPool::notifyWork()
{
    if (m_spinning.load() == 0 && m_sleeping.load() > 0)
        wakeOne();
    if (m_blocked.load(std::memory_order_relaxed) > 0)
    {
        std::lock_guard lock(m_lock);
        growLocked();
    }
}

void BxThreadPool::wakeOne()
{
    // The woken worker spins: count it now, so that other producers leave
    // the others asleep.
    unsigned expected = 0;
    if (!m_spinning.compare_exchange_strong(expected, 1))
        return;
    std::lock_guard lock(m_lock);
    if (m_sleeping.load() > m_wakeTokens)
    {
        ++m_wakeTokens;
        m_wake.notify_one();
    }
    else
    {
        // Nobody sleeps: every worker will look at the queues again.
        m_spinning.fetch_sub(1);
    }
}

void BxThreadPool::stopSpinning()
{
    if (m_spinning.fetch_sub(1) == 1 && m_sleeping.load() > 0 && hasWork())
        wakeOne();
}

BxSmartPointer<BxTask> BxThreadPool::spinForWork(SSlot& slot)
{
    // Tasks often come in bursts a little apart: a spin of some tens of
    // microseconds spares the producer a wake-up (a system call and the
    // scheduler's latency) for the next burst. Pauses keep the core; a yield
    // now and then lets a producer on the same core go on.
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::microseconds(kSpinMicroseconds);
    unsigned pauses = 1;
    for (unsigned round = 1; !m_stopping.load(std::memory_order_relaxed); ++round)
    {
        if (round % 16 == 0)
        {
            std::this_thread::yield();
            if (Clock::now() > deadline)
                break;
        }
        else
        {
            for (unsigned i = 0; i < pauses; ++i)
                cpuPause();
            pauses = std::min(pauses * 2, 64u);
        }
        if (BxSmartPointer<BxTask> task = findWork(slot))
        {
            stopSpinning();
            return task;
        }
    }
    return nullptr;
}

bool BxThreadPool::sleep(bool spinning)
{
    std::unique_lock lock(m_lock);
    m_sleeping.fetch_add(1);
    if (spinning)
        m_spinning.fetch_sub(1);
    if (m_stopping.load() || hasWork())
    {
        m_sleeping.fetch_sub(1);
        if (m_stopping.load())
            return false;
        m_spinning.fetch_add(1); // look again, as a spinner
        return true;
    }
    m_wake.wait(lock, [this] { return m_wakeTokens > 0 || m_stopping.load(); });
    m_sleeping.fetch_sub(1);
    if (m_wakeTokens == 0)
        return false; // stopping
    --m_wakeTokens;   // its waker counted this worker as spinning
    return true;
}

// --- the worker ----------------------------------------------------------------------

void BxThreadPool::workerMain(SWorker* self, SSlot* slot)
{
    ::pthread_setname_np(::pthread_self(), "BxThreadPool");
    t_pool = this;
    t_slot = slot;
    t_stealStart = static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(slot) >> 6); // spreads the victims
    BxBlockingScope::SetThreadHook(&BxThreadPool::onBlocking, this);

    auto ownQueuesEmpty = [slot] {
        return std::all_of(slot->queues.begin(), slot->queues.end(), [](const auto& q) { return q.IsEmpty(); });
    };
    for (;;)
    {
        if (m_stopping.load(std::memory_order_relaxed))
            break;
        // Surplus after a compensated wait ended: park for a while, so that
        // the next wait reuses this thread instead of starting one; retire
        // when no wait needed it. Only with empty queues: nobody else takes
        // from a parked worker's queues but thieves.
        if (m_surplus.load(std::memory_order_relaxed) && ownQueuesEmpty())
        {
            std::unique_lock lock(m_lock);
            if (activeLocked() > m_workerCount)
            {
                // This worker may have been woken for a task: hand the wake-up on
                // before parking, or the task could wait beside sleeping workers.
                wakeForWorkLocked();
                if (!parkLocked(lock))
                    break;
                continue;
            }
        }
        BxSmartPointer<BxTask> task = findWork(*slot);
        if (!task)
        {
            unsigned spinners = m_spinning.load();
            while (spinners < m_maxSpinning && !m_spinning.compare_exchange_weak(spinners, spinners + 1))
            {
            }
            bool spinning = spinners < m_maxSpinning;
            for (;;)
            {
                if (spinning && (task = spinForWork(*slot)))
                    break;
                if (!sleep(spinning))
                    break;
                spinning = true;
            }
            if (!task)
                break; // stopping
        }
        if (task->claim())
            runTask(*task);
        task.reset(); // the last reference may go here
    }

    std::lock_guard lock(m_lock);
    --m_threadCount;
    slot->used = false;
    self->finished = true;
    updateSurplusLocked();
    BxBlockingScope::SetThreadHook(nullptr, nullptr);
    t_pool = nullptr;
    t_slot = nullptr;
}

// --- compensation for blocked workers ---------------------------------------------------

void BxThreadPool::onBlocking(void* context, bool blocked)
{
    auto* pool = static_cast<BxThreadPool*>(context);
    std::lock_guard lock(pool->m_lock);
    if (blocked)
    {
        pool->m_blocked.fetch_add(1);
        pool->updateSurplusLocked();
        pool->wakeForWorkLocked();
    }
    else
    {
        pool->m_blocked.fetch_sub(1);
        pool->updateSurplusLocked();
    }
}

BxThreadPool::SSlot* BxThreadPool::claimSlotLocked()
{
    const unsigned slots = m_slotCount.load(std::memory_order_relaxed);
    for (unsigned i = 0; i < slots; ++i)
    {
        if (!m_slots[i]->used)
        {
            m_slots[i]->used = true;
            return m_slots[i].get();
        }
    }
    if (slots == eMaxThreads)
        return nullptr;
    m_slots[slots] = std::make_unique<SSlot>();
    m_slots[slots]->used = true;
    m_slotCount.store(slots + 1, std::memory_order_release);
    return m_slots[slots].get();
}

unsigned BxThreadPool::activeLocked() const
{
    return m_threadCount - m_blocked.load(std::memory_order_relaxed) - m_parked + m_unparkTokens;
}

void BxThreadPool::updateSurplusLocked()
{
    m_surplus.store(activeLocked() > m_workerCount, std::memory_order_relaxed);
}

void BxThreadPool::wakeForWorkLocked()
{
    if (!hasWork())
        return;
    // A sleeping worker counts as one that takes tasks, so wake it rather
    // than start another.
    if (m_sleeping.load() > m_wakeTokens)
    {
        m_spinning.fetch_add(1);
        ++m_wakeTokens;
        m_wake.notify_one();
    }
    else
        growLocked();
}

void BxThreadPool::growLocked()
{
    if (m_stopping.load() || !hasWork() || activeLocked() >= m_workerCount)
        return;
    if (m_parked > m_unparkTokens)
    {
        // A surplus worker from an earlier wait is parked: reuse it.
        ++m_unparkTokens;
        updateSurplusLocked();
        m_unpark.notify_one();
        return;
    }
    reapLocked();
    if (m_threadCount >= eMaxThreads)
        return;
    SSlot* slot = claimSlotLocked();
    if (slot == nullptr)
        return;
    SWorker& worker = m_threads.emplace_back();
    try
    {
        worker.thread = std::thread(&BxThreadPool::workerMain, this, &worker, slot);
        ++m_threadCount;
        updateSurplusLocked();
    }
    catch (const std::system_error&)
    {
        m_threads.pop_back(); // no thread now; the queued work waits for a free worker
        slot->used = false;
    }
}

bool BxThreadPool::parkLocked(std::unique_lock<std::mutex>& lock)
{
    ++m_parked;
    updateSurplusLocked();
    bool unparked = m_unpark.wait_for(lock, std::chrono::milliseconds(kParkMilliseconds),
                                      [this] { return m_stopping.load() || m_unparkTokens > 0; });
    --m_parked;
    bool reused = false;
    if (m_unparkTokens > 0)
    {
        --m_unparkTokens;
        reused = true;
    }
    updateSurplusLocked();
    return reused || (unparked && !m_stopping.load());
}

void BxThreadPool::reapLocked()
{
    // A finished worker only returns from its function; joining it is quick.
    for (auto it = m_threads.begin(); it != m_threads.end();)
    {
        if (it->finished)
        {
            it->thread.join();
            it = m_threads.erase(it);
        }
        else
            ++it;
    }
}
