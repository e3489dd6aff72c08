// The standard interceptor list: a growable array of std::shared_ptr<I>
// guarded by its own critical section.
//
//   auto dispatcher = std::make_shared<Interceptor::CDispatcher<IMyHooks>>();
//   dispatcher->Add(hooks);
//   dispatcher->Dispatch(&IMyHooks::OnAdd, CContextWorkItem(...));
//
// Interceptors are called in the order they were added. The list is copied
// under the lock and the calls are made outside it, so an interceptor may add
// or remove interceptors, or call back into its manager, without deadlock.
#pragma once

#include <bxbase/interceptor/idispatcher.h>
#include <bxbase/threading/bxcriticalsection.h>

#include <algorithm>
#include <vector>

namespace Interceptor {

/// The standard interceptor list: a growable array of std::shared_ptr<I> guarded by its own critical section.
template <class I>
class CDispatcher : public IDispatcher<I>
{
public:
    void Add(const std::shared_ptr<I>& interceptor) override
    {
        if (!interceptor)
            return;
        BxCriticalSectionLocker locker(m_lock);
        if (std::find(m_interceptors.begin(), m_interceptors.end(), interceptor) == m_interceptors.end())
            m_interceptors.push_back(interceptor);
    }

    void Remove(const std::shared_ptr<I>& interceptor) override
    {
        BxCriticalSectionLocker locker(m_lock);
        auto it = std::find(m_interceptors.begin(), m_interceptors.end(), interceptor);
        if (it != m_interceptors.end())
            m_interceptors.erase(it);
    }

    std::size_t GetCount() const override
    {
        BxCriticalSectionLocker locker(m_lock);
        return m_interceptors.size();
    }

    void ForEach(const std::function<void(I&)>& visit) const override
    {
        for (const auto& interceptor : snapshot())
            visit(*interceptor);
    }

    /// Hands `context` to the hook operation `hook` of every interceptor.
    template <class Context>
    void Dispatch(void (I::*hook)(const Context&), const Context& context) const
    {
        if (empty())
            return;
        for (const auto& interceptor : snapshot())
            ((*interceptor).*hook)(context);
    }

private:
    bool empty() const
    {
        BxCriticalSectionLocker locker(m_lock);
        return m_interceptors.empty();
    }
    std::vector<std::shared_ptr<I>> snapshot() const
    {
        BxCriticalSectionLocker locker(m_lock);
        return m_interceptors;
    }

    mutable BxCriticalSection m_lock;  // guards m_interceptors
    std::vector<std::shared_ptr<I>> m_interceptors;
};

}  // namespace Interceptor
