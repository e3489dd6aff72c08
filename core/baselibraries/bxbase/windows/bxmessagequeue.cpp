#include <bxbase/windows/bxmessagequeue.h>

#include <bxbase/threading/bxblockingscope.h>
#include <bxbase/windows/bxwindowtable.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>
#include <time.h>

namespace
{
DWORD tickCount()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

// Queues of ended threads, waiting for reuse. Never destroyed, so that the
// queues stay reachable (and valid for stale posters) until the process ends.
struct SSpareQueues
{
    std::mutex lock;
    std::vector<BxMessageQueue*> spare; ///< guarded by lock
};

SSpareQueues& spareQueues()
{
    static auto* s_spare = new SSpareQueues;
    return *s_spare;
}

thread_local BxMessageQueue* t_queue = nullptr; ///< the calling thread's queue, once made
} // namespace

// Owns the thread's queue for the thread's lifetime; at thread end it
// destroys the thread's windows, closes the queue and hands it back.
class BxMessageQueue::CThreadHolder
{
public:
    ~CThreadHolder()
    {
        if (m_queue == nullptr)
            return;
        BxWindowTable::OnThreadEnd(*m_queue);
        m_queue->close();
        t_queue = nullptr;
        SSpareQueues& spare = spareQueues();
        std::lock_guard lock(spare.lock);
        spare.spare.push_back(m_queue);
    }

    BxMessageQueue* get() const { return m_queue; }

    BxMessageQueue& make()
    {
        if (m_queue == nullptr)
        {
            SSpareQueues& spare = spareQueues();
            {
                std::lock_guard lock(spare.lock);
                if (!spare.spare.empty())
                {
                    m_queue = spare.spare.back();
                    spare.spare.pop_back();
                }
            }
            if (m_queue == nullptr)
                m_queue = new BxMessageQueue; // kept for ever (see above)
            m_queue->open(GetCurrentThreadId());
        }
        return *m_queue;
    }

private:
    BxMessageQueue* m_queue = nullptr;
};

BxMessageQueue& BxMessageQueue::ForCurrentThread()
{
    if (t_queue == nullptr)
    {
        static thread_local CThreadHolder holder;
        t_queue = &holder.make();
    }
    return *t_queue;
}

BxMessageQueue* BxMessageQueue::FindForCurrentThread()
{
    return t_queue;
}

bool BxMessageQueue::SFilter::Matches(const MSG& msg) const
{
    if (hwnd == reinterpret_cast<HWND>(static_cast<std::intptr_t>(-1)))
    {
        if (msg.hwnd != nullptr)
            return false;
    }
    else if (hwnd != nullptr && msg.hwnd != hwnd)
        return false;
    return (min == 0 && max == 0) || (msg.message >= min && msg.message <= max);
}

void BxMessageQueue::open(DWORD threadId)
{
    std::lock_guard lock(m_lock);
    m_threadId = threadId;
    m_closed = false;
}

void BxMessageQueue::close()
{
    std::lock_guard lock(m_lock);
    m_closed = true;
    m_threadId = 0;
    m_incoming.clear();
    m_quitPending = false;
    m_ownerSleeps = false;
    dropBatch();
    m_windows.clear();
}

DWORD BxMessageQueue::GetThreadId() const
{
    std::lock_guard lock(m_lock);
    return m_threadId;
}

bool BxMessageQueue::Post(const MSG& msg, const std::atomic<std::uint32_t>* generation, std::uint32_t expected)
{
    bool wake;
    {
        std::lock_guard lock(m_lock);
        if (m_closed || (generation != nullptr && generation->load(std::memory_order_acquire) != expected))
            return false;
        m_incoming.push_back(msg);
        wake = std::exchange(m_ownerSleeps, false); // one wake-up per sleep
    }
    if (wake)
        m_posted.notify_one();
    return true;
}

void BxMessageQueue::PostQuit(int exitCode)
{
    bool wake;
    {
        std::lock_guard lock(m_lock);
        m_quitPending = true;
        m_quitCode = exitCode;
        wake = std::exchange(m_ownerSleeps, false);
    }
    if (wake)
        m_posted.notify_one();
}

void BxMessageQueue::dropBatch()
{
    m_batch.clear();
    m_batchHead = 0;
    m_batchCount.store(0, std::memory_order_relaxed);
}

