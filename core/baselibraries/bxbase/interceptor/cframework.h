// Base of the managers that outside code can hook into.
//
//   class VoTaskManager : public Interceptor::CFramework<TaskManager::IInterceptorTaskManager> {
//       void add(...) { ...; dispatch(&IInterceptorTaskManager::OnAdd, CContextWorkItem(*this, name)); }
//   };
//   manager.GetDispatcher()->Add(std::make_shared<CMyHooks>());
//
// The framework object creates its dispatcher with itself; copies of the
// object share the same dispatcher.
#pragma once

#include <bxbase/interceptor/cdispatcher.h>
#include <bxbase/interceptor/iframework.h>

#include <memory>

namespace Interceptor {

/// Base of the managers that outside code can hook into.
template <class I, class D = CDispatcher<I>>
class CFramework : public IFramework<I>
{
public:
    /// Creates the manager's own dispatcher, empty; copies of this object share it.
    CFramework() : m_dispatcher(std::make_shared<D>()) {}

    /// The dispatcher created with this object (shared with its copies); never null. Interceptors may be added
    /// and removed through it from any thread.
    std::shared_ptr<IDispatcher<I>> GetDispatcher() const override { return m_dispatcher; }

protected:
    /// Hands `context` to the hook `hook` of every registered interceptor.
    template <class Context>
    void dispatch(void (I::*hook)(const Context&), const Context& context) const
    {
        m_dispatcher->Dispatch(hook, context);
    }

    /// The dispatcher with its concrete type D, for a deriving manager that needs more than IDispatcher offers.
    const std::shared_ptr<D>& getDispatcher() const noexcept { return m_dispatcher; }

private:
    std::shared_ptr<D> m_dispatcher;
};

}  // namespace Interceptor
