#include <bxbase/threading/bxworkqueue.h>

#include <algorithm>
#include <thread>
#include <utility>

void BxWorkQueue::CSpinLock::lock()
{
    for (unsigned spins = 0;;)
    {
        if (!m_locked.exchange(true, std::memory_order_acquire))
            return;
        while (m_locked.load(std::memory_order_relaxed))
        {
            if (++spins < 64)
            {
#if defined(__x86_64__) || defined(__i386__)
                __builtin_ia32_pause();
#endif
            }
            else
                std::this_thread::yield(); // the holder may have lost its core
        }
    }
}

BxWorkQueue::BxWorkQueue() : m_ring(kInitialCapacity) {}

void BxWorkQueue::growLocked()
{
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    std::vector<BxSmartPointer<BxTask>> bigger(m_ring.size() * 2);
    for (std::size_t i = 0; i < count; ++i)
        bigger[i] = std::move(m_ring[(m_head + i) & mask()]);
    m_ring.swap(bigger);
    m_head = 0;
}

void BxWorkQueue::PushBack(BxSmartPointer<BxTask> task)
{
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    if (count == m_ring.size())
        growLocked();
    m_ring[(m_head + count) & mask()] = std::move(task);
    m_count.store(count + 1);
}

BxSmartPointer<BxTask> BxWorkQueue::PopBack()
{
    if (IsEmpty())
        return nullptr;
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    if (count == 0)
        return nullptr;
    BxSmartPointer<BxTask> task = std::move(m_ring[(m_head + count - 1) & mask()]);
    m_count.store(count - 1);
    return task;
}

BxSmartPointer<BxTask> BxWorkQueue::PopFront()
{
    if (IsEmpty())
        return nullptr;
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    if (count == 0)
        return nullptr;
    BxSmartPointer<BxTask> task = std::move(m_ring[m_head]);
    m_head = (m_head + 1) & mask();
    m_count.store(count - 1);
    return task;
}

std::size_t BxWorkQueue::PopFrontHalf(BxSmartPointer<BxTask>* out, std::size_t max)
{
    if (IsEmpty())
        return 0;
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    const std::size_t taken = std::min(max, (count + 1) / 2);
    for (std::size_t i = 0; i < taken; ++i)
        out[i] = std::move(m_ring[(m_head + i) & mask()]);
    m_head = (m_head + taken) & mask();
    m_count.store(count - taken);
    return taken;
}

void BxWorkQueue::PushBackReversed(BxSmartPointer<BxTask>* tasks, std::size_t count)
{
    std::lock_guard lock(m_lock);
    std::size_t size = m_count.load(std::memory_order_relaxed);
    while (size + count > m_ring.size())
        growLocked();
    for (std::size_t i = count; i-- > 0;)
        m_ring[(m_head + size++) & mask()] = std::move(tasks[i]);
    m_count.store(size);
}

bool BxWorkQueue::PopBackIf(const BxTask& task)
{
    if (IsEmpty())
        return false;
    BxSmartPointer<BxTask> removed; // released after the lock
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    if (count == 0)
        return false;
    BxSmartPointer<BxTask>& back = m_ring[(m_head + count - 1) & mask()];
    if (back.get() != &task)
        return false;
    removed = std::move(back);
    m_count.store(count - 1);
    return true;
}

std::vector<BxSmartPointer<BxTask>> BxWorkQueue::TakeAll()
{
    std::vector<BxSmartPointer<BxTask>> all;
    std::lock_guard lock(m_lock);
    const std::size_t count = m_count.load(std::memory_order_relaxed);
    all.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        all.push_back(std::move(m_ring[(m_head + i) & mask()]));
    m_head = 0;
    m_count.store(0);
    return all;
}