void BxMessageQueue::takeOverIncoming()
{
    if (m_batchHead == m_batch.size())
    {
        // The usual case: the batch is used up and the lists swap storage.
        m_batch.clear();
        m_batch.swap(m_incoming);
        m_batchHead = 0;
    }
    else
    {
        m_batch.erase(m_batch.begin(), m_batch.begin() + static_cast<std::ptrdiff_t>(m_batchHead));
        m_batchHead = 0;
        m_batch.insert(m_batch.end(), m_incoming.begin(), m_incoming.end());
        m_incoming.clear();
    }
    m_batchTime = tickCount();
    m_batchCount.store(m_batch.size(), std::memory_order_relaxed);
}

bool BxMessageQueue::takeFromBatch(MSG& msg, const SFilter& filter, ERemove remove)
{
    const auto first = m_batch.begin() + static_cast<std::ptrdiff_t>(m_batchHead);
    const auto it = std::find_if(first, m_batch.end(), [&](const MSG& m) { return filter.Matches(m); });
    if (it == m_batch.end())
        return false;
    msg = *it;
    msg.time = m_batchTime;
    const bool keep = remove == eKeep || (remove == eRemoveUnlessQuit && msg.message == WM_QUIT);
    if (keep)
        return true;
    if (it == first)
        ++m_batchHead;
    else
        m_batch.erase(it); // a filtered take from the middle
    if (m_batchHead == m_batch.size())
        dropBatch();
    else
        m_batchCount.store(m_batch.size() - m_batchHead, std::memory_order_relaxed);
    return true;
}

bool BxMessageQueue::Retrieve(MSG& msg, const SFilter& filter, ERemove remove, DWORD timeoutMs)
{
    using Clock = std::chrono::steady_clock;
    Clock::time_point deadline{};            // set at the first real wait
    std::optional<BxBlockingScope> blocking; // opened at the first real wait

    for (;;)
    {
        if (takeFromBatch(msg, filter, remove))
            return true;

        std::unique_lock lock(m_lock);
        if (!m_incoming.empty())
        {
            takeOverIncoming();
            continue; // look through what came in (the lock is released on the way)
        }
        if (m_quitPending)
        {
            msg = MSG{nullptr, WM_QUIT, static_cast<WPARAM>(static_cast<std::int64_t>(m_quitCode)), 0, tickCount(), {0, 0}};
            if (remove == eRemove)
                m_quitPending = false;
            return true;
        }
        if (timeoutMs == 0)
            return false;

        if (!blocking)
        {
            if (timeoutMs != INFINITE)
                deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
            lock.unlock(); // the pool's hook takes its own lock
            blocking.emplace();
            continue; // look again: something may have arrived meanwhile
        }
        // Nothing matches and nothing came in: sleep until a post or a quit.
        auto arrived = [&] { return !m_incoming.empty() || m_quitPending; };
        bool timedOut = false;
        while (!arrived() && !timedOut)
        {
            m_ownerSleeps = true;
            if (timeoutMs == INFINITE)
                m_posted.wait(lock);
            else
                timedOut = m_posted.wait_until(lock, deadline) == std::cv_status::timeout;
        }
        m_ownerSleeps = false;
        if (!arrived())
            return false;
    }
}

void BxMessageQueue::Invalidate(std::atomic<std::uint32_t>& generation, std::uint32_t newGeneration, HWND hwnd)
{
    auto ofWindow = [hwnd](const MSG& m) { return m.hwnd == hwnd; };
    std::lock_guard lock(m_lock);
    generation.store(newGeneration, std::memory_order_release);
    std::erase_if(m_incoming, ofWindow);
    m_batch.erase(std::remove_if(m_batch.begin() + static_cast<std::ptrdiff_t>(m_batchHead), m_batch.end(), ofWindow),
                  m_batch.end());
    if (m_batchHead == m_batch.size())
        dropBatch();
    else
        m_batchCount.store(m_batch.size() - m_batchHead, std::memory_order_relaxed);
}

std::size_t BxMessageQueue::GetCount() const
{
    std::lock_guard lock(m_lock);
    return m_incoming.size() + m_batchCount.load(std::memory_order_relaxed);
}
