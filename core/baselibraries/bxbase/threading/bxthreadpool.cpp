#include <bxbase/threading/bxthreadpool.h>

#include <bxbase/bxexceptionpreconditionviolation.h>
#include <bxbase/logging/clogger.h>
#include <bxbase/threading/bxblockingscope.h>

#include <algorithm>
#include <chrono>
#include <pthread.h>
#include <system_error>

namespace
{
thread_local BxThreadPool* t_pool = nullptr;

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

BxThreadPool::BxThreadPool(unsigned workerCount) : m_workerCount(std::max(1u, workerCount))
{
    std::lock_guard lock(m_lock);
    for (unsigned i = 0; i < m_workerCount; ++i)
    {
        SWorker& worker = m_threads.emplace_back();
        worker.thread = std::thread(&BxThreadPool::workerMain, this, &worker);
        ++m_threadCount;
    }
}

BxThreadPool::~BxThreadPool()
{
    std::list<SWorker> threads;
    {
        std::lock_guard lock(m_lock);
        m_stopping = true;
        m_stoppingFlag.store(true, std::memory_order_relaxed);
        for (auto& queue : m_queues)
        {
            for (auto& task : queue)
                task->cancel();
            queue.clear();
        }
        m_queuedCount.store(0, std::memory_order_relaxed);
    }
    m_wake.notify_all();
    m_unpark.notify_all();
    // Workers blocked in a task may still start compensating workers until
    // they see m_stopping, so collect until the list stays empty.
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
}

bool BxThreadPool::AddTask(BxSmartPointer<BxTask> task, int priority)
{
    if (!task)
        BX_THROW(BxExceptionPreconditionViolation, "BxThreadPool::AddTask", "null task");
    if (priority < ePriorityLow || priority > ePriorityHigh)
        BX_THROW(BxExceptionPreconditionViolation, "BxThreadPool::AddTask", "priority must be 0, 1 or 2");
    if (!task->markQueued())
        return false;

    bool wakeOne;
    {
        std::lock_guard lock(m_lock);
        if (m_stopping)
        {
            task->cancel();
            return false;
        }
        m_queues[priority].push_back(std::move(task));
        m_queuedCount.fetch_add(1, std::memory_order_relaxed);
        wakeOne = m_idle > 0;
        if (!wakeOne)
            growLocked();
    }
    if (wakeOne)
        m_wake.notify_one();
    return true;
}

unsigned BxThreadPool::GetThreadCount() const
{
    std::lock_guard lock(m_lock);
    return m_threadCount;
}

std::size_t BxThreadPool::GetQueuedCount() const
{
    std::lock_guard lock(m_lock);
    std::size_t count = 0;
    for (const auto& queue : m_queues)
        count += queue.size();
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

void BxThreadPool::onBlocking(void* context, bool blocked)
{
    auto* pool = static_cast<BxThreadPool*>(context);
    std::lock_guard lock(pool->m_lock);
    if (blocked)
    {
        ++pool->m_blocked;
        pool->wakeForWorkLocked();
    }
    else
        --pool->m_blocked;
}

bool BxThreadPool::hasWorkLocked() const
{
    return std::any_of(m_queues.begin(), m_queues.end(), [](const auto& q) { return !q.empty(); });
}

unsigned BxThreadPool::activeLocked() const
{
    return m_threadCount - m_blocked - m_parked + m_unparkTokens;
}

void BxThreadPool::wakeForWorkLocked()
{
    if (!hasWorkLocked())
        return;
    // A sleeping worker counts as one that takes tasks, so wake it rather
    // than start another. A spurious wake-up only costs it one more look.
    if (m_idle > 0)
        m_wake.notify_one();
    else
        growLocked();
}

void BxThreadPool::growLocked()
{
    if (m_stopping || !hasWorkLocked() || activeLocked() >= m_workerCount)
        return;
    if (m_parked > m_unparkTokens)
    {
        // A surplus worker from an earlier wait is parked: reuse it.
        ++m_unparkTokens;
        m_unpark.notify_one();
        return;
    }
    reapLocked();
    if (m_threadCount >= eMaxThreads)
        return;
    SWorker& worker = m_threads.emplace_back();
    try
    {
        worker.thread = std::thread(&BxThreadPool::workerMain, this, &worker);
        ++m_threadCount;
    }
    catch (const std::system_error&)
    {
        m_threads.pop_back(); // no thread now; the queued work waits for a free worker
    }
}

bool BxThreadPool::parkLocked(std::unique_lock<std::mutex>& lock)
{
    ++m_parked;
    bool unparked = m_unpark.wait_for(lock, std::chrono::milliseconds(kParkMilliseconds),
                                      [this] { return m_stopping || m_unparkTokens > 0; });
    --m_parked;
    if (m_unparkTokens > 0)
    {
        --m_unparkTokens;
        return true;
    }
    return unparked && !m_stopping;
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

bool BxThreadPool::spinForWork(std::unique_lock<std::mutex>& lock)
{
    // Tasks often come in bursts: a short spin outside the lock lets the
    // producer add without waking a sleeping worker (a system call each).
    lock.unlock();
    bool found = false;
    for (unsigned i = 0; i < kSpinRounds && !found; ++i)
    {
        std::this_thread::yield(); // on a busy machine the producer may need this core
        found = m_queuedCount.load(std::memory_order_relaxed) > 0 || m_stoppingFlag.load(std::memory_order_relaxed);
    }
    lock.lock();
    // A task added after the last look but before the lock was taken again
    // saw this worker as busy and woke nobody: look once more under the lock,
    // or the worker would sleep beside queued work.
    return found || hasWorkLocked() || m_stopping;
}

BxSmartPointer<BxTask> BxThreadPool::popLocked()
{
    for (int priority = ePriorityHigh; priority >= ePriorityLow; --priority)
    {
        auto& queue = m_queues[priority];
        if (!queue.empty())
        {
            BxSmartPointer<BxTask> task = std::move(queue.front());
            queue.pop_front();
            m_queuedCount.fetch_sub(1, std::memory_order_relaxed);
            return task;
        }
    }
    return nullptr;
}

void BxThreadPool::workerMain(SWorker* self)
{
    ::pthread_setname_np(::pthread_self(), "BxThreadPool");
    t_pool = this;
    BxBlockingScope::SetThreadHook(&BxThreadPool::onBlocking, this);

    std::unique_lock lock(m_lock);
    for (;;)
    {
        // Surplus after a compensated wait ended: park for a while, so that
        // the next wait reuses this thread instead of starting one; retire
        // when no wait needed it.
        if (activeLocked() > m_workerCount)
        {
            // This worker may have been woken for a task: hand the wake-up on
            // before parking, or the task could wait beside sleeping workers.
            wakeForWorkLocked();
            if (!parkLocked(lock))
                break;
            continue;
        }
        BxSmartPointer<BxTask> task = popLocked();
        if (!task)
        {
            if (m_stopping)
                break;
            if (spinForWork(lock))
                continue;
            ++m_idle;
            m_wake.wait(lock);
            --m_idle;
            continue;
        }
        lock.unlock();
        if (task->claim())
            runTask(*task);
        task.reset(); // the last reference may go here: outside the lock
        lock.lock();
    }
    --m_threadCount;
    self->finished = true;
    BxBlockingScope::SetThreadHook(nullptr, nullptr);
    t_pool = nullptr;
}
