#include <bxbase/threading/bxnohelpscope.h>

#include <bxbase/threading/bxthreadapi.h>

#include <atomic>
#include <mutex>
#include <unordered_map>

namespace
{
struct SRegistry
{
    std::mutex lock;
    std::unordered_map<std::uint32_t, unsigned> counts; ///< thread id -> raises; guarded by lock
    std::atomic<unsigned> total{0};                     ///< sum of counts; written under lock
};

SRegistry& registry()
{
    // Never destroyed: threads may still lower their markers while the
    // process ends, after the static objects are gone.
    static SRegistry* const s_registry = new SRegistry;
    return *s_registry;
}

thread_local unsigned t_ownRaises = 0; ///< raises of the calling thread's marker by itself
} // namespace

BxNoHelpScope::BxNoHelpScope() : m_threadId(GetCurrentThreadId())
{
    Raise(m_threadId);
}

BxNoHelpScope::~BxNoHelpScope()
{
    Lower(m_threadId);
}

void BxNoHelpScope::Raise(std::uint32_t threadId)
{
    if (threadId == GetCurrentThreadId())
    {
        ++t_ownRaises;
        return;
    }
    SRegistry& r = registry();
    std::lock_guard lock(r.lock);
    ++r.counts[threadId];
    r.total.fetch_add(1);
}

void BxNoHelpScope::Lower(std::uint32_t threadId)
{
    if (threadId == GetCurrentThreadId() && t_ownRaises > 0)
    {
        --t_ownRaises;
        return;
    }
    SRegistry& r = registry();
    std::lock_guard lock(r.lock);
    const auto entry = r.counts.find(threadId);
    if (entry == r.counts.end())
        return;
    if (--entry->second == 0)
        r.counts.erase(entry);
    r.total.fetch_sub(1);
}

bool BxNoHelpScope::IsRaised()
{
    if (t_ownRaises > 0)
        return true;
    SRegistry& r = registry();
    if (r.total.load() == 0)
        return false;
    std::lock_guard lock(r.lock);
    return r.counts.find(GetCurrentThreadId()) != r.counts.end();
}
